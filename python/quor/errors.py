"""What can go wrong."""

from __future__ import annotations

import warnings
from typing import TYPE_CHECKING, Any, NamedTuple, Sequence

if TYPE_CHECKING:
    from . import _engine


class Finding(NamedTuple):
    """Advice about a script or about the bars it ran over.

    ``line`` and ``column`` count from 1, in characters; 0 for a finding without a place. ``code``
    is the engine's for an error and 0 for a warning.
    """

    severity: str
    code: int
    sentence: str
    suggestion: str
    line: int
    column: int
    length: int

    def __str__(self) -> str:
        place = f"{self.line}:{self.column}: " if self.line else ""
        code = f" (code {self.code})" if self.code else ""
        suggestion = f"; {self.suggestion}" if self.suggestion else ""
        return f"{place}{self.severity}: {self.sentence}{code}{suggestion}"


class ScriptError(Exception):
    """A script doesn't compile, or its calculation fails.

    Attributes
    ----------
    code : int
        The engine's number of the error.
    sentence : str
        What is wrong, in one sentence.
    suggestion : str
        What to write instead, or an empty text.
    line, column : int
        The place in the script, counted from 1; 0 if the error has none.
    errors : tuple of Finding
        All errors of the script, of which the one above is the first.
    """

    def __init__(self, finding: Finding, *others: Finding) -> None:
        super().__init__(finding, *others)
        self.errors = (finding, *others)
        self.code = finding.code
        self.sentence = finding.sentence
        self.suggestion = finding.suggestion
        self.line = finding.line
        self.column = finding.column

    def __str__(self) -> str:
        return "\n".join(map(str, self.errors))


class ParameterError(ScriptError, ValueError):
    """A parameter that a script doesn't read, or can't take as it is. Its code is 0."""


class ScanWarning(UserWarning):
    """Some securities of a scan failed; the result's ``attrs["failures"]`` has the reasons."""


class BarsWarning(UserWarning):
    """Bars that can be calculated with, and whose results can't be meant."""


def note(sentence: str, suggestion: str) -> Finding:
    """A warning without a place in a script."""
    return Finding("warning", 0, sentence, suggestion, 0, 0, 0)


def error_of(finding: Sequence[Any]) -> ScriptError:
    """The exception for an error as the engine gives it."""
    return ScriptError(Finding(*finding))


def raise_error(engine: _engine.Engine) -> None:
    """Raises ScriptError if the last compile or calculation of an engine failed."""
    errors = engine.errors()
    if errors:
        raise ScriptError(*(Finding(*error) for error in errors))


def warn_of(notes: Sequence[Finding], depth: int = 3) -> None:
    """Warns of what the bars hold, at the place of the caller's caller or further out."""
    for finding in notes:
        warnings.warn(f"{finding.sentence}; {finding.suggestion}", BarsWarning, stacklevel=depth)
