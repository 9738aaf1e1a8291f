"""Frames of other libraries by the protocols in which they offer their arrays, and no pandas."""

import ctypes
import subprocess
import sys

import numpy as np
import pandas as pd
import pytest
from conftest import made_up

import quor

SCRIPT = quor.compile("A:MA(C,3)+V;")


class _Schema(ctypes.Structure):
    pass


class _Array(ctypes.Structure):
    pass


class _Stream(ctypes.Structure):
    pass


_SCHEMA, _ARRAY, _STREAM = (ctypes.POINTER(kind) for kind in (_Schema, _Array, _Stream))
_schema_release, _array_release, _stream_release = (
    ctypes.CFUNCTYPE(None, kind) for kind in (_SCHEMA, _ARRAY, _STREAM))
_get_schema = ctypes.CFUNCTYPE(ctypes.c_int, _STREAM, _SCHEMA)
_get_next = ctypes.CFUNCTYPE(ctypes.c_int, _STREAM, _ARRAY)
_get_error = ctypes.CFUNCTYPE(ctypes.c_char_p, _STREAM)
_Schema._fields_ = [
    ("format", ctypes.c_char_p), ("name", ctypes.c_char_p), ("metadata", ctypes.c_char_p),
    ("flags", ctypes.c_int64), ("n_children", ctypes.c_int64),
    ("children", ctypes.POINTER(_SCHEMA)), ("dictionary", _SCHEMA), ("release", _schema_release),
    ("private_data", ctypes.c_void_p)]
_Array._fields_ = [
    ("length", ctypes.c_int64), ("null_count", ctypes.c_int64), ("offset", ctypes.c_int64),
    ("n_buffers", ctypes.c_int64), ("n_children", ctypes.c_int64),
    ("buffers", ctypes.POINTER(ctypes.c_void_p)), ("children", ctypes.POINTER(_ARRAY)),
    ("dictionary", _ARRAY), ("release", _array_release), ("private_data", ctypes.c_void_p)]
_Stream._fields_ = [
    ("get_schema", _get_schema), ("get_next", _get_next), ("get_last_error", _get_error),
    ("release", _stream_release), ("private_data", ctypes.c_void_p)]


