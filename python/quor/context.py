"""What bars are about: their period, the security, its market, calendar and constants."""

from __future__ import annotations

import json
import math
import os
import re
from typing import Any, Iterable, Mapping, NamedTuple, Optional, Sequence, Union

from . import _engine

DAY = 0x4000
_FIRST_PERIOD, _LAST_PERIOD = 0x1000, 0x7FFFFFFF

#: The numbers that scripts ask for by these names, in the engine's order.
CONSTANTS = ("MINPRICE", "UNIT", "SHARECOUNTPERUNIT")

#: The parts of a calendar that the engine wants.
_CALENDAR_KEYS = ("timezone", "trade_dates", "daylight_save_times", "trade_times",
                  "special_trade_times")

#: A calendar serves under a code and a market; these stand for what isn't named.
_NO_CODE, _NO_MARKET = "-", "-"

Period = Union[int, str]
Calendar = Union["Sessions", Mapping[str, Any], str, "os.PathLike[str]", None]
Constants = Optional[Mapping[str, float]]


class Context(NamedTuple):
    """What a script is compiled for; can be hashed and sent to another process."""

    period: int = DAY
    code: str = ""
    market: str = ""
    calendar: str = ""
    constants: tuple[float | None, ...] = (None, None, None)

    def with_(self, period: Period | None, code: str | None, market: str | None,
              calendar: Calendar, constants: Constants) -> Context:
        """This context, with what isn't None in place of its own."""
        changed = self
        if period is not None:
            changed = changed._replace(period=period_code(period))
        if code is not None:
            changed = changed._replace(code=_text("code", code))
        if market is not None:
            changed = changed._replace(market=_text("market", market))
        if calendar is not None:
            changed = changed._replace(calendar=calendar_text(calendar))
        if constants is not None:
            changed = changed._replace(constants=_constants(constants))
        return changed

    def for_engine(self) -> tuple[int, str, str, str, list[float]]:
        """As the engine takes it."""
        code, market = self.code, self.market
        if self.calendar:
            code, market = code or _NO_CODE, market or _NO_MARKET
        numbers = [math.nan if number is None else number for number in self.constants]
        return self.period, code, market, self.calendar, numbers


def period_code(period: Period) -> int:
    """The code of a period: ``"5min"``, ``"day"``, ``"week"`` and so on, or a code itself."""
    if isinstance(period, str):
        code = _engine.parse_period(period)
        if code is not None:
            return code
    elif isinstance(period, int) and not isinstance(
            period, bool) and _FIRST_PERIOD <= period <= _LAST_PERIOD:
        return period
    raise ValueError('period is a name, such as "5min", "day" or "week", or a code, such as '
                     f"0x3005, and not {period!r}")


def calendar_text(calendar: Calendar) -> str:
    """The JSON of a calendar, from any form of it. Raises ValueError for what is none."""
    if isinstance(calendar, Sessions):
        return calendar.json
    if isinstance(calendar, os.PathLike):
        with open(calendar, encoding="utf-8-sig") as file:
            text = file.read()
        return _checked(text, os.fspath(calendar))
    if isinstance(calendar, Mapping):
        return _checked(json.dumps(calendar), "the calendar")
    if isinstance(calendar, str):
        return _checked(calendar, "the calendar") if calendar.strip() else ""
    raise ValueError("calendar is JSON, a path of a file with it, or quor.Sessions, and not "
                     f"{type(calendar).__name__}")


def _checked(text: str, name: str) -> str:
    try:
        root = json.loads(text)
    except ValueError as error:
        raise ValueError(f"{name} is no JSON: {error}; a path must be a pathlib.Path") from None
    data = root.get("data") if isinstance(root, dict) else None
    if not isinstance(data, dict) or root.get("status_code") != 0:
        raise ValueError(f'{name} needs "status_code": 0 and "data"')
    for key in _CALENDAR_KEYS:
        if key not in data:
            raise ValueError(f'{name} lacks "{key}" in its "data"')
    return text


def _text(name: str, value: Any) -> str:
    if not isinstance(value, str):
        raise ValueError(f"{name} is a text, and not {value!r}")
    return whole_text(name, value)


