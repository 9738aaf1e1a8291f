#!/usr/bin/env python3
"""Writes the pictures of the language reference: all colours with their values, and all signs.

    tools/pictures.py QUOR FOLDER

Colours and signs are those that the library puts into its records. The signs are drawn by
pango-view, of the Debian package pango1.0-tools, so that readers see them whatever fonts they have.
"""

import json
import pathlib
import subprocess
import sys
import tempfile
from xml.sax.saxutils import escape

COLOURS = [
    "COLORRED", "COLORLIRED", "COLORGREEN", "COLORLIGREEN", "COLORBLUE", "COLORLIBLUE",
    "COLORMAGENTA", "COLORYELLOW", "COLORCYAN", "COLORGRAY", "COLORGREY", "COLORLIGRAY",
    "COLORLIGREY", "COLORBLACK", "COLORWHITE",
]
SIGNS = 33


def records(quor, script):
    """What the library says of the drawings of a script."""
    with tempfile.TemporaryDirectory() as folder:
        bars = pathlib.Path(folder, "bars.csv")
        bars.write_text("date,high,low,close\n2024-01-02,1,1,1\n")
        run = [quor, "run", "-e", script, "--bars", str(bars), "--period", "day", "--json"]
        printed = subprocess.run(run, check=True, stdout=subprocess.PIPE).stdout
    return json.loads(printed)["shapes"]


def picture(width, height, parts):
    return (
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
        'font-family="sans-serif">\n'
        f'<rect width="{width}" height="{height}" fill="#FFFFFF"/>\n' + "\n".join(parts) + "\n</svg>\n"
    )


def colours(quor):
    cell, row, columns = 190, 44, 5
    parts = []
    script = "".join(f"L{i}:C,{word};" for i, word in enumerate(COLOURS))
    for i, (word, record) in enumerate(zip(COLOURS, records(quor, script))):
        value = record["LineColor"].removeprefix("TempBrushKey.")
        x, y = 10 + i % columns * cell, 10 + i // columns * row
        parts.append(
            f'<rect x="{x}" y="{y}" width="34" height="34" fill="{value}" stroke="#808080"/>'
            f'<text x="{x + 42}" y="{y + 14}" font-size="13">{word}</text>'
            f'<text x="{x + 42}" y="{y + 31}" font-size="13" fill="#505050">{value}</text>'
        )
    return picture(10 + columns * cell, 6 + len(COLOURS) // columns * row + 10, parts)


def signs(quor):
    """Lines of signs and of their numbers in turn, as marked-up text."""
    columns = 11
    script = "".join(f"DRAWICON(1,C,{i + 1});" for i in range(SIGNS))
    texts = [escape(record["Text"]) for record in records(quor, script)]
    lines = []
    for first in range(0, SIGNS, columns):
        numbers = [str(i + 1) for i in range(first, first + columns)]
        lines.append("<span size='24pt'>" + "\t".join(texts[first : first + columns]) + "</span>")
        lines.append("<span size='10pt' color='#505050'>" + "\t".join(numbers) + "</span>")
    return "\n".join(lines)


def main():
    quor, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    (folder / "colours.svg").write_text(colours(quor))
    with tempfile.NamedTemporaryFile("w", suffix=".txt", encoding="utf-8") as text:
        text.write(signs(quor))
        text.flush()
        look = ["--markup", "--dpi=96", "--font=DejaVu Sans 12", "--margin=12"]
        output = f"--output={folder / 'signs.png'}"
        subprocess.run(["pango-view", "--no-display", *look, output, text.name], check=True)


if __name__ == "__main__":
    main()
