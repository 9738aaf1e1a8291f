"""The engine through its C interface, to hold the package against."""

import ctypes
import json
import os

import numpy as np

IDS = {"open": 7, "high": 8, "low": 9, "close": 11, "volume": 13}

_library = ctypes.CDLL(os.environ["QUOR_LIBRARY"])
_library.create_instance.restype = ctypes.c_int64
_library.get_pre_parse_res.restype = ctypes.c_void_p
_library.exec_parser_cal.restype = ctypes.c_void_p
_library.get_data_by_col_row.restype = ctypes.c_double


def _text(buffer):
    text = ctypes.string_at(buffer).decode()
    _library.release_ptr_val(ctypes.c_void_p(buffer))
    return text


def lines(script, names, frame):
    """The values of lines over a frame of bars, a column for each."""
    handle = ctypes.c_int64(_library.create_instance())
    length = ctypes.c_uint32()
    source = script.encode()
    report = _text(_library.get_pre_parse_res(handle, source, b"", b"", len(source), 0, 0,
                                              ctypes.byref(length)))
    assert '"ErrCode":0,' in report, report
    rows = []
    for time, row in zip(frame.index, frame.to_dict("records")):
        cells = {str(IDS[name]): value for name, value in row.items() if value == value}
        rows.append({"1": int(time.strftime("%Y%m%d%H%M%S")), **cells})
    text = json.dumps(rows).encode()
    _library.set_row_data(handle, text, len(text))
    answer = _text(_library.exec_parser_cal(handle, 0, 0, ctypes.byref(length)))
    assert '"ErrCode":0,' in answer, answer
    columns = []
    for name in names:
        column = _library.get_field_id_by_param_name(handle, name.encode(), len(name.encode()))
        cells = [_library.get_data_by_col_row(handle, row, column) for row in range(len(rows))]
        columns.append(cells)
    _library.delete_instance(handle)
    return np.array(columns).T