def whole_text(name: str, text: str) -> str:
    """The text. Raises ValueError for one with half a character, which no file can have."""
    half = re.search("[\ud800-\udfff]", text)
    if half:
        raise ValueError(f"{name} has half a character, {half[0]!r}, at place {half.start()}; read "
                         "the text again, in the encoding that it has")
    return text


def _constants(constants: Mapping[str, float]) -> tuple[float | None, ...]:
    if not isinstance(constants, Mapping):
        raise ValueError(f"constants are a mapping, such as {{'MINPRICE': 0.01}}, and not "
                         f"{constants!r}")
    numbers: dict[str, float] = {}
    for name, value in constants.items():
        word = str(name).upper()
        if word not in CONSTANTS:
            raise ValueError(f"constants: {name!r} is none of {', '.join(CONSTANTS)}")
        if word in numbers:
            raise ValueError(f"constants: {word} is given twice")
        try:
            numbers[word] = float(value)
        except (TypeError, ValueError):
            raise ValueError(f"constants: {word} is {value!r}, and no number") from None
    return tuple(numbers.get(name) for name in CONSTANTS)


_CLOCK = re.compile(r"([01]\d|2[0-3]):[0-5]\d(:[0-5]\d)?")


class Sessions:
    """A trading calendar: the trading days of an exchange, and its sessions on each of them.

    Parameters
    ----------
    days : iterable
        The trading days: texts such as 2024-01-31 or 20240131, dates, or a DatetimeIndex.
    sessions : iterable of (start, end) or (start, end, day)
        In the order of a trading day, as clock times: ``("09:00", "15:00")``. A night session
        begins some trading days earlier: ``("21:00", "23:00", -1)``.
    time_zone : str
        Of the exchange, as ``UTC+08:00``. Times of bars are read as UTC+08:00.

    Examples
    --------
    >>> Sessions(["2024-01-04", "2024-01-05"], [("21:00", "23:00", -1), ("09:00", "15:00")])
    <quor.Sessions of 2 days from 20240104 to 20240105, 2 sessions a day>
    """

    def __init__(self, days: Iterable[Any], sessions: Iterable[Sequence[Any]],
                 time_zone: str = "UTC+08:00") -> None:
        if not re.fullmatch(r"UTC[+-]\d\d:\d\d", time_zone):
            raise ValueError(f"a time zone is written as UTC+08:00, and not {time_zone!r}")
        self._days = sorted({_day_of(day) for day in days})
        self._times = [_session_of(session) for session in sessions]
        if not self._days or not self._times:
            raise ValueError("a calendar needs trading days and sessions")
        # The end of the range is outside of it.
        data = {"timezone": time_zone, "trade_dates": self._days[::-1], "daylight_save_times": [],
                "trade_times": [{"start_date": self._days[0], "end_date": "99991231",
                                 "times": self._times}],
                "special_trade_times": []}
        self.json = json.dumps({"status_code": 0, "data": data})

    def __repr__(self) -> str:
        return (f"<quor.Sessions of {len(self._days)} days from {self._days[0]} to "
                f"{self._days[-1]}, {len(self._times)} sessions a day>")


def _day_of(day: Any) -> str:
    text = day.strftime("%Y%m%d") if hasattr(day, "strftime") else str(day)
    digits = re.sub(r"[-/]", "", text[:10])
    if not re.fullmatch(r"\d{8}", digits) or len(text) > 10 and not hasattr(day, "astype"):
        raise ValueError(f"{day!r} is no day; write it as 2024-01-31")
    return digits


def _session_of(session: Sequence[Any]) -> dict[str, str]:
    if isinstance(session, str) or len(session) not in (2, 3):
        raise ValueError(f'a session is a start and an end, as ("09:00", "15:00"), and not '
                         f"{session!r}")
    start, end, offset = (*session, 0)[:3]
    for clock in (start, end):
        if not isinstance(clock, str) or not _CLOCK.fullmatch(clock):
            raise ValueError(f"{clock!r} is no time of day; write it as 09:35")
    if isinstance(offset, bool) or not isinstance(offset, int):
        raise ValueError(f"a session begins a whole number of trading days off, and not {offset!r}")
    start, end = (clock if len(clock) == 8 else f"{clock}:00" for clock in (start, end))
    return {"start_time": start, "end_time": end, "offset": str(offset), "trans_day_type": "1",
            "type": "continuous"}
