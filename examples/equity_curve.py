"""From the trade signals of a script to a curve of equity, with the prices of the next open.

    equity_curve.py BARS.csv
"""

import sys

import pandas as pd

import quor

SCRIPT = """
FAST:MA(C,5);
SLOW:MA(C,20);
CROSS(FAST,SLOW),BK(1);
CROSS(SLOW,FAST),SP(1);
"""
STEPS = {"BK": 1, "BP": 1, "BPK": 1, "SK": -1, "SP": -1, "SPK": -1}
CASH = 10_000.0


def equity_curve(bars: pd.DataFrame) -> pd.DataFrame:
    """Cash, position and equity at each close."""
    orders = quor.orders(SCRIPT, bars, price="open", later=1).dropna(subset=["price"])
    traded = orders["word"].map(STEPS) * orders["quantity"]
    at = bars.index.searchsorted(orders["time"]) + 1  # an order is filled in the next bar
    fills = pd.DataFrame({"traded": traded, "paid": traded * orders["price"]})
    fills = fills.groupby(bars.index[at]).sum().reindex(bars.index, fill_value=0.0)
    curve = pd.DataFrame({"cash": CASH - fills["paid"].cumsum(),
                          "position": fills["traded"].cumsum()})
    curve["equity"] = curve["cash"] + curve["position"] * bars["close"]
    return curve


if __name__ == "__main__":
    print(equity_curve(quor.read_csv(sys.argv[1])).tail())
