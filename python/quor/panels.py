"""Bars of many securities in one piece: long frames and wide ones."""

from __future__ import annotations

from concurrent.futures import ThreadPoolExecutor
from typing import TYPE_CHECKING, Any, Hashable, Mapping, NamedTuple, Sequence

import numpy as np

from .arrays import Array
from .errors import Finding, error_of, warn_of
from .frames import FIELD_WORDS, TIME_WORDS, Bars, Layout, plain, zoned_of
from .optional import is_datetime_index, is_frame, is_multi_index, pd
from .outputs import Out, lines_of_run, out_of
from .pools import check_jobs, processors
from .times import times_of

if TYPE_CHECKING:
    from .script import Script

#: Bars that the engine takes in one call.
BARS = 1 << 16

_NAT = np.iinfo(np.int64).min


class Panel(NamedTuple):
    """The bars of securities, one security behind the other, each by ascending times."""

    names: list[Hashable]
    starts: Array  #: of each security's bars, and the end of the last
    times: Array  #: int64 ticks
    ticks: int
    fields: list[tuple[int, Array]]
    order: Array | None  #: for each bar its row in the frame; None if they are the rows
    index: Any  #: of the frame; None for a wide one
    zone: Any
    wide: Any  #: the index of times of a wide frame

    def bars_of(
        self, first: int, end: int
    ) -> list[tuple[bytes, Array, int, list[tuple[int, Array]]]]:
        """Securities as the engine takes them."""
        result = []
        bounds = self.starts.tolist()
        for number in range(first, end):
            part = slice(bounds[number], bounds[number + 1])
            fields = [(id_, values[part]) for id_, values in self.fields]
            name = str(self.names[number]).encode(errors="replace")
            result.append((name, self.times[part], self.ticks, fields))
        return result

    def chunks(self) -> list[tuple[int, int]]:
        """Numbers of securities that go into one call of the engine."""
        result = []
        first = 0
        while first < len(self.names):
            fits = int(np.searchsorted(self.starts, self.starts[first] + BARS, side="right")) - 1
            end = min(max(fits, first + 1), len(self.names))
            result.append((first, end))
            first = end
        return result


def panel_of(frames: Any, by: Any, layout: Layout) -> Panel | None:
    """The panel that a frame or a mapping of wide frames is; None if it is none.

    Raises
    ------
    ValueError
        As :meth:`Layout.bars` does, for a security without a name and for times that repeat.
    """
    if not isinstance(by, Hashable):
        raise ValueError(f"by is the name of one column, and not {by!r:.80}")
    if is_frame(frames):
        if by is None and getattr(frames.columns, "nlevels", 1) == 2:
            return _wide(_split_levels(frames), layout)
        if by is None and not is_multi_index(frames.index):
            return None
        securities = _securities_of(frames, by)
        return None if securities is None else _long(frames, securities, by, layout)
    if isinstance(frames, Mapping):
        if by is not None:
            if by not in frames:
                raise ValueError(f"by={by!r}: the bars have no such column")
            return _long(frames, frames[by], by, layout)
        if _is_wide(frames):
            return _wide(frames, layout)
    elif by is not None and not hasattr(frames, "__iter__"):
        raise ValueError(f"by={by!r} is for a frame, and not for {type(frames).__name__}")
    return None


def _securities_of(frame: Any, by: Any) -> Any:
    """The security of each bar; None for an index that tells of one security alone."""
    if by is not None:
        if by in frame.columns:
            return frame[by]
        if by in frame.index.names:
            return _Level(frame.index, frame.index.names.index(by))
        raise ValueError(f"by={by!r}: the frame has no such column and no such level")
    levels = [level for level in range(frame.index.nlevels) if not _has_times(frame.index, level)]
    if frame.index.nlevels != 2 or len(levels) != 1:
        return None
    return _Level(frame.index, levels[0])


class _Level(NamedTuple):
    """A level of an index, which has its values numbered already."""

    index: Any
    level: int

    def numbered(self) -> tuple[Array, list[Hashable]]:
        """As of a column."""
        if not is_multi_index(self.index):
            return _codes_of(self.index)
        return np.asarray(self.index.codes[self.level], np.int64), list(
            self.index.levels[self.level])


def _has_times(index: Any, level: int) -> bool:
    return is_datetime_index(index.levels[level]) or plain(index.names[level]) in TIME_WORDS


