"""The session of session.c from Python, with the same printout.

    python3 session.py [LIBRARY]    by default lib_quor_parser.so where the loader finds it;
                                    on Windows the path of lib_quor_parser.dll is needed
"""

import ctypes
import json
import math
import sys
from ctypes import c_char_p, c_double, c_int32, c_int64, c_uint8, c_uint32, c_uint64, c_void_p

# The ids under which a row carries its fields. A client sends at least those that the report lists
# in ExtraKLineFieldList; the library passes over the others.
ID_KEY, ID_OPEN, ID_HIGH, ID_LOW, ID_CLOSE, ID_VOLUME = 1, 7, 8, 9, 11, 13
FIELD_IDS = (ID_KEY, ID_OPEN, ID_HIGH, ID_LOW, ID_CLOSE, ID_VOLUME)

PERIOD_ONE_DAY = 0x4000
LOG_ERRORS = 2

LogHandler = ctypes.CFUNCTYPE(None, c_uint8, c_char_p, c_uint64)
NoticeHandler = ctypes.CFUNCTYPE(None, c_int64, c_uint32, c_uint64, c_char_p)

# Result and arguments of the calls in use. A text comes as c_void_p: a result of type c_char_p
# would be copied, and its address, which release_ptr_val must get back, lost.
SIGNATURES = {
    "create_instance": (c_int64, []),
    "delete_instance": (None, [c_int64]),
    "set_logger_handler": (None, [LogHandler, c_uint8]),
    "set_parser_notice_callback_handler": (None, [NoticeHandler]),
    "set_parser_instance_uuid": (None, [c_int64, c_uint64]),
    "set_indicator_extra_info": (None, [c_int64, c_uint32] + [c_char_p] * 4 + [c_uint32] * 4),
    "get_pre_parse_res": (
        c_void_p, [c_int64] + [c_char_p] * 3 + [c_uint32] * 3 + [ctypes.POINTER(c_uint32)]),
    "set_row_data": (None, [c_int64, c_char_p, c_uint32]),
    "set_column_data": (None, [c_int64, c_uint64, c_uint32, c_double]),
    "exec_parser_cal": (c_void_p, [c_int64, c_uint32, c_uint8, ctypes.POINTER(c_uint32)]),
    "get_row_num": (c_uint32, [c_int64]),
    "get_current_row_index": (c_uint32, [c_int64, c_uint64]),
    "get_data_by_col_row": (c_double, [c_int64, c_int32, c_uint32]),
    "get_data_arr": (
        c_void_p, [c_int64, c_uint32, c_uint32, c_int32, ctypes.POINTER(c_uint32)]),
    "get_field_id_by_param_name": (c_int32, [c_int64, c_char_p, c_uint32]),
    "get_shapes": (c_void_p, [c_int64, ctypes.POINTER(c_uint32)]),
    "release_ptr_val": (None, [c_void_p]),
}


class ParserError(Exception):
    """A report or an answer with another code than 0."""

    def __init__(self, answer):
        super().__init__(answer)
        self.answer = answer


class Library:
    """The shared library with the types of its calls, and the handlers of the process."""

    def __init__(self, path):
        self.calls = ctypes.CDLL(path)
        for name, (result, arguments) in SIGNATURES.items():
            call = getattr(self.calls, name)
            call.restype, call.argtypes = result, arguments
        # The library keeps only an address: whoever installs a handler must keep it alive.
        self.handlers = LogHandler(show_log_line), NoticeHandler(show_notice)
        self.calls.set_logger_handler(self.handlers[0], LOG_ERRORS)
        self.calls.set_parser_notice_callback_handler(self.handlers[1])

    def take_text(self, name, *arguments):
        """The text that a call returns, whose buffer goes back to the library."""
        length = c_uint32()
        buffer = getattr(self.calls, name)(*arguments, ctypes.byref(length))
        if not buffer:
            raise ParserError(f"{name}: no answer")
        try:
            return ctypes.string_at(buffer, length.value).decode()
        finally:
            self.calls.release_ptr_val(buffer)


