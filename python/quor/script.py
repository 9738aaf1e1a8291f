"""Scripts over the bars of one security, or of several at a time."""

from __future__ import annotations

import json
import re
import threading
from contextlib import contextmanager
from typing import Any, Hashable, Iterable, Iterator, Mapping, NamedTuple, Sequence

import numpy as np

from . import _engine
from .arrays import Array
from .context import DAY, Calendar, Constants, Context, Period, whole_text
from .errors import Finding, raise_error, warn_of
from .events import NO_EVENTS, Events, places_of
from .frames import Columns, Layout, Need, need_of
from .interrupts import interruptible
from .live import Live
from .notebook import Chart, html_of, plot
from .optional import pd
from .ordering import PanelEvents
from .outputs import Lines, Out, lines_of_run, out_of
from .panels import panel_of, run_panel
from .parameters import (
    capitals, check_names, declared, mapping_of, numbers, with_digits, with_overrides)
from .protocols import adopted
from .references import Frames, Series, series_of, wanted_of

#: The engine wants the moment of a notice under this id, and has none in a frame.
_NOTICE_TIME = 199
_ROW_KEY = 1

#: Words whose values follow the period, beside the time of the bars.
_PERIOD_WORDS = frozenset({"BARINTERVAL", "BARTYPE", "PERIOD", "TIME"})

#: An engine with more bars gives their memory back after a run.
_KEPT_ROWS = 1 << 16

#: Scripts for other contexts that one script remembers.
_SIBLINGS = 8


class Spec(NamedTuple):
    """All that a compile takes; can be hashed and sent to another process."""

    source: str
    parameters: tuple[tuple[str, float], ...] = ()
    condition: str = ""
    context: Context = Context()

    def engine(self) -> _engine.Engine:
        """A new engine with the compiled script. Raises ScriptError."""
        engine = _engine.Engine(with_digits(self.source, self.parameters), self.parameters,
                                self.condition, self.context.for_engine())
        raise_error(engine)
        return engine


class Line(NamedTuple):
    """A named line of a script."""

    name: str
    statement: int  #: counted from 0
    look: dict[str, Any] | None  #: shape, style, colour, width, dash; None if it isn't drawn


def needs_of(report: Mapping[str, Any]) -> list[Need]:
    """The columns that a script reads."""
    fields = [need_of(id_) for id_ in report["fields"] if id_ not in (_ROW_KEY, _NOTICE_TIME)]
    references = [Need(column, (source.lower(),)) for source, column, _ in report["references"]]
    return fields + references


def layout_of(period: int, report: Mapping[str, Any], columns: Columns, duplicates: str,
              series: Sequence[Series] = (), more: Sequence[Need] = ()) -> Layout:
    """How the columns of a script are found in frames, and ``more`` that it doesn't read."""
    asks = not _PERIOD_WORDS.isdisjoint(report["words"])
    needs = needs_of(report)
    needs += [need for need in more if need not in needs]
    return Layout(needs, columns, duplicates, asks and period >= DAY, series)


def compile(source: str, *, period: Period = DAY, code: str = "", market: str = "",
            calendar: Calendar = None, constants: Constants = None, references: Frames = None,
            parameters: Mapping[str, float] | None = None, override: bool = False,
            **params: float) -> Script:
    """Compiles a script.

    Parameters
    ----------
    source : str
    period : str or int
        Of the bars: "5min", "2hour", "day", "week" and so on, or a code such as 0x3005.
    code, market : str
        The security and its market, for the words that ask for them.
    calendar : Sessions, JSON as text or mapping, or path, optional
        The trading calendar, by which bars of a night belong to the next trading day.
    constants : mapping, optional
        MINPRICE, UNIT and SHARECOUNTPERUNIT of the security.
    references : mapping, optional
        Bars of the other securities and periods that the script reads, by code or period:
        ``{"000300": frame, "week": frame}``. See :class:`Reference` for the bars at which they
        count.
    parameters, **params : float
        The script's parameters by name, in any case: ``compile("A:MA(C,N);", N=5)``.
    override : bool
        Parameters take the place of the script's own CONST of their name.

    Raises
    ------
    ScriptError
        With code, sentence and place of the mistake.
    ParameterError
        For a parameter that the script doesn't read, or has a CONST for, or that hides a bar
        field; for one that is no finite number, or no number of 64 bits can hold.
    """
    source = text_of(source)
    context = Context().with_(period, code, market, calendar, constants)
    given = numbers([*mapping_of(parameters).items(), *params.items()])
    if override:
        source = with_overrides(source, given)
    script = Script(Spec(source, given, "", context))
    check_names(source, [name for name, _ in given])
    return script if references is None else script.with_references(references)


