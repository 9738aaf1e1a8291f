"""Compares the indicators of samples/cookbook with their textbook definitions, over all real bars.

    cookbook_test.py QUOR SAMPLES

The expected values are calculated here, in plain loops over lists that know nothing of the library:
sums and means are taken anew at every bar, extremes and shares over the bars that there are.
Exponential averages start with the first value, Wilder's smoothing (x + (n-1) * prev) / n with the
first known one. A line is compared from the bar on at which its longest window is full. Whether the
parabolic stop is right is tested elsewhere; here its dots must stand on the side that it says.
"""

import csv
import io
import math
import pathlib
import subprocess
import sys


def read_bars(path):
    with open(path, newline="") as file:
        rows = list(csv.DictReader(file))
    return [[float(row[name]) for row in rows] for name in ("open", "high", "low", "close", "volume")]


def run(quor, script, bars, *options):
    command = [quor, "run", str(script), "--bars", str(bars), "--csv", "--all", *options]
    done = subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    rows = list(csv.DictReader(io.StringIO(done.stdout.decode())))
    return {
        name: [float(row[name]) if row[name] else None for row in rows]
        for name in rows[0]
        if name != "date"
    }


def window(x, i, n):
    return x[max(0, i - n + 1) : i + 1]


def mean(x, n):
    return [sum(window(x, i, n)) / n for i in range(len(x))]


def highest(x, n):
    return [max(window(x, i, n)) for i in range(len(x))]


def lowest(x, n):
    return [min(window(x, i, n)) for i in range(len(x))]


def total(x, n):
    return [sum(window(x, i, n)) for i in range(len(x))]


def exponential(x, n):
    y = [x[0]]
    for value in x[1:]:
        y.append(y[-1] + 2 / (n + 1) * (value - y[-1]))
    return y


def wilder(x, n, m=1):
    y = []
    for value in x:
        if value is None:
            y.append(None)
        else:
            known = bool(y) and y[-1] is not None
            y.append((m * value + (n - m) * y[-1]) / n if known else value)
    return y


def deviation(x, n):
    y = []
    for i in range(len(x)):
        part = window(x, i, n)
        middle = sum(part) / len(part)
        y.append(math.sqrt(sum((v - middle) ** 2 for v in part) / len(part)))
    return y


def mean_deviation(x, n):
    y = []
    for i in range(len(x)):
        part = window(x, i, n)
        middle = sum(part) / len(part)
        y.append(sum(abs(v - middle) for v in part) / len(part))
    return y


def change(x, n=1):
    return [x[i] - x[i - n] if i >= n else None for i in range(len(x))]


def percent_change(x, n=1):
    return [(x[i] - x[i - n]) / x[i - n] * 100 if i >= n else 0.0 for i in range(len(x))]


def each(function, *series):
    return [function(*values) for values in zip(*series)]


def macd(o, h, l, c, v):
    dif = each(lambda a, b: a - b, exponential(c, 12), exponential(c, 26))
    dea = exponential(dif, 9)
    return 0, {"DIF": dif, "DEA": dea, "MACD": each(lambda a, b: 2 * (a - b), dif, dea)}


def kdj(o, h, l, c, v):
    rsv = each(lambda x, low, high: (x - low) / (high - low) * 100, c, lowest(l, 9), highest(h, 9))
    k = wilder(rsv, 3)
    d = wilder(k, 3)
    return 0, {"K": k, "D": d, "J": each(lambda a, b: 3 * a - 2 * b, k, d)}


def rsi(o, h, l, c, v):
    moves = change(c)
    rises = wilder([None if x is None else max(x, 0) for x in moves], 14)
    falls = wilder([None if x is None else max(-x, 0) for x in moves], 14)
    shares = [None] + [100 * a / (a + b) for a, b in zip(rises[1:], falls[1:])]
    return 1, {"RSI": shares}


def boll(o, h, l, c, v):
    middle, spread = mean(c, 20), deviation(c, 20)
    return 20, {
        "MID": middle,
        "UPPER": each(lambda a, b: a + 2 * b, middle, spread),
        "LOWER": each(lambda a, b: a - 2 * b, middle, spread),
    }


