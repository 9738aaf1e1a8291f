"""What a scan of a market costs, as ratios in one run: beside the calculation alone, beside pandas, beside
the reading of the files alone, and on two threads beside one.

    scan_bench.py QUOR READ_BENCH [SECURITIES] [BARS]

Figures of one thread are processor time, those of two are time by the clock.
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
RSV:=(C-LLV(L,9))/(HHV(H,9)-LLV(L,9))*100;
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


def by_pandas(frame: pd.DataFrame) -> pd.DataFrame:
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
    return pd.DataFrame(lines)


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


def row(name: str, seconds: float, ratio: float | None = None, target: str = "") -> None:
    shown = "" if ratio is None else f"{ratio:8.2f}"
    print(f"{name:<44}{seconds * 1e3:9.0f} ms {shown:>8}  {target}")


def main(program: str, reader: str, securities: int = 500, bars: int = 2500) -> None:
    frames = made_up(securities, bars)
    script = quor.compile(SCRIPT)

    def scan(jobs: int, clock) -> float:
        return quickest(lambda: quor.scan(script, frames, jobs=jobs, progress=False), clock)

    print(f"{securities} securities x {bars} bars, {len(script.lines)} lines")
    alone = calculation_alone(script, frames)
    row("calculation alone, one thread", alone)
    one = scan(1, time.process_time)
    row("quor.scan of frames, one thread", one, one / alone, "of the calculation")
    clock_one, clock_two = scan(1, time.perf_counter), scan(2, time.perf_counter)
    row("quor.scan of frames, two threads, by the clock", clock_two, clock_one / clock_two,
        "times quicker than one")
    row("", clock_two, clock_two / alone, "of the calculation on one")
    whole = quickest(lambda: [by_pandas(frame) for frame in frames.values()], rounds=3)
    row("pandas, one thread", whole, whole / one, "of quor.scan on one thread")

    with tempfile.TemporaryDirectory() as folder:
        for name, frame in frames.items():
            frame.to_csv(Path(folder) / f"{name}.csv")
        text = Path(folder) / "ten.quor"
        text.write_text(SCRIPT)

        def run(*command: str) -> None:
            subprocess.run(command, check=True, stdout=subprocess.DEVNULL)

        read = quickest(lambda: run(reader, folder), children)
        row("reading and parsing the files alone", read)
        command = (program, "scan", str(text), folder)
        one = quickest(lambda: run(*command, "--jobs", "1"), children)
        row("quor scan of files, one thread", one, one / read, "of the reading")
        clock_one = quickest(lambda: run(*command, "--jobs", "1"), time.perf_counter)
        clock_two = quickest(lambda: run(*command, "--jobs", "2"), time.perf_counter)
        row("quor scan of files, two threads, by the clock", clock_two, clock_one / clock_two,
            "times quicker than one")
        read_clock = quickest(lambda: run(reader, folder), time.perf_counter)
        row("", clock_two, clock_two / read_clock, "of the reading on one")


if __name__ == "__main__":
    main(*sys.argv[1:3], *map(int, sys.argv[3:5]))
