"""Frames of any kind by the protocols in which they offer their arrays."""

from __future__ import annotations

from typing import Any, Mapping

import numpy as np

from . import _engine
from .optional import is_frame, pd


def adopted(frame: Any) -> Any:
    """A frame as a DataFrame or a mapping of arrays, where it is neither and offers itself by a
    protocol: Arrow's stream or array of C, the interchange protocol of frames, or an array with
    named columns. Anything else comes back as it is."""
    if is_frame(frame) or isinstance(frame, Mapping):
        return frame
    stream = getattr(frame, "__arrow_c_stream__", None)
    if stream is not None:
        return _of_arrow(_engine.read_arrow(stream()))
    if hasattr(frame, "__dataframe__"):
        return pd.api.interchange.from_dataframe(frame)
    names = getattr(getattr(frame, "dtype", None), "names", None)
    if names:
        return {name: np.asarray(frame[name]) for name in names}
    if isinstance(frame, np.ndarray):
        raise TypeError("an array has no names for its columns; give a mapping such as "
                        '{"date": dates, "close": array[:, 0]}')
    return frame


def _of_arrow(columns: list[tuple[str, Any]]) -> Mapping[str, Any]:
    """Columns of the engine's reader, without those of types that bars have no use for."""
    found: dict[str, Any] = {}
    for name, values in columns:
        if name in found:
            raise ValueError(f"the frame has several columns {name!r}")
        if values is None:
            continue
        if isinstance(values, tuple):  # moments, which frames show by the clock of their zone
            moments, zone = values
            values = pd.DatetimeIndex(moments).tz_localize("UTC").tz_convert(zone)
        found[name] = values
    return found