class Parser:
    """One script over the bars of one security."""

    def __init__(self, library, uuid):
        self.api = library
        self.calls = library.calls
        self.handle = self.calls.create_instance()
        if self.handle == 0:
            raise MemoryError("no instance")
        self.calls.set_parser_instance_uuid(self.handle, uuid)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.calls.delete_instance(self.handle)

    def set_subject(self, period, security, market, time_zone):
        texts = [text.encode() for text in (security, market, "", time_zone)]
        self.calls.set_indicator_extra_info(self.handle, period, *texts, *map(len, texts))

    def compile(self, script, parameters=()):
        texts = [text.encode() for text in (script, json.dumps(parameters), "")]
        report = self.api.take_text("get_pre_parse_res", self.handle, *texts, *map(len, texts))
        return self._checked(report)

    def feed(self, bars):
        """Hands bars over: new ones, and others in place of those with the same key."""
        rows = json.dumps([dict(zip(FIELD_IDS, bar)) for bar in bars]).encode()
        self.calls.set_row_data(self.handle, rows, len(rows))

    def set_cell(self, key, column, value):
        self.calls.set_column_data(self.handle, key, column, value)

    def calculate(self, first_row, with_notices):
        """Calculates from a row on. Notices are for what happens now: history goes without them."""
        self._checked(
            self.api.take_text("exec_parser_cal", self.handle, first_row, with_notices))

    def row_count(self):
        return self.calls.get_row_num(self.handle)

    def row_of(self, key):
        return self.calls.get_current_row_index(self.handle, key)

    def column_of(self, name):
        text = name.encode()
        column = self.calls.get_field_id_by_param_name(self.handle, text, len(text))
        if column < 0:
            raise KeyError(name)
        return column

    def cell(self, row, column):
        return self.calls.get_data_by_col_row(self.handle, row, column)

    def last_values(self, column, count):
        last_row = self.row_count() - 1
        return self.api.take_text("get_data_arr", self.handle, column, last_row, count)

    def draw_list(self):
        return self.api.take_text("get_shapes", self.handle)

    @staticmethod
    def _checked(answer):
        if json.loads(answer)["ErrCode"] != 0:
            raise ParserError(answer)
        return answer


# What the library tells by itself. Neither handler may call the instance back.


def show_log_line(level, text, uuid):
    print(f"log {level} of instance {uuid}: {text.decode()}", file=sys.stderr)


def show_notice(_time, column_id, uuid, text):
    print(f"notice of instance {uuid}, column {column_id}: {text.decode()}")


# The session.

SCRIPT = """AVG:MA(C,N),COLORRED,LINETHICK2;
CROSS(C,AVG),NOTICE('up');
"""
PARAMETERS = [{"PARAM_NAME": "N", "DEFAULT": 2}]

HISTORY = [
    (20240102000000, 12, 12.5, 11.5, 12, 300),
    (20240103000000, 12, 12, 9.5, 10, 400),
    (20240104000000, 10, 10, 9, 9, 100),
]
FORMING_BAR = (20240104000000, 10, 11.5, 9, 11, 200)
NEXT_BAR = (20240105000000, 13, 14, 13, 14, 100)


def show_line(title, parser, name):
    print(f"{title}:")
    column = parser.column_of(name)
    for row in range(parser.row_count()):
        value = parser.cell(row, column)
        text = "null" if math.isnan(value) else f"{value:.2f}"
        print(f"  {parser.cell(row, ID_KEY):.0f} {name} {text}")


def run_session(parser):
    parser.set_subject(PERIOD_ONE_DAY, "600000", "USHA", "UTC+08:00")
    print("report:", parser.compile(SCRIPT, PARAMETERS))

    parser.feed(HISTORY)
    parser.calculate(0, with_notices=False)
    show_line("history", parser, "AVG")

    # The last bar changes while it forms: as a whole bar, or cell by cell.
    parser.feed([FORMING_BAR])
    key = FORMING_BAR[0]
    parser.calculate(parser.row_of(key), with_notices=True)
    show_line("forming bar, close 11", parser, "AVG")
    parser.set_cell(key, ID_CLOSE, 13)
    parser.calculate(parser.row_of(key), with_notices=True)
    show_line("forming bar, close 13", parser, "AVG")

    parser.feed([NEXT_BAR])
    parser.calculate(parser.row_of(NEXT_BAR[0]), with_notices=True)
    show_line("next bar", parser, "AVG")

    print("last two values:", parser.last_values(parser.column_of("AVG"), 2))
    print("draw list:", parser.draw_list())


def show_error(library):
    """The report names what is wrong and the statement, the first one being 0."""
    with Parser(library, uuid=2) as parser:
        try:
            parser.compile("AVG:MA(C,N);TWICE:AVRAGE(C,N)*2;", PARAMETERS)
        except ParserError as error:
            print("report:", error.answer)


def main():
    library = Library(sys.argv[1] if len(sys.argv) > 1 else "lib_quor_parser.so")
    with Parser(library, uuid=1) as parser:
        run_session(parser)
    show_error(library)


if __name__ == "__main__":
    main()
