"""From what frames hold as times to ticks since 1970, by the clock of the times' own zone."""

from __future__ import annotations

import datetime
import re
from typing import Any

import numpy as np

from . import _engine
from .arrays import Array
from .optional import is_index, is_series, pd

#: At the end of a moment that tells its zone.
_ZONE = re.compile(r"([zZ]|UTC|GMT|:\d\d(\.\d+)? ?[+-]\d\d(:?\d\d)?)$")

_CLOCK = re.compile(r"\d\d:\d\d(:\d\d)?|\d{4}(\d\d)?")

_TICKS = {"s": 1, "ms": 10**3, "us": 10**6, "ns": 10**9}


def array_of(values: Any) -> Array:
    """As np.asarray, which takes longer to find what pandas has and forgets what is masked."""
    if is_series(values) or is_index(values):
        return np.asarray(values.values)
    if isinstance(values, np.ma.MaskedArray):
        return _unmasked(values)
    return np.asarray(values)


def _unmasked(values: Any) -> Array:
    """With nulls for what is masked."""
    if values.dtype.kind in "mM":
        return np.asarray(values.filled(np.array("NaT", values.dtype)))
    filled: Any = values.astype(np.float64 if values.dtype.kind in "biuf" else object)
    return np.asarray(filled.filled(np.nan))


def row_of(values: Any, label: Any) -> Array:
    """The array of a column."""
    array = array_of(values)
    if array.ndim != 1:
        raise ValueError(f"column {label!r} isn't one value for each bar")
    return array


