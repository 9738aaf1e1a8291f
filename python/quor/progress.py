"""A progress bar on a terminal."""

from __future__ import annotations

import sys
from contextlib import nullcontext
from typing import Any


class _Silent:
    def update(self) -> None:
        """Nothing is shown."""


def progress_bar(total: int | None, unit: str, wanted: bool) -> Any:
    """What is told of each step by ``update()``; as a context it clears up after itself."""
    if not wanted or not sys.stderr.isatty() and "ipykernel" not in sys.modules:
        return nullcontext(_Silent())
    from tqdm import auto

    bar: Any = auto.tqdm
    return bar(total=total, unit=unit, disable=None)
