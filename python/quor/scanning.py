"""A script over many securities."""

from __future__ import annotations

import functools
import glob
import os
import warnings
from concurrent.futures import Executor
from pathlib import Path
from typing import Any, Hashable, Iterable, Iterator, Mapping, NamedTuple, Union

import numpy as np
import pandas as pd
from tqdm.auto import tqdm

from .errors import BarsWarning, Finding, ScanWarning, ScriptError
from .frames import Bars, Columns, Layout
from .pools import Chunk, chunks_of, on_executor, on_threads
from .script import Script, Spec, as_script, error_of, times_of_keys

#: Bars that the engine takes in one call, unless one security has more.
BARS = 1 << 16

Source = Union[str, os.PathLike, Mapping[Hashable, Any], Iterable]


class Task(NamedTuple):
    """What all chunks of a scan have in common."""

    spec: Spec
    columns: tuple[tuple[str, Hashable | None], ...]
    duplicates: str
    last: int


class Outcome(NamedTuple):
    """What a security came to."""

    name: Hashable
    keys: np.ndarray | None  #: of the bars that count; None for a failure
    values: np.ndarray | None  #: of the lines there, a row for each bar
    failure: str
    notes: list[Finding]


def failed(name: Hashable, reason: str) -> Outcome:
    """The outcome of a failure."""
    return Outcome(name, None, None, reason, [])


#: For where no script is at hand: another process has many chunks of a task.
_script_of = functools.lru_cache(maxsize=4)(Script)


def processors() -> int:
    """How many processors this process may use."""
    count = getattr(os, "sched_getaffinity", None)
    return len(count(0)) if count else os.cpu_count() or 1


def scan_chunk(task: Task, chunk: Chunk) -> list[Outcome]:
    """What each security of a chunk comes to."""
    return scan_by(_script_of(task.spec), task, chunk)


def scan_by(script: Script, task: Task, chunk: Chunk) -> list[Outcome]:
    """As :func:`scan_chunk`, with the script of the task."""
    outcomes: list[Outcome] = []
    layout = script.layout(dict(task.columns), task.duplicates)
    ready: list[tuple[Hashable, Bars]] = []
    count = 0
    for name, source in chunk:
        try:
            bars = _bars_of(source, layout)
        except Exception as error:  # one security's fault is not the others'
            outcomes.append(failed(name, reason_of(error)))
            continue
        ready.append((name, bars))
        count += len(bars.times)
        if count >= BARS:
            outcomes += _calculate(script, layout, ready, task.last)
            ready, count = [], 0
    outcomes += _calculate(script, layout, ready, task.last)
    return outcomes


def _bars_of(source: Any, layout: Layout) -> Bars:
    if callable(source):
        source = source()
    is_path = isinstance(source, (str, os.PathLike))
    return layout.bars_of_file(source) if is_path else layout.bars(source)


def _calculate(
    script: Script, layout: Layout, ready: list[tuple[Hashable, Bars]], last: int
) -> Iterator[Outcome]:
    """One call of the engine, so that the threads seldom wait for the interpreter."""
    securities = [(str(name).encode(errors="replace"), bars.times, bars.ticks, bars.fields)
                  for name, bars in ready]
    with script.engine() as engine:
        counts, keys, values = engine.scan(securities, last)
    end = 0
    for (name, bars), (found, rows, failure, infinity) in zip(ready, counts):
        start, end = end, end + found
        try:
            if failure is not None:
                raise ValueError(failure) if isinstance(failure, str) else error_of(failure)
            layout.check_times(bars, rows)
            notes = layout.notes(bars, infinity)
            yield Outcome(name, keys[start:end], values[start:end], "", notes)
        except (ValueError, ScriptError) as error:
            yield failed(name, reason_of(error))