class ArrowDouble:
    """A table that speaks nothing but Arrow's interface of C, in batches of some rows."""

    def __init__(self, columns, rows=7, offset=0, error=None):
        self.columns = columns  #: name, format, numpy array, whether each cell is there
        self.size = len(columns[0][2])
        self.rows, self.offset, self.error = rows, offset, error
        self.at, self.kept, self.given, self.released = 0, [], 0, 0

    def _schema(self, _, out):
        if self.error:
            return 5
        children = (_SCHEMA * len(self.columns))()
        for number, (name, form, _, _) in enumerate(self.columns):
            child = _Schema(format=form.encode(), name=name.encode())
            if form.startswith("dictionary "):
                child.format = b"s"
                words = _Schema(format=form.split()[1].encode())
                child.dictionary = ctypes.pointer(words)
                self.kept.append(words)
            children[number] = ctypes.pointer(child)
            self.kept.append(child)
        self._give(out, _Schema, _schema_release, format=b"+s", n_children=len(self.columns),
                   children=children)
        return 0

    def _next(self, _, out):
        if self.at >= self.size:
            ctypes.memset(out, 0, ctypes.sizeof(_Array))
            return 0
        end = min(self.at + self.rows, self.size)
        children = (_ARRAY * len(self.columns))()
        for number, (_, form, values, is_there) in enumerate(self.columns):
            children[number] = ctypes.pointer(self._column(form, values, is_there, end))
        self._give(out, _Array, _array_release, length=end - self.at, offset=self.offset,
                   n_children=len(self.columns), n_buffers=1, children=children)
        self.at = end
        return 0

    def _column(self, form, values, is_there, end):
        values, is_there = values[self.at:end], is_there[self.at:end]
        pad = np.zeros(self.offset, bool)
        bits = np.packbits(np.append(pad, is_there), bitorder="little")
        if form.startswith("dictionary "):
            return self._numbered(form.split()[1], values, is_there)
        if form == "vu":
            buffers = [bits, *self._views(values)]
        elif form == "u":
            encoded = [str(value).encode() for value in values]
            first = np.zeros(self.offset + 1, np.int32)
            offsets = np.append(first, np.cumsum([len(one) for one in encoded], dtype=np.int32))
            buffers = [bits, offsets, np.frombuffer(b"".join(encoded) + b"!", np.uint8)]
        else:
            buffers = [bits, np.append(values[:1].repeat(self.offset), values)]
        pointers = (ctypes.c_void_p * len(buffers))(*(one.ctypes.data for one in buffers))
        column = _Array(length=end - self.at, null_count=int((~is_there).sum()),
                        n_buffers=len(buffers), buffers=pointers)
        self.kept += [buffers, pointers, column]
        return column

    def _views(self, values):
        """Views of texts, the texts that are too long for them, and how long these are together."""
        views, long = np.zeros((self.offset + len(values), 4), np.int32), b""
        for row, value in enumerate(values, self.offset):
            text = str(value).encode()
            views[row, 0] = len(text)
            if len(text) <= 12:
                views[row, 1:] = np.frombuffer(text.ljust(12, b"\0"), np.int32)
            else:
                views[row, 2:] = 0, len(long)
                long += text
        return views, np.frombuffer(long + b"!", np.uint8), np.array([len(long)])

    def _numbered(self, form, values, is_there):
        """Texts as numbers of a dictionary, or other values for the format of these."""
        known, places = np.unique(values.astype(str) if form.endswith("u") else values,
                                  return_inverse=True)
        at, offset, rows = self.at, self.offset, len(known)
        self.at, self.offset = 0, 0
        words = self._column(form, known, np.ones(rows, bool), rows)
        self.at, self.offset = at, offset
        column = self._column("s", np.append(np.zeros(at), places).astype(np.int16),
                              np.append(np.ones(at, bool), is_there), at + len(values))
        column.dictionary = ctypes.pointer(words)
        return column

    def _give(self, out, kind, release, **fields):
        def done(pointer):
            self.released += 1
            pointer.contents.release = release()
        value = kind(release=release(done), **fields)
        self.kept.append(value)
        self.given += 1
        ctypes.memmove(out, ctypes.byref(value), ctypes.sizeof(kind))

    def __arrow_c_stream__(self, requested_schema=None):
        stream = _Stream(get_schema=_get_schema(self._schema), get_next=_get_next(self._next),
                         get_last_error=_get_error(lambda _: self.error.encode()))
        self.kept.append(stream)
        new = ctypes.pythonapi.PyCapsule_New
        new.restype, new.argtypes = ctypes.py_object, [ctypes.c_void_p, ctypes.c_char_p,
                                                       ctypes.c_void_p]
        return new(ctypes.addressof(stream), b"arrow_array_stream", None)


def arrow_of(frame, time=("tsu:", "datetime64[us]"), **more):
    there = np.ones(len(frame), bool)
    return ArrowDouble([
        ("date", time[0], frame.index.to_numpy().astype(time[1]).view(
            np.int32 if time[1] == "int32" else np.int64) if time[1] != "D" else
         frame.index.to_numpy().astype("datetime64[D]").astype(np.int32), there),
        ("close", "g", frame["close"].fillna(0).to_numpy(), frame["close"].notna().to_numpy()),
        ("volume", "i", frame["volume"].to_numpy(np.int32), there),
        ("what", "u", np.array(["first", "", "größer"] * len(frame), object)[:len(frame)], there),
        ("other", "+l", np.zeros(len(frame)), there)], **more)


@pytest.mark.parametrize("time", [("tsu:", "datetime64[us]"), ("tsn:", "datetime64[ns]"),
                                  ("tsm:", "datetime64[ms]"), ("tss:", "datetime64[s]"),
                                  ("tdD", "D")])
@pytest.mark.parametrize("rows, offset", [(1000, 0), (7, 0), (1, 3)])
def test_arrow_streams_are_read(time, rows, offset):
    frame = made_up(1, 40)
    frame.loc[frame.index[5], "close"] = np.nan
    table = arrow_of(frame, time, rows=rows, offset=offset)
    result = SCRIPT.run(table)
    assert np.array_equal(result["A"], SCRIPT.run(frame)["A"], equal_nan=True)
    assert list(result.index) == list(frame.index)
    assert table.given == table.released > 0
    live = SCRIPT.live(arrow_of(frame, time, rows=rows, offset=offset))
    assert len(live) == 40


