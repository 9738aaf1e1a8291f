"""Arrays in annotations."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np

if TYPE_CHECKING:
    Array = np.ndarray[Any, Any]
else:
    Array = np.ndarray