def moment_of(time: Any) -> datetime.datetime | None:
    """One time, of the kinds that a column may have; nothing for one that isn't there."""
    if time is None or is_missing(time):
        return None
    if isinstance(time, datetime.datetime):
        return time
    if isinstance(time, str) and _ZONE.search(time):
        zone = pd.Timestamp(time).tz
    else:
        zone = None
    values = np.array([time]) if isinstance(time, np.datetime64) else np.array([time], object)
    ticks, unit = times_of(values)
    moment = datetime.datetime(1970, 1, 1) + datetime.timedelta(seconds=int(ticks[0]) // unit)
    return moment if zone is None else pd.Timestamp(moment).tz_localize(zone)


def times_of(values: Any) -> tuple[Array, int]:
    """Ticks since 1970, and how many make a second. A time that isn't there is NaT."""
    dtype = getattr(values, "dtype", None)
    if not isinstance(dtype, np.dtype) and dtype is not None:
        if isinstance(dtype, pd.PeriodDtype):
            values = pd.PeriodIndex(values).to_timestamp()
        elif getattr(dtype, "tz", None) is not None:
            values = pd.DatetimeIndex(values).tz_localize(None)
    array = row_of(values, "time")
    if array.dtype.kind in "iu":
        array = _of_integers(array)
    elif array.dtype.kind != "M":
        array = _of_objects(array)
    unit = np.datetime_data(array.dtype)[0]
    if unit not in _TICKS:
        unit = "s"
        array = array.astype("datetime64[s]")
    return array.view(np.int64), _TICKS[unit]


def times_of_day(values: Any, label: Any) -> Array:
    """Seconds since midnight, from texts such as 09:35 or from what Python has for them."""
    array = row_of(values, label)
    if array.dtype.kind == "m":
        return array.astype("timedelta64[s]").view(np.int64)
    if all(isinstance(value, str) for value in array):
        for bar, value in enumerate(array):
            if not _CLOCK.fullmatch(value):
                raise _refuse(bar, f"has {value!r} for a time of day; write it as 09:35")
        texts = [f"20000101 {value}" for value in array]
        return _engine.seconds_of_texts(texts) - _seconds_of(datetime.datetime(2000, 1, 1))
    if all(isinstance(value, datetime.time) for value in array):
        return np.array([(value.hour * 60 + value.minute) * 60 + value.second for value in array],
                        np.int64)
    raise ValueError(f"column {label!r} holds no times of day; name the column of the times: "
                     'columns={"time": ...}')


def index_of(seconds: Array, name: Any = None) -> pd.DatetimeIndex:
    """Seconds since 1970 as an index of pandas, which has no times before 1678 and behind 2261."""
    index = pd.DatetimeIndex(seconds.view("datetime64[s]"), name=name)
    return index.as_unit("ns") if hasattr(index, "as_unit") else index


class Clock:
    """What clocks of a zone show, and which of two moments it is that they show alike."""

    def __init__(self, zone: Any) -> None:
        self.zone = zone
        self._is_later: dict[pd.Timestamp, bool] = {}  #: by what is shown, in whole seconds

    def note(self, moments: pd.DatetimeIndex) -> None:
        """Raises ValueError for one that a bar can't be told by beside an earlier one."""
        shown = moments.tz_localize(None)
        is_twice = shown.tz_localize(self.zone, ambiguous="NaT", nonexistent="NaT").isna()
        for moment, time in zip(moments[is_twice], shown[is_twice]):
            is_later = moment != time.tz_localize(self.zone, ambiguous=True)
            if self._is_later.setdefault(time.floor("s"), is_later) != is_later:
                raise ValueError(f"two bars have one time by the clock of their zone, {time}, as "
                                 "it is set back; follow bars in another zone, such as UTC")

    def index(self, seconds: Array) -> pd.DatetimeIndex:
        """The moments at which the clock shows so many seconds since 1970."""
        shown = index_of(seconds)
        if self.zone is None:
            return shown
        is_first = np.full(len(shown), True)
        if self._is_later:
            is_first[:] = [not self._is_later.get(time, False) for time in shown]
        return shown.tz_localize(self.zone, ambiguous=is_first)


def index_of_ticks(times: Array, ticks: int) -> pd.DatetimeIndex:
    """What `times_of` gives, as an index."""
    unit = next(unit for unit, count in _TICKS.items() if count == ticks)
    return pd.DatetimeIndex(times.view(f"datetime64[{unit}]"))


def _seconds_of(moment: datetime.datetime) -> int:
    return int((moment - datetime.datetime(1970, 1, 1)).total_seconds())


def _refuse(bar: int, what: str) -> ValueError:
    return ValueError(f"bar {bar} (the first is 0) {what}")


def _of_objects(array: Array) -> Array:
    if not array.size:
        return array.astype("datetime64[s]")
    if array.dtype.kind not in "OUS":
        raise ValueError(f"{array.dtype} are no times")
    if array.dtype.kind == "S":
        array = np.char.decode(array, "utf-8", "replace")
    values = array.tolist()
    for bar, value in enumerate(values):
        if is_missing(value):
            raise _refuse(bar, "has no time")
    if all(isinstance(value, str) for value in values):
        return _engine.seconds_of_texts(values).view("datetime64[s]")
    if all(isinstance(value, int) and not isinstance(value, bool) for value in values):
        return _of_integers(np.array(values))
    return _of_moments(array)


def is_missing(value: Any) -> bool:
    """Whether a single value stands for none."""
    if value is None or type(value).__name__ in ("NaTType", "NAType"):
        return True
    return isinstance(value, (float, np.floating, np.datetime64)) and bool(value != value)


def _of_moments(array: Array) -> Array:
    """Each by its own clock, of which one column may have several."""
    moments = []
    for bar, value in enumerate(array):
        if hasattr(value, "to_timestamp"):  # a period of pandas
            value = value.to_timestamp()
        elif not isinstance(value, (np.datetime64, datetime.date)):
            raise _refuse(bar, f"has {value!r} for a time")
        zone = getattr(value, "tzinfo", None)
        value = value if zone is None else value.replace(tzinfo=None)
        moments.append(np.datetime64(value, "us"))
    return np.array(moments, "datetime64[us]")


def _of_integers(array: Array) -> Array:
    """Integers are times if they are written as dates: 20240102 or 20240102093500."""
    texts = array.astype(str).tolist()
    digits = {len(text) for text in texts}
    if len(digits) > 1 or not digits <= {8, 14}:
        raise ValueError("integers are times only if written as 20240102 or as 20240102093500; "
                         'of others make times first, as pd.to_datetime(..., unit="s") does')
    return _engine.seconds_of_texts(texts).view("datetime64[s]")
