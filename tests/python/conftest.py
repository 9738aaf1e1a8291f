"""Bars that the tests of the Python package share."""

from pathlib import Path

import numpy as np
import pandas as pd
import pytest

SAMPLES = Path(__file__).resolve().parents[2] / "samples"


def made_up(seed: int, bars: int = 120, freq: str = "B") -> pd.DataFrame:
    random = np.random.default_rng(seed)
    close = np.round(100 * np.exp(np.cumsum(random.normal(0, 0.02, bars))), 2)
    return pd.DataFrame(
        {
            "open": np.round(close + random.normal(0, 0.5, bars), 2),
            "high": close + 1,
            "low": close - 1,
            "close": close,
            "volume": random.integers(1, 1000, bars),
        },
        index=pd.date_range("2024-01-01", periods=bars, freq=freq, name="date"),
    )


def bars_of_worker(seed: int) -> pd.DataFrame:
    """A frame that a worker makes itself."""
    return made_up(seed)


@pytest.fixture
def frame() -> pd.DataFrame:
    return made_up(1)


@pytest.fixture
def index_daily() -> pd.DataFrame:
    return pd.read_csv(SAMPLES / "index-daily.csv", parse_dates=["date"], index_col="date")
