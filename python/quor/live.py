"""Bars that come in one by one."""

from __future__ import annotations

import datetime
from typing import TYPE_CHECKING, Any, Mapping

import numpy as np

from . import _engine
from .arrays import Array
from .errors import raise_error, warn_of
from .events import NO_EVENTS, Events
from .frames import Columns
from .optional import pd
from .times import Clock, moment_of

if TYPE_CHECKING:
    from .script import Script


class Live:
    """A script over bars that come in one by one. Made by :meth:`Script.live`; for one thread.

    Pickling sends the script and its bars, which are calculated anew.
    """

    def __init__(self, script: Script, frame: Any, columns: Columns, duplicates: str) -> None:
        self._begin(script, {name: None for name, label in (columns or {}).items()
                             if label is None})
        if frame is None:
            return
        layout = script.layout(columns, duplicates)
        bars = layout.bars(frame)
        if bars.zoned is not None:
            self._clock = Clock(bars.zoned.tz)
        if not self._engine.run(bars.times, bars.ticks, bars.fields, False):
            raise_error(self._engine)
        layout.check_times(bars, len(self))
        if bars.zoned is not None and duplicates != "last":
            self._clock.note(bars.zoned)
        warn_of(layout.notes(bars, self._engine.infinity()), depth=4)

    def _begin(self, script: Script, without: Mapping[str, None]) -> None:
        self._script = script
        self._without = without
        self._engine = script.spec.engine()
        self._numbers = script.numbers_of(None)
        self._shown = script.lines
        self._layout = script.layout(without)
        self._clock = Clock(None)
        self._is_plain = False  #: so that the engine takes a bar at once
        self._events: Events | None = NO_EVENTS

    def __getstate__(self) -> dict[str, Any]:
        columns = [need.id for need in self._script.needs]
        return {"script": self._script, "without": self._without, "clock": self._clock,
                "bars": self._engine.bars(columns)}

    def __setstate__(self, state: Mapping[str, Any]) -> None:
        self._begin(state["script"], state["without"])
        self._clock = state["clock"]
        keys, fields = state["bars"]
        if not self._engine.run(_engine.seconds_of_keys(keys), 1, fields, False):
            raise_error(self._engine)

    def __len__(self) -> int:
        """The number of bars."""
        return self._engine.row_count()

    def __repr__(self) -> str:
        return f"<quor.Live of {len(self)} bars, lines {', '.join(self._shown)}>"

    def update(self, time: Any, **fields: float | None) -> dict[str, float]:
        """Appends the bar of a time, or replaces it, and calculates from it on.

        Parameters
        ----------
        time : datetime, Timestamp, datetime64 or text
            In the time zone of the first bars, if they had one. Texts are written as
            2024-01-31 09:35, perhaps with a zone behind them.
        **fields : float
            All fields that the script reads: ``open=9.5, close=9.7``; None for a null.

        Returns
        -------
        dict
            Each line's value at the last bar; NaN is null.
        """
        if self._is_plain:
            last = self._engine.step(time, fields)
            if last is not None:
                self._events = None
                if last is False:
                    raise_error(self._engine)
                return last  # type: ignore[no-any-return]
        self._take(time, fields)
        return self.last

    def _take(self, time: Any, fields: Mapping[str, float | None]) -> None:
        """A bar of whatever kind."""
        moment = np.array([np.datetime64(self._shown_at(time), "s")])
        bars = self._layout.bars({"time": moment, **_cells(fields)})
        if not self._engine.update(bars.times, bars.ticks, bars.fields, True):
            raise_error(self._engine)
        self._events = None
        warn_of(self._layout.notes(bars, self._engine.infinity()), depth=4)
        ids = self._layout.ids_of(("time", *fields))
        if all(name in ids for name in fields):
            self._engine.follow(
                tuple(fields), [ids[name] for name in fields], self._numbers)
            self._is_plain = self._clock.zone is None and not self._script.series

    def _shown_at(self, time: Any) -> datetime.datetime:
        """What the clock of the bars shows at a time."""
        moment = moment_of(time)
        if moment is None:
            raise ValueError("the bar has no time")
        zone = self._clock.zone
        if zone is None:
            if moment.tzinfo is not None:
                raise ValueError("the time has a zone and the bars have none")
            return moment
        stamp: Any = pd.Timestamp(moment)
        if stamp.tz is None:
            if stamp.tz_localize(zone, ambiguous=True, nonexistent="NaT") is pd.NaT:
                raise ValueError(f"the clock of the bars never shows {stamp}")
            return _plain(stamp)
        stamp = stamp.tz_convert(zone)
        self._clock.note(pd.DatetimeIndex([stamp]))
        return _plain(stamp.tz_localize(None))

    def _times(self, keys: Array) -> pd.DatetimeIndex:
        return self._clock.index(_engine.seconds_of_keys(keys))

    @property
    def last(self) -> dict[str, float]:
        """Each line's value at the last bar; empty without bars."""
        if not len(self):
            return {}
        last = self._engine.values(len(self) - 1)[self._numbers, 0]
        return dict(zip(self._shown, last.tolist()))

    def values(self, count: int | None = None) -> pd.DataFrame:
        """The lines over the last ``count`` bars, or over all, by time."""
        if count is not None and (isinstance(count, bool) or not isinstance(count, int)
                                  or count < 0):
            raise ValueError(f"count is a whole number from 0 on, and not {count!r}")
        first = 0 if count is None else max(len(self) - count, 0)
        index = self._times(self._engine.keys(first))
        values = self._engine.values(first)[self._numbers]
        return pd.DataFrame(values.T, index=index, columns=self._shown)

    @property
    def events(self) -> pd.DataFrame:
        """Notices and signals of the last update, as in :attr:`Script.events`."""
        if self._events is None:
            self._events = Events(self._engine.events(), lambda _, keys: self._times(keys))
        return self._events.frame()


def _plain(stamp: Any) -> datetime.datetime:
    moment: datetime.datetime = stamp.to_pydatetime(warn=False)
    return moment


def _cells(fields: Mapping[str, float | None]) -> dict[str, Array]:
    return {name: np.array([value]) for name, value in fields.items()}
