#!/usr/bin/env python3
"""Damages the sources one place at a time and says which damages the unit tests don't notice.
  tools/mutants.sh [--count N] [--seed S] [--tests FILTER] [--jobs N] [PART OF A PATH...]
A survivor is equal in meaning, or it is a case that the tests lack. The same seed tries the same
places as long as the sources stay as they are; --tests asks what these tests alone notice. Nothing
is written into the sources: a damaged file lies in a folder that is searched before them.
"""

import argparse
import json
import os
import random
import re
import shlex
import subprocess
import sys
import tempfile
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Iterator, NamedTuple, Optional

ROOT = Path(__file__).resolve().parent.parent
SOURCES = ROOT / "src"

# What is found, and what stands there instead.
DAMAGES = [(re.compile(found), instead) for found, instead in (
    *((f" {old} ", f" {new} ") for old, new in (
        ("<", "<="), ("<=", "<"), (">", ">="), (">=", ">"), ("==", "!="), ("!=", "=="),
        (r"\+", "-"), ("-", "+"), (r"\*", "+"), ("/", "*"), ("&&", "||"), (r"\|\|", "&&"))),
    *((rf"(?<![\w.]){old}(?![\w.])", new) for old, new in (
        ("0", "1"), ("1", "2"), ("1", "0"), ("true", "false"), ("false", "true"), ("min", "max"),
        ("max", "min"), ("continue", "break"), ("break", "continue"))),
    (r"\.0\b", ".5"),
    (r"!(?=[a-z_(])", ""),
    (r"\+\+", "--"),
    (r"\breturn (?!status)[a-z_]+;", "return {};"),
    (r"^\s+[\w.>()-]+\([^;{}]*\);$", ";"),
)]
NO_CODE = re.compile(r"\s*(#|//|\*|/\*|template|static_assert|$)")

# Most damages are noticed by the quick tests, so these run first.
SLOW = "Columns.*:Memories.*:Traits.*:Exhaustion*.*:Hostile.*:CivilTime.*:Allocation.*"
MOST_KILOBYTES = 3 << 20
SECONDS = 300


class Place(NamedTuple):
    path: Path
    line: int
    start: int
    end: int
    instead: str


def places_in(path: Path) -> Iterator[Place]:
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines()):
        if NO_CODE.match(line):
            continue
        code = line.split("//")[0].rstrip()
        for found, instead in DAMAGES:
            for match in found.finditer(code):
                yield Place(path, number, match.start(), match.end(), instead)


def run(command: list[str], folder: Path) -> int:
    """Its exit code; a run without end or measure fails, too."""
    limited = ["sh", "-c", f'ulimit -v {MOST_KILOBYTES} && exec "$@"', "sh", *command]
    try:
        return subprocess.run(limited, cwd=folder, stdout=subprocess.DEVNULL, timeout=SECONDS,
                              stderr=subprocess.DEVNULL).returncode
    except subprocess.TimeoutExpired:
        return 1


