"""Where the bars of many securities come from: mappings, iterables, files, and databases."""

from __future__ import annotations

import glob
import os
from pathlib import Path
from typing import Any, Hashable, Iterable, Iterator, Mapping, Sized, Union

import numpy as np

from .arrays import Array
from .frames import Bars, Layout
from .optional import is_frame, pd
from .panels import Panel, panel_of
from .protocols import adopted

Source = Union[str, "os.PathLike[str]", Mapping[Hashable, Any], Iterable[Any]]
Item = tuple[Hashable, Any]

#: Rows of a database that are fetched at a time.
_ROWS = 1 << 16

#: Files of frames, by the ends of their names.
_FRAME_FILES = {".parquet": "read_parquet", ".pq": "read_parquet", ".feather": "read_feather",
                ".arrow": "read_feather"}
_SUFFIXES = (".csv", *_FRAME_FILES)


def items_of(frames: Source, by: Any, layout: Layout) -> tuple[Iterator[Item], int | None]:
    """Securities with their bars, and how many there are if that is known.

    Raises
    ------
    ValueError
        For what has no securities.
    """
    if isinstance(frames, (str, os.PathLike)):
        return _of_place(os.fspath(frames), by, layout)
    frames = adopted(frames)
    panel = panel_of(frames, by, layout)
    if panel is not None:
        return panel_items(panel), len(panel.names)
    if is_frame(frames):
        raise ValueError('a scan takes several securities: by="..." names the column with them, '
                         "or give a mapping of names to frames, or frame.groupby(...)")
    if isinstance(frames, Mapping):
        return iter(frames.items()), len(frames)
    if hasattr(frames, "fetchmany") and hasattr(frames, "description"):
        return _of_pieces(_rows_of(frames), by, layout), None
    if not isinstance(frames, Iterable):
        raise ValueError("a scan takes a mapping of names to frames, a panel, files or pairs, and "
                         f"not {type(frames).__name__}")
    if by is not None:
        return _of_pieces(frames, by, layout), None
    count = len(frames) if isinstance(frames, Sized) else None
    return (_with_name(item) for item in frames), count


def _with_name(item: Any) -> Any:
    """A path goes by its name."""
    return (Path(item).stem, item) if isinstance(item, (str, os.PathLike)) else item


def once_each(items: Iterable[Any]) -> Iterator[Item]:
    """Securities with their bars. Raises ValueError for one that comes again."""
    seen: dict[Hashable, Any] = {}
    for item in items:
        if not isinstance(item, (tuple, list)) or len(item) != 2:
            what = "a frame" if is_frame(item) else f"{item!r:.100}"
            raise ValueError(f"a scan takes pairs of a name and bars, and {what} is none; pieces "
                             'of a long frame need by="..."')
        name, source = item
        if not isinstance(name, Hashable):
            raise ValueError(f"the name of a security is a text or a number, and not {name!r:.80}")
        if name in seen:
            both = f": {seen[name]} and {source}" if isinstance(source, str) else ""
            again = "; pieces must come in the order of their securities" if isinstance(
                source, Bars) else "; give each its own name"
            raise ValueError(f"the security {name!r} comes twice{both}{again}")
        seen[name] = source if isinstance(source, str) else None
        yield name, source


def bars_of(source: Any, layout: Layout) -> Bars:
    """The bars of a security, from wherever it has them."""
    if isinstance(source, Bars):
        return source
    if callable(source):
        source = source()
    if not isinstance(source, (str, os.PathLike)):
        return layout.bars(source)
    reader = _FRAME_FILES.get(Path(source).suffix.lower())
    return layout.bars_of_file(source) if reader is None else layout.bars(_read(source, reader))


def size_of(source: Any) -> int | None:
    """How many bars there are, if that is known."""
    if isinstance(source, Bars):
        return len(source.times)
    if is_frame(source):
        return len(source)
    if isinstance(source, Mapping) and source:
        first = next(iter(source.values()))
        return len(first) if hasattr(first, "__len__") else None
    return None


def _read(path: Any, reader: str) -> Any:
    try:
        return getattr(pd, reader)(path)
    except ImportError:
        raise ValueError(f"{os.fspath(path)}: this form of files needs pyarrow, which isn't "
                         "installed") from None


def _of_place(place: str, by: Any, layout: Layout) -> tuple[Iterator[Item], int | None]:
    paths = _files(place)
    if by is None:
        return ((Path(path).stem, path) for path in paths), len(paths)
    return _of_pieces((piece for path in paths for piece in _pieces(path, by)), by, layout), None


def _pieces(path: str, by: Any) -> Iterator[Any]:
    """A file with many securities as frames; codes such as 000001 keep their zeros."""
    reader = _FRAME_FILES.get(Path(path).suffix.lower())
    if reader is not None:
        yield _read(path, reader)
        return
    yield from pd.read_csv(path, dtype={by: str}, chunksize=_ROWS)


def _files(place: str) -> list[str]:
    if os.path.isdir(place):
        names = sorted(os.listdir(place))
        paths = [os.path.join(place, name) for name in names if name.lower().endswith(_SUFFIXES)]
    elif os.path.exists(place):
        paths = [place]
    else:
        paths = sorted(glob.glob(place))
    if not paths:
        raise ValueError(f"{place}: no such CSV files")
    return paths


def panel_items(panel: Panel) -> Iterator[Item]:
    """The securities of a panel with their bars."""
    bounds = panel.starts.tolist()
    for number, name in enumerate(panel.names):
        part = slice(bounds[number], bounds[number + 1])
        fields = [(id_, values[part]) for id_, values in panel.fields]
        yield name, Bars(panel.times[part], panel.ticks, fields, None, None, None)


def _rows_of(cursor: Any) -> Iterator[Mapping[str, Array]]:
    """The rows that a query gives, as columns."""
    if cursor.description is None:
        raise ValueError("the cursor has no rows to give; execute a query first")
    names = [column[0] for column in cursor.description]
    while True:
        rows = cursor.fetchmany(_ROWS)
        if not rows:
            return
        yield dict(zip(names, (_column(values) for values in zip(*rows))))


def _column(values: tuple[Any, ...]) -> Array:
    array = np.empty(len(values), object)
    array[:] = values
    return array


def _of_pieces(pieces: Iterable[Any], by: Any, layout: Layout) -> Iterator[Item]:
    """Securities of frames that follow each other, of which one may go over their borders."""
    if by is None:
        raise ValueError('by="..." must name the column with the securities')
    open_name: Hashable = None
    parts: list[Bars] = []
    for piece in pieces:
        panel = panel_of(adopted(piece), by, layout)
        if panel is None:
            raise ValueError(f"by={by!r} is for frames, and not for {type(piece).__name__}")
        for name, bars in panel_items(panel):
            if parts and name != open_name:
                yield open_name, _joined(parts)
                parts = []
            open_name = name
            parts.append(bars)
    if parts:
        yield open_name, _joined(parts)


def _joined(parts: list[Bars]) -> Bars:
    if len(parts) == 1:
        return parts[0]
    ticks = parts[0].ticks
    if any(bars.ticks != ticks for bars in parts):
        parts = [bars._replace(times=bars.times // bars.ticks, ticks=1) for bars in parts]
        ticks = 1
    fields = [(id_, np.concatenate([bars.fields[number][1] for bars in parts]))
              for number, (id_, _) in enumerate(parts[0].fields)]
    return Bars(np.concatenate([bars.times for bars in parts]), ticks, fields, None, None, None)
