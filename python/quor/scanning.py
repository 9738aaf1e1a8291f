"""A script over many securities."""

from __future__ import annotations

import functools
import glob
import os
import warnings
from concurrent.futures import FIRST_COMPLETED, Executor, Future, ThreadPoolExecutor, wait
from itertools import islice
from pathlib import Path
from typing import Any, Callable, Hashable, Iterable, Iterator, Mapping, NamedTuple, Union

import numpy as np
import pandas as pd
from tqdm.auto import tqdm

from .errors import ScanWarning, ScriptError
from .frames import Bars
from .script import Script, Spec, as_script, check_times, error_of, times_of_keys

#: Securities that one task of an executor has: enough for the way there not to count.
CHUNK = 16
#: Tasks that wait or run at a time; frames that are made one by one aren't all held at once.
WINDOW = 64
#: The same for each thread of this process, which is quick to fetch the next.
WINDOW_OF_THREAD = 3
#: Bars that the engine takes in one call, unless one security has more.
BARS = 1 << 16

Source = Union[str, os.PathLike, Mapping[Hashable, Any], Iterable]


class Task(NamedTuple):
    """What all chunks of a scan have in common."""

    spec: Spec
    columns: tuple[tuple[str, Hashable | None], ...]
    last: int


#: For where no script is at hand: another process has many chunks of a task.
_script_of = functools.lru_cache(maxsize=4)(Script)


def processors() -> int:
    """How many processors this process may use."""
    count = getattr(os, "sched_getaffinity", None)
    return len(count(0)) if count else os.cpu_count() or 1


def read_csv(path: str | os.PathLike) -> pd.DataFrame:
    """A file of bars: a column ``date``, perhaps with the time of day in a column ``time``."""
    frame = pd.read_csv(path)
    names = {str(name).strip().lower(): name for name in frame.columns}
    if "date" in names and "time" in names:
        moment = frame[names["date"]].astype(str) + " " + frame[names["time"]].astype(str)
        frame[names["date"]] = pd.to_datetime(moment)
        frame = frame.drop(columns=names["time"])
    return frame


def scan_chunk(task: Task, chunk: list[tuple[Hashable, Any]]) -> list[tuple[Hashable, Any, Any]]:
    """For each security its name, keys and values; or its name, None and what went wrong."""
    return scan_by(_script_of(task.spec), task, chunk)


def scan_by(
    script: Script, task: Task, chunk: list[tuple[Hashable, Any]]
) -> list[tuple[Hashable, Any, Any]]:
    """As :func:`scan_chunk`, with the script of the task."""
    outcomes: list[tuple[Hashable, Any, Any]] = []
    layout = script.layout(dict(task.columns))
    ready: list[tuple[Hashable, Bars]] = []
    count = 0
    for name, source in chunk:
        try:
            bars = layout.bars(_frame_of(source))
        except Exception as error:  # one security's fault is not the others'
            outcomes.append((name, None, _reason(error)))
            continue
        ready.append((name, bars))
        count += len(bars.times)
        if count >= BARS:
            outcomes += _calculate(script, ready, task.last)
            ready, count = [], 0
    outcomes += _calculate(script, ready, task.last)
    return outcomes


def _frame_of(source: Any) -> Any:
    if callable(source):
        return source()
    return read_csv(source) if isinstance(source, (str, os.PathLike)) else source


def _calculate(
    script: Script, ready: list[tuple[Hashable, Bars]], last: int
) -> Iterator[tuple[Hashable, Any, Any]]:
    """One call of the engine, so that the threads seldom wait for the interpreter."""
    securities = [(str(name).encode(errors="replace"), bars.times, bars.ticks, bars.fields)
                  for name, bars in ready]
    with script.engine() as engine:
        counts, keys, values = engine.scan(securities, last)
    end = 0
    for (name, bars), (found, rows, failure) in zip(ready, counts):
        start, end = end, end + found
        try:
            if failure is not None:
                raise ValueError(failure) if isinstance(failure, str) else error_of(failure)
            if rows != len(bars.times):
                check_times(bars, rows)
            yield name, keys[start:end], values[start:end]
        except (ValueError, ScriptError) as error:
            yield name, None, _reason(error)


def _reason(error: BaseException) -> str:
    text = str(error)
    plain = isinstance(error, (ValueError, OSError)) or type(error).__module__.startswith("quor")
    return text if plain and text else f"{type(error).__name__}: {text}"