def reason_of(error: BaseException) -> str:
    """What is said of a failure."""
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
    columns: Columns = None,
    duplicates: str = "error",
    jobs: int | None = None,
) -> pd.DataFrame:
    """Runs a script over many securities and gives the latest values.

    Parameters
    ----------
    script : Script or str
    frames : mapping, iterable of pairs, folder, file or glob
        A security's name and its bars: a frame as :meth:`Script.run` takes it, the path of a CSV
        file as :func:`read_csv` reads it, or a function without arguments that gives either. Paths
        and functions are worked off where the calculation runs. An iterable is taken piece by
        piece; ``frame.groupby(...)`` is one.
    last : int
        How many bars of each security to look at.
    where : str, optional
        An expression over the script's lines, such as ``"BUY"`` or ``"K<20 AND D<20"``; only bars
        at which it holds (neither 0 nor null) are kept.
    executor : concurrent.futures.Executor, optional
        Where to calculate. Without one, on ``jobs`` threads of this process. What a
        ProcessPoolExecutor leaves undone when one of its processes dies is done once more, in
        processes made as its own are.
    progress : bool
        A progress bar on a terminal.
    columns, duplicates
        As for :meth:`Script.run`.
    jobs : int, optional
        Threads, by default one per processor.

    Returns
    -------
    DataFrame
        A row per bar, by ``security`` and ``time`` (the bar's own clock, without a zone), float64,
        a column for each line. ``attrs["failures"]`` maps securities that failed to the reason, and
        ``attrs["findings"]`` others to what is odd about their bars; a ScanWarning and a
        BarsWarning say how many.

    Raises
    ------
    ScriptError
        For a script or a condition that doesn't compile.
    ValueError
        For ``last`` below 1, for an empty condition, for a place without files and for a security
        that comes twice.
    """
    if not isinstance(last, (int, np.integer)) or last < 1:
        raise ValueError(f"last must be a whole number from 1 on, and not {last!r}")
    if where is not None and (not isinstance(where, str) or not where.strip()):
        raise ValueError(f"where must be an expression, and not {where!r}; without it all bars are "
                         "kept")
    script = as_script(script)
    spec = script.spec._replace(condition=where or "")
    lines = script.lines
    if spec != script.spec:
        script = Script(spec)
    script.layout(columns, duplicates)
    task = Task(spec, tuple((columns or {}).items()), duplicates, last)
    items, count = _items(frames)
    outcomes: list[Outcome] = []
    with tqdm(total=count, unit=" securities", disable=None if progress else True) as bar:
        for outcome in _work(script, task, chunks_of(_once_each(items)), executor, jobs):
            bar.update()
            outcomes.append(outcome)
    outcomes.sort(key=lambda outcome: str(outcome.name))
    _warn(outcomes)
    return _result(lines, outcomes)


def _items(frames: Source) -> tuple[Iterator[tuple[Hashable, Any]], int | None]:
    if isinstance(frames, (str, os.PathLike)):
        paths = _files(os.fspath(frames))
        return ((Path(path).stem, path) for path in paths), len(paths)
    if isinstance(frames, pd.DataFrame):
        raise ValueError("a scan takes the frames of several securities: a mapping of names to "
                         "frames, or frame.groupby(...)")
    if isinstance(frames, Mapping):
        return iter(frames.items()), len(frames)
    count = len(frames) if hasattr(frames, "__len__") else None
    return iter(frames), count


def _once_each(items: Iterable) -> Iterator[tuple[Hashable, Any]]:
    """Securities with their bars. Raises ValueError for one that comes again."""
    seen: dict[Hashable, Any] = {}
    for item in items:
        if not isinstance(item, (tuple, list)) or len(item) != 2:
            raise ValueError(f"a scan takes pairs of a name and bars, and {item!r:.100} is none")
        name, source = item
        if name in seen:
            both = f": {seen[name]} and {source}" if isinstance(source, str) else ""
            raise ValueError(f"the security {name!r} comes twice{both}; give each its own name")
        seen[name] = source if isinstance(source, str) else None
        yield name, source


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
    script: Script, task: Task, chunks: Iterator[Chunk], executor: Executor | None,
    jobs: int | None,
) -> Iterator[Outcome]:
    if executor is None:
        work = functools.partial(scan_by, script, task)
        results = on_threads(work, chunks, jobs or processors())
    else:
        results = on_executor(executor, functools.partial(scan_chunk, task), chunks)
    for chunk, result in results:
        if isinstance(result, BaseException):
            yield from (failed(name, reason_of(result)) for name, _ in chunk)
        else:
            yield from result


def _warn(outcomes: list[Outcome]) -> None:
    """Of what failed and of what is odd, with an example of each."""
    lost = [outcome for outcome in outcomes if outcome.keys is None]
    if lost:
        warnings.warn(f"{len(lost)} of {len(outcomes)} securities failed, one is {lost[0].name}: "
                      f"{lost[0].failure}", ScanWarning, stacklevel=3)
    odd = [outcome for outcome in outcomes if outcome.notes]
    if odd:
        warnings.warn(f"{len(odd)} of {len(outcomes)} securities have odd bars, one is "
                      f"{odd[0].name}: {odd[0].notes[0].sentence}", BarsWarning, stacklevel=3)


def _result(lines: list[str], outcomes: list[Outcome]) -> pd.DataFrame:
    found = [outcome for outcome in outcomes if outcome.keys is not None]
    keys = [outcome.keys for outcome in found]
    times = times_of_keys(np.concatenate(keys) if keys else np.array([], np.int64))
    securities = [outcome.name for outcome in found for _ in outcome.keys]
    values = np.concatenate([outcome.values for outcome in found]) if found else None
    index = pd.MultiIndex.from_arrays(
        [pd.Index(securities, dtype=object), times], names=["security", "time"])
    frame = pd.DataFrame(values, index=index, columns=lines, dtype=np.float64)
    frame.attrs["failures"] = {
        outcome.name: outcome.failure for outcome in outcomes if outcome.keys is None}
    frame.attrs["findings"] = {outcome.name: outcome.notes for outcome in found if outcome.notes}
    return frame
