"""A script with many parameters over one security."""

from __future__ import annotations

import threading
from itertools import product
from typing import Any, Iterable, Mapping, Sequence

import numpy as np

from . import _engine
from .arrays import Array
from .context import Calendar, Constants, Period
from .errors import Finding, ParameterError, ScriptError, raise_error, warn_of
from .frames import Columns
from .optional import pd
from .outputs import Out, out_of
from .panels import over_threads
from .parameters import check_names, mapping_of, numbers, with_digits, with_overrides
from .pools import check_jobs
from .progress import progress_bar
from .references import Frames
from .script import Script, Spec, as_script, layout_of, text_of

#: Combinations that a thread works off before others are looked at.
_CHUNK = 16


def sweep(
    script: Script | str,
    frame: Any,
    *,
    lines: str | Iterable[str] | None = None,
    out: Out = None,
    columns: Columns = None,
    duplicates: str = "error",
    jobs: int | None = None,
    progress: bool = True,
    override: bool = False,
    parameters: Mapping[str, Iterable[float]] | None = None,
    period: Period | None = None,
    code: str | None = None,
    market: str | None = None,
    calendar: Calendar = None,
    constants: Constants = None,
    references: Frames = None,
    **ranges: Iterable[float],
) -> Any:
    """Runs a script over one frame with every combination of parameters.

    Each combination is compiled once. One compile can't serve for several: a parameter may decide
    how far a script looks back, which calls are one and the same, and what is drawn.

    Parameters
    ----------
    script : Script or str
    frame : DataFrame or mapping of arrays
        n bars, as for :meth:`Script.run`.
    lines : str or iterable of str, optional
        The lines to keep, as for :meth:`Script.run`.
    out : str, optional
        "long" or "wide", which are one here, or "numpy" for an array of three dimensions:
        combinations, lines, bars.
    columns, duplicates, jobs, progress
        As for :func:`scan`.
    override : bool
        The parameters take the place of the script's own CONST of their names.
    parameters, **ranges : iterables of float
        The values of each parameter: ``N=range(5, 60), M=[2, 3]``.
    period, code, market, calendar, constants, references
        As for :func:`compile`.

    Returns
    -------
    DataFrame
        n rows with the frame's index, float64; the columns are by the parameters, in the order of
        the ranges, and by ``line``.

    Raises
    ------
    ValueError
        Without values for a parameter, for an unknown line, and as :meth:`Script.run` does.
    ScriptError
        For a combination that doesn't compile or calculate; the sentence tells which.
    ParameterError
        As :func:`compile` does.

    Warns
    -----
    BarsWarning
        As :meth:`Script.run` does.
    """
    form = out_of(out)
    check_jobs(jobs)
    ranges = {**mapping_of(parameters), **ranges}
    values = [_values_of(name, values) for name, values in ranges.items()]
    combinations = list(product(*values))
    if not ranges or not combinations:
        raise ValueError("a sweep needs parameters and values for each of them, as in N=[2, 3]")
    spec, script = _spec_of(script, list(ranges), combinations[0], override, {
        "period": period, "code": code, "market": market, "calendar": calendar,
        "constants": constants, "references": references})
    work = _Combinations(script, spec, list(ranges), frame, (columns, duplicates), lines,
                         combinations)
    with progress_bar(len(combinations), " combinations", progress) as bar:
        over_threads(lambda chunk: work.run(chunk, bar.update), work.chunks(), jobs)
    warn_of(work.notes)
    cells = work.result()
    if form == "numpy":
        return cells.reshape(len(combinations), len(work.lines), -1)
    index = pd.MultiIndex.from_product([*values, work.lines], names=[*ranges, "line"])
    return pd.DataFrame(cells.T, index=work.bars.index, columns=index, copy=False)


def _values_of(name: str, values: Iterable[float]) -> list[float]:
    """The values of a parameter, each of which the engine can take."""
    if isinstance(values, (str, bytes)) or not isinstance(values, Iterable):
        raise ValueError(f"{name}={values!r}: a sweep needs several values, as in {name}=[2, 3]")
    values = list(values)
    for value in values:
        numbers([(name, value)])
    if len(set(values)) < len(values):
        raise ValueError(f"{name}: a value comes twice")
    return values


