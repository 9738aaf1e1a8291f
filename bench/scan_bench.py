"""What research costs, pandas beside it: scans of a market, all values of a panel, files, sweeps, a long
history, bars as they come.

    scan_bench.py QUOR READ_BENCH [SECURITIES] [BARS]

Figures are processor time of one thread, unless they are said to be by the clock.
"""

import resource
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import numpy as np
import pandas as pd

import quor

SCRIPT = """MA5:MA(C,5);
MA20:MA(C,20);
DIF:EMA(C,12)-EMA(C,26);
DEA:EMA(DIF,9);
MACD:(DIF-DEA)*2;
RSV:(C-LLV(L,9))/(HHV(H,9)-LLV(L,9))*100;
K:SMA(RSV,3,1);
D:SMA(K,3,1);
RATIO:V/MA(V,20);
BUY:CROSS(MA5,MA20);"""


def made_up(securities: int, bars: int) -> dict[str, pd.DataFrame]:
    random = np.random.default_rng(1)
    index = pd.bdate_range("2010-01-01", periods=bars, name="date")
    frames = {}
    for number in range(securities):
        close = np.round(100 * np.exp(np.cumsum(random.normal(0, 0.01, bars))), 2)
        frames[f"S{number:04}"] = pd.DataFrame(
            {"open": np.round(close + random.normal(0, 0.3, bars), 2), "high": close + 1,
             "low": close - 1, "close": close, "volume": random.integers(1000, 10**6, bars)}, index)
    return frames


def lines_by_pandas(frame) -> dict:
    """Of one security, or of a market by a wide frame for each field."""
    close, low, high = frame["close"], frame["low"], frame["high"]
    ma5, ma20 = close.rolling(5).mean(), close.rolling(20).mean()
    dif = close.ewm(span=12, adjust=False).mean() - close.ewm(span=26, adjust=False).mean()
    dea = dif.ewm(span=9, adjust=False).mean()
    lowest = low.rolling(9).min()
    rsv = (close - lowest) / (high.rolling(9).max() - lowest) * 100
    k = rsv.ewm(alpha=1 / 3, adjust=False).mean()
    d = k.ewm(alpha=1 / 3, adjust=False).mean()
    ratio = frame["volume"] / frame["volume"].rolling(20).mean()
    buy = (ma5 > ma20) & (ma5.shift() <= ma20.shift())
    lines = {"MA5": ma5, "MA20": ma20, "DIF": dif, "DEA": dea, "MACD": (dif - dea) * 2, "RSV": rsv,
             "K": k, "D": d, "RATIO": ratio, "BUY": buy}
    return lines


def by_pandas(frame: pd.DataFrame) -> pd.DataFrame:
    return pd.DataFrame(lines_by_pandas(frame))


def quickest(work, clock=time.process_time, rounds: int = 5) -> float:
    times = []
    for _ in range(rounds):
        start = clock()
        work()
        times.append(clock() - start)
    return min(times)


def children() -> float:
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def calculation_alone(script: quor.Script, frames: dict[str, pd.DataFrame]) -> float:
    """All lines over all bars, which are in the engine already; the quickest of three for each."""
    engine = script.spec.engine()
    layout = script.layout(None)
    total = 0.0
    for frame in frames.values():
        bars = layout.bars(frame)
        engine.run(bars.times, bars.ticks, bars.fields, False)
        first = [(column, values[:1]) for column, values in bars.fields]
        total += quickest(lambda: engine.update(bars.times[:1], bars.ticks, first, False), rounds=3)
    return total


HISTORY = 5_000_000  #: bars
SWEPT = "F:MA(C,N);S:EMA(C,M);BUY:CROSS(F,S);"
FAST, SLOW = range(2, 42), range(5, 30)


def swept_by_pandas(close: pd.Series) -> pd.DataFrame:
    """As one writes it who calculates no average twice."""
    fast = {n: close.rolling(n).mean() for n in FAST}
    slow = {m: close.ewm(span=m, adjust=False).mean() for m in SLOW}
    columns = {}
    for n, f in fast.items():
        for m, s in slow.items():
            columns[n, m, "F"], columns[n, m, "S"] = f, s
            columns[n, m, "BUY"] = ((f > s) & (f.shift() <= s.shift())).astype(float)
    return pd.DataFrame(columns)


def row(name: str, seconds: float, other: float | None = None, note: str = "") -> None:
    shown = "" if other is None else f"{other * 1e3:9.0f} ms"
    print(f"{name:<46}{seconds * 1e3:9.1f} ms {shown:>12}  {note}", flush=True)


def scans(script: quor.Script, frames: dict[str, pd.DataFrame]) -> None:
    wide = {field: pd.DataFrame({name: frame[field] for name, frame in frames.items()})
            for field in ("high", "low", "close", "volume")}
    by_hand = quickest(lambda: lines_by_pandas(wide), rounds=3)

    def scan(clock=time.process_time, jobs: int = 1, **more) -> float:
        return quickest(lambda: quor.scan(script, frames, jobs=jobs, progress=False, **more), clock)

    alone = calculation_alone(script, frames)
    row("calculation alone", alone)
    one = scan()
    row("scan, last=1", one, by_hand, f"{one / alone:.2f} of the calculation")
    row("scan, every value of the panel", scan(last=None), by_hand)
    row("the same in wide frames and out",
        quickest(lambda: script.run(wide, out="wide", jobs=1), rounds=3), by_hand)
    clocks = [scan(time.perf_counter, jobs) for jobs in (1, 2)]
    row("scan, last=1, two threads, by the clock", clocks[1],
        note=f"{clocks[0] / clocks[1]:.2f} times quicker than one")
    long = pd.concat(frames, names=["security", "date"])
    row("run of the same as a long frame", quickest(lambda: script.run(long, jobs=1), rounds=3))


