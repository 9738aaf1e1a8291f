"""From DataFrames and mappings of arrays to the arrays of the engine."""

from __future__ import annotations

import os
from typing import Any, Hashable, Mapping, NamedTuple, Optional, Sequence

import numpy as np

from . import _engine
from .arrays import Array
from .errors import Finding, note, warn_of
from .optional import (
    has_pandas, is_datetime_index, is_frame, is_index, is_multi_index, is_series, pd)
from .protocols import adopted
from .references import Series
from .times import index_of, index_of_ticks, is_missing, row_of, times_of, times_of_day

_ByName = dict[str, list[Hashable]]
Columns = Optional[Mapping[str, Optional[Hashable]]]

_NAT = np.iinfo(np.int64).min
_TIME = 1  #: the engine's column of the times


def _words() -> dict[int, tuple[str, ...]]:
    words = {
        id_: tuple(word.lower() for word in all_words)
        for id_, all_words in _engine.field_words().items()
    }
    del words[_TIME]
    return words


#: The usual names of the fields, in the plain form; the first is the one that messages show.
FIELD_WORDS = _words()

TIME_WORDS = ("datetime", "timestamp", "date", "time")


class Need(NamedTuple):
    """A column that a script reads."""

    id: int
    names: tuple[str, ...]  #: the first is the one that messages show


class Bars(NamedTuple):
    """What the engine takes, and the index that results get."""

    times: Array  #: int64, ticks since 1970 by the clock of the bars' own zone
    ticks: int  #: per second
    fields: list[tuple[int, Array]]  #: of numbers; the engine makes float64 of them
    index: Any
    labels: Any  #: of the bars in events: the index, or the level of it that has the times
    zoned: Any  #: the times, if they have a zone, as an index
    doubts: Sequence[str] = ()  #: what no market can have quoted in the file


def plain(name: Hashable) -> str:
    """The form in which names of columns are compared."""
    return str(name).replace(" ", "").replace("_", "").lower()


def need_of(field: int) -> Need:
    """The names under which a field's column is looked for."""
    return Need(field, FIELD_WORDS.get(field, ()) + (str(field),))


