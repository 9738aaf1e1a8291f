#!/usr/bin/env python3
"""Makes the manual as one HTML page with search, from the pages that docs/README.md names.

    manual.py FILE

Pictures are in the page, and it needs no other file. It fails on a link from page to page that
leads nowhere.
"""

import base64
import html
import mimetypes
import re
import sys
from pathlib import Path
from typing import Iterator

import markdown

import links

DOCS = links.ROOT / "docs"
ROW = re.compile(r"^\| \[[\w.]+\]\((\w+)\.md\)", re.M)
TITLE = re.compile(r"^# +(.*)$", re.M)
# The first word says the language of a block; what else stands there is for the tests.
FENCE = re.compile(r"^(```\w+)[ \t]+.*$", re.M)
# Lists in lists stand two blanks in, where the package wants four.
INNER_LIST = re.compile(r"^  - ", re.M)
CELL = re.compile(r"<td.*?</td>", re.S)
HREF = re.compile(r'<a href="([^"]*)">(.*?)</a>', re.S)
PICTURE = re.compile(r'(<img [^>]*src=")([^"]*)(")')
SECTION = re.compile(r'<h([123]) id="([^"]*)">(.*?)</h\1>', re.S)


def anchor_of(page: str, heading: str = "") -> str:
    return f"{page}--{heading}" if heading else page


def title_of(page: str) -> str:
    title = TITLE.search((DOCS / f"{page}.md").read_text(encoding="utf-8"))
    return html.escape(title[1]) if title else page


def converted(page: str) -> str:
    """A page as HTML whose headings have anchors that no other page has."""
    def slug(heading: str, separator: str) -> str:
        return anchor_of(page, links.slug(heading))

    text = FENCE.sub(r"\1", (DOCS / f"{page}.md").read_text(encoding="utf-8"))
    text = INNER_LIST.sub(r"  \g<0>", text)
    maker = markdown.Markdown(
        extensions=["tables", "fenced_code", "sane_lists", "toc"],
        extension_configs={"toc": {"slugify": slug}})
    # The anchor of a repeated heading ends in -1, as it does where the files are read.
    body = re.sub(r'(<h\d id="[^"]*)_(\d+)">', r'\1-\2">', maker.convert(text))
    return CELL.sub(lambda cell: cell[0].replace("\\|", "|"), body)


def with_links(page: str, body: str, pages: list[str]) -> str:
    """Links from page to page become links within the one; of other links the text stays."""
    def place(match: re.Match[str]) -> str:
        link, text = html.unescape(match[1]), match[2]
        path, _, heading = link.partition("#")
        target = path.removesuffix(".md") if path else page
        if target in pages:
            text = title_of(target) if text == path else text
            return f'<a href="#{html.escape(anchor_of(target, heading))}">{text}</a>'
        return text

    return HREF.sub(place, body)


def with_pictures(body: str) -> str:
    def picture(match: re.Match[str]) -> str:
        file = DOCS / match[2]
        kind = mimetypes.guess_type(file.name)[0]
        data = base64.b64encode(file.read_bytes()).decode()
        return f"{match[1]}data:{kind};base64,{data}{match[3]}"

    return PICTURE.sub(picture, body)


def contents(body: str) -> str:
    rows = [(level, anchor, re.sub("<[^>]*>", "", text))
            for level, anchor, text in SECTION.findall(body)]
    return "\n".join(f'<li class="h{level}"><a href="#{anchor}">{text}</a></li>'
                     for level, anchor, text in rows if level != "3")


def dead_links(body: str) -> Iterator[str]:
    anchors = set(re.findall(r' id="([^"]*)"', body))
    for link in re.findall(r'<a href="#([^"]*)"', body):
        if html.unescape(link) not in anchors:
            yield link


def manual() -> str:
    pages = ROW.findall((DOCS / "README.md").read_text(encoding="utf-8"))
    parts = []
    for page in pages:
        body = with_pictures(with_links(page, converted(page), pages))
        parts.append(f'<article id="{page}">\n{body}\n</article>')
    body = "\n".join(parts)
    dead = sorted(set(dead_links(body)))
    if dead or not pages:
        raise SystemExit("Links of the manual lead nowhere: " + ", ".join(dead))
    frame = Path(__file__).with_name("manual.html").read_text(encoding="utf-8")
    return frame.replace("<!-- contents -->", contents(body)).replace("<!-- pages -->", body)


if __name__ == "__main__":
    Path(sys.argv[1]).write_text(manual(), encoding="utf-8")
