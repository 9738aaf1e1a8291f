"""The numbers that are given beside a script."""

from __future__ import annotations

import math
import re
from typing import Any, Iterable, Mapping, Sequence

import numpy as np

from . import _engine
from .context import whole_text
from .errors import Finding, ParameterError

#: The engine keeps so many decimals of a parameter, and all digits of a number in a script.
DECIMALS = 6


def capitals(name: str) -> str:
    """A name as scripts are read: of letters beyond ASCII there are no capitals."""
    return name.encode(errors="surrogatepass").upper().decode(errors="surrogatepass")


def mapping_of(parameters: Any) -> Mapping[str, Any]:
    """The parameters that are given as a mapping; none is an empty one."""
    if parameters is None:
        return {}
    if not isinstance(parameters, Mapping):
        raise ValueError("parameters are a mapping, such as {'N': 5}, and not "
                         f"{parameters!r:.80}")
    return parameters


def numbers(parameters: Iterable[tuple[str, Any]]) -> tuple[tuple[str, float], ...]:
    """Parameters as the engine takes them. Raises ParameterError for what it can't keep."""
    given: dict[str, float] = {}
    for name, value in parameters:
        word = capitals(whole_text("the name of a parameter", str(name)))
        if word in given:
            raise _fault(f"the parameter {word} is given twice", "give it once")
        given[word] = number(word, value)
    return tuple(given.items())


def number(name: str, value: Any) -> float:
    """The value of a parameter, of which the engine keeps all digits."""
    try:
        result = float(value)
    except (TypeError, ValueError, OverflowError):
        raise _fault(f"the parameter {name} is {value!r}", "give a number") from None
    if not math.isfinite(result):
        raise _fault(f"the parameter {name} is {result}", "give a finite number")
    if isinstance(value, int) and value != result:
        raise _fault(f"the parameter {name} is {value!r}, which no number of 64 bits can hold",
                     "round it")
    return result


def with_digits(source: str, parameters: Iterable[tuple[str, float]]) -> str:
    """A script in which parameters of more decimals than the engine keeps stand as numbers."""
    for name, value in parameters:
        if float(f"{value:.{DECIMALS}f}") == value:
            continue
        digits = np.format_float_positional(value, trim="-")
        text = source.encode()
        for start, end in reversed(_engine.places_of_word(source, name)):
            number = f"(0{digits})" if value < 0 else digits
            text = text[:start] + number.encode() + text[end:]
        source = text.decode()
    return source


def check_names(source: str, names: Iterable[str]) -> None:
    """Raises ParameterError for a name that the script doesn't read or that stands for more."""
    for name, finding in _engine.parameter_faults(source, list(names)):
        fault = Finding(*finding)
        raise ParameterError(fault._replace(sentence=f"parameter {name}: {fault.sentence}"))


#: A CONST behind its name, up to the next statement.
_DECLARED = re.compile(r"\s*:\s*([-+]?(?:\d+\.?\d*|\.\d+)(?:[eE][-+]?\d+)?)\s*;")
_CONST = re.compile(r"const\s+$", re.IGNORECASE)
_LINE_END = re.compile(r"\r\n|\r|\n")


def declared(source: str) -> dict[str, float]:
    """The numbers that a script gives names by CONST."""
    return {name: value for name, (value, _, _) in _declarations(source).items()}


def with_overrides(source: str, parameters: Sequence[tuple[str, float]]) -> str:
    """A script without the CONST of these parameters, which stand in their place then."""
    declarations = _declarations(source)
    for name, _ in parameters:
        if name in declarations:
            _, start, end = declarations[name]
            # What follows keeps its place.
            blank = re.sub(r"[^\r\n]", " ", source[start:end])
            source = source[:start] + blank + source[end:]
    return source


def _declarations(source: str) -> dict[str, tuple[float, int, int]]:
    """Value and place of each CONST with a plain number."""
    _, constants, _ = _engine.names_in(source)
    starts = [0, *(mark.end() for mark in _LINE_END.finditer(source))]
    found = {}
    for name, finding in _engine.parameter_faults(source, constants):
        fault = Finding(*finding)
        if not fault.line:
            continue
        place = starts[fault.line - 1] + fault.column - 1
        word = _CONST.search(source, 0, place)
        number = _DECLARED.match(source, place + len(name))
        if word and number:
            found[name] = (float(number.group(1)), word.start(), number.end())
    return found


def _fault(sentence: str, suggestion: str) -> ParameterError:
    return ParameterError(Finding("error", 0, sentence, suggestion, 0, 0, 0))