def text_of(source: Any) -> str:
    """The text of a script. Raises TypeError for what is none."""
    if isinstance(source, str):
        return whole_text("a script", source).removeprefix("\ufeff")
    if hasattr(source, "columns"):
        raise TypeError("the script comes first, and then the bars")
    name = "None" if source is None else type(source).__name__
    more = "; read the file first" if hasattr(source, "read_text") else ""
    raise TypeError(f"a script is a text, and not {name}{more}")


def as_script(script: Any, **context: Any) -> Script:
    """A script, or the one of a text, in a context."""
    if isinstance(script, Script):
        return script.within(**context)
    references = context.pop("references", None)
    given = {name: value for name, value in context.items() if value is not None}
    return compile(script, references=references, **given)


class Script:
    """A compiled script. Made by :func:`compile`; safe to use from several threads.

    Scripts of one text, parameters and context are equal. Pickling sends the text and compiles it
    anew.
    """

    def __init__(self, spec: Spec, series: tuple[Series, ...] = ()) -> None:
        self._spec = spec
        self._series = series
        engine = spec.engine()
        self._report = engine.report()
        self._lines = tuple(Line(**line) for line in engine.lines())
        self._needs = needs_of(self._report)
        declared_so = set(_engine.drawn_lines(spec.source))
        drawn = [line.name for line in self._lines if line.name in declared_so]
        self._shown = drawn or [line.name for line in self._lines]
        self._layouts: dict[Any, Layout] = {}
        self._siblings: dict[Any, Script] = {}
        self._idle = [engine]
        self._lock = threading.Lock()
        self._events: Events | PanelEvents = NO_EVENTS
        self._bar_notes: list[Finding] = []

    def __reduce__(self) -> tuple[Any, ...]:
        return Script, (self._spec, self._series)

    def __repr__(self) -> str:
        return f"<quor.Script of {len(self.lines)} lines: {', '.join(self.lines)}>"

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Script):
            return NotImplemented
        return self is other or (self._spec == other._spec and not self._series
                                 and not other._series)

    def __hash__(self) -> int:
        return hash(self._spec)

    def _repr_html_(self) -> str:
        return html_of(self)

    @property
    def source(self) -> str:
        """The text of the script."""
        return self._spec.source

    @property
    def lines(self) -> list[str]:
        """The names of the lines that results have unless others are asked for: those declared with
        ``:``, or all of a script that has none of these."""
        return list(self._shown)

    @property
    def line_details(self) -> list[Line]:
        """All lines with their statements and how they are drawn, those declared with ``:=``
        included."""
        return list(self._lines)

    @property
    def parameters(self) -> dict[str, float]:
        """The numbers that can be chosen: those given beside the script, and the defaults that it
        declares by ``CONST``, for which ``override=True`` lets others stand."""
        return {**declared(self.source), **dict(self._spec.parameters)}

    @property
    def fields(self) -> list[str]:
        """The columns that a frame must have, by the names that messages use."""
        served = {one.column for one in self._series}
        return [need.names[0] for need in self._needs if need.id not in served]

    @property
    def look_back(self) -> int:
        """How many bars the script looks back."""
        return int(self._report["look_back"])

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
        from 0; behind a panel ``security``, too.
        """
        return self._events.frame()

    def run(self, frame: Any, columns: Columns = None, duplicates: str = "error", *,
            by: str | None = None, lines: str | Iterable[str] | None = None, out: Out = None,
            keep: bool = False, jobs: int | None = None, period: Period | None = None,
            code: str | None = None, market: str | None = None, calendar: Calendar = None,
            constants: Constants = None, references: Frames = None) -> Any:
        """Calculates lines over all bars, of one security or of each in a panel.

        Parameters
        ----------
        frame : DataFrame, mapping of arrays, or what offers itself by a protocol of arrays
            n bars in any order. The index, or a column called ``date`` or ``time``, holds their
            times: datetimes of any resolution, in a time zone or in none. Parts of a second are
            dropped. Columns of fields go by the usual words in any case, such as ``open`` or
            ``Volume``. A panel has a column ``by`` with the security of each bar, or an index of
            securities and times in either order; or it is a wide frame for each field,
            ``{"close": frame, "high": frame}``, with a column for each security.
        columns : mapping, optional
            The frame's column for a field ("close", "time", ...); None for a field without data,
            which then is null.
        duplicates : str
            "error", or "last": of bars with one time the last counts, and all of them get its
            values.
        by : str, optional
            The column or the level of the index with the securities.
        lines : str or iterable of str, optional
            The lines to give: "all" for those declared with ``:=``, too, or some by name. By
            default :attr:`lines`.
        out : str, optional
            "long", the default, "wide" for a column for each line and security of a panel, or
            "numpy" for a mapping of lines to arrays, which is the default without pandas.
        keep : bool
            Keeps the memory of many bars for the next run.
        jobs : int, optional
            Threads for a panel, by default one per processor.
        period, code, market, calendar, constants, references
            As for :func:`compile`, in place of what was said there.

        Returns
        -------
        DataFrame
            n rows with the frame's index in its order, float64, a column for each line; NaN is
            null.

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
        out_of(out)
        script = self.within(period=period, code=code, market=market, calendar=calendar,
                             constants=constants, references=references)
        layout = script.layout(columns, duplicates)
        frame = adopted(frame)
        panel = panel_of(frame, by, layout)
        if panel is not None and (by is not None or panel.wide is not None or len(panel.names) > 1):
            result = run_panel(script, panel, layout, lines, out, jobs)
            self._events, self._bar_notes = PanelEvents(script, panel, layout), []
            return result
        numbers_of_lines = script.numbers_of(lines)
        bars = layout.bars(frame)
        once = len(bars.times) > _KEPT_ROWS and not keep
        with script.engine(keep, len(bars.times)) as engine:
            def work() -> tuple[Lines, Array | None, Any]:
                done = (engine.run_once(bars.times, bars.ticks, bars.fields) if once else
                        engine.run(bars.times, bars.ticks, bars.fields, True))
                if not done:
                    raise_error(engine)
                rows, events = engine.rows_of_bars(), engine.events()
                if once and rows is None:
                    return engine.take(numbers_of_lines), rows, events
                cells = np.empty((len(numbers_of_lines), engine.row_count()))
                engine.fill(cells, numbers_of_lines, 0)
                return cells, rows, events

            cells, rows, events = interruptible(work, len(bars.times))
            if rows is not None:
                layout.check_times(bars, engine.row_count())
                cells = np.asarray(cells)[:, rows]
            labels = bars.labels
            self._events = Events(events, lambda places, _: labels[places_of(places, rows)])
            self._bar_notes = layout.notes(bars, engine.infinity())
        warn_of(self._bar_notes)
        names = [script._lines[number].name for number in numbers_of_lines]
        return lines_of_run(cells, names, bars.index, out)

    def live(self, frame: Any = None, columns: Columns = None, duplicates: str = "error", *,
             period: Period | None = None, code: str | None = None, market: str | None = None,
             calendar: Calendar = None, constants: Constants = None,
             references: Frames = None) -> Live:
        """Follows bars as they come in, from the bars of ``frame`` on, which raise no events."""
        script = self.within(period=period, code=code, market=market, calendar=calendar,
                             constants=constants, references=references)
        return Live(script, frame, columns, duplicates)

    def plot(self, frame: Any, columns: Columns = None, duplicates: str = "error", *,
             last: int = 120, theme: str = "light", size: tuple[int, int] = (1200, 800),
             volume: bool = True) -> Chart:
        """Draws the last bars of a frame and what the script draws, as ``quor chart`` does; the
        program must be installed.

        Parameters
        ----------
        frame, columns, duplicates
            As for :meth:`run`.
        last : int
            How many bars to draw.
        theme : str
            "light" or "dark".
        size : tuple of int
            Width and height in pixels.
        volume : bool
            Draws the volume where the script has no panel of its own.
        """
        return plot(self, frame, columns, duplicates, last, theme, size, volume)

    @property
    def spec(self) -> Spec:
        """What this script was compiled from."""
        return self._spec

    @property
    def needs(self) -> list[Need]:
        """The columns that the script reads, with the engine's ids."""
        return list(self._needs)

    @property
    def series(self) -> tuple[Series, ...]:
        """The references that the script has been given."""
        return self._series

    def within(self, *, period: Period | None = None, code: str | None = None,
               market: str | None = None, calendar: Calendar = None, constants: Constants = None,
               references: Frames = None) -> Script:
        """This script in another context: what isn't None stands in place of what it has."""
        context = self._spec.context.with_(period, code, market, calendar, constants)
        script = self
        if context != self._spec.context:
            with self._lock:
                found = self._siblings.get(context)
            if found is None:
                found = Script(self._spec._replace(context=context), self._series)
                with self._lock:
                    self._siblings[context] = found
                    while len(self._siblings) > _SIBLINGS:
                        del self._siblings[next(iter(self._siblings))]
            script = found
        return script if references is None else script.with_references(references)

    def with_references(self, references: Frames) -> Script:
        """This script with bars of other securities and periods."""
        series = series_of(references, wanted_of(self._report), _columns_of)
        given = {one.column for one in series}
        kept = tuple(one for one in self._series if one.column not in given)
        return Script(self._spec, kept + series)

    def with_condition(self, condition: str) -> Script:
        """This script with a condition as one more line."""
        if condition == self._spec.condition:
            return self
        return Script(self._spec._replace(condition=condition), self._series)

    def numbers_of(self, lines: str | Iterable[str] | None) -> list[int]:
        """Which of all lines are asked for. Raises ValueError for one that there isn't."""
        names = [line.name for line in self._lines]
        if lines is None:
            return [names.index(name) for name in self._shown]
        if isinstance(lines, str) and lines.lower() == "all" and "ALL" not in names:
            return list(range(len(names)))
        if not isinstance(lines, Iterable):
            raise ValueError(f'lines are names of lines or "all", and not {lines!r}')
        wanted = [lines] if isinstance(lines, str) else [str(line) for line in lines]
        for line in wanted:
            if capitals(line) not in names:
                raise ValueError(f"the script has no line {line!r}; it has {', '.join(names)}")
        return [names.index(capitals(line)) for line in wanted]

    def layout(self, columns: Columns, duplicates: str = "error",
               more: tuple[Need, ...] = ()) -> Layout:
        """How the script's columns are found in frames, and ``more`` that it doesn't read."""
        if columns is not None and not isinstance(columns, Mapping):
            raise ValueError('columns is a mapping, such as {"close": "last price"}, and not '
                             f"{columns!r:.80}")
        for name, label in (columns or {}).items():
            if not isinstance(label, Hashable):
                raise ValueError(f"columns: {name!r} is one column, and not {label!r:.80}")
        key = (tuple(sorted(columns.items(), key=str)) if columns else (), duplicates, more)
        layout = self._layouts.get(key)
        if layout is None:
            layout = layout_of(self._spec.context.period, self._report, columns, duplicates,
                               self._series, more)
            self._layouts[key] = layout
        return layout

    @contextmanager
    def engine(self, keep: bool = False, bars: int = 0) -> Iterator[_engine.Engine]:
        """An engine that nobody else works with, for so many bars; a new one only for a further
        thread."""
        with self._lock:
            engine = self._idle.pop() if self._idle else None
        if engine is None:
            engine = self._spec.engine()
        try:
            yield engine
        except Exception:
            self._give_back(engine, keep, bars)
            raise
        self._give_back(engine, keep, bars)  # not behind an interrupt, over which it works on

    def _give_back(self, engine: _engine.Engine, keep: bool, bars: int) -> None:
        if not keep and max(engine.row_count(), bars) > _KEPT_ROWS:
            return
        with self._lock:
            self._idle.append(engine)


def _columns_of(frame: Any, fields: Sequence[int]) -> tuple[Array, dict[int, Array]]:
    """Seconds and the values of fields of a reference's bars."""
    layout = Layout([need_of(field) for field in fields], None, "error")
    if isinstance(frame, str) or hasattr(frame, "__fspath__"):
        bars = layout.bars_of_file(frame)
    else:
        bars = layout.bars(frame)
    return bars.times // bars.ticks, dict(bars.fields)


_RECORD_KEY = re.compile(r'[{,]"(\w+)":')


def record_of(text: str) -> dict[str, Any]:
    """A drawing record. The engine doesn't escape what JSON would want escaped in texts."""
    try:
        return dict(json.loads(text))
    except ValueError:
        marks = list(_RECORD_KEY.finditer(text))
        ends = [mark.start() for mark in marks[1:]] + [len(text) - 1]
        cells = {mark.group(1): text[mark.end():end] for mark, end in zip(marks, ends)}
        return {key: cell[1:-1] if cell.startswith('"') else json.loads(cell)
                for key, cell in cells.items()}