class Build:
    """The folder in which the tests are built: how an object comes about and which need a file."""

    def __init__(self, folder: Path) -> None:
        self.folder = folder
        entries = json.loads((folder / "compile_commands.json").read_text())
        self.compilations = {each["command"].split(" -o ")[1].split()[0]: each for each in entries}
        self.link = self.ninja("commands", "-s", "tests/quor_tests").strip()
        self.users: dict[str, list[str]] = {}
        compiled = ""
        for line in self.ninja("deps").splitlines():
            if line.startswith("    "):
                path = os.path.normpath(folder / line.strip())
                self.users.setdefault(path, []).append(compiled)
            elif line:
                compiled = line.split(":")[0]

    def ninja(self, *tool: str) -> str:
        return subprocess.run(["ninja", "-C", str(self.folder), "-t", *tool], check=True,
                              stdout=subprocess.PIPE, text=True).stdout

    def objects_with(self, path: Path) -> list[str]:
        users = [user for user in self.users.get(str(path), []) if user in self.compilations]
        linked = (user for user in users if user in self.link or "quor_engine" in user)
        return sorted(linked)

    def compile(self, compiled: str, damaged: Path, path: Path, overlay: Path) -> bool:
        entry = self.compilations[compiled]
        command = shlex.split(entry["command"])
        command[command.index("-o") + 1] = str(overlay / Path(compiled).name)
        if entry["file"] == str(path):
            command[command.index("-c") + 1] = str(damaged)
        command.insert(next(i for i, word in enumerate(command) if word.startswith("-I")),
                       f"-I{overlay}")
        return run(command, self.folder) == 0

    def link_with(self, objects: list[str], overlay: Path) -> bool:
        command = self.link.replace(" -o tests/quor_tests ", f" -o {overlay}/quor_tests ")
        for compiled in objects:
            instead = str(overlay / Path(compiled).name)
            if compiled in command:
                command = command.replace(f" {compiled} ", f" {instead} ")
            else:  # what comes before a library stands for its member
                command = command.replace(" -o ", f" {instead} -o ", 1)
        return run(["sh", "-c", command], self.folder) == 0


def verdict(build: Build, place: Place, filters: list[str], most_objects: int) -> Optional[str]:
    """None for what doesn't compile or is too much to compile."""
    objects = build.objects_with(place.path)
    if not objects or len(objects) > most_objects:
        return None
    with tempfile.TemporaryDirectory(prefix="mutant") as folder:
        overlay = Path(folder)
        damaged = overlay / place.path.relative_to(SOURCES)
        damaged.parent.mkdir(parents=True)
        lines = place.path.read_text(encoding="utf-8").split("\n")
        old = lines[place.line]
        lines[place.line] = new = old[:place.start] + place.instead + old[place.end:]
        damaged.write_text("\n".join(lines), encoding="utf-8")
        if not all(build.compile(each, damaged, place.path, overlay) for each in objects):
            return None
        if not build.link_with(objects, overlay):
            return None
        tests = [str(overlay / "quor_tests"), "--gtest_brief=1", "--gtest_fail_fast"]
        killer = next((number for number, each in enumerate(filters, 1)
                       if run([*tests, f"--gtest_filter={each}"], overlay)), None)
    told = "SURVIVED" if killer is None else f"killed {killer}"
    where = f"{place.path.relative_to(ROOT)}:{place.line + 1}"
    return f"{told:9}{where}: {old.strip()}  ->  {new.strip()}"


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, default=ROOT / "build" / "mutants")
    parser.add_argument("--count", type=int, default=40)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--tests", action="append", default=[],
                        help="a filter of GoogleTest; of several the number of the killer is told")
    parser.add_argument("--most-objects", type=int, default=20,
                        help="leave a header alone that more objects include")
    parser.add_argument("parts", nargs="*")
    options = parser.parse_args()

    paths = sorted(path for path in SOURCES.rglob("*") if path.suffix in (".cpp", ".h"))
    parts = options.parts or [""]
    paths = [path for path in paths if any(part in str(path.relative_to(ROOT)) for part in parts)]
    places = [place for path in paths for place in places_in(path)]
    random.Random(options.seed).shuffle(places)
    filters = options.tests or [f"-{SLOW}", SLOW]
    build = Build(options.build.resolve())
    counts: Counter[str] = Counter()
    with ThreadPoolExecutor(options.jobs) as pool:
        waiting = [pool.submit(verdict, build, place, filters, options.most_objects)
                   for place in places]
        for each in waiting:
            told = each.result()
            if told is None:
                continue
            print(told, flush=True)
            counts[told.split()[0]] += 1
            if sum(counts.values()) == options.count:
                pool.shutdown(wait=False, cancel_futures=True)
                break
    print(f"{options.count} damages:", dict(counts))


if __name__ == "__main__":
    sys.exit(main())
