"""Scripts over the bars of one security."""

from __future__ import annotations

import json
import re
import threading
import warnings
from contextlib import contextmanager
from typing import Any, Callable, Iterator, Mapping, NamedTuple, Sequence

import numpy as np
import pandas as pd

from . import _engine
from .errors import BarsWarning, Finding, ScriptError
from .frames import Columns, Layout, Need, need_of
from .parameters import check_names, numbers
from .times import Clock, index_of, moment_of

DAY = 0x4000
_FIRST_PERIOD = 0x1000

#: The engine wants the moment of a notice under this id, and has none in a frame.
_NOTICE_TIME = 199
_ROW_KEY = 1

#: Words whose values follow the period, beside the time of the bars.
_PERIOD_WORDS = frozenset({"BARINTERVAL", "BARTYPE", "PERIOD", "TIME"})


class Spec(NamedTuple):
    """All that a compile takes; can be hashed and sent to another process."""

    source: str
    parameters: tuple[tuple[str, float], ...]
    condition: str
    period: int
    security: str
    market: str

    def engine(self) -> _engine.Engine:
        """A new engine with the compiled script. Raises ScriptError."""
        engine = _engine.Engine(*self)
        raise_error(engine)
        return engine


class Line(NamedTuple):
    """A named line of a script."""

    name: str
    statement: int  #: counted from 0
    look: dict[str, Any] | None  #: shape, style, colour, width, dash; None if it isn't drawn


def raise_error(engine: _engine.Engine) -> None:
    """Raises ScriptError if the last compile or calculation of an engine failed."""
    error = engine.error()
    if error is not None:
        raise error_of(error)


def error_of(finding: Sequence[Any]) -> ScriptError:
    """The exception for an error as the engine gives it."""
    return ScriptError(Finding(*finding))


def needs_of(report: Mapping[str, Any]) -> list[Need]:
    """The columns that a script reads."""
    fields = [need_of(id_) for id_ in report["fields"] if id_ not in (_ROW_KEY, _NOTICE_TIME)]
    references = [Need(column, (source.lower(),)) for source, column in report["references"]]
    return fields + references


def layout_of(
    period: int, report: Mapping[str, Any], columns: Columns, duplicates: str
) -> Layout:
    """How the columns of a script are found in frames."""
    asks = not _PERIOD_WORDS.isdisjoint(report["words"])
    return Layout(needs_of(report), columns, duplicates, asks and period >= DAY)


def compile(source: str, *, period: int = DAY, security: str = "", market: str = "",
            parameters: Mapping[str, float] | None = None, **params: float) -> Script:
    """Compiles a script.

    Parameters
    ----------
    source : str
    period : int
        The period code of the bars: 0x4000 one day, 0x3005 five minutes.
    security, market : str
        What the words that ask for them read.
    parameters, **params : float
        The script's parameters by name, in any case: ``compile("A:MA(C,N);", N=5)``.

    Raises
    ------
    ScriptError
        With code, sentence and place of the mistake.
    ParameterError
        For a parameter that the script doesn't read, or has a CONST for, or that hides a bar
        field; for one that is no finite number, or has more than six decimals.
    """
    if isinstance(period, bool) or not isinstance(period, int) or period < _FIRST_PERIOD:
        raise ValueError(f"period is a code, 0x4000 for a day and 0x3005 for five minutes, and not "
                         f"{period!r}")
    source = source.removeprefix("\ufeff")
    given = numbers([*(parameters or {}).items(), *params.items()])
    script = Script(Spec(source, given, "", period, security, market))
    check_names(source, [name for name, _ in given])
    return script


def as_script(script: Script | str) -> Script:
    """A script, or the one of a text."""
    return script if isinstance(script, Script) else compile(script)


