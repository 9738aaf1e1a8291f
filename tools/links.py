#!/usr/bin/env python3
"""Says which links in the texts of the project lead nowhere: to a file that isn't kept, or to a
heading that isn't in its page. Links to other machines aren't followed.
"""

import re
import subprocess
import sys
from functools import cache
from pathlib import Path
from typing import Iterator
from urllib.parse import unquote

ROOT = Path(__file__).resolve().parent.parent

FENCE = re.compile(r"^( *)(```+|~~~+).*?^\1\2[ \t]*$", re.M | re.S)
CODE = re.compile(r"(`+)(?!`).*?(?<!`)\1(?!`)", re.S)
LINK = re.compile(r"\]\(\s*<?([^)\s>]*)>?(?:\s+\"[^\"]*\")?\s*\)|\b(?:href|src)=\"([^\"]*)\"")
HEADING = re.compile(r"^#{1,6}[ \t]+(.*?)[ \t]*#*$", re.M)
ANCHOR = re.compile(r"<a\s+(?:id|name)=\"([^\"]*)\"")
OUTSIDE = re.compile(r"[a-z][a-z0-9+.-]*:|//", re.I)


def kept_files() -> list[Path]:
    names = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                           cwd=ROOT, check=True, capture_output=True, text=True).stdout
    return [ROOT / name for name in names.split("\0") if name and (ROOT / name).exists()]


def blanked(text: str, pattern: re.Pattern[str]) -> str:
    """Without what matches, in the same lines."""
    return pattern.sub(lambda match: re.sub(r"[^\n]", " ", match[0]), text)


@cache
def prose(page: Path) -> str:
    return blanked(page.read_text(encoding="utf-8"), FENCE)


def slug(heading: str) -> str:
    """The anchor that a heading gets: small letters, digits, '-' and '_'."""
    shown = re.sub(r"!?\[([^\]]*)\]\([^)]*\)", r"\1", heading)
    kept = re.sub(r"[^\w\- ]", "", shown.lower())
    return kept.replace(" ", "-")


@cache
def anchors(page: Path) -> frozenset[str]:
    found: set[str] = set(ANCHOR.findall(prose(page)))
    times: dict[str, int] = {}
    for heading in HEADING.findall(prose(page)):
        name = slug(heading)
        count = times.get(name, 0)
        times[name] = count + 1
        found.add(f"{name}-{count}" if count else name)
    return frozenset(found)


def fault(page: Path, link: str, kept: frozenset[Path]) -> str | None:
    path, _, anchor = link.partition("#")
    target = (page.parent / unquote(path)).resolve() if path else page
    is_folder = any(target in file.parents for file in kept)
    if target not in kept and not is_folder:
        return "there is no such file"
    if anchor and target.suffix == ".md" and unquote(anchor) not in anchors(target):
        return f"{target.relative_to(ROOT)} has no such heading"
    return None


def dead_links(pages: list[Path], kept: frozenset[Path]) -> Iterator[str]:
    for page in pages:
        text = blanked(prose(page), CODE)
        for match in LINK.finditer(text):
            link = match[1] or match[2]
            if not link or OUTSIDE.match(link):
                continue
            why = fault(page, link, kept)
            if why is not None:
                line = text.count("\n", 0, match.start()) + 1
                yield f"{page.relative_to(ROOT)}:{line}: {link}: {why}"


def main() -> int:
    kept = frozenset(path.resolve() for path in kept_files())
    pages = sorted(path for path in kept if path.suffix == ".md")
    dead = list(dead_links(pages, kept))
    print("\n".join(dead) if dead else f"The links of {len(pages)} pages lead somewhere.")
    return 1 if dead else 0


if __name__ == "__main__":
    sys.exit(main())