class Layout:
    """Which columns of a frame a script reads; worked out once for all frames alike."""

    def __init__(self, needs: Sequence[Need], columns: Columns, duplicates: str,
                 has_days: bool = False, series: Sequence[Series] = ()) -> None:
        if duplicates not in ("error", "last"):
            raise ValueError(f'duplicates is "error" or "last", and not {duplicates!r}')
        self._series = series
        served = {one.column for one in series}
        self._needs = [need for need in needs if need.id not in served]
        self._repeat = duplicates == "last"
        self._has_days = has_days  #: the script asks for the period, which is a day or longer
        self._ids = {word: id_ for id_, words in FIELD_WORDS.items() for word in words}
        self._ids.update({plain(name): need.id for need in needs for name in need.names})
        self._ids.update(dict.fromkeys(TIME_WORDS, _TIME))
        self._given: dict[int, Hashable | None] = {}
        for name, label in (columns or {}).items():
            self._give(name, label)
        self._known: dict[tuple[Hashable, ...], _Places] = {}

    def _give(self, name: str, label: Hashable | None) -> None:
        word = plain(name)
        id_ = self._ids.get(word, int(word) if word.isdecimal() else 0)
        if not id_:
            raise ValueError(f"columns: {name!r} is the name of no field")
        if id_ in self._given:
            raise ValueError(f"columns: {name!r} and another name are one field")
        if id_ == _TIME and label is None:
            raise ValueError("columns: bars can't be without their times")
        self._given[id_] = label

    def bars(self, frame: Any) -> Bars:
        """The arrays of a frame.

        Raises
        ------
        ValueError
            For a needed column that isn't there or stands twice, for values that are no numbers,
            and for times that are none.
        """
        frame = adopted(frame)
        labels = _labels(frame)
        places = self._known.get(labels)
        if places is None:
            places = self._known[labels] = self._find(labels)
        labels_of_times = _level(frame, bool(places.times), _TIME in self._given)
        moments = _column(frame, places) if labels_of_times is None else labels_of_times
        times, ticks = times_of(moments)
        if labels_of_times is None and places.clocks:
            times = _with_clock(frame, places, times, ticks)
        arrays = _arrays(frame, labels, places.fields)
        fields = []
        for id_, label in places.fields:
            values = arrays.get(label)
            if values is None:
                values = numbers_of(frame[label], label)
            if len(values) != len(times):
                raise ValueError(
                    f"column {label!r} has {len(values)} values for {len(times)} bars"
                )
            fields.append((id_, values))
        self.add_series(fields, times, ticks)
        index = getattr(frame, "index", None)
        if index is None and has_pandas():
            index = index_of_ticks(times, ticks)
        return Bars(times, ticks, fields, index,
                    index if labels_of_times is None else labels_of_times, zoned_of(moments))

    def add_series(self, fields: list[tuple[int, Array]], times: Array, ticks: int) -> None:
        """The values of references at the times of bars."""
        if not self._series:
            return
        seconds = times // ticks
        for series in self._series:
            fields.append((series.column, series.at(seconds)))

    def bars_of_file(self, path: str | os.PathLike[str]) -> Bars:
        """The arrays of a file, with no index."""
        times, columns, doubts = self.read_file(path)
        fields = []
        for need in self._needs:
            if need.id in columns:
                fields.append((need.id, columns[need.id]))
            elif self._given.get(need.id, "") is not None:
                raise ValueError(f"{os.fspath(path)}: the script reads {need.names[0]!r}, and no "
                                 "column of the file is called so")
        self.add_series(fields, times, 1)
        return Bars(times, 1, fields, None, None, None, doubts)

    def read_file(
        self, path: str | os.PathLike[str]
    ) -> tuple[Array, dict[int, Array], list[str]]:
        """Seconds since 1970, the values of all fields, and what is doubtful in them."""
        wanted = {need.id for need in self._needs} or self._given.keys()
        named = {id_: str(label) if id_ in wanted and label is not None else None
                 for id_, label in self._given.items() if id_ != _TIME}
        for need in self._needs:  # of another security, by a name that no file reader knows
            if need.id not in FIELD_WORDS and not need.names[0].isdecimal():
                named.setdefault(need.id, need.names[0])
        time = self._given.get(_TIME)
        return _engine.read_bars(
            os.fsencode(path), None if time is None else str(time), named, self._repeat)

    def places_of(self, labels: tuple[Hashable, ...]) -> list[tuple[int, Hashable]]:
        """The needed fields among columns. Raises ValueError for one that isn't there."""
        return self._find(labels).fields

    def ids_of(self, labels: tuple[Hashable, ...]) -> dict[Hashable, int]:
        """The fields of a frame of these columns, as :meth:`bars` has found them."""
        places = self._known.get(labels)
        return {} if places is None else {label: id_ for id_, label in places.fields}

    def check_times(self, bars: Bars, rows: int) -> None:
        """Refuses bars of which the engine has made fewer rows than they are."""
        if rows == len(bars.times):
            return
        order = np.argsort(bars.times, kind="stable")
        ascending = bars.times[order]
        again = np.flatnonzero(ascending[1:] == ascending[:-1])
        if len(again) and not self._repeat:
            first, second = order[again[0]], order[again[0] + 1]
            time = index_of_ticks(ascending[again[:1]], bars.ticks)[0]
            both = f"bars {first} and {second} (the first is 0) have one time"
            if bars.zoned is not None and bars.zoned[first] != bars.zoned[second]:
                raise ValueError(
                    f"{both} by the clock of their zone, {time}, where it is set back; convert the "
                    'times: frame.tz_convert("UTC")')
            raise ValueError(
                f"{both}, {time}. A frame holds the bars of one security: take each security "
                "alone, as quor.scan(script, frame.groupby(...)) does; or let the last bar of a "
                'time count: duplicates="last"')
        if len(ascending) - len(again) != rows:
            raise ValueError(
                "different times fall into one second, and the engine counts in seconds")

    def notes(self, bars: Bars, infinity: tuple[int, int] | None) -> list[Finding]:
        """What there is to say about bars, of an infinity in which field and bar are given."""
        found = notes_of_doubts(bars.doubts)
        if self._has_days and _have_times_of_day(bars):
            found.append(note("there are several bars a day, but their period is said to be a day "
                              "or longer, and the script asks for it", "name the period, as in "
                              "compile(..., period=0x3005) for five minutes"))
        if infinity is not None:
            id_, bar = infinity
            name = next((need.names[0] for need in self._needs if need.id == id_), "a reference")
            found.append(note(f"{name!r} of bar {bar} (the first is 0) is infinite, which averages "
                              "and sums never recover from", "make it null, or leave the bar out"))
        return found

    def _find(self, labels: tuple[Hashable, ...]) -> _Places:
        by_name: dict[str, list[Hashable]] = {}
        for label in labels:
            by_name.setdefault(plain(label), []).append(label)
        fields = []
        for need in self._needs:
            label, is_wanted = self._label_of(need, by_name, labels)
            if is_wanted:
                fields.append((need.id, label))
        times = self._time_labels(by_name, labels)
        is_date = _TIME not in self._given and bool(times) and plain(times[0]) == "date"
        return _Places(fields, times, by_name.get("time", []) if is_date else [])

    def _label_of(self, need: Need, by_name: _ByName,
                  labels: tuple[Hashable, ...]) -> tuple[Hashable, bool]:
        if need.id in self._given:
            label = self._given[need.id]
            if label is not None and label not in labels:
                raise ValueError(f"the frame has no column {label!r}")
            if labels.count(label) > 1:
                raise ValueError(f"the frame has several columns {label!r}")
            return label, label is not None
        found = [label for name in need.names for label in by_name.get(plain(name), ())]
        if len(found) == 1:
            return found[0], True
        what = need.names[0]
        if found:
            raise ValueError(f"two columns are {what!r}: {found[0]!r} and {found[1]!r}")
        raise ValueError(f"the script reads {what!r}, and no column of the frame is called so")

    def _time_labels(self, by_name: _ByName, labels: tuple[Hashable, ...]) -> list[Hashable]:
        """The column of the times; several only if they have one name."""
        if _TIME in self._given:
            label = self._given[_TIME]
            if label not in labels:
                raise ValueError(f"the frame has no column {label!r}")
            return [label]
        return next((by_name[word] for word in TIME_WORDS if word in by_name), [])