class Script:
    """A compiled script. Made by :func:`compile`; safe to use from several threads.

    Pickling sends the text and compiles it anew.
    """

    def __init__(self, spec: Spec) -> None:
        self._spec = spec
        engine = spec.engine()
        self._report = engine.report()
        self._lines = tuple(Line(**line) for line in engine.lines())
        self._needs = needs_of(self._report)
        self._layouts: dict[Any, Layout] = {}
        self._idle = [engine]
        self._lock = threading.Lock()
        self._events = _no_events()
        self._bar_notes: list[Finding] = []

    def __reduce__(self) -> tuple:
        return Script, (self._spec,)

    def __repr__(self) -> str:
        return f"<quor.Script of {len(self._lines)} lines: {', '.join(self.lines)}>"

    @property
    def source(self) -> str:
        """The text of the script."""
        return self._spec.source

    @property
    def lines(self) -> list[str]:
        """The names of the lines, in the order of the script: the columns of results."""
        return [line.name for line in self._lines]

    @property
    def line_details(self) -> list[Line]:
        """The lines with their statements and how they are drawn."""
        return list(self._lines)

    @property
    def fields(self) -> list[str]:
        """The columns that a frame must have, by the names that messages use."""
        return [need.names[0] for need in self._needs]

    @property
    def look_back(self) -> int:
        """How many bars the script looks back."""
        return self._report["look_back"]

    @property
    def report(self) -> dict[str, Any]:
        """What the script needs: look_back, fields and references by the engine's column ids,
        needs_market_constants, needs_calendar, has_notices, and the words that it calls."""
        return dict(self._report)

    @property
    def findings(self) -> list[Finding]:
        """Advice: what is allowed and yet can't be meant, in the script and in the bars of the last
        :meth:`run` of this object."""
        return [Finding(*finding) for finding in self._spec.engine().findings()] + self._bar_notes

    @property
    def shapes(self) -> list[dict[str, Any]]:
        """What the script draws: one drawing record each, as the engine's host guide has them."""
        with self.engine() as engine:
            return [record_of(text) for text in engine.shapes()]

    @property
    def events(self) -> pd.DataFrame:
        """Notices and signals of the last :meth:`run` of this object, oldest first.

        Columns: ``time`` as in the frame's index, ``word`` ("NOTICE", "BK", "SP", ...), ``name`` of
        a notice, ``quantity`` of a signal (NaN if the script gives none) and ``statement``, counted
        from 0.
        """
        return self._events.copy()

    def run(self, frame: Any, columns: Columns = None, duplicates: str = "error") -> pd.DataFrame:
        """Calculates all lines over all bars.

        Parameters
        ----------
        frame : DataFrame or mapping of arrays
            n bars in any order. The index, or a column called ``date`` or ``time``, holds their
            times: datetimes of any resolution, in a time zone or in none. Parts of a second are
            dropped. Columns of fields go by the usual words in any case, such as ``open`` or
            ``Volume``.
        columns : mapping, optional
            The frame's column for a field ("close", "time", ...); None for a field without data,
            which then is null.
        duplicates : str
            "error", or "last": of bars with one time the last counts, and all of them get its
            values.

        Returns
        -------
        DataFrame
            n rows with the frame's index, float64, a column for each line; NaN is null.

        Raises
        ------
        ValueError
            For a needed column that isn't there, for values that are no numbers, for a time that
            isn't there, for times that repeat, for different times within one second.
        ScriptError
            For a calculation that fails.

        Warns
        -----
        BarsWarning
            For an infinity among the values, and for several bars a day in a script that asks for
            the period, which is a day or longer.
        """
        layout = self.layout(columns, duplicates)
        bars = layout.bars(frame)
        with self.engine() as engine:
            if not engine.run(bars.times, bars.ticks, bars.fields, True):
                raise_error(engine)
            values = engine.values(0)
            rows = engine.rows_of_bars()
            if rows is not None:
                layout.check_times(bars, engine.row_count())
                values = values[:, rows]
            self._events = _events_of(
                engine, lambda places, _: bars.labels[_places(places, rows)])
            self._bar_notes = layout.notes(bars, engine.infinity())
        warn_of(self._bar_notes)
        return pd.DataFrame(values.T, index=bars.index, columns=self.lines, copy=False)

    def live(
        self, frame: Any = None, columns: Columns = None, duplicates: str = "error"
    ) -> Live:
        """Follows bars as they come in, from the bars of ``frame`` on, which raise no events."""
        return Live(self, frame, columns, duplicates)

    @property
    def spec(self) -> Spec:
        """What this script was compiled from."""
        return self._spec

    def layout(self, columns: Columns, duplicates: str = "error") -> Layout:
        """How the script's columns are found in frames."""
        key = (tuple(sorted(columns.items(), key=str)) if columns else (), duplicates)
        layout = self._layouts.get(key)
        if layout is None:
            layout = self._layouts[key] = layout_of(
                self._spec.period, self._report, columns, duplicates)
        return layout

    @contextmanager
    def engine(self) -> Iterator[_engine.Engine]:
        """An engine that nobody else works with; a new one only for a further thread."""
        with self._lock:
            engine = self._idle.pop() if self._idle else None
        if engine is None:
            engine = self._spec.engine()
        try:
            yield engine
        finally:
            with self._lock:
                self._idle.append(engine)


