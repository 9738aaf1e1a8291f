"""Scripts as a notebook shows them: the source with its findings, and the chart."""

from __future__ import annotations

import html
import math
import os
import shutil
import subprocess
import tempfile
from pathlib import Path
from typing import TYPE_CHECKING, Any, Sequence


from .arrays import Array
from .errors import Finding
from .frames import Bars, Columns, need_of
from .times import index_of

if TYPE_CHECKING:
    from .script import Script

_PRE = "margin:0;background:none;color:inherit;line-height:1.4"
_COLOURS = {"error": "#c62828", "warning": "#b26a00"}

#: The fields of a chart's bars, beside those that the script reads.
_BAR_FIELDS = (7, 8, 9, 11, 13)


def html_of(script: Script) -> str:
    """The source with its findings in their places, and what the script needs."""
    findings = script.findings
    rows = []
    for number, line in enumerate(script.source.splitlines() or [""], 1):
        here = [finding for finding in findings if finding.line == number]
        rows.append(f'<pre style="{_PRE}">{_marked(line, here)}</pre>')
        rows += [_told(finding) for finding in here]
    rows += [_told(finding) for finding in findings if not finding.line]
    needs = [("lines", ", ".join(script.lines)), ("fields", ", ".join(script.fields)),
             ("looks back", f"{script.look_back} bars"),
             ("parameters", ", ".join(f"{name}={value:g}"
                                      for name, value in script.parameters.items()))]
    cells = "; ".join(f"<b>{name}</b> {html.escape(text)}" for name, text in needs if text)
    return f'<div>{"".join(rows)}<p style="font-size:90%">{cells}</p></div>'


def _marked(line: str, findings: Sequence[Finding]) -> str:
    """A line of source with waves below what is found in it."""
    ends = sorted({0, len(line), *(min(max(place, 0), len(line)) for finding in findings
                                   for place in (finding.column - 1,
                                                 finding.column - 1 + finding.length))})
    parts = []
    for start, end in zip(ends, ends[1:]):
        text = html.escape(line[start:end])
        over = [finding for finding in findings
                if finding.column - 1 <= start < finding.column - 1 + finding.length]
        if over:
            text = (f'<span style="text-decoration:underline wavy {_COLOURS[over[0].severity]}">'
                    f"{text}</span>")
        parts.append(text)
    return "".join(parts)


def _told(finding: Finding) -> str:
    colour = _COLOURS[finding.severity]
    return (f'<div style="color:{colour};font-size:90%;padding-left:2em">'
            f"{html.escape(str(finding))}</div>")


class Chart:
    """A picture of bars and of what a script draws. Notebooks show it; ``str`` is the SVG."""

    def __init__(self, svg: str) -> None:
        self._svg = svg

    def __str__(self) -> str:
        return self._svg

    def __repr__(self) -> str:
        return f"<quor.Chart of {len(self._svg)} bytes; save it by .save(path)>"

    def _repr_svg_(self) -> str:
        return self._svg

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes the SVG into a file."""
        Path(path).write_text(self._svg, encoding="utf-8")


def plot(script: Script, frame: Any, columns: Columns, duplicates: str, last: int, theme: str,
         size: tuple[int, int], volume: bool) -> Chart:
    """The chart that the command line draws."""
    _check(last, theme, size)
    program = shutil.which(os.environ.get("QUOR_PROGRAM", "quor"))
    if program is None:
        raise RuntimeError("charts are drawn by the program quor, which isn't in PATH; install the "
                           "package quor, or name the program in QUOR_PROGRAM")
    bars = _bars_for(script, frame, columns, duplicates)
    with tempfile.TemporaryDirectory(prefix="quor-") as folder:
        command = [program, "chart", str(_written(folder, "script.quor", script.source)),
                   "--bars", str(_csv(folder, "bars.csv", bars, dict(bars.fields))),
                   "--out", str(Path(folder) / "chart.svg"), "--last", str(last), "--theme", theme,
                   "--size", "x".join(map(str, size)), *_context(script, folder),
                   *_references(script, folder, bars)]
        if not volume:
            command.append("--no-volume")
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        if done.returncode:
            raise RuntimeError(f"the chart could not be drawn: {done.stderr.strip()}")
        return Chart((Path(folder) / "chart.svg").read_text(encoding="utf-8"))


def _check(last: Any, theme: Any, size: Any) -> None:
    """Raises ValueError for what the program would refuse in words of its own."""
    if not _is_count(last):
        raise ValueError(f"last must be a whole number from 1 on, and not {last!r}")
    if theme not in ("light", "dark"):
        raise ValueError(f'theme is "light" or "dark", and not {theme!r}')
    if not isinstance(size, (tuple, list)) or len(size) != 2 or not all(map(_is_count, size)):
        raise ValueError(f"size is width and height in pixels, as (1200, 800), and not {size!r}")


def _is_count(value: Any) -> bool:
    return isinstance(value, int) and not isinstance(value, bool) and value > 0


def _bars_for(script: Script, frame: Any, columns: Columns, duplicates: str) -> Bars:
    """The bars with what candles are drawn from, where the frame has it."""
    more: list[Any] = []
    for id_ in _BAR_FIELDS:
        try:
            script.layout(columns, duplicates, (need_of(id_),)).bars(frame)
        except ValueError:
            continue
        more.append(need_of(id_))
    bars = script.layout(columns, duplicates, tuple(more)).bars(frame)
    if not len(bars.times):
        raise ValueError("there are no bars to draw")
    if 11 not in dict(bars.fields):
        raise ValueError("a chart needs the column 'close'")
    return bars


def _written(folder: str, name: str, text: str) -> Path:
    path = Path(folder) / name
    path.write_text(text, encoding="utf-8")
    return path


def _csv(folder: str, name: str, bars: Bars, fields: dict[int, Array]) -> Path:
    names = {id_: need_of(id_).names[0] for id_ in fields}
    texts = index_of(bars.times // bars.ticks).strftime("%Y-%m-%d %H:%M:%S")
    rows = ["date," + ",".join(names.values())]
    for time, *values in zip(texts, *(fields[id_].tolist() for id_ in names)):
        cells = ("" if math.isnan(value) else repr(float(value)) for value in values)
        rows.append(f"{time},{','.join(cells)}")
    return _written(folder, name, "\n".join(rows) + "\n")


def _context(script: Script, folder: str) -> list[str]:
    spec = script.spec
    words = ["--period", hex(spec.context.period)]
    for name, value in spec.parameters:
        words += ["--set", f"{name}={value:.6f}"]
    for option, text in (("--code", spec.context.code), ("--market", spec.context.market)):
        words += [option, text] if text else []
    for name, number in zip(("MINPRICE", "UNIT", "SHARECOUNTPERUNIT"), spec.context.constants):
        words += [] if number is None else ["--extra", f"{name}={number!r}"]
    if spec.context.calendar:
        words += ["--calendar", str(_written(folder, "calendar.json", spec.context.calendar))]
    return words


def _references(script: Script, folder: str, bars: Bars) -> list[str]:
    """References as they count at each bar."""
    seconds = bars.times // bars.ticks
    words = []
    wanted = {column: source for source, column, _ in script.report["references"]}
    for number, series in enumerate(script.series):
        source = wanted[series.column]
        field = int(source.rpartition("|")[2])
        values = series.at(seconds)
        path = _csv(folder, f"reference{number}.csv", bars, {11: values, field: values})
        words += ["--reference", f"{source}|{series.column}={path}"]
    return words
