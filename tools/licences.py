#!/usr/bin/env python3
"""Says what is linked in or shipped that LICENCE doesn't name: the libraries that targets of CMake link,
and the packages of npm that stand in a lock file as more than tools.
"""

import json
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent

# What targets are called in LICENCE; those without a name belong to the system, to the tests or to us.
TARGETS = {
    "simdjson": "simdjson",
    "decimals": "fast_float",
    "mathematics": "musl",
    "ZLIB": "zlib",
    "http": "cpp-httplib",
    "nlohmann_json": "nlohmann-json",
    "CLI11": "CLI11",
    "GTest": None,
    "Threads": None,
    "PkgConfig": None,
    "quor": None,
}
TARGET = re.compile(r"\b(\w+)::\w+")
LOCKS = ("web/package-lock.json", "npm/package-lock.json", "editors/code/package-lock.json")


def linked():
    lists = [ROOT / "CMakeLists.txt", *ROOT.glob("*/CMakeLists.txt"), *ROOT.glob("tests/*/CMakeLists.txt")]
    for path in lists:
        for namespace in TARGET.findall(path.read_text(encoding="utf-8")):
            if namespace not in TARGETS:
                yield f"{path.relative_to(ROOT)}: tools/licences.py doesn't know {namespace}"
            elif TARGETS[namespace] is not None:
                yield TARGETS[namespace]
    yield "pybind11"  # headers that the Python package is made of


def shipped():
    for lock in LOCKS:
        packages = json.loads((ROOT / lock).read_text(encoding="utf-8"))["packages"]
        for path, package in packages.items():
            if path and not package.get("dev"):
                yield path.split("node_modules/")[-1]


def main():
    licence = (ROOT / "LICENCE").read_text(encoding="utf-8")
    names = set(re.split(r"[\s,]+", licence))
    missing = sorted(name for name in {*linked(), *shipped()} if name not in names)
    for name in missing:
        print(f"LICENCE doesn't name {name}")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
