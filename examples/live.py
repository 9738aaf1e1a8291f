"""The live client of live.c from Python, over the library as session.py loads it.

    tail -f bars.csv | python3 live.py [LIBRARY]
"""

import math
import sys

from session import Library, NoticeHandler, Parser, ParserError

PERIOD_FIVE_MINUTES = 0x3005
SCRIPT = "FAST:MA(C,2);SLOW:MA(C,3);CROSS(FAST,SLOW),NOTICE('up');"
LINES = ("FAST", "SLOW")


@NoticeHandler
def hear_notice(_time, _column_id, _uuid, _text):
    """No call back into the instance from here."""
    print("up")


def show_row(parser, key, row):
    print(key, end="")
    for name in LINES:
        value = parser.cell(row, parser.column_of(name))
        print(f" {name}", "null" if math.isnan(value) else f"{value:.2f}", end="")
    print(flush=True)


def follow(parser, line):
    key, *cells = line.strip().split(",")
    parser.feed([(int(key), *map(float, cells))])
    row = parser.row_of(int(key))
    parser.calculate(row, with_notices=True)
    show_row(parser, key, row)


def main():
    library = Library(sys.argv[1] if len(sys.argv) > 1 else "lib_quor_parser.so")
    library.calls.set_parser_notice_callback_handler(hear_notice)
    with Parser(library, 1) as parser:
        parser.set_subject(PERIOD_FIVE_MINUTES, "600000", "USHA", "UTC+08:00")
        parser.compile(SCRIPT)
        for line in sys.stdin:
            try:
                follow(parser, line)
            except ValueError:
                print("no bar:", line.rstrip(), file=sys.stderr)


if __name__ == "__main__":
    try:
        main()
    except ParserError as error:
        sys.exit(f"live.py: {error}")