def scan(
    script: Script | str,
    frames: Source,
    *,
    last: int = 1,
    where: str | None = None,
    executor: Executor | None = None,
    progress: bool = True,
    columns: Mapping[str, Hashable | None] | None = None,
    jobs: int | None = None,
) -> pd.DataFrame:
    """Runs a script over many securities and gives the latest values.

    Parameters
    ----------
    script : Script or str
    frames : mapping, iterable of pairs, folder, file or glob
        A security's name and its bars: a frame as :meth:`Script.run` takes it, the path of a CSV
        file, or a function without arguments that gives a frame. Paths and functions are worked off
        where the calculation runs. An iterable is taken piece by piece.
    last : int
        How many bars of each security to look at.
    where : str, optional
        An expression over the script's lines, such as ``"BUY"`` or ``"K<20 AND D<20"``; only bars
        at which it holds (neither 0 nor null) are kept.
    executor : concurrent.futures.Executor, optional
        Where to calculate. Without one, on ``jobs`` threads of this process.
    progress : bool
        A progress bar on a terminal.
    columns : mapping, optional
        As for :meth:`Script.run`.
    jobs : int, optional
        Threads, by default one per processor.

    Returns
    -------
    DataFrame
        A row per bar, by ``security`` and ``time`` (the bar's own clock, without a zone), float64,
        a column for each line. ``attrs["failures"]`` maps securities that failed to the reason; a
        ScanWarning says how many.

    Raises
    ------
    ScriptError
        For a script or a condition that doesn't compile.
    ValueError
        For ``last`` below 1, and for a place without files.
    """
    if last < 1:
        raise ValueError("last must be 1 or more")
    script = as_script(script)
    spec = script.spec._replace(condition=where or "")
    lines = script.lines
    if spec != script.spec:
        script = Script(spec)
    script.layout(columns)
    task = Task(spec, tuple((columns or {}).items()), last)
    items, count = _items(frames)
    bar = tqdm(total=count, unit=" securities", disable=None if progress else True)
    found: dict[Hashable, tuple[np.ndarray, np.ndarray]] = {}
    failures: dict[Hashable, str] = {}
    with bar:
        for name, keys, values in _work(script, task, items, executor, jobs):
            bar.update()
            if keys is None:
                failures[name] = values
            else:
                found[name] = (keys, values)
    return _result(lines, found, failures)


def _items(frames: Source) -> tuple[Iterator[tuple[Hashable, Any]], int | None]:
    if isinstance(frames, (str, os.PathLike)):
        paths = _files(os.fspath(frames))
        return ((Path(path).stem, path) for path in paths), len(paths)
    if isinstance(frames, Mapping):
        return iter(frames.items()), len(frames)
    count = len(frames) if hasattr(frames, "__len__") else None
    return iter(frames), count


def _files(place: str) -> list[str]:
    if os.path.isdir(place):
        names = sorted(os.listdir(place))
        paths = [os.path.join(place, name) for name in names if name.lower().endswith(".csv")]
    elif os.path.exists(place):
        paths = [place]
    else:
        paths = sorted(glob.glob(place))
    if not paths:
        raise ValueError(f"{place}: no such CSV files")
    return paths


def _work(
    script: Script, task: Task, items: Iterator, executor: Executor | None, jobs: int | None
) -> Iterator[tuple[Hashable, Any, Any]]:
    if executor is not None:
        yield from _submit(functools.partial(executor.submit, scan_chunk, task), items, WINDOW)
        return
    work = functools.partial(scan_by, script, task)
    threads = jobs or processors()
    if threads == 1:
        for chunk in _chunks(items):
            yield from work(chunk)
        return
    pool = ThreadPoolExecutor(threads, "quor-scan")
    try:
        window = WINDOW_OF_THREAD * threads
        yield from _submit(functools.partial(pool.submit, work), items, window)
    finally:
        pool.shutdown(wait=True, cancel_futures=True)


def _chunks(items: Iterator) -> Iterator[list[tuple[Hashable, Any]]]:
    return iter(lambda: list(islice(items, CHUNK)), [])


def _submit(
    submit: Callable[[list], Future], items: Iterator, window: int
) -> Iterator[tuple[Hashable, Any, Any]]:
    chunks = _chunks(items)
    waiting: dict[Future, list[Hashable]] = {}
    try:
        while True:
            for chunk in islice(chunks, window - len(waiting)):
                waiting[submit(chunk)] = [name for name, _ in chunk]
            if not waiting:
                return
            for future in wait(waiting, return_when=FIRST_COMPLETED).done:
                yield from _outcomes(future, waiting.pop(future))
    finally:
        for future in waiting:
            future.cancel()


def _outcomes(future: Future, names: list[Hashable]) -> list[tuple[Hashable, Any, Any]]:
    error = future.exception()
    if error is None:
        return future.result()
    return [(name, None, _reason(error)) for name in names]


def _result(lines: list[str], found: dict, failures: dict[Hashable, str]) -> pd.DataFrame:
    names = sorted(found, key=str)
    keys = [found[name][0] for name in names]
    times = times_of_keys(np.concatenate(keys) if keys else np.array([], np.int64))
    securities = [name for name in names for _ in found[name][0]]
    values = np.concatenate([found[name][1] for name in names]) if names else None
    index = pd.MultiIndex.from_arrays(
        [pd.Index(securities, dtype=object), times], names=["security", "time"])
    frame = pd.DataFrame(values, index=index, columns=lines, dtype=np.float64)
    frame.attrs["failures"] = {name: failures[name] for name in sorted(failures, key=str)}
    if failures:
        name, reason = next(iter(frame.attrs["failures"].items()))
        warnings.warn(
            f"{len(failures)} of {len(failures) + len(found)} securities failed, one is {name}: "
            f"{reason}", ScanWarning, stacklevel=3)
    return frame
