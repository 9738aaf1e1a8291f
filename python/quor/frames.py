"""From DataFrames and mappings of arrays to the arrays of the engine."""

from __future__ import annotations

from typing import Any, Hashable, Mapping, NamedTuple, Sequence

import numpy as np
import pandas as pd

#: The usual names of the fields, without blanks and underscores and in small letters.
FIELD_WORDS: dict[int, tuple[str, ...]] = {
    7: ("open", "o"),
    8: ("high", "h"),
    9: ("low", "l"),
    11: ("close", "c"),
    13: ("volume", "vol", "v"),
    19: ("amount", "turnover"),
    65: ("openinterest", "opi", "oi"),
    72: ("settle", "settlement"),
    2656718: ("avprice", "averageprice", "vwap"),
}

TIME_WORDS = ("datetime", "timestamp", "date", "time")

_TICKS = {"s": 1, "ms": 10**3, "us": 10**6, "ns": 10**9}


class Need(NamedTuple):
    """A column that a script reads."""

    id: int
    names: tuple[str, ...]  #: in the plain form; the first is the one that messages show


class Bars(NamedTuple):
    """What the engine takes, and the index that results get."""

    times: np.ndarray  #: int64, ticks since 1970 by the clock of the bars' own zone
    ticks: int  #: per second
    fields: list[tuple[int, np.ndarray]]  #: of numbers; the engine makes float64 of them
    index: Any


def plain(name: Hashable) -> str:
    """The form in which names of columns are compared."""
    return str(name).replace(" ", "").replace("_", "").lower()


def need_of(field: int) -> Need:
    """The names under which a field's column is looked for."""
    return Need(field, FIELD_WORDS.get(field, ()) + (str(field),))


class Layout:
    """Which columns of a frame a script reads; worked out once for all frames alike."""

    def __init__(
        self, needs: Sequence[Need], columns: Mapping[str, Hashable | None] | None
    ) -> None:
        self._needs = needs
        self._given = {plain(name): label for name, label in (columns or {}).items()}
        self._known: dict[tuple[Hashable, ...], tuple[list, Hashable | None]] = {}
        self._check_given()

    def _check_given(self) -> None:
        words = {"time", *(name for names in FIELD_WORDS.values() for name in names)}
        words.update(name for need in self._needs for name in need.names)
        unknown = sorted(name for name in self._given if name not in words and not name.isdigit())
        if unknown:
            raise ValueError(f"columns: {unknown[0]!r} is the name of no field")

    def bars(self, frame: Any) -> Bars:
        """The arrays of a frame.

        Raises
        ------
        ValueError
            For a needed column that isn't there or stands twice, for values that are no numbers,
            and for times that are none.
        """
        labels = frame.columns if hasattr(frame, "columns") else frame.keys()
        key = tuple(labels.tolist() if isinstance(labels, pd.Index) else labels)
        found = self._known.get(key)
        if found is None:
            found = self._known[key] = self._find(key)
        places, time_label = found
        index = getattr(frame, "index", None)
        if time_label is None or (isinstance(index, _TIME_INDEXES) and "time" not in self._given):
            if index is None:
                raise ValueError(f"no column holds the times; looked for {', '.join(TIME_WORDS)}")
            times, ticks = _times(index)
        else:
            times, ticks = _times(frame[time_label])
        series = _series(frame, key, len(places))
        fields = []
        for id_, label in places:
            values = _numbers(series[label], label)
            if len(values) != len(times):
                raise ValueError(
                    f"column {label!r} has {len(values)} values for {len(times)} bars"
                )
            fields.append((id_, values))
        if index is None:
            index = pd.DatetimeIndex(times.view(f"datetime64[{_unit(ticks)}]"))
        return Bars(times, ticks, fields, index)

    def _find(self, labels: tuple[Hashable, ...]) -> tuple[list, Hashable | None]:
        by_name: dict[str, list[Hashable]] = {}
        for label in labels:
            by_name.setdefault(plain(label), []).append(label)
        places = []
        for need in self._needs:
            label, is_wanted = self._label_of(need, by_name, labels)
            if is_wanted:
                places.append((need.id, label))
        return places, self._time_label(by_name, labels)

    def _label_of(self, need: Need, by_name: dict, labels: tuple) -> tuple[Hashable, bool]:
        for name in need.names:
            if name in self._given:
                label = self._given[name]
                if label is not None and label not in labels:
                    raise ValueError(f"the frame has no column {label!r}")
                return label, label is not None
        found = [label for name in need.names for label in by_name.get(name, ())]
        if len(found) == 1:
            return found[0], True
        what = need.names[0]
        if found:
            raise ValueError(f"two columns are {what!r}: {found[0]!r} and {found[1]!r}")
        raise ValueError(f"the script reads {what!r}, and no column of the frame is called so")

    def _time_label(self, by_name: dict, labels: tuple) -> Hashable | None:
        if "time" in self._given:
            label = self._given["time"]
            if label not in labels:
                raise ValueError(f"the frame has no column {label!r}")
            return label
        for word in TIME_WORDS:
            if word in by_name:
                return by_name[word][0]
        return None