def true_ranges(h, l, c):
    first = [h[0] - l[0]]
    return first + [max(h[i], c[i - 1]) - min(l[i], c[i - 1]) for i in range(1, len(c))]


def atr(o, h, l, c, v):
    ranges = true_ranges(h, l, c)
    return 0, {"TR": ranges, "ATR": wilder(ranges, 14)}


def obv(o, h, l, c, v):
    balance = [0.0]
    for i in range(1, len(c)):
        balance.append(balance[-1] + (v[i] if c[i] > c[i - 1] else -v[i] if c[i] < c[i - 1] else 0))
    return 29, {"OBV": balance, "MAOBV": mean(balance, 30)}


def cci(o, h, l, c, v):
    typical = each(lambda a, b, x: (a + b + x) / 3, h, l, c)
    far = each(lambda t, m, d: (t - m) / (0.015 * d), typical[13:], mean(typical, 14)[13:],
               mean_deviation(typical, 14)[13:])
    return 13, {"CCI": [None] * 13 + far}


def dmi(o, h, l, c, v):
    plus, minus = [0.0], [0.0]
    for i in range(1, len(c)):
        rise, fall = h[i] - h[i - 1], l[i - 1] - l[i]
        plus.append(rise if rise > fall and rise > 0 else 0.0)
        minus.append(fall if fall > rise and fall > 0 else 0.0)
    ranges = wilder(true_ranges(h, l, c), 14)
    pdi = each(lambda a, b: a / b * 100, wilder(plus, 14), ranges)
    mdi = each(lambda a, b: a / b * 100, wilder(minus, 14), ranges)
    shares = each(lambda a, b: abs(a - b) / (a + b) * 100 if a + b else 0.0, pdi, mdi)
    return 0, {"PDI": pdi, "MDI": mdi, "ADX": wilder(shares, 14)}


def wr(o, h, l, c, v):
    top, bottom = highest(h, 14), lowest(l, 14)
    return 0, {"WR": each(lambda t, b, x: (t - x) / (t - b) * 100, top, bottom, c)}


def aroon(o, h, l, c, v):
    """Of equal extremes the oldest counts."""
    up, down = [], []
    for i in range(len(c)):
        highs, lows = window(h, i, 26), window(l, i, 26)
        up.append((25 - (len(highs) - 1 - highs.index(max(highs)))) / 25 * 100)
        down.append((25 - (len(lows) - 1 - lows.index(min(lows)))) / 25 * 100)
    return 25, {"UP": up, "DOWN": down, "OSC": each(lambda a, b: a - b, up, down)}


def trix(o, h, l, c, v):
    line = percent_change(exponential(exponential(exponential(c, 12), 12), 12))
    return 9, {"TRIX": line, "MATRIX": mean(line, 9)}


def roc(o, h, l, c, v):
    line = percent_change(c, 12)
    return 17, {"ROC": line, "MAROC": mean(line, 6)}


def psy(o, h, l, c, v):
    rose = [0.0] + [1.0 if c[i] > c[i - 1] else 0.0 for i in range(1, len(c))]
    line = [x / 12 * 100 for x in total(rose, 12)]
    return 16, {"PSY": line, "MAPSY": mean(line, 6)}


def vr(o, h, l, c, v):
    sides = {"rising": [0.0], "falling": [0.0], "same": [0.0]}
    for i in range(1, len(c)):
        side = "rising" if c[i] > c[i - 1] else "falling" if c[i] < c[i - 1] else "same"
        for name, volumes in sides.items():
            volumes.append(v[i] if name == side else 0.0)
    sums = [total(sides[name], 26) for name in ("rising", "falling", "same")]
    ratios = each(lambda r, f, s: (r + s / 2) / (f + s / 2) * 100 if f + s else 0.0, *sums)
    return 26, {"VR": ratios}


def bias(o, h, l, c, v):
    lines = {}
    for n in (6, 12, 24):
        lines[f"BIAS{n}"] = each(lambda x, m: (x - m) / m * 100, c, mean(c, n))
    return 23, lines