def files(script: quor.Script, frames: dict[str, pd.DataFrame], program: str, reader: str) -> None:
    with tempfile.TemporaryDirectory() as folder:
        for name, frame in frames.items():
            frame.to_csv(Path(folder) / f"{name}.csv")
        text = Path(folder) / "ten.quor"
        text.write_text(SCRIPT)

        def run(*command: str) -> None:
            subprocess.run([*command], check=True, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)

        def read_all() -> list[pd.DataFrame]:
            return [by_pandas(pd.read_csv(Path(folder) / f"{name}.csv", index_col="date",
                                          parse_dates=["date"])) for name in frames]

        row(f"folder of {len(frames)} CSV files", quickest(
            lambda: quor.scan(script, folder, jobs=1, progress=False), rounds=3),
            quickest(read_all, rounds=1))
        command = (program, "scan", str(text), folder, "--jobs")
        row("the same on the command line", quickest(lambda: run(*command, "1"), children))
        clocks = [quickest(lambda: run(*command, jobs), time.perf_counter) for jobs in ("1", "2")]
        row("on two threads, by the clock", clocks[1],
            note=f"{clocks[0] / clocks[1]:.2f} times quicker than one")
        row("reading and parsing the files alone", quickest(lambda: run(reader, folder), children))


def sweeps() -> None:
    bars = made_up(1, 10_000)["S0000"]
    row(f"sweep, {len(FAST) * len(SLOW)} combinations x 10,000 bars", quickest(
        lambda: quor.sweep(SWEPT, bars, N=FAST, M=SLOW, jobs=1, progress=False), rounds=3),
        quickest(lambda: swept_by_pandas(bars["close"]), rounds=3))


def long_history() -> None:
    """Each in a process of its own, whose most memory tells what it has cost."""
    told = {who: subprocess.run([sys.executable, __file__, "history", who], check=True,
                                capture_output=True, text=True).stdout.split()
            for who in ("quor", "pandas")}
    (first, again, ours), (_, other, theirs) = (map(float, told[who]) for who in told)
    row(f"one security, {HISTORY:,} bars", first, other,
        f"again {again:.2f} s; {ours:.0f} B a bar, pandas {theirs:.0f}")


def history(who: str) -> None:
    """Seconds of two runs, and how far the first puts up the most memory, in bytes for a bar."""
    frame = made_up_minutes(HISTORY)
    script = quor.compile(SCRIPT)
    work = {"quor": script.run, "pandas": by_pandas}[who]
    before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    times = []
    for _ in range(2):
        start = time.process_time()
        kept = work(frame)
        times.append(time.process_time() - start)
        if len(times) == 1:
            after = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
        del kept
    print(*times, (after - before) * 1024 / HISTORY)


def made_up_minutes(bars: int) -> pd.DataFrame:
    random = np.random.default_rng(1)
    close = 100 * np.exp(np.cumsum(random.normal(0, 1e-4, bars)))
    index = pd.date_range("2000-01-01", periods=bars, freq="min", name="date")
    return pd.DataFrame({"open": close, "high": close + 1, "low": close - 1, "close": close,
                         "volume": random.integers(1000, 10**6, bars)}, index)


def live_bar(script: quor.Script) -> None:
    bars = made_up(1, 10_000)["S0000"]
    live = script.live(bars)
    times = [time.to_pydatetime() for time in pd.date_range("2060-01-01", periods=2000, freq="D")]
    live.update("2059-12-31", close=1.0, high=2.0, low=0.5, volume=100)

    def follow(some: list) -> float:
        start = time.process_time()
        for moment in some:
            live.update(moment, close=1.0, high=2.0, low=0.5, volume=100)
        return (time.process_time() - start) / len(some)

    best = min(follow(times[first:first + 200]) for first in range(0, len(times), 200))
    # Without a state all bars are calculated again.
    anew = quickest(lambda: by_pandas(bars))
    print(f"{'live bar behind 10,000':<46}{best * 1e6:9.1f} us {anew * 1e6:9.0f} us")


def market(script: quor.Script, securities: int = 10_000, bars: int = 2500) -> None:
    some = list(made_up(100, bars).values())
    frames = {f"S{number:05}": some[number % 100] for number in range(securities)}
    used = quickest(lambda: quor.scan(script, frames, jobs=1, progress=False), rounds=2)
    row(f"scan of {securities:,} x {bars:,} in memory", used,
        note=f"{used / securities * 1e6:.0f} us for each security")


def main(program: str, reader: str, securities: int = 500, bars: int = 2500) -> None:
    script = quor.compile(SCRIPT)
    print(f"{securities} securities x {bars} bars, {len(script.lines)} lines; pandas in the second "
          "column")
    long_history()
    frames = made_up(securities, bars)
    scans(script, frames)
    files(script, frames, program, reader)
    sweeps()
    live_bar(script)
    market(script)


if __name__ == "__main__":
    if sys.argv[1] == "history":
        history(sys.argv[2])
    else:
        main(*sys.argv[1:3], *map(int, sys.argv[3:5]))
