"""Bars of other securities and periods, brought to the times of a script's own bars."""

from __future__ import annotations

from typing import Any, Hashable, Mapping, NamedTuple, Optional, Sequence

import numpy as np

from . import _engine
from .arrays import Array

#: Where the bars of a reference count.
_RULES = ("closed", "label", "same")

_INTRADAY_END = 0x4000
_SECONDS, _MINUTES = 0x3100, 0x3000
_WEEK, _MONTH, _QUARTER, _YEAR = 0x5000, 0x6000, 0x6003, 0x7000
_DAY_SECONDS = 86400


class Reference:
    """Bars that a script reads beside its own, with the rule by which they count.

    Parameters
    ----------
    frame : DataFrame or mapping of arrays
        As :meth:`Script.run` takes it.
    counts : str, optional
        "same": at bars of the same time alone, which is usual for another security. "closed": from
        the first bar behind the end of its period on, which is usual for another period: a week's
        bar counts from the next week on, whether it is dated at the week's start or end. "label":
        from its own time on; it sees the future unless bars are dated at their ends.
    """

    def __init__(self, frame: Any, counts: str | None = None) -> None:
        if counts is not None and counts not in _RULES:
            raise ValueError(f'counts is "same", "closed" or "label", and not {counts!r}')
        self.frame = frame
        self.counts = counts


class Wanted(NamedTuple):
    """What a script reads of another security or period."""

    source: str  #: the code, or unit and number of the period
    field: int
    column: int  #: of the engine
    kind: str  #: "security", "period" or "quote"


class Series(NamedTuple):
    """The values of a reference by its own times."""

    column: int
    times: Array  #: seconds since 1970 from which each value counts, ascending
    values: Array
    lasts: bool  #: until the next one comes

    def at(self, seconds: Array) -> Array:
        """The value at each of some times; NaN where there is none."""
        if not len(self.times):
            return np.full(len(seconds), np.nan)
        places = np.searchsorted(self.times, seconds, side="right") - 1
        found = self.values[np.maximum(places, 0)]
        is_there = places >= 0
        if not self.lasts:
            is_there &= self.times[np.maximum(places, 0)] == seconds
        return np.where(is_there, found, np.nan)


Frames = Optional[Mapping[str, Any]]


def wanted_of(report: Mapping[str, Any]) -> list[Wanted]:
    """The references of a script."""
    result = []
    for source, column, kind in report["references"]:
        name, _, field = source.rpartition("|")
        result.append(Wanted(name, int(field), column, kind))
    return result


def series_of(references: Frames, wanted: Sequence[Wanted], intake: Any) -> tuple[Series, ...]:
    """What serves a script. ``intake`` gives seconds and the values of fields of a frame.

    Raises
    ------
    ValueError
        For frames that the script doesn't read.
    """
    result: list[Series] = []
    served: dict[int, Hashable] = {}
    if references is not None and not isinstance(references, Mapping):
        raise ValueError('references are a mapping, such as {"000300": frame}, and not '
                         f"{type(references).__name__}")
    for name, given in (references or {}).items():
        mine = [want for want in wanted if _is_meant(str(name), want)]
        if not mine:
            what = ", ".join(sorted({want.source for want in wanted})) or "none"
            raise ValueError(f"references: the script doesn't read {name!r}; it reads {what}")
        reference = given if isinstance(given, Reference) else Reference(given)
        try:
            times, columns = intake(reference.frame, [want.field for want in mine])
        except (TypeError, ValueError) as error:
            kind = TypeError if isinstance(error, TypeError) else ValueError
            raise kind(f"references: {name!r}: {error}") from None
        for want in mine:
            if want.column in served:
                raise ValueError(f"references: {name!r} and {served[want.column]!r} are one")
            served[want.column] = name
            result.append(_series(want, times, columns[want.field], reference.counts))
    return tuple(result)


def _is_meant(name: str, want: Wanted) -> bool:
    source, _, field = name.partition("|")
    if field and field != str(want.field):
        return False
    if source.lower() == want.source.lower():
        return True
    if want.kind != "period":
        return False
    code = _engine.parse_period(source)
    return code is not None and code == _engine.parse_period(want.source)


def _series(want: Wanted, times: Array, values: Array, counts: str | None) -> Series:
    if counts is None:
        counts = "closed" if want.kind == "period" else "same"
    if counts == "closed":
        code = _engine.parse_period(want.source) if want.kind == "period" else None
        if code is None:
            raise ValueError(f'references: {want.source!r} has no period of its own; "closed" is '
                             "for bars of another period")
        times = _ends(times, code)
    order = np.argsort(times, kind="stable")
    times, values = times[order], np.asarray(values, np.float64)[order]
    is_last = np.append(times[1:] != times[:-1], True)[:len(times)]
    return Series(want.column, times[is_last], values[is_last], counts != "same")


def _ends(times: Array, code: int) -> Array:
    """The first second behind the period in which each time lies."""
    if code < _INTRADAY_END:
        length = code - _SECONDS if code > _SECONDS else 60 * (code - _MINUTES or 1)
        return times + length
    days = times // _DAY_SECONDS
    if code == _WEEK:
        days = days + 7 - (days + 3) % 7  # 1970 began on a Thursday
    elif code < _MONTH:
        days = days + 1
    else:
        step = {_MONTH: 1, _QUARTER: 3, _YEAR: 12}.get(code, 1)
        months = days.astype("datetime64[D]").astype("datetime64[M]").astype(np.int64)
        days = ((months // step + 1) * step).astype("datetime64[M]").astype(
            "datetime64[D]").astype(np.int64)
    return days * _DAY_SECONDS
