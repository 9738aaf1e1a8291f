"""A script with many parameters over one security."""

from __future__ import annotations

from concurrent.futures import ThreadPoolExecutor
from itertools import product
from typing import Any, Iterable, Mapping, Sequence

import numpy as np
import pandas as pd
from tqdm.auto import tqdm

from .errors import Finding, ScriptError
from .frames import Columns
from .parameters import capitals, check_names, numbers
from .scanning import processors
from .script import DAY, Script, Spec, layout_of, raise_error, warn_of


def sweep(
    script: Script | str,
    frame: Any,
    *,
    lines: Iterable[str] | None = None,
    columns: Columns = None,
    duplicates: str = "error",
    jobs: int | None = None,
    progress: bool = True,
    **ranges: Iterable[float],
) -> pd.DataFrame:
    """Runs a script over one frame with every combination of parameters.

    Each combination is compiled once. One compile can't serve for several: a parameter may decide
    how far a script looks back, which calls are one and the same, and what is drawn.

    Parameters
    ----------
    script : Script or str
    frame : DataFrame or mapping of arrays
        n bars, as for :meth:`Script.run`.
    lines : iterable of str, optional
        The lines to keep, by default all.
    columns, duplicates, jobs, progress
        As for :func:`scan`.
    **ranges : iterables of float
        The values of each parameter: ``N=range(5, 60), M=[2, 3]``.

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
    names = list(ranges)
    combinations = list(product(*(_values_of(name, values) for name, values in ranges.items())))
    if not names or not combinations:
        raise ValueError("a sweep needs parameters and values for each of them")
    spec = script.spec if isinstance(script, Script) else Spec(script, (), "", DAY, "", "")
    work = _Combinations(spec, names, frame, (columns, duplicates), lines, combinations[0])
    with ThreadPoolExecutor(jobs or processors(), "quor-sweep") as pool:
        blocks = list(tqdm(pool.map(work.run, combinations), total=len(combinations),
                           unit=" combinations", disable=None if progress else True))
    warn_of(work.notes)
    index = pd.MultiIndex.from_tuples(
        [(*values, line) for values in combinations for line in work.lines], names=[*names, "line"])
    return pd.DataFrame(np.concatenate(blocks).T, index=work.bars.index, columns=index)


def _values_of(name: str, values: Iterable[float]) -> list[float]:
    """The values of a parameter, each of which the engine can take."""
    if isinstance(values, (str, bytes)) or not isinstance(values, Iterable):
        raise ValueError(f"{name}={values!r}: a sweep needs several values, as in {name}=[2, 3]")
    values = list(values)
    for value in values:
        numbers([(name, value)])
    return values


class _Combinations:
    """What the combinations of a sweep have in common, taken from the first."""

    def __init__(self, spec: Spec, names: list[str], frame: Any, form: tuple[Columns, str],
                 lines: Iterable[str] | None, first: Sequence[float]) -> None:
        self._spec = spec
        self._names = names
        engine = self._engine(first)
        check_names(spec.source, [name for name, _ in numbers(zip(names, first))])
        self._layout = layout_of(spec.period, engine.report(), *form)
        self.bars = self._layout.bars(frame)
        self.notes: list[Finding] = []
        all_lines = [line["name"] for line in engine.lines()]
        wanted = [lines] if isinstance(lines, str) else lines
        self.lines = all_lines if wanted is None else [capitals(str(line)) for line in wanted]
        for line in self.lines:
            if line not in all_lines:
                raise ValueError(f"the script has no line {line!r}")
        self._places = [all_lines.index(line) for line in self.lines]

    def _engine(self, values: Sequence[float]) -> Any:
        chosen = dict(zip(self._names, values))
        parameters = (*self._spec.parameters, *numbers(chosen.items()))
        try:
            return self._spec._replace(parameters=parameters).engine()
        except ScriptError as error:
            raise _told(error, chosen) from None

    def run(self, values: Sequence[float]) -> np.ndarray:
        """The wanted lines, a row for each."""
        engine = self._engine(values)
        bars = self.bars
        if not engine.run(bars.times, bars.ticks, bars.fields, False):
            try:
                raise_error(engine)
            except ScriptError as error:
                raise _told(error, dict(zip(self._names, values))) from None
        self.notes = self._layout.notes(bars, engine.infinity())
        block = engine.values(0)[self._places]
        rows = engine.rows_of_bars()
        if rows is None:
            return block
        self._layout.check_times(bars, engine.row_count())
        return block[:, rows]


def _told(error: ScriptError, chosen: Mapping[str, float]) -> ScriptError:
    finding: Finding = error.args[0]
    where = ", ".join(f"{name}={value}" for name, value in chosen.items())
    return ScriptError(finding._replace(sentence=f"with {where}: {finding.sentence}"))