def _long(frame: Any, securities: Any, by: Any, layout: Layout) -> Panel:
    """A panel of a frame with a row for each bar of each security."""
    without = frame
    if is_frame(frame) and is_multi_index(frame.index):
        levels = frame.index.names
        dated = [level for level in range(len(levels)) if _has_times(frame.index, level)]
        if len(dated) == 1:
            without = frame.set_axis(frame.index.get_level_values(dated[0]))
    bars = layout.bars(without)
    is_level = isinstance(securities, _Level)
    codes, names = securities.numbered() if is_level else _codes_of(securities)
    if len(codes) != len(bars.times):
        raise ValueError(f"by={by!r} has {len(codes)} values for {len(bars.times)} bars")
    if len(codes) and codes.min() < 0:
        raise ValueError(f"bar {int(np.argmin(codes))} (the first is 0) has no security")
    if np.any(bars.times == _NAT):
        bar = int(np.argmax(bars.times == _NAT))
        raise ValueError(f"bar {bar} (the first is 0) has no time")
    order = _order_of(codes, bars.times)
    times, fields = bars.times, bars.fields
    if order is not None:
        codes, times = codes[order], times[order]
        fields = [(id_, values[order]) for id_, values in fields]
    changes = np.append(np.full(min(len(codes), 1), True), codes[1:] != codes[:-1])
    marks = np.flatnonzero(changes)
    starts = np.append(marks, len(codes)).astype(np.int64)
    index = getattr(frame, "index", None)
    return Panel([names[code] for code in codes[starts[:-1]]], starts, times, bars.ticks, fields,
                 order, bars.index if index is None else index, bars.zoned, None)


def _codes_of(securities: Any) -> tuple[Array, list[Hashable]]:
    """A number for each security, in the order in which they come, and their names."""
    values = np.asarray(securities)
    if values.ndim != 1:
        raise ValueError("by needs one security for each bar")
    if is_frame(securities):
        raise ValueError("by is the name of one column")
    try:
        codes, names = pd.factorize(securities)
        return codes, list(names)
    except ImportError:
        names, first, codes = np.unique(values, return_index=True, return_inverse=True)
        rank = np.argsort(np.argsort(first))
        return rank[codes], [names[number] for number in np.argsort(first)]


def _order_of(codes: Array, times: Array) -> Array | None:
    """The order by security and time, of equal times as they come; None if it is so."""
    is_next = codes[1:] == codes[:-1]
    goes_up = times[1:] >= times[:-1]
    pieces = int(np.count_nonzero(~is_next)) + 1
    if np.all(goes_up | ~is_next) and pieces <= max(np.count_nonzero(np.bincount(codes)), 1):
        return None
    return np.asarray(np.lexsort((times, codes)))


def _is_wide(frames: Mapping[Hashable, Any]) -> bool:
    """Whether each value is the frame of one field, with a column for each security."""
    words = {word for some in FIELD_WORDS.values() for word in some}
    if not frames or not all(isinstance(name, str) and plain(name) in words for name in frames):
        return False
    return all(is_frame(frame) and words.isdisjoint(plain(name) for name in frame.columns)
               for frame in frames.values())


def _split_levels(frame: Any) -> Mapping[Hashable, Any]:
    """Wide frames by the level of the columns that names fields."""
    words = {word for some in FIELD_WORDS.values() for word in some}
    for level in (0, 1):
        names = frame.columns.get_level_values(level).unique()
        if all(plain(name) in words for name in names):
            return {name: frame.xs(name, axis=1, level=level) for name in names}
    raise ValueError("no level of the columns has the names of fields alone, such as 'close'")


def _wide(frames: Mapping[Hashable, Any], layout: Layout) -> Panel:
    """A panel of a wide frame for each field, of which all have the same times."""
    first_name, first = next(iter(frames.items()))
    names = list(first.columns)
    if len(set(names)) != len(names):
        raise ValueError(f"the frame of {first_name!r} has a security twice")
    for name, frame in frames.items():
        if not frame.index.equals(first.index) or not frame.columns.equals(first.columns):
            raise ValueError(f"the frames of {first_name!r} and {name!r} have other times or other "
                             "securities; bring them to the same by reindex")
    moments = first.index
    times, ticks = times_of(moments)
    rows = len(times)
    order = None
    if np.any(times[1:] < times[:-1]):
        order = np.argsort(times, kind="stable")
        times = times[order]
    fields = []
    for id_, label in layout.places_of(tuple(frames)):
        values = frames[label].to_numpy(np.float64, na_value=np.nan)
        fields.append((id_, np.ascontiguousarray((values if order is None else values[order]).T)
                       .reshape(-1)))
    times = np.tile(times, len(names))
    layout.add_series(fields, times, ticks)
    if order is not None:
        order = (np.arange(len(names))[:, None] * rows + order).reshape(-1)
    return Panel(names, np.arange(len(names) + 1, dtype=np.int64) * rows, times, ticks, fields,
                 order, None, zoned_of(moments), moments)


def run_panel(script: Script, panel: Panel, layout: Layout, lines: Any, out: Out,
              jobs: int | None) -> Any:
    """All lines over all bars of a panel, in the rows of its frame."""
    check_jobs(jobs)
    numbers = script.numbers_of(lines)
    names = [script.line_details[number].name for number in numbers]
    cells = _calculate(script, panel, layout, numbers, jobs)
    form = out_of(out)
    if panel.wide is not None:
        return _wide_lines(panel, names, cells, form)
    if form == "wide":
        return _pivoted(panel, names, cells)
    return lines_of_run(cells, names, panel.index, out)


