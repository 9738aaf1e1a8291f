"""What the package needs to be there, said plainly where it isn't."""

from __future__ import annotations

import platform
import sys
from pathlib import Path

try:
    import numpy  # noqa: F401
except ImportError as error:
    raise ImportError(f"quor needs numpy, which {sys.executable} hasn't got: {error}") from None

try:
    from ._engine import version
except ImportError as error:
    built = sorted(path.name for path in Path(__file__).parent.glob("_engine.*.*"))
    raise ImportError(
        f"quor's engine can't be loaded by Python {platform.python_version()} ({sys.executable}): "
        f"{error}; built are {', '.join(built) or 'none'}") from None

__all__ = ["version"]
