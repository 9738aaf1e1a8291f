#!/usr/bin/env python3
"""Says which #include lines point upward in the order of the rooms, and which units include each
other in a ring. A unit is a header with the source file of its name.
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent

# Each room and the rooms that it may include besides itself.
GROUND = {"text", "platform", "tables", "callbacks"}
MODEL = GROUND | {"calendar", "core", "vocabulary"}
ROOMS = {
    **{room: GROUND for room in GROUND - {"callbacks"}},
    "callbacks": set(),
    "calendar": GROUND,
    "core": GROUND | {"calendar"},
    "vocabulary": {"core"},
    "functions": MODEL,
    "drawing": MODEL,
    "compiler": MODEL | {"drawing"},
    "interface": MODEL | {"compiler", "include"},
    "engine": MODEL | {"drawing", "compiler", "interface"},
    "python": {"engine", "advice", "bars"},
    "npm": {"engine", "advice", "bars"},
    "include": set(),
    "advice": {"tables"},
    "bars": {"tables"},
    "host": {"engine", "advice", "bars"},
    "web": {"engine", "advice", "bars", "host"},
}

FOLDERS = ("src", "include", "advice", "bars", "host", "python", "npm/engine", "web/engine")
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def files():
    for folder in FOLDERS:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in (".h", ".cpp", ".c"):
                yield path


def name_of(path):
    """The name by which other files include it; folders beside src keep theirs."""
    name = path.relative_to(ROOT).as_posix()
    return name.removeprefix("src/")


def room_of(name):
    return name.split("/")[0]


def resolved(text, path, known):
    for folder in (path.parent, ROOT, *(ROOT / folder for folder in FOLDERS)):
        target = (folder / text).resolve()
        if target in known:
            return name_of(target)
    return None


def is_allowed(source, target):
    from_room, to_room = room_of(source), room_of(target)
    if from_room == to_room or to_room in ROOMS[from_room]:
        return True
    return source.startswith("advice/c_face") and to_room == "include"


def ring(units):
    """Some units that include each other in a ring; none if there is no ring."""
    state = {}

    def visit(unit, way):
        state[unit] = "open"
        for target in sorted(units.get(unit, ())):
            if state.get(target) == "open":
                return way[way.index(target):] + [target]
            if target not in state:
                found = visit(target, way + [target])
                if found:
                    return found
        state[unit] = "done"
        return None

    for unit in sorted(units):
        if unit not in state:
            found = visit(unit, [unit])
            if found:
                return found
    return None


def main():
    paths = {path.resolve(): path for path in files()}
    faults = []
    units = {}
    for path in paths:
        source = name_of(path)
        unit = source.rsplit(".", 1)[0]
        for text in INCLUDE.findall(path.read_text(encoding="utf-8")):
            target = resolved(text, path, paths)
            if target is None:
                continue
            if not is_allowed(source, target):
                faults.append(f"{source} includes {target}")
            other = target.rsplit(".", 1)[0]
            if other != unit:
                units.setdefault(unit, set()).add(other)
    rings = ring(units)
    if rings:
        faults.append("a ring: " + " > ".join(rings))
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
