"""Long calculations that Ctrl-C ends."""

from __future__ import annotations

import threading
from typing import Callable, TypeVar, cast

Result = TypeVar("Result")

#: Bars from which on a calculation may take longer than one wants to wait for it to end.
_LONG = 200_000

#: How often the main thread looks for an interrupt, in seconds.
_PULSE = 0.05


def interruptible(work: Callable[[], Result], bars: int) -> Result:
    """The result of ``work``. A long one runs beside the main thread, which can be interrupted;
    then it runs on to its end, and nobody has its result."""
    if bars < _LONG or threading.current_thread() is not threading.main_thread():
        return work()
    outcome: list[tuple[Result | None, BaseException | None]] = []
    done = threading.Event()

    def go() -> None:
        try:
            outcome.append((work(), None))
        except BaseException as error:
            outcome.append((None, error))
        finally:
            done.set()

    threading.Thread(target=go, name="quor-run", daemon=True).start()
    while not done.wait(_PULSE):
        pass
    result, error = outcome[0]
    if error is not None:
        raise error
    return cast(Result, result)