def _spec_of(script: Any, names: list[str], first: Sequence[float], override: bool,
             context: Mapping[str, Any]) -> tuple[Spec, Script]:
    """What all combinations are compiled from, and the script of the first."""
    given = numbers(zip(names, first))
    if isinstance(script, Script):
        base = script.within(**context).spec
    else:
        own = {name: value for name, value in context.items() if name != "references"}
        base = as_script("A:=1;", **own).spec._replace(source=text_of(script))
    if override:
        base = base._replace(source=with_overrides(base.source, given))
    check_names(base.source, [name for name, _ in given])
    try:
        compiled = Script(base._replace(parameters=(*base.parameters, *given)),
                          script.series if isinstance(script, Script) else ())
    except ScriptError as error:
        raise _told(error, dict(zip(names, first))) from None
    references = context["references"]
    return base, compiled if references is None else compiled.with_references(references)


class _Combinations:
    """What the combinations of a sweep have in common."""

    def __init__(self, script: Script, spec: Spec, names: list[str], frame: Any,
                 form: tuple[Columns, str], lines: str | Iterable[str] | None,
                 combinations: list[tuple[float, ...]]) -> None:
        self._spec = spec
        self._names = names
        self._combinations = combinations
        self._layout = layout_of(spec.context.period, script.report, *form, script.series)
        self.bars = self._layout.bars(frame)
        self.notes: list[Finding] = []
        self._numbers = script.numbers_of(lines)
        self.lines = [script.line_details[number].name for number in self._numbers]
        self._rows: Array | None = None
        self._count = -1
        self._cells = np.empty((len(combinations) * len(self.lines), 0))
        self._lock = threading.Lock()
        self._threads = threading.local()

    def chunks(self) -> list[range]:
        """Numbers of combinations; the first alone tells how many rows there are."""
        count = len(self._combinations)
        self.run(range(0, 1), lambda: None)
        return [range(first, min(first + _CHUNK, count)) for first in range(1, count, _CHUNK)]

    def run(self, chunk: range, tell: Any) -> None:
        """The wanted lines of some combinations."""
        for number in chunk:
            self._run(number)
            with self._lock:
                tell()

    def result(self) -> Array:
        """A row for each combination and line."""
        return self._cells if self._rows is None else self._cells[:, self._rows]

    def _engine_for(self, values: Sequence[float]) -> _engine.Engine:
        """This thread's engine with the script of a combination."""
        parameters = (*self._spec.parameters, *numbers(zip(self._names, values)))
        spec = self._spec._replace(parameters=parameters)
        engine = getattr(self._threads, "engine", None)
        if with_digits(spec.source, parameters) != spec.source:
            return spec.engine()
        if engine is None:
            engine = self._threads.engine = spec.engine()
        else:
            engine.restart(parameters)
            raise_error(engine)
        return engine

    def _run(self, number: int) -> None:
        values = self._combinations[number]
        bars = self.bars
        try:
            engine = self._engine_for(values)
            if not engine.run(bars.times, bars.ticks, bars.fields, False):
                raise_error(engine)
        except ScriptError as error:
            raise _told(error, dict(zip(self._names, values))) from None
        if self._count < 0:
            self._count = engine.row_count()
            self._rows = engine.rows_of_bars()
            self._layout.check_times(bars, self._count)
            self.notes = self._layout.notes(bars, engine.infinity())
            self._cells = np.empty((len(self._cells), self._count))
        engine.fill(self._cells, self._numbers, number * len(self._numbers))


def _told(error: ScriptError, chosen: Mapping[str, float]) -> ScriptError:
    finding: Finding = error.args[0]
    where = ", ".join(f"{name}={value}" for name, value in chosen.items())
    kind = ParameterError if isinstance(error, ParameterError) else ScriptError
    return kind(finding._replace(sentence=f"with {where}: {finding.sentence}"))
