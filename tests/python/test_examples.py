"""The examples for Python do what they say."""

import importlib.util
from pathlib import Path

import numpy as np
import pandas as pd
from conftest import made_up

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"


def example(name):
    spec = importlib.util.spec_from_file_location(name, EXAMPLES / f"{name}.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def test_the_equity_curve_is_that_of_a_plain_loop():
    curves = example("equity_curve")
    bars = made_up(5, 300)
    fast, slow = (bars["close"].rolling(count).mean() for count in (5, 20))
    cash, position, equity, waiting = curves.CASH, 0.0, [], 0.0
    for bar in range(len(bars)):
        cash -= waiting * bars["open"].iloc[bar]
        position += waiting
        equity.append(cash + position * bars["close"].iloc[bar])
        now, before = (fast.iloc[bar] > slow.iloc[bar], fast.iloc[bar - 1] < slow.iloc[bar - 1])
        fell, above = (fast.iloc[bar] < slow.iloc[bar], fast.iloc[bar - 1] > slow.iloc[bar - 1])
        waiting = float(now and before and bar > 0) - float(fell and above and bar > 0)
    curve = curves.equity_curve(bars)
    assert curve["position"].nunique() > 1
    np.testing.assert_allclose(curve["equity"], pd.Series(equity, bars.index), rtol=1e-12)
