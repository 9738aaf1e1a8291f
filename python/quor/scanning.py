"""A script over many securities."""

from __future__ import annotations

import functools
import sys
import warnings
from concurrent.futures import Executor
from typing import Any, Hashable, Iterable, Iterator, Mapping, NamedTuple

import numpy as np

from .arrays import Array
from .context import Calendar, Constants, Period
from .errors import BarsWarning, Finding, ScanWarning, ScriptError, error_of
from .frames import Bars, Columns, Layout
from .optional import is_frame
from .outputs import Out, labelled, out_of
from .pools import Chunk, check_jobs, chunks_of, on_executor, on_threads, processors
from .progress import progress_bar
from .references import Frames, Series
from .script import Script, Spec, as_script
from .sources import Source, bars_of, items_of, once_each, size_of

#: Bars that the engine takes in one call, unless one security has more.
BARS = 1 << 16

#: Seconds since 1970 that an index of pandas has room for.
FIRST_SECOND, LAST_SECOND = -9214560000, 9214646399


class Task(NamedTuple):
    """What all chunks of a scan have in common."""

    spec: Spec
    series: tuple[Series, ...]
    columns: tuple[tuple[str, Hashable | None], ...]
    duplicates: str
    last: int
    lines: tuple[int, ...]


class Room(NamedTuple):
    """Where the results of securities go whose sizes are known."""

    starts: dict[Hashable, int]
    seconds: Array
    cells: Array  #: a row for each line


class Outcome(NamedTuple):
    """What a security came to."""

    name: Hashable
    seconds: Array | None  #: of the bars that count; None for a failure
    cells: Array | None  #: of the lines there, a row for each line
    failure: str
    notes: list[Finding]


def failed(name: Hashable, reason: str) -> Outcome:
    """The outcome of a failure."""
    return Outcome(name, None, None, reason, [])


@functools.lru_cache(maxsize=4)
def _script_of(spec: Spec) -> Script:
    """For where no script is at hand: another process has many chunks of a task."""
    return Script(spec)


def scan_chunk(task: Task, chunk: Chunk) -> list[Outcome]:
    """What each security of a chunk comes to."""
    script = Script(task.spec, task.series) if task.series else _script_of(task.spec)
    return scan_by(script, task, None, chunk)


def scan_by(script: Script, task: Task, room: Room | None, chunk: Chunk) -> list[Outcome]:
    """As :func:`scan_chunk`, with the script of the task."""
    outcomes: list[Outcome] = []
    layout = script.layout(dict(task.columns), task.duplicates)
    ready: list[tuple[Hashable, Bars]] = []
    count = 0
    for name, source in chunk:
        try:
            bars = bars_of(source, layout)
        except Exception as error:  # one security's fault is not the others'
            outcomes.append(failed(name, reason_of(error)))
            continue
        ready.append((name, bars))
        count += len(bars.times)
        if count >= BARS:
            outcomes += _calculate(script, layout, ready, task, room)
            ready, count = [], 0
    outcomes += _calculate(script, layout, ready, task, room)
    return outcomes


