"""Chunks of a scan on threads, in processes and on any other executor."""

from __future__ import annotations

import functools
import itertools
import os
from collections import deque
from concurrent.futures import (
    FIRST_COMPLETED, BrokenExecutor, Executor, Future, ProcessPoolExecutor, ThreadPoolExecutor,
    wait)
from typing import Any, Callable, Hashable, Iterable, Iterator

#: Securities that one task of an executor has: enough for the way there not to count.
CHUNK = 16
#: Tasks that wait or run at a time; frames that are made one by one aren't all held at once.
WINDOW = 64
#: The same for each thread of this process, which is quick to fetch the next.
WINDOW_OF_THREAD = 3

Chunk = list[tuple[Hashable, Any]]
Work = Callable[[Chunk], list[Any]]
#: A chunk with the outcomes of its securities, or with what kept all of it from being done.
Done = tuple[Chunk, Any]


def processors() -> int:
    """How many processors this process may use."""
    count = getattr(os, "sched_getaffinity", None)
    return len(count(0)) if count else os.cpu_count() or 1


def check_jobs(jobs: Any) -> None:
    """Raises ValueError for what is no number of threads."""
    if jobs is not None and (isinstance(jobs, bool) or not isinstance(jobs, int) or jobs < 1):
        raise ValueError(f"jobs must be a whole number from 1 on, and not {jobs!r}")


def chunks_of(items: Iterable[tuple[Hashable, Any]]) -> Iterator[Chunk]:
    """The items in chunks."""
    items = iter(items)
    return iter(lambda: list(itertools.islice(items, CHUNK)), [])


def on_threads(work: Work, chunks: Iterator[Chunk], threads: int) -> Iterator[Done]:
    """Works the chunks off on threads of this process."""
    if threads == 1:
        yield from ((chunk, work(chunk)) for chunk in chunks)
        return
    pool = ThreadPoolExecutor(threads, "quor-scan")
    try:
        window = WINDOW_OF_THREAD * threads
        yield from _submit(functools.partial(pool.submit, work), chunks, window, [])
    finally:
        pool.shutdown(wait=True, cancel_futures=True)


def on_executor(executor: Executor, work: Work, chunks: Iterator[Chunk]) -> Iterator[Done]:
    """Works the chunks off on an executor. What one that breaks leaves undone is done once more."""
    undone: list[Chunk] = []
    yield from _submit(functools.partial(executor.submit, work), chunks, WINDOW, undone)
    if not undone:
        return
    if isinstance(executor, ProcessPoolExecutor):
        yield from _in_spares(executor, work, undone, chunks)
        return
    again = itertools.chain(undone, chunks)
    lost: list[Chunk] = []
    yield from _submit(functools.partial(executor.submit, work), again, WINDOW, lost)
    if lost:
        error = BrokenExecutor("the executor broke twice")
        yield from ((chunk, error) for chunk in itertools.chain(lost, again))


def _submit(
    submit: Callable[[Chunk], Future[Any]], chunks: Iterator[Chunk], window: int,
    undone: list[Chunk],
) -> Iterator[Done]:
    """Results in the order in which they come. Securities whose chunk fails as a whole, as for one
    that can't be sent, are done again alone. Chunks over which the executor breaks go to
    ``undone``, and no others are taken then."""
    alone: deque[Chunk] = deque()
    waiting: dict[Future[Any], Chunk] = {}
    try:
        while True:
            while not undone and len(waiting) < window:
                chunk = _next(alone, chunks)
                if chunk is None:
                    break
                try:
                    waiting[submit(chunk)] = chunk
                except BrokenExecutor:
                    undone.append(chunk)
            if undone:
                undone.extend(alone)
                alone.clear()
            if not waiting:
                return
            for future in wait(waiting, return_when=FIRST_COMPLETED).done:
                result = _result_of(future)
                chunk = waiting.pop(future)
                if isinstance(result, BrokenExecutor):
                    undone.append(chunk)
                elif isinstance(result, Exception) and len(chunk) > 1:
                    alone.extend([item] for item in chunk)
                else:
                    yield chunk, result
    finally:
        for future in waiting:
            future.cancel()


def _next(alone: deque[Chunk], chunks: Iterator[Chunk]) -> Chunk | None:
    """What is done again goes first."""
    if alone:
        return alone.popleft()
    return next(chunks, None)


def _result_of(future: Future[Any]) -> Any:
    """The result, or the exception in its place. Raises what is no plain exception, such as an
    interrupt: it ends the scan."""
    error = future.exception()
    if error is None:
        return future.result()
    if not isinstance(error, Exception):
        raise error
    return error


def _in_spares(
    executor: ProcessPoolExecutor, work: Work, undone: list[Chunk], chunks: Iterator[Chunk]
) -> Iterator[Done]:
    """Each process in a pool of its own, so that it is known over what it dies, and securities
    that are done again alone, so that none is lost for another's sake. Raises BrokenExecutor if
    such pools don't start."""
    alone = deque([item] for chunk in undone for item in chunk)
    workers: int = getattr(executor, "_max_workers")
    idle: list[ProcessPoolExecutor] = []
    running: dict[Future[Any], tuple[ProcessPoolExecutor, Chunk, bool]] = {}
    try:
        while True:
            while len(running) < workers:
                is_again = bool(alone)
                chunk = _next(alone, chunks)
                if chunk is None:
                    break
                pool = idle.pop() if idle else _spare(executor)
                running[pool.submit(work, chunk)] = (pool, chunk, is_again)
            if not running:
                return
            for future in wait(running, return_when=FIRST_COMPLETED).done:
                result = _result_of(future)
                pool, chunk, is_again = running.pop(future)
                if not isinstance(result, BrokenExecutor):
                    idle.append(pool)
                if isinstance(result, Exception) and not is_again:
                    alone.extend([item] for item in chunk)
                else:
                    yield chunk, result
    finally:
        for pool in [*idle, *(pool for pool, _, _ in running.values())]:
            pool.shutdown(wait=True, cancel_futures=True)


def _spare(executor: ProcessPoolExecutor) -> ProcessPoolExecutor:
    """A process as those of the executor are, that has shown to work."""
    pool = ProcessPoolExecutor(1, mp_context=executor._mp_context,
                               initializer=executor._initializer, initargs=executor._initargs)
    pool.submit(int).result()
    return pool