def _calculate(script: Script, panel: Panel, layout: Layout, numbers: list[int],
               jobs: int | None) -> Array:
    """The cells of lines, a row for each, in the order of the frame's rows."""
    total = len(panel.times)
    cells = np.empty((len(numbers), total))
    seconds = np.empty(total, np.int64)
    counted = np.zeros(len(panel.names), np.int64)
    starts = panel.starts.tolist()
    notes: list[Finding] = []

    def work(chunk: tuple[int, int]) -> None:
        first, end = chunk
        with script.engine() as engine:
            outcomes = engine.scan_into(panel.bars_of(first, end), max(total, 1), numbers,
                                        starts[first:end], seconds, cells)
        for number, (found, rows, failure, infinity) in enumerate(outcomes, first):
            _refuse(panel, number, failure)
            counted[number] = rows
            if rows != starts[number + 1] - starts[number] or infinity is not None:
                notes.extend(_look_again(panel, number, layout, rows, infinity))

    over_threads(work, panel.chunks(), jobs)
    if len(panel.names) and not notes:
        notes = layout.notes(_bars_of(panel, 0), None)
    for note in notes[:1]:
        warn_of([note], depth=5)
    cells = _repeated(panel, cells, counted)
    if panel.order is None:
        return cells
    placed = np.empty_like(cells)
    placed[:, panel.order] = cells
    return placed


def over_threads(work: Any, chunks: Sequence[Any], jobs: int | None) -> None:
    """Works chunks off; what one raises, an interrupt too, ends it soon."""
    threads = min(jobs or processors(), len(chunks))
    if threads <= 1:
        for chunk in chunks:
            work(chunk)
        return
    pool = ThreadPoolExecutor(threads, "quor")
    try:
        for _ in pool.map(work, chunks):
            pass
    finally:
        pool.shutdown(wait=True, cancel_futures=True)


def _refuse(panel: Panel, number: int, failure: Any) -> None:
    if failure is None:
        return
    name = panel.names[number]
    if isinstance(failure, str):
        raise ValueError(f"security {name!r}: {failure}")
    error = error_of(failure)
    finding = error.args[0]
    raise type(error)(finding._replace(sentence=f"security {name!r}: {finding.sentence}"))


def _bars_of(panel: Panel, number: int) -> Bars:
    part = slice(panel.starts[number], panel.starts[number + 1])
    return Bars(panel.times[part], panel.ticks, [], None, None, None)


def _look_again(panel: Panel, number: int, layout: Layout, rows: int,
                infinity: Any) -> list[Finding]:
    """What there is to say about the bars of one security."""
    name = panel.names[number]
    bars = _bars_of(panel, number)
    try:
        layout.check_times(bars, rows)
    except ValueError as error:
        raise ValueError(f"security {name!r}: {error}") from None
    notes = layout.notes(bars, infinity)
    return [note._replace(sentence=f"security {name!r}: {note.sentence}") for note in notes]


def _repeated(panel: Panel, cells: Array, counted: Array) -> Array:
    """For bars of one time, of which the engine makes one row, its values at each."""
    wanted = np.diff(panel.starts)
    for number in np.flatnonzero(counted != wanted):
        start, end = panel.starts[number], panel.starts[number + 1]
        times = panel.times[start:end] // panel.ticks
        rows = np.cumsum(np.append(0, times[1:] != times[:-1]))
        cells[:, start:end] = cells[:, start:end][:, rows]
    return cells


def _wide_lines(panel: Panel, names: list[str], cells: Array, form: str) -> Any:
    rows = len(panel.wide)
    block = cells.reshape(len(names) * len(panel.names), rows)
    if form == "numpy":
        return {name: part.T for name, part in zip(
            names, cells.reshape(len(names), len(panel.names), rows))}
    columns = pd.MultiIndex.from_product([names, panel.names], names=["line", "security"])
    if form == "wide":
        return pd.DataFrame(block.T, index=panel.wide, columns=columns, copy=False)
    index = pd.MultiIndex.from_product([panel.names, panel.wide], names=["security", "time"])
    return pd.DataFrame(cells.T, index=index, columns=names, copy=False)


def _pivoted(panel: Panel, names: list[str], cells: Array) -> Any:
    """A column for each line and security, by the times of all."""
    order = np.arange(len(panel.times)) if panel.order is None else panel.order
    union, places = np.unique(panel.times, return_inverse=True)
    wide = np.full((len(names), len(panel.names), len(union)), np.nan)
    securities = np.repeat(np.arange(len(panel.names)), np.diff(panel.starts))
    wide[:, securities, places] = cells[:, order]
    unit = {1: "s", 10**3: "ms", 10**6: "us", 10**9: "ns"}[panel.ticks]
    index = pd.DatetimeIndex(union.view(f"datetime64[{unit}]"), name="time")
    if panel.zone is not None:
        index = index.tz_localize(panel.zone.tz, ambiguous="NaT")
    columns = pd.MultiIndex.from_product([names, panel.names], names=["line", "security"])
    return pd.DataFrame(wide.reshape(-1, len(union)).T, index=index, columns=columns, copy=False)
