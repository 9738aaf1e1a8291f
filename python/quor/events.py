"""Notices and signals as frames."""

from __future__ import annotations

from typing import Any, Callable, NamedTuple

import numpy as np

from .arrays import Array
from .optional import pd


class Events(NamedTuple):
    """What a calculation raised, as the engine gives it; the frame is made when asked for."""

    raw: Any  #: nothing without events
    times_of: Callable[[Array, Array], Any]  #: of rows and keys

    def frame(self) -> pd.DataFrame:
        """Time, word, name, quantity and statement of each."""
        if self.raw is None:
            return pd.DataFrame({"time": pd.DatetimeIndex([]), "word": [], "name": [],
                                 "quantity": [], "statement": []})
        rows, keys, quantities, statements, numbers, kinds = self.raw
        words = np.array([word for word, _ in kinds], object)
        names = np.array([name for _, name in kinds], object)
        return pd.DataFrame({
            "time": self.times_of(rows, keys), "word": words[numbers], "name": names[numbers],
            "quantity": np.where(quantities == -1, np.nan, quantities), "statement": statements})


NO_EVENTS = Events(None, lambda rows, keys: None)


def places_of(rows_of_events: Array, rows: Array | None) -> Array:
    """Where in the frame rows of the engine stand; of repeated bars the last."""
    if rows is None:
        return rows_of_events
    places = np.zeros(int(rows.max()) + 1, np.int64)
    places[rows] = np.arange(len(rows))
    return places[rows_of_events]