class _Places(NamedTuple):
    """Where in frames of the same columns the needed ones are."""

    fields: list[tuple[int, Hashable]]
    times: list[Hashable]
    clocks: list[Hashable]  #: the column "time" beside a column "date"


def read_csv(
    path: str | os.PathLike[str], columns: Columns = None, duplicates: str = "error"
) -> pd.DataFrame:
    """Reads a file of bars by the rules of :func:`scan` and of the command line.

    The first line names the columns: ``date``, perhaps with the time of day in a column ``time``,
    and the fields by their usual words; other columns are passed over. Dates are written as
    2024-01-31, 2024/01/31 or 20240131, moments as 2024-01-31 09:35 or 2024-01-31T09:35:00+08:00,
    of which the clock counts as it is written. An empty cell is null.

    Parameters
    ----------
    path : str or path
    columns : mapping, optional
        The file's column for a field ("close", "time", ...).
    duplicates : str
        "error", or "last" to read all bars of a date.

    Returns
    -------
    DataFrame
        The columns ``open``, ``high``, ``low``, ``close``, ... by ``date``, in the file's order.

    Raises
    ------
    ValueError
        With the line at which the file is wrong.
    """
    if not isinstance(path, (str, os.PathLike)):
        raise ValueError(f"a file of bars goes by its path, and not by {type(path).__name__}")
    seconds, values, doubts = Layout((), columns, duplicates).read_file(path)
    warn_of(notes_of_doubts(doubts))
    names = {need_of(id_).names[0]: column for id_, column in values.items()}
    return pd.DataFrame(names, index=index_of(seconds, name="date"))


def notes_of_doubts(doubts: Sequence[str]) -> list[Finding]:
    """What no market can have quoted in a file, as advice."""
    return [note(doubt, "correct the file, or leave the bar out") for doubt in doubts]


def _labels(frame: Any) -> tuple[Hashable, ...]:
    labels = getattr(frame, "columns", None)
    if labels is None:
        if not isinstance(frame, Mapping):
            raise TypeError("bars are a DataFrame or a mapping of arrays, and not "
                            f"{type(frame).__name__}{_way_from(frame)}")
        labels = frame.keys()
    names: Any = labels
    return tuple(names.tolist() if is_index(names) else names)


def _way_from(other: Any) -> str:
    """How what isn't bars becomes some."""
    if isinstance(other, (str, os.PathLike)):
        return "; quor.read_csv reads a file"
    return '; make a frame of it: series.to_frame("close")' if is_series(other) else ""