@pytest.mark.parametrize("form", ["u", "vu", "dictionary u", "dictionary vu"])
@pytest.mark.parametrize("rows, offset", [(1000, 0), (7, 3)])
def test_arrow_frames_may_be_panels_and_have_zones(form, rows, offset):
    frame = made_up(1, 10)
    long = pd.concat({"größer als zwölf": frame, "": frame}, names=["what", "date"])
    table = ArrowDouble([
        ("what", form, long.index.get_level_values(0).to_numpy(object), np.ones(20, bool)),
        ("date", "tsn:Asia/Tokyo", np.tile(
            (frame.index - pd.Timedelta("9h")).to_numpy().view(np.int64), 2), np.ones(20, bool)),
        ("C", "g", long["close"].to_numpy(), np.ones(20, bool)),
        ("V", "l", long["volume"].to_numpy(), np.ones(20, bool))], rows=rows, offset=offset)
    result = quor.scan(SCRIPT, table, by="what", last=None)
    found = result.loc["größer als zwölf"]
    assert np.array_equal(found["A"], SCRIPT.run(frame)["A"], equal_nan=True)
    assert list(found.index) == list(frame.index)


def test_arrow_dictionaries_may_hold_nulls_and_numbers():
    frame = made_up(1, 30)
    frame.loc[frame.index[5], "close"] = np.nan
    there = np.ones(30, bool)
    table = ArrowDouble([
        ("date", "tdD", frame.index.to_numpy().astype("datetime64[D]").astype(np.int32), there),
        ("close", "dictionary g", frame["close"].fillna(0).to_numpy(),
         frame["close"].notna().to_numpy()),
        ("volume", "dictionary l", frame["volume"].to_numpy(np.int64), there)], rows=7)
    result = SCRIPT.run(table)
    assert np.array_equal(result["A"], SCRIPT.run(frame)["A"], equal_nan=True)


def test_an_arrow_stream_that_fails_says_why():
    with pytest.raises(ValueError, match="the disk is gone"):
        SCRIPT.run(arrow_of(made_up(1, 5), error="the disk is gone"))


class _Interchange:
    """A frame that offers the interchange protocol and nothing else."""

    def __init__(self, frame):
        self._frame = frame

    def __dataframe__(self, nan_as_null=False, allow_copy=True):
        return self._frame.__dataframe__(nan_as_null, allow_copy)


def test_other_frames_and_arrays_with_names_are_taken():
    frame = made_up(1, 20)
    wanted = SCRIPT.run(frame)["A"].to_numpy()
    records = frame.reset_index().to_records(index=False)
    buffers = {"date": memoryview(np.array(frame.index.strftime("%Y%m%d"), np.int64)),
               "close": memoryview(frame["close"].to_numpy()), "volume": frame["volume"].tolist()}
    for given in (_Interchange(frame.reset_index()), np.array(records), records, buffers):
        assert np.array_equal(SCRIPT.run(given)["A"], wanted, equal_nan=True)
    with pytest.raises(TypeError, match="an array has no names for its columns"):
        SCRIPT.run(frame.to_numpy())


WITHOUT_PANDAS = """
import sys
class Missing:
    def find_spec(self, name, path=None, target=None):
        if name.partition(".")[0] == "pandas":
            raise ModuleNotFoundError(name)
sys.meta_path.insert(0, Missing())
import datetime, numpy as np, quor
script = quor.compile("A:MA(C,2);C>2,BK;")
bars = {"date": np.array(["2024-01-02", "2024-01-03", "2024-01-04"], "M8[D]"),
        "close": np.array([1.0, 2.0, 4.0])}
assert script.run(bars)["A"].tolist()[1:] == [1.5, 3.0]
found = quor.scan(script, {"b": bars, "a": bars}, last=2)
assert found["security"].tolist() == ["a", "a", "b", "b"] and found["A"].tolist()[1] == 3.0
assert found["time"].astype("M8[D]").tolist()[0] == datetime.date(2024, 1, 3)
long = {**{name: np.tile(values, 2) for name, values in bars.items()}, "code": [2, 2, 2, 1, 1, 1]}
assert quor.scan(script, long, by="code")["A"].tolist() == [3.0, 3.0]
live = script.live(bars)
assert live.update("2024-01-05", close=6) == {"A": 5.0}
assert live.update(datetime.datetime(2024, 1, 5), close=8.0) == {"A": 6.0}
assert quor.sweep("A:MA(C,N);", bars, N=[1, 2], out="numpy").shape == (2, 1, 3)
try:
    script.run(bars, out="long")
except ImportError as error:
    assert "needs pandas" in str(error)
else:
    raise AssertionError
assert "pandas" not in sys.modules
"""


def test_arrays_go_in_and_out_without_pandas():
    subprocess.run([sys.executable, "-c", WITHOUT_PANDAS], check=True)
