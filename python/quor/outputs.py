"""Results as frames or arrays."""

from __future__ import annotations

from typing import Any, Hashable, Optional, Sequence, Union

import numpy as np

from .arrays import Array
from .optional import has_pandas, pd

Out = Optional[str]
Lines = Union[Array, list[Array]]  #: a row for each line

#: Bars of a security that are sorted sooner than compared with those of the one before.
_FEW = 8

_FORMS = ("long", "wide", "numpy")


def out_of(out: Out) -> str:
    """The form of results. Raises ValueError for one that there isn't."""
    if out is None:
        return "long" if has_pandas() else "numpy"
    if out not in _FORMS:
        raise ValueError(f'out is "long", "wide" or "numpy", and not {out!r}')
    return out


def lines_of_run(cells: Lines, names: Sequence[str], index: Any, out: Out) -> Any:
    """Lines, of which ``cells`` has a row each, over the bars of one index. No cell is copied."""
    if out_of(out) == "numpy":
        return dict(zip(names, cells))
    if isinstance(cells, list):
        frame = pd.DataFrame(dict(enumerate(cells)), index=index, copy=False)
        frame.columns = pd.Index(names)
        return frame
    return pd.DataFrame(cells.T, index=index, columns=list(names), copy=False)


class Arrays(dict[str, Array]):
    """Arrays by name; ``attrs`` as those of a DataFrame."""

    def __init__(self, *args: Any) -> None:
        super().__init__(*args)
        self.attrs: dict[str, Any] = {}


def labelled(cells: Array, lines: Sequence[str], names: list[Hashable],
             seconds: list[Array], form: str) -> Any:
    """Lines, of which ``cells`` has a row each, of securities and their times one behind the
    other."""
    counts = np.array([len(some) for some in seconds], np.int64)
    if form == "numpy":
        values = np.empty(len(names), object)
        values[:] = names
        times = np.concatenate([*seconds, np.empty(0, np.int64)])
        return Arrays({"security": np.repeat(values, counts), "time": times.view("datetime64[s]"),
                       **dict(zip(lines, cells))})
    union, codes = _codes_of(seconds)
    times = pd.DatetimeIndex(union.astype("datetime64[s]").astype("datetime64[ns]"))
    securities = pd.Index(names, dtype=object)
    if form == "wide":
        return _wide(cells, lines, securities, times, counts, codes)
    index = pd.MultiIndex(
        levels=[securities, times], codes=[np.repeat(np.arange(len(names)), counts), codes],
        names=["security", "time"], verify_integrity=False)
    return pd.DataFrame(cells.T, index=index, columns=list(lines), copy=False)


def _wide(cells: Array, lines: Sequence[str], securities: Any, times: Any,
          counts: Array, codes: Array) -> Any:
    shape = (len(lines), len(securities), len(times))
    if cells.size == np.prod(shape):  # each security has all times
        block = cells.reshape(shape)
    else:
        block = np.full(shape, np.nan)
        block[:, np.repeat(np.arange(len(securities)), counts), codes] = cells
    columns = pd.MultiIndex.from_product([list(lines), securities], names=["line", "security"])
    return pd.DataFrame(block.reshape(-1, len(times)).T, index=times.rename("time"),
                        columns=columns, copy=False)


def _codes_of(seconds: list[Array]) -> tuple[Array, Array]:
    """All times, ascending, and which of them each is. Most securities have those of the one
    before."""
    if not seconds:
        return np.empty(0, np.int64), np.empty(0, np.int64)
    every = np.concatenate(seconds)
    if len(every) <= _FEW * len(seconds):
        union, codes = np.unique(every, return_inverse=True)
        return union, codes
    kinds: list[Array] = []
    numbers = []
    for some in seconds:
        if not kinds or not np.array_equal(kinds[-1], some):
            kinds.append(some)
        numbers.append(len(kinds) - 1)
    union = np.unique(np.concatenate(kinds))
    codes = [np.searchsorted(union, kind) for kind in kinds]
    return union, np.concatenate([codes[number] for number in numbers])