_TIME_INDEXES = (pd.DatetimeIndex, pd.PeriodIndex)


def _unit(ticks: int) -> str:
    return next(unit for unit, count in _TICKS.items() if count == ticks)


def _series(frame: Any, labels: tuple, wanted: int) -> Any:
    """Of a frame without many other columns all at once, which is quicker than one by one."""
    if isinstance(frame, pd.DataFrame) and len(labels) <= 3 * wanted:
        return dict(frame.items())
    return frame


def _array(values: Any) -> np.ndarray:
    """As np.asarray, which takes longer to find what pandas has."""
    return np.asarray(values.values if isinstance(values, (pd.Series, pd.Index)) else values)


def _numbers(values: Any, label: Hashable) -> np.ndarray:
    array = _array(values)
    if array.dtype.kind in "fiub":
        return array
    if array.dtype.kind != "O":
        raise ValueError(f"column {label!r} holds {array.dtype}, and no numbers")
    for row, value in enumerate(array):
        if isinstance(value, (str, bytes)):
            raise ValueError(f"column {label!r} holds text, such as {value!r} in bar {row}")
    try:
        return np.array([np.nan if pd.isna(value) else float(value) for value in array], np.float64)
    except (TypeError, ValueError) as error:
        raise ValueError(f"column {label!r} holds what is no number: {error}") from None


def _times(values: Any) -> tuple[np.ndarray, int]:
    """Ticks since 1970 by the clock of the values' own zone, and how many make a second."""
    if isinstance(values, pd.PeriodIndex):
        values = values.to_timestamp()
    if getattr(getattr(values, "dtype", None), "tz", None) is not None:
        values = pd.DatetimeIndex(values).tz_localize(None)
    array = _array(values)
    if array.dtype.kind in "iu":
        array = _times_of_integers(array)
    elif array.dtype.kind != "M":
        array = _times_of_objects(array)
    unit = np.datetime_data(array.dtype)[0]
    if unit not in _TICKS:
        unit = "s"
        array = array.astype("datetime64[s]")
    return array.view(np.int64), _TICKS[unit]


def _times_of_objects(array: np.ndarray) -> np.ndarray:
    if array.dtype.kind not in "OUS":
        raise ValueError(f"{array.dtype} are no times")
    try:
        times = pd.DatetimeIndex(pd.to_datetime(array))
    except (TypeError, ValueError) as error:
        raise ValueError(f"the times can't be read: {error}") from None
    return np.asarray(times if times.tz is None else times.tz_localize(None))


def _times_of_integers(array: np.ndarray) -> np.ndarray:
    """Integers are times if they are written as dates: 20240102 or 20240102093500."""
    forms = {8: "%Y%m%d", 14: "%Y%m%d%H%M%S"}
    texts = array.astype(str)
    digits = {len(text) for text in texts}
    if not digits:
        return array.astype("datetime64[s]")
    if len(digits) > 1 or not digits <= forms.keys():
        raise ValueError("integers are times only if written as 20240102 or as 20240102093500")
    try:
        return np.asarray(pd.to_datetime(texts, format=forms[digits.pop()]))
    except ValueError as error:
        raise ValueError(f"the times can't be read: {error}") from None