def _level(frame: Any, has_column: bool, is_named: bool) -> Any:
    """The index, or the level of it, that has the times; None if a column has them."""
    index = getattr(frame, "index", None)
    if has_column and (is_named or not is_datetime_index(index)):
        return None
    if index is None:
        raise ValueError(f"no column holds the times; looked for {', '.join(TIME_WORDS)}")
    return _level_of_times(index) if is_multi_index(index) else index


def _level_of_times(index: pd.MultiIndex) -> pd.Index:
    """The level with the times, of an index that tells no bars apart by its other levels."""
    numbers = range(index.nlevels)
    dated = [level for level in numbers
             if is_datetime_index(index.levels[level])
             or plain(index.names[level]) in TIME_WORDS]
    if len(dated) != 1:
        raise ValueError("which level of the index holds the times? Leave it alone in the index: "
                         "frame.droplevel(...)")
    for level in numbers:
        values = index.get_level_values(level)
        if level not in dated and values.nunique(dropna=False) > 1:
            name = index.names[level]
            shown = level if name is None else name
            raise ValueError(
                f"level {shown!r} of the index has several values, such as {values[0]!r} and "
                f"{values[values != values[0]][0]!r}, and a frame holds the bars of one security: "
                f"take one alone, or all by quor.scan(script, frame.groupby(level={shown!r}))")
    return index.get_level_values(dated[0])


def _column(frame: Any, places: _Places) -> Any:
    """The column of the times."""
    label, *more = places.times
    if more:
        raise ValueError(f"two columns hold the times: {label!r} and {more[0]!r}")
    return frame[label]


def _with_clock(frame: Any, places: _Places, dates: Array, ticks: int) -> Array:
    """Dates with the times of day beside them."""
    label, clock = places.times[0], places.clocks[0]
    seconds = times_of_day(frame[clock], clock)
    if len(seconds) != len(dates):
        raise ValueError(f"column {clock!r} has {len(seconds)} values for {len(dates)} bars")
    is_there = (dates != _NAT) & (seconds != _NAT)
    if np.any(dates[is_there] % (86400 * ticks)):
        raise ValueError(f"columns {label!r} and {clock!r} both have times of day; say which one "
                         f'counts: columns={{"time": {label!r}}}')
    return np.where(is_there, dates + seconds * ticks, _NAT)


def zoned_of(moments: Any) -> Any:
    """Times with a zone as an index; None for others."""
    is_zoned = getattr(getattr(moments, "dtype", None), "tz", None) is not None
    return pd.DatetimeIndex(moments) if is_zoned else None


def _have_times_of_day(bars: Bars) -> bool:
    days = np.sort(bars.times // (86400 * bars.ticks))
    return bool(np.any(days[1:] == days[:-1]))


def _arrays(frame: Any, labels: tuple[Hashable, ...],
            fields: list[tuple[int, Hashable]]) -> dict[Hashable, Array]:
    """The columns that are plain arrays of numbers, without a series made around each."""
    array_at = getattr(frame, "_get_column_array", None)
    if array_at is None or not is_frame(frame):
        return {}
    found = {}
    for _, label in fields:
        values = array_at(labels.index(label))
        if type(values) is np.ndarray and values.dtype.kind in "fiub":
            found[label] = values
    return found


def numbers_of(values: Any, label: Hashable) -> Array:
    if _is_nullable(values):
        return np.asarray(values.to_numpy(np.float64, na_value=np.nan))
    array = row_of(values, label)
    if array.dtype.kind in "fiub":
        return array
    if array.dtype.kind not in "OUS":
        raise ValueError(f"column {label!r} holds {array.dtype}, and no numbers")
    for row, value in enumerate(array):
        if isinstance(value, (str, bytes)):
            raise ValueError(f"column {label!r} holds text, such as {value!r} in bar {row}")
    try:
        return np.array([np.nan if is_missing(value) else float(value) for value in array],
                        np.float64)
    except (TypeError, ValueError, OverflowError) as error:
        raise ValueError(f"column {label!r} holds what is no number: {error}") from None


def _is_nullable(values: Any) -> bool:
    """A series of numbers with a mask, which numpy would make objects of."""
    dtype = getattr(values, "dtype", None)
    return (is_series(values) and not isinstance(dtype, np.dtype)
            and isinstance(dtype, pd.api.extensions.ExtensionDtype)
            and dtype.kind in "fiub" and not isinstance(dtype, pd.SparseDtype))