def keltner(o, h, l, c, v):
    middle, ranges = exponential(c, 20), wilder(true_ranges(h, l, c), 10)
    return 0, {
        "MID": middle,
        "UPPER": each(lambda a, b: a + 2 * b, middle, ranges),
        "LOWER": each(lambda a, b: a - 2 * b, middle, ranges),
    }


def donchian(o, h, l, c, v):
    upper, lower = highest(h, 20), lowest(l, 20)
    above = [0.0] + [1.0 if c[i] > upper[i - 1] else 0.0 for i in range(1, len(c))]
    below = [0.0] + [1.0 if c[i] < lower[i - 1] else 0.0 for i in range(1, len(c))]
    middle = each(lambda a, b: (a + b) / 2, upper, lower)
    return 0, {"UPPER": upper, "LOWER": lower, "MID": middle, "ABOVE": above, "BELOW": below}


def trailing_stop(o, h, l, c, v):
    ranges = wilder(true_ranges(h, l, c), 22)
    stop = each(lambda a, b: a - 3 * b, highest(h, 22), ranges)
    out, back = [0.0], [0.0]
    for i in range(1, len(c)):
        out.append(1.0 if c[i] < stop[i] and c[i - 1] >= stop[i - 1] else 0.0)
        back.append(1.0 if c[i] > stop[i] and c[i - 1] <= stop[i - 1] else 0.0)
    return 0, {"STOP": stop, "OUT": out, "BACK": back}


def parabolic_faults(lines, h, l):
    """The stop is below the bars while it rises, above them while it falls."""
    for i, (stop, falling) in enumerate(zip(lines["STOP"], lines["FALLING"])):
        if stop is not None and not (stop >= h[i] - 1e-9 if falling else stop <= l[i] + 1e-9):
            yield f"parabolic: row {i}: {stop} on the wrong side"


def session_average(quor, samples):
    """The night session of each of the two trading days comes before its day session."""
    bars = samples / "night.csv"
    options = ["--code", "TEST", "--market", "NIGHT", "--calendar", str(samples / "night-calendar.json")]
    lines = run(quor, samples / "cookbook/session_average.quor", bars, *options)
    _, h, l, c, v = read_bars(bars)
    expected = []
    for first in (0, 72):
        value = volume = 0.0
        for i in range(first, first + 72):
            value += (h[i] + l[i] + c[i]) / 3 * v[i]
            volume += v[i]
            expected.append(value / volume)
    return list(compare("session_average", "AVERAGE", lines["AVERAGE"], expected, 0))


def compare(script, name, line, expected, first):
    """One text for the first bar that differs. The library's sliding means drift in the last digits."""
    if len(line) != len(expected):
        yield f"{script}: {name} has {len(line)} bars instead of {len(expected)}"
        return
    scale = max(abs(x) for x in expected[first:])
    for i in range(first, len(expected)):
        if line[i] is None or abs(line[i] - expected[i]) > 1e-9 * scale:
            yield f"{script}: {name} in row {i} is {line[i]} instead of {expected[i]}"
            return


INDICATORS = (macd, kdj, rsi, boll, atr, obv, cci, dmi, wr, aroon, trix, roc, psy, vr, bias, keltner,
              donchian, trailing_stop)


def main():
    quor, samples = sys.argv[1], pathlib.Path(sys.argv[2])
    bars = samples / "index-daily.csv"
    series = read_bars(bars)
    faults = session_average(quor, samples)
    for indicator in INDICATORS:
        name = indicator.__name__
        lines = run(quor, samples / f"cookbook/{name}.quor", bars)
        first, expected = indicator(*series)
        for line, values in expected.items():
            faults += compare(name, line, lines[line], values, first)
    parabolic = run(quor, samples / "cookbook/parabolic.quor", bars)
    faults += parabolic_faults(parabolic, series[1], series[2])
    compared = {indicator.__name__ for indicator in INDICATORS} | {"session_average", "parabolic"}
    there = {path.stem for path in (samples / "cookbook").glob("*.quor")}
    faults += [f"{name}: compared with nothing" for name in sorted(there - compared)]
    print("\n".join(faults))
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