def _calculate(script: Script, layout: Layout, ready: list[tuple[Hashable, Bars]], task: Task,
               room: Room | None) -> Iterator[Outcome]:
    """One call of the engine, so that the threads seldom wait for the interpreter."""
    securities = [(str(name).encode(errors="replace"), bars.times, bars.ticks, bars.fields)
                  for name, bars in ready]
    with script.engine(keep=True) as engine:
        if room is None:
            counts, seconds, cells = engine.scan(securities, task.last, task.lines)
            ends = np.cumsum([count for count, *_ in counts], dtype=np.int64)
            starts = [end - count for end, (count, *_) in zip(ends.tolist(), counts)]
        else:
            seconds, cells = room.seconds, room.cells
            starts = [room.starts[name] for name, _ in ready]
            counts = engine.scan_into(securities, task.last, task.lines, starts, seconds, cells)
    for (name, bars), (count, rows, failure, infinity), start in zip(ready, counts, starts):
        try:
            if failure is not None:
                raise ValueError(failure) if isinstance(failure, str) else error_of(failure)
            layout.check_times(bars, rows)
            found = seconds[start:start + count]
            if count and (found[0] < FIRST_SECOND or found[-1] > LAST_SECOND):
                raise ValueError("an index of pandas has no times before 1678 and behind 2261")
            yield Outcome(name, found, cells[:, start:start + count], "",
                          layout.notes(bars, infinity))
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
    by: Hashable = None,
    last: int | None = 1,
    where: str | None = None,
    lines: str | Iterable[str] | None = None,
    out: Out = None,
    executor: Executor | None = None,
    progress: bool = True,
    columns: Columns = None,
    duplicates: str = "error",
    jobs: int | None = None,
    period: Period | None = None,
    market: str | None = None,
    calendar: Calendar = None,
    constants: Constants = None,
    references: Frames = None,
) -> Any:
    """Runs a script over many securities and gives the latest values, or all.

    Parameters
    ----------
    script : Script or str
    frames : mapping, panel, iterable of pairs, folder, file, glob or cursor
        A security's name and its bars: a frame as :meth:`Script.run` takes it, the path of a CSV
        file as :func:`read_csv` reads it, of a Parquet or Feather file where pandas reads them, or
        a function without arguments that gives either. Paths and functions are worked off where
        the calculation runs. An iterable is taken piece by piece; ``frame.groupby(...)`` is one,
        and so is a list of paths. A panel is what :meth:`Script.run` takes as one. With ``by`` an
        iterable of long frames in the order of their securities, such as ``pandas.read_sql(...,
        chunksize=...)`` gives, the cursor of a database, or files with many securities each.
    by : str, optional
        The column or the level of the index with the securities.
    last : int or None
        How many bars of each security to look at; None for all.
    where : str, optional
        An expression over the script's lines, such as ``"BUY"`` or ``"K<20 AND D<20"``; only bars
        at which it holds (neither 0 nor null) are kept.
    lines : str or iterable of str, optional
        As for :meth:`Script.run`.
    out : str, optional
        "long", the default, "wide" for times by lines and securities, or "numpy" for a mapping of
        ``security``, ``time`` and the lines to arrays.
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
    period, market, calendar, constants, references
        As for :func:`compile`, for all securities; the code is each security's name.

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
    if last is None:
        last = sys.maxsize
    elif isinstance(last, bool) or not isinstance(last, (int, np.integer)) or last < 1:
        raise ValueError(f"last must be a whole number from 1 on, or None for all bars, and not "
                         f"{last!r}")
    if where is not None and (not isinstance(where, str) or not where.strip()):
        raise ValueError(f"where must be an expression, and not {where!r}; without it all bars are "
                         "kept")
    check_jobs(jobs)
    if executor is not None and not hasattr(executor, "submit"):
        raise ValueError(f"an executor is one of concurrent.futures, and not {executor!r:.80}")
    form = out_of(out)
    script = as_script(script, period=period, market=market, calendar=calendar,
                       constants=constants, references=references)
    numbers = tuple(script.numbers_of(lines))
    names = [script.line_details[number].name for number in numbers]
    script = script.with_condition(where or "")
    layout = script.layout(columns, duplicates)
    task = Task(script.spec, script.series, tuple((columns or {}).items()), duplicates, int(last),
                numbers)
    items, count = items_of(frames, by, layout)
    items = once_each(items)
    room = None
    is_at_hand = is_frame(frames) or isinstance(frames, (Mapping, list, tuple))
    if is_at_hand and executor is None and where is None:
        items, room = _with_room(items, task)
    outcomes: list[Outcome] = []
    with progress_bar(count, " securities", progress) as bar:
        for outcome in _work(script, task, room, chunks_of(items), executor, jobs):
            bar.update()
            outcomes.append(outcome)
    outcomes.sort(key=lambda outcome: str(outcome.name))
    _warn(outcomes)
    return _result(names, outcomes, room, form)


def _with_room(items: Iterator[tuple[Hashable, Any]], task: Task
               ) -> tuple[Iterator[tuple[Hashable, Any]], Room | None]:
    """Room for the results, in the order in which they are given, if all sizes are known."""
    known = list(items)
    sizes: dict[Hashable, int] = {}
    for name, source in known:
        size = size_of(source)
        if size is None:
            return iter(known), None
        sizes[name] = min(size, task.last)
    starts = {}
    total = 0
    for name in sorted(sizes, key=str):
        starts[name] = total
        total += sizes[name]
    room = Room(starts, np.empty(total, np.int64), np.empty((len(task.lines), total)))
    return iter(known), room


def _work(
    script: Script, task: Task, room: Room | None, chunks: Iterator[Chunk],
    executor: Executor | None, jobs: int | None,
) -> Iterator[Outcome]:
    if executor is None:
        work = functools.partial(scan_by, script, task, room)
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
    lost = [outcome for outcome in outcomes if outcome.seconds is None]
    if lost:
        warnings.warn(f"{len(lost)} of {len(outcomes)} securities failed, one is {lost[0].name}: "
                      f"{lost[0].failure}", ScanWarning, stacklevel=3)
    odd = [outcome for outcome in outcomes if outcome.notes]
    if odd:
        warnings.warn(f"{len(odd)} of {len(outcomes)} securities have odd bars, one is "
                      f"{odd[0].name}: {odd[0].notes[0].sentence}", BarsWarning, stacklevel=3)


def _result(lines: list[str], outcomes: list[Outcome], room: Room | None, form: str) -> Any:
    found = [outcome for outcome in outcomes if outcome.seconds is not None]
    seconds = [outcome.seconds for outcome in found if outcome.seconds is not None]
    if room is not None and sum(map(len, seconds)) == len(room.seconds):
        cells = room.cells
    elif found:
        cells = np.concatenate([outcome.cells for outcome in found], axis=1)
    else:
        cells = np.empty((len(lines), 0))
    result = labelled(cells, lines, [outcome.name for outcome in found], seconds, form)
    result.attrs["failures"] = {
        outcome.name: outcome.failure for outcome in outcomes if outcome.seconds is None}
    result.attrs["findings"] = {outcome.name: outcome.notes for outcome in found if outcome.notes}
    return result
