"""pandas, which is loaded when it is first asked for: arrays go in and out without it."""

from __future__ import annotations

import importlib
import importlib.util
import sys
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    import pandas as pd
else:
    class _Pandas:
        """The module, in place of itself."""

        _module: Any = None

        def __getattr__(self, name: str) -> Any:
            if self._module is None:
                try:
                    self._module = importlib.import_module("pandas")
                except ImportError:
                    raise ImportError("this needs pandas, which isn't installed; results without "
                                      'it come by out="numpy"') from None
            return getattr(self._module, name)

    pd = _Pandas()

__all__ = ["has_pandas", "is_datetime_index", "is_frame", "is_index", "is_multi_index", "is_series",
           "pd"]


def has_pandas() -> bool:
    """Whether frames can be made."""
    if "pandas" in sys.modules:
        return True
    try:
        return importlib.util.find_spec("pandas") is not None
    except ImportError:
        return False


_classes: dict[str, tuple[type, ...]] = {}


def _is(value: Any, *names: str) -> bool:
    """Nothing is of a class of a module that nobody has loaded."""
    classes = _classes.get(names[0])
    if classes is None:
        module = sys.modules.get("pandas")
        if module is None or not hasattr(module, names[-1]):
            return False
        classes = _classes[names[0]] = tuple(getattr(module, name) for name in names)
    return isinstance(value, classes)


def is_frame(value: Any) -> bool:
    """Whether it is a DataFrame."""
    return _is(value, "DataFrame")


def is_series(value: Any) -> bool:
    """Whether it is a Series."""
    return _is(value, "Series")


def is_index(value: Any) -> bool:
    """Whether it is an Index."""
    return _is(value, "Index")


def is_multi_index(value: Any) -> bool:
    """Whether it is a MultiIndex."""
    return _is(value, "MultiIndex")


def is_datetime_index(value: Any) -> bool:
    """Whether it is an index of times."""
    return _is(value, "DatetimeIndex", "PeriodIndex")
