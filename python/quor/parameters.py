"""The numbers that are given beside a script."""

from __future__ import annotations

import math
from typing import Any, Iterable

from . import _engine
from .errors import Finding, ParameterError

#: A parameter is a text in the script by the time it is read, with so many decimals.
DECIMALS = 6


def capitals(name: str) -> str:
    """A name as scripts are read: of letters beyond ASCII there are no capitals."""
    return name.encode(errors="surrogatepass").upper().decode(errors="surrogatepass")


def numbers(parameters: Iterable[tuple[str, Any]]) -> tuple[tuple[str, float], ...]:
    """Parameters as the engine takes them. Raises ParameterError for what it can't keep."""
    given: dict[str, float] = {}
    for name, value in parameters:
        word = capitals(str(name))
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
    is_cut = isinstance(value, int) and value != result
    if is_cut or float(f"{result:.{DECIMALS}f}") != result:
        raise _fault(
            f"the parameter {name} is {value!r}, and scripts keep {DECIMALS} decimals of a "
            "parameter", "round it, or write the number into the script")
    return result


def check_names(source: str, names: Iterable[str]) -> None:
    """Raises ParameterError for a name that the script doesn't read or that stands for more."""
    for name, finding in _engine.parameter_faults(source, list(names)):
        fault = Finding(*finding)
        raise ParameterError(fault._replace(sentence=f"parameter {name}: {fault.sentence}"))


def _fault(sentence: str, suggestion: str) -> ParameterError:
    return ParameterError(Finding("error", 0, sentence, suggestion, 0, 0, 0))