class Live:
    """A script over bars that come in one by one. Made by :meth:`Script.live`; for one thread."""

    def __init__(self, script: Script, frame: Any, columns: Columns, duplicates: str) -> None:
        self._engine = script.spec.engine()
        self._lines = script.lines
        without = {name: None for name, label in (columns or {}).items() if label is None}
        self._layout = script.layout(without)
        self._clock = Clock(None)
        self._events = _no_events()
        if frame is not None:
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

    def __len__(self) -> int:
        """The number of bars."""
        return self._engine.row_count()

    def update(self, time: Any, **fields: float) -> dict[str, float]:
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
        stamp = self._stamp(time)
        bars = self._layout.bars({"time": np.array([stamp.to_datetime64()]), **_cells(fields)})
        if not self._engine.update(bars.times, bars.ticks, bars.fields, True):
            raise_error(self._engine)
        warn_of(self._layout.notes(bars, self._engine.infinity()))
        self._events = _events_of(self._engine, lambda _, keys: self._times(keys))
        return self.last

    def _stamp(self, time: Any) -> pd.Timestamp:
        """What the clock of the bars shows at a time."""
        stamp = moment_of(time)
        if stamp is pd.NaT:
            raise ValueError("the bar has no time")
        zone = self._clock.zone
        if zone is None:
            if stamp.tz is not None:
                raise ValueError("the time has a zone and the bars have none")
            return stamp
        if stamp.tz is None:
            if stamp.tz_localize(zone, ambiguous=True, nonexistent="NaT") is pd.NaT:
                raise ValueError(f"the clock of the bars never shows {stamp}")
            return stamp
        stamp = stamp.tz_convert(zone)
        self._clock.note(pd.DatetimeIndex([stamp]))
        return stamp.tz_localize(None)

    def _times(self, keys: np.ndarray) -> pd.DatetimeIndex:
        return self._clock.index(_engine.seconds_of_keys(keys))

    @property
    def last(self) -> dict[str, float]:
        """Each line's value at the last bar; empty without bars."""
        if not len(self):
            return {}
        return dict(zip(self._lines, self._engine.values(len(self) - 1)[:, 0].tolist()))

    def values(self, count: int | None = None) -> pd.DataFrame:
        """The lines over the last ``count`` bars, or over all, by time."""
        first = 0 if count is None else max(len(self) - count, 0)
        index = self._times(self._engine.keys(first))
        return pd.DataFrame(self._engine.values(first).T, index=index, columns=self._lines)

    @property
    def events(self) -> pd.DataFrame:
        """Notices and signals of the last update, as in :attr:`Script.events`."""
        return self._events.copy()


def times_of_keys(keys: np.ndarray) -> pd.DatetimeIndex:
    """The times that row keys spell."""
    return index_of(_engine.seconds_of_keys(keys))


def warn_of(notes: list[Finding], depth: int = 3) -> None:
    """Warns of what the bars hold, at the place of the caller's caller or further out."""
    for finding in notes:
        warnings.warn(f"{finding.sentence}; {finding.suggestion}", BarsWarning, stacklevel=depth)


_RECORD_KEY = re.compile(r'[{,]"(\w+)":')


def record_of(text: str) -> dict[str, Any]:
    """A drawing record. The engine doesn't escape what JSON would want escaped in texts."""
    try:
        return json.loads(text)
    except ValueError:
        marks = list(_RECORD_KEY.finditer(text))
        ends = [mark.start() for mark in marks[1:]] + [len(text) - 1]
        cells = {mark.group(1): text[mark.end():end] for mark, end in zip(marks, ends)}
        return {key: cell[1:-1] if cell.startswith('"') else json.loads(cell)
                for key, cell in cells.items()}


def _cells(fields: Mapping[str, float]) -> dict[str, np.ndarray]:
    return {name: np.array([value]) for name, value in fields.items()}


def _no_events() -> pd.DataFrame:
    return pd.DataFrame({"time": pd.DatetimeIndex([]), "word": [], "name": [], "quantity": [],
                         "statement": []})


def _events_of(
    engine: _engine.Engine, times_of: Callable[[list[int], np.ndarray], Any]
) -> pd.DataFrame:
    """The events of a calculation, with the times of their rows and keys."""
    events = engine.events()
    if not events:
        return _no_events()
    row, key, word, name, quantity, statement = zip(*events)
    return pd.DataFrame({
        "time": times_of(list(row), np.array(key)), "word": word, "name": name,
        "quantity": [np.nan if number == -1 else float(number) for number in quantity],
        "statement": statement,
    })


def _places(rows_of_events: list[int], rows: np.ndarray | None) -> np.ndarray:
    """Where in the frame rows of the engine stand; of repeated bars the last."""
    if rows is None:
        return np.array(rows_of_events)
    places = np.zeros(int(rows.max()) + 1, np.int64)
    places[rows] = np.arange(len(rows))
    return places[rows_of_events]
