"""One script over one frame: values, times, names of columns, errors, events, live bars."""

import datetime
import json
import os
import pickle
import re
import signal
import sys
import threading
import time
import warnings

import exports
import numpy as np
import pandas as pd
import pytest
from conftest import SAMPLES, made_up

import quor
from quor import interrupts

AVERAGE = quor.compile("A:MA(C,2);B:V+H;")


def same_bits(a, b):
    a, b = np.ascontiguousarray(a, np.float64), np.ascontiguousarray(b, np.float64)
    both_null = np.isnan(a) & np.isnan(b)
    return a.shape == b.shape and bool(np.all(both_null | (a.view(np.int64) == b.view(np.int64))))


@pytest.mark.parametrize("path", sorted(SAMPLES.glob("*.quor")), ids=lambda path: path.stem)
def test_samples_give_the_bits_of_the_exports(path, index_daily):
    source = path.read_text(encoding="utf-8")
    script = quor.compile(source)
    frame = index_daily[["open", "high", "low", "close", "volume"]].tail(400)
    assert script.lines
    result = script.run(frame)
    assert same_bits(result, exports.lines(source, script.lines, frame))
    assert result.index is frame.index


def test_a_script_describes_itself():
    script = quor.compile("a:MA(C,N),COLORRED,LINETHICK2;hid:=C;", N=9)
    assert script.lines == ["A"] and [line.name for line in script.line_details] == ["A", "HID"]
    assert script.fields == ["close"]
    assert script.look_back == 9
    assert script.report["words"] == ["MA", "POLYLINE"]
    assert script.line_details[0].look["width"] == 2.0
    assert script.line_details[1].look is None
    assert [shape["Field1Text"] for shape in script.shapes] == ["A"]
    assert script.findings == []
    assert "LINETHIK" in quor.compile("A:C,LINETHIK2;").findings[0].sentence


def test_findings_name_what_the_package_has_not():
    def told(source, **settings):
        return [str(finding) for finding in quor.compile(source, **settings).findings]

    assert told("A:C;\nB:C/MINPRICE+UNIT;") == [
        f"2:{column}: warning: there is no number for {word}, so it is null on every bar; "
        "give it with constants="
        for column, word in ((5, "MINPRICE"), (14, "UNIT"))]
    assert told("A:DATE;", period=0x3005) == [
        "1:3: warning: there is no trading calendar, so DATE gives each bar the date on its clock, "
        "not its trading day; give it with calendar="]
    assert told("A:DATE;") == [] and told("A:TIME;", period=0x3005) == []


def test_a_text_that_is_no_json_leaves_its_record_readable():
    record = quor.compile("DRAWTEXT(C>1,C,'a\\b,\t');").shapes[0]
    assert (record["ShapeName"], record["Text"]) == ("TextShape", "a\\b,\t")
    assert record["FontSize"] == 14


@pytest.mark.parametrize("change", [
    lambda frame: frame.tz_localize("America/New_York"),
    lambda frame: frame.set_axis(frame.index.to_period("D")),
    lambda frame: frame.reset_index(),
    lambda frame: frame.reset_index().rename(columns={"date": "Time"}),
    lambda frame: frame.reset_index().assign(date=lambda x: x["date"].dt.strftime("%Y-%m-%d")),
    lambda frame: frame.reset_index().assign(date=lambda x: x["date"].dt.date),
    lambda frame: frame.reset_index().assign(
        date=lambda x: x["date"].dt.strftime("%Y%m%d").astype(int)),
    lambda frame: frame.rename(columns={"close": "C", "volume": " Vol", "high": "HIGH"}),
    lambda frame: frame.rename(columns={"close": 11, "volume": "13"}),
    lambda frame: frame.astype({"close": "Float64", "volume": "Int64"}),
    lambda frame: frame.astype({"close": object}),
    lambda frame: frame.reset_index().assign(
        date=lambda x: x["date"].dt.strftime("%Y%m%d").astype(int).astype(object)),
    lambda frame: frame.reset_index().assign(
        date=lambda x: x["date"].dt.date, time=["00:00", *["23:59:59"] * 119]),
    lambda frame: frame.reset_index().assign(
        date=lambda x: x["date"].dt.strftime("%Y%m%d"), Time=[datetime.time(9, 35)] * 120),
    lambda frame: frame.reset_index().assign(time=pd.Timedelta("9h")),
    lambda frame: frame.set_axis(frame.index.strftime("%Y/%m/%dT%H:%M:%S.5+08:00")),
    lambda frame: frame.set_axis(pd.Index(
        [time.to_pydatetime().replace(tzinfo=datetime.timezone(datetime.timedelta(hours=day % 9)))
         for day, time in enumerate(frame.index)], dtype=object)),
    lambda frame: frame.reset_index().assign(date=lambda x: x["date"].dt.to_period("D")),
    lambda frame: frame.astype("category").astype({"high": float}),
], ids=["zone", "periods", "column", "Time", "texts", "dates", "integers", "words", "ids",
        "nullable", "objects", "integer objects", "clocks", "clock objects", "clock deltas",
        "zones in texts", "many zones", "period column", "categories"])
def test_frames_of_every_kind_give_the_same_lines(frame, change):
    changed = change(frame)
    result = AVERAGE.run(changed)
    assert same_bits(result, AVERAGE.run(frame))
    assert result.index.equals(changed.index)


@pytest.mark.parametrize("unit", ["D", "h", "s", "ms", "us", "ns"])
def test_mappings_take_times_of_any_resolution(frame, unit):
    data = {name: frame[name].to_numpy() for name in frame}
    data["time"] = frame.index.to_numpy().astype(f"datetime64[{unit}]")
    result = AVERAGE.run(data)
    assert same_bits(result, AVERAGE.run(frame))
    assert list(result.index) == list(frame.index)


def test_times_reach_the_script_as_the_clock_shows_them():
    times = pd.DatetimeIndex(["1969-12-31 23:59:59.9", "2024-02-29 09:35:07.000000001"],
                             tz="Asia/Tokyo")
    result = quor.compile("D:=DATE;T:=TIME;", period=0x3005).run(pd.DataFrame(index=times))
    assert result.to_numpy().tolist() == [[19691231.0, 2359.0], [20240229.0, 935.0]]
    beside = pd.DataFrame({"date": ["20240229", "2024-03-01"], "Time": ["093507", "23:59"]})
    result = quor.compile("D:=DATE;T:=TIME;", period=0x3005).run(beside)
    assert result.to_numpy().tolist() == [[20240229.0, 935.0], [20240301.0, 2359.0]]


@pytest.mark.parametrize("unit, ticks, first, last, step", [
    ("s", 1, "0001-01-01", "9999-12-31", 8_000_001),
    ("ms", 10**3, "1799-12-31", "2101-01-01", 100_003),
    ("us", 10**6, "1969-01-01", "1973-01-01", 1801),
    ("ns", 10**9, "1677-09-22", "2262-04-11", 400_001)])
def test_times_of_all_centuries_are_taken(unit, ticks, first, last, step):
    times = np.arange(first, last, step, dtype="datetime64[s]")
    keys = [int(re.sub("[-:T]", "", str(time))) for time in times]
    engine = AVERAGE.spec.engine()
    for given in (times, times[::-1]):
        stamps = given.astype(f"datetime64[{unit}]").view(np.int64)
        assert engine.run(stamps, ticks, [], False)
        assert engine.keys(0).tolist() == keys


def test_what_is_masked_is_null(frame):
    hidden = np.arange(len(frame)) % 7 == 3
    holes = frame.assign(close=frame["close"].mask(hidden))
    data = {name: frame[name].to_numpy() for name in frame}
    data["date"] = frame.index.to_numpy()
    for close in (np.ma.array(frame["close"], mask=hidden),
                  np.ma.array(frame["close"].to_numpy(object), mask=hidden),
                  frame["close"].astype("Float64").mask(hidden)):
        assert same_bits(AVERAGE.run({**data, "close": close}), AVERAGE.run(holes))
    whole = np.ma.array(frame["volume"], mask=hidden, dtype=np.int64)
    assert AVERAGE.run({**data, "volume": whole})["B"].isna().tolist() == hidden.tolist()
    with pytest.raises(ValueError, match="bar 3 .* has no time"):
        AVERAGE.run({**data, "date": np.ma.array(data["date"], mask=hidden)})


def test_an_infinity_is_a_finding(frame):
    text = r"'close' of bar 40 \(the first is 0\) is infinite, which averages"
    for value in (np.inf, -np.inf):
        odd = frame.assign(close=frame["close"].where(np.arange(len(frame)) != 40, value))
        script = quor.compile("A:EMA(C,5);")
        with pytest.warns(quor.BarsWarning, match=text):
            script.run(odd)
        assert [finding.severity for finding in script.findings] == ["warning"]
        assert "is infinite" in script.findings[0].sentence
        script.run(odd.iloc[41:])
        assert script.findings == []
        with pytest.warns(quor.BarsWarning, match=text):
            live = script.live(odd)
        with pytest.warns(quor.BarsWarning, match="'close' of bar 0"):
            live.update("2030-01-01", close=value)
        with pytest.warns(quor.BarsWarning, match=text):
            quor.sweep("A:EMA(C,N);", odd, N=[2, 3])
    quor.compile("A:EMA(O,5);").run(odd)  # reads no close


def test_bars_of_a_day_that_are_none_are_a_finding(frame):
    minutes = frame.set_axis(pd.date_range("2024-01-02 09:30", periods=len(frame), freq="min"))
    script = quor.compile("A:TIME;")
    with pytest.warns(quor.BarsWarning, match="several bars a day.*0x3005"):
        script.run(minutes)
    assert len(script.findings) == 1
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        script.run(frame)
        quor.compile("A:TIME;", period=0x3001).run(minutes)
        AVERAGE.run(minutes)
    for period in (5, "dya", 0x4000 + 0.0, True):
        with pytest.raises(ValueError, match="period is a name"):
            quor.compile("A:C;", period=period)


def test_columns_can_be_named(frame):
    renamed = frame.rename(columns={"close": "last", "volume": "lots"}).reset_index(names="when")
    result = AVERAGE.run(renamed, columns={"close": "last", "Volume": "lots", "time": "when"})
    assert same_bits(result, AVERAGE.run(frame))
    for columns, text in (({"close": "low", "C": "high"}, "'C' and another name are one field"),
                          ({"closed": "low"}, "'closed' is the name of no field"),
                          ({"date": None}, "without their times"),
                          ({"close": "last"}, "no column 'last'")):
        with pytest.raises(ValueError, match=text):
            AVERAGE.run(frame, columns=columns)
    without = AVERAGE.run(frame, columns={"volume": None})
    assert without["B"].isna().all() and same_bits(without["A"], AVERAGE.run(frame)["A"])


def test_bars_in_any_order_come_back_in_theirs(frame):
    shuffled = frame.sample(frac=1, random_state=3)
    assert same_bits(AVERAGE.run(shuffled), AVERAGE.run(frame).loc[shuffled.index])


def test_repeated_times_are_refused_unless_the_last_bar_shall_count(frame):
    twice = pd.concat([frame.iloc[[5]].assign(close=1e6), frame])
    text = r"bars 0 and 6 \(the first is 0\) have one time, 2024-01-08.*groupby.*duplicates"
    for run in (AVERAGE.run, AVERAGE.live,
                lambda frame, **more: quor.sweep("A:MA(C,N);", frame, N=[2], **more)):
        with pytest.raises(ValueError, match=text):
            run(twice)
        with pytest.raises(ValueError, match="different times fall into one second"):
            run(twice.set_axis([twice.index[0] + pd.Timedelta("1ms"), *twice.index[1:]]),
                duplicates="last")
        with pytest.raises(ValueError, match="and not 'first'"):
            run(frame, duplicates="first")
    result = AVERAGE.run(twice, duplicates="last")
    assert same_bits(result.iloc[1:], AVERAGE.run(frame))
    assert same_bits(result.iloc[0], AVERAGE.run(frame).iloc[5])
    assert same_bits(AVERAGE.live(twice, duplicates="last").values(), AVERAGE.run(frame))
    swept = quor.sweep("A:MA(C,N);", twice, N=[2], duplicates="last")
    assert same_bits(swept[2, "A"].iloc[1:], AVERAGE.run(frame)["A"])


def test_one_security_of_a_long_frame_is_a_frame_as_others(frame):
    frames = {"A": frame, "B": frame.set_axis(frame.index + pd.Timedelta("1h")) * 2}
    long = pd.concat(frames, names=["code", "date"])
    with pytest.raises(ValueError, match="level 'code' of the index has several values.*groupby"):
        AVERAGE.live(long)
    one = long.loc[["B"]]
    assert AVERAGE.run(one).index is one.index
    assert same_bits(AVERAGE.run(one), AVERAGE.run(frames["B"]))
    script = quor.compile("C>0,BK;")
    script.run(one)
    assert list(script.events["time"]) == list(frames["B"].index)
    with pytest.raises(ValueError, match="which level of the index holds the times"):
        AVERAGE.run(one.rename_axis(["code", "when"]).set_index([np.arange(120.0), np.arange(120)]))


@pytest.mark.parametrize("bars", [0, 1])
def test_few_bars(frame, bars):
    result = AVERAGE.run(frame.head(bars))
    assert result.shape == (bars, 2) and result["A"].isna().all()
    assert list(result.columns) == ["A", "B"]


@pytest.mark.parametrize("change, text", [
    (lambda frame: frame.drop(columns="close"), "the script reads 'close', and no column"),
    (lambda frame: frame.assign(C=1), "two columns are 'close': 'close' and 'C'"),
    (lambda frame: frame.assign(close="high"), "'close' holds text, such as 'high' in bar 0"),
    (lambda frame: frame.assign(close=frame.index), "column 'close' holds datetime64"),
    (lambda frame: frame.assign(close=1j), "column 'close' holds complex"),
    (lambda frame: frame.assign(close=[[1]] * len(frame)), "column 'close' holds what is no"),
    (lambda frame: frame.set_axis(frame.index.strftime("%d/%m/%Y")), "'01/01/2024' is no date"),
    (lambda frame: frame.set_axis(frame.index.strftime("%m-%d-%y")), "'01-01-24' is no date"),
    (lambda frame: frame.set_axis(["2024-02-30", *frame.index[1:].strftime("%Y-%m-%d")]),
     "'2024-02-30' is no date"),
    (lambda frame: frame.set_axis([None, *frame.index[1:].strftime("%Y-%m-%d")]),
     r"bar 0 \(the first is 0\) has no time"),
    (lambda frame: frame.set_axis([1.5, *frame.index[1:]]), r"bar 0 .* has 1.5 for a time"),
    (lambda frame: frame.reset_index().assign(time=935), "column 'time' holds no times of day"),
    (lambda frame: frame.reset_index().assign(time="9.35"), "bar 0 .*'9.35' for a time of day"),
    (lambda frame: frame.reset_index().assign(time=[pd.NaT, *[pd.Timedelta("9h")] * 119]),
     r"bar 0 \(the first is 0\) has no time"),
    (lambda frame: frame.reset_index().assign(
        date=lambda x: x["date"] + pd.Timedelta("1h"), time="09:35"), "both have times of day"),
    (lambda frame: frame.reset_index().assign(Date=1), "two columns hold the times: 'date' and"),
    (lambda frame: frame["close"].tolist(), "a DataFrame or a mapping of arrays, and not list"),
    (lambda frame: frame.set_axis([pd.NaT, *frame.index[1:]]), r"bar 0 \(the first is 0\) has no"),
    (lambda frame: frame.set_axis(["noon", *frame.index[1:]]), "has 'noon' for a time"),
    (lambda frame: frame.set_axis(range(len(frame))), "integers are times only if written as"),
    (lambda frame: frame.set_axis(frame.index[:1].append(frame.index[:-1] + pd.Timedelta("1ms"))),
     "different times fall into one second"),
    (lambda frame: {"close": [1.0], "volume": [1], "high": [1]}, "no column holds the times"),
    (lambda frame: frame["close"], r"not Series; make a frame of it: series.to_frame\("),
    (lambda frame: "bars.csv", "not str; quor.read_csv reads a file"),
    (lambda frame: {**frame.reset_index(), "close": [10**400] * len(frame)}, "what is no number"),
    (lambda frame: {**frame.reset_index(), "close": ["1"] * len(frame)}, "holds text, such as '1'"),
    (lambda frame: {"time": frame.index, "close": [1.0], "volume": [1], "high": [1]},
     "column 'high' has 1 values for 120 bars"),
])
def test_bad_frames_are_refused_and_leave_the_script_sound(frame, change, text):
    before = AVERAGE.run(frame)
    with pytest.raises((ValueError, TypeError), match=text):
        AVERAGE.run(change(frame))
    assert same_bits(AVERAGE.run(frame), before)


HALF = "\ud800"


@pytest.mark.parametrize("call, text", [
    (lambda frame: AVERAGE.run(frame, columns={"close": ["a"]}), "'close' is one column, and not"),
    (lambda frame: AVERAGE.run(frame, lines=5), 'lines are names of lines or "all", and not 5'),
    (lambda frame: AVERAGE.run(frame, by=["a"]), "by is the name of one column, and not"),
    (lambda frame: AVERAGE.run(frame.assign(a=1), by="a", jobs=0), "jobs must be a whole number"),
    (lambda frame: quor.sweep("A:C*N;", frame, N=[1, 2], jobs="2"), "jobs must be a whole number"),
    (lambda frame: quor.sweep("A:C*N;", frame, parameters=["N"]), "parameters are a mapping"),
    (lambda frame: quor.compile("A:C*N;", parameters=[("N", 5)]), "parameters are a mapping"),
    (lambda frame: quor.compile("A:C;", period=2**40), "period is a name, such as"),
    (lambda frame: quor.compile("A:C;" + HALF), "a script has half a character, .* at place 4"),
    (lambda frame: quor.compile("A:C;", code=HALF), "code has half a character"),
    (lambda frame: quor.compile("A:C;", parameters={HALF: 1}), "parameter has half a character"),
    (lambda frame: quor.compile('A:"000300$CLOSE";', references=frame), "references are a mapping"),
    (lambda frame: quor.compile('A:"000300$CLOSE";', references={"000300": None}),
     "references: '000300': bars are a DataFrame"),
    (lambda frame: quor.scan(AVERAGE, {"a": frame}, executor=5), "executor is one of concurrent"),
    (lambda frame: quor.scan(AVERAGE, [(["a"], frame)]), "the name of a security is a text"),
    (lambda frame: AVERAGE.plot(frame, last=0), "last must be a whole number from 1 on"),
    (lambda frame: AVERAGE.plot(frame, size=5), "size is width and height in pixels"),
    (lambda frame: AVERAGE.plot(frame, theme="blue"), 'theme is "light" or "dark"'),
    (lambda frame: AVERAGE.live(frame).values(1.5), "count is a whole number from 0 on"),
    (lambda frame: quor.read_csv(None), "goes by its path, and not by NoneType"),
])
def test_what_is_no_argument_is_said_plainly(frame, call, text):
    with pytest.raises((ValueError, TypeError), match=text):
        call(frame)


def test_data_of_other_securities_comes_by_its_own_name(frame):
    script = quor.compile('A:C;B:"600000$CLOSE";')
    assert script.fields == ["close", "600000|11"]
    with pytest.raises(ValueError, match=r"reads '600000\|11'"):
        script.run(frame)
    assert script.run(frame.assign(**{"600000|11": 7.5}))["B"].eq(7.5).all()


def test_errors_tell_code_sentence_and_place():
    with pytest.raises(quor.ScriptError) as caught:
        quor.compile("A:C;\nB:EMMA(C,5);")
    error = caught.value
    assert (error.code, error.line, error.column) == (2, 2, 3)
    assert error.sentence == "nothing defines EMMA"
    assert str(error) == "2:3: error: nothing defines EMMA (code 2); did you mean EMA?"
    assert str(pickle.loads(pickle.dumps(error))) == str(error)
    with pytest.raises(quor.ScriptError) as caught:
        quor.compile("A:EMMA(C,5);\nB:C;\nD:MA(C);")
    assert [(one.code, one.line) for one in caught.value.errors] == [(2, 1), (7, 3)]
    assert caught.value.sentence == "nothing defines EMMA"
    assert str(caught.value).splitlines()[1].startswith("3:3: error: MA takes 2 arguments")
    assert pickle.loads(pickle.dumps(caught.value)).errors == caught.value.errors


def test_a_failing_run_raises_and_the_next_one_is_sound(frame):
    script = quor.compile("A:STD(C,IFF(C>200,0-5,3));")
    with pytest.raises(quor.ScriptError, match="vector too long"):
        script.run(frame.assign(close=300.0))
    assert script.run(frame)["A"].notna().sum() == len(frame) - 3


@pytest.mark.parametrize("value", [
    float("nan"), float("inf"), "many", None, pd.NA, [1], 10**400, 2**53 + 1])
def test_parameters_are_finite_numbers(value, frame):
    for use in (lambda: quor.compile("A:MA(C,N);", N=value),
                lambda: quor.compile("A:MA(C,N);", parameters={"n": value}),
                lambda: quor.sweep("A:MA(C,N);", frame, N=[2, value])):
        with pytest.raises(quor.ParameterError, match="the parameter [Nn] is"):
            use()


@pytest.mark.parametrize("value", [
    0, -7, 0.123456, -0.000001, 123456789.123456, 2**53, 1e22, np.int64(3), np.float32(0.5),
    0.1234567, 1 / 3, -1 / 3, 1e-7, -1e-9, 0.1 + 0.2, 123456789.1234567, 1e-300, np.pi])
def test_parameters_reach_the_script_with_all_digits(value, frame):
    source = "{N}B:1;//N\nA:N+0*n;M:IFF(C>N,1,0),NOTEXT;DRAWTEXT(C>O,C,'N');"
    script = quor.compile(source, N=value)
    assert script.source == source and script.parameters == {"N": float(value)}
    assert script.lines == ["B", "A", "M"]
    assert script.run(frame)["A"].eq(float(value)).all()
    assert quor.sweep(source, frame, N=[value, 2], lines="a")[value, "A"].eq(float(value)).all()
    assert script.shapes[-1]["Text"] == "N"


@pytest.mark.parametrize("source, name, place, text", [
    ("B:C;\n CONST N:20;A:MA(C,N);", "N", "2:8: ", "the script's own CONST N stands"),
    ("A:MA(C,5);", "Q", "", "the script doesn't read Q"),
    ("N:C;", "N", "", "the script doesn't read N"),
    ("{N} MA(C,5)>O,NOTICE('N');", "N", "", "the script doesn't read N"),
    ("A:STD(C,5);", "STD", "", "the script doesn't read STD"),
    ("A:MA(C,5);", "C", "1:6: ", "this hides the bar field C; take another name"),
    ("A:DATE;", "date", "1:3: ", "the language's own word DATE stands; take another name"),
])
def test_a_parameter_without_its_effect_is_an_error(source, name, place, text, frame):
    for use in (lambda: quor.compile(source, **{name: 3}),
                lambda: quor.sweep(source, frame, **{name: [2, 3]})):
        with pytest.raises(quor.ParameterError) as caught:
            use()
        assert str(caught.value) == f"{place}error: parameter {name.upper()}: {text}"
        assert isinstance(caught.value, ValueError) and isinstance(caught.value, quor.ScriptError)


def test_a_parameter_is_given_once_by_its_name_in_capitals(frame):
    with pytest.raises(quor.ParameterError, match="N is given twice"):
        quor.compile("A:MA(C,N);", parameters={"n": 3}, N=3)
    assert quor.compile("A:\u00e9*2;", **{"\u00e9": 3}).run(frame)["A"].eq(6).all()
    assert quor.compile("A:STD*STD(C,2);", std=3).lines == ["A"]
    assert quor.sweep(quor.compile("A:N*M;", N=1, M=2), frame, n=[3])[3, "A"].eq(6).all()


def test_parameters_have_defaults_that_may_be_overridden(frame):
    source = "{CONST Q:1;} const M:-1.5 ; CONST  N:20;\nA:MA(C,N)*M;\nDRAWTEXT(C>0,C,'CONST N:3;');"
    script = quor.compile(source)
    assert script.parameters == {"M": -1.5, "N": 20}
    with pytest.raises(quor.ParameterError, match="the script's own CONST N stands"):
        quor.compile(source, N=5)
    changed = quor.compile(source, n=5, override=True)
    assert changed.parameters == {"M": -1.5, "N": 5}
    wanted = quor.compile("A:MA(C,5)*0-MA(C,5)*1.5;").run(frame)["A"]
    assert np.allclose(changed.run(frame)["A"], wanted, equal_nan=True)
    swept = quor.sweep(source, frame, N=[5, 20], override=True, lines="A")
    assert same_bits(swept[5, "A"], changed.run(frame)["A"])
    assert same_bits(swept[20, "A"], script.run(frame)["A"])
    assert same_bits(quor.sweep(script, frame, parameters={"N": [5]}, override=True)[5, "A"],
                     swept[5, "A"])
    with pytest.raises(quor.ScriptError) as caught:
        quor.compile("CONST N:20;\nA:MA(C,N)+EMMA(C,2);", N=5, override=True)
    assert (caught.value.line, caught.value.column) == (2, 11)
    assert quor.compile("A:C*N;", N=2).parameters == {"N": 2}


def test_lines_that_only_help_come_on_request(frame):
    script = quor.compile("G:=C*2;A:G+1;K:=A;")
    assert list(script.run(frame)) == ["A"]
    assert list(script.run(frame, lines="all")) == ["G", "A", "K"]
    assert list(script.run(frame, lines=["k", "g"])) == ["K", "G"]
    assert list(script.live(frame).last) == ["A"]
    assert list(quor.scan(script, {"x": frame}, where="K>0", lines="G")) == ["G"]
    assert quor.sweep("G:=C*N;A:G;", frame, N=[1, 2], lines="all").shape == (120, 4)
    assert quor.compile("G:=C;").lines == ["G"]
    for lines in ("Z", ["A", "Z"]):
        with pytest.raises(ValueError, match="no line 'Z'; it has G, A, K"):
            script.run(frame, lines=lines)


def test_scripts_of_one_meaning_are_equal():
    script = quor.compile("A:MA(C,N);", N=5)
    assert script == quor.compile("A:MA(C,N);", N=5) == pickle.loads(pickle.dumps(script))
    assert hash(script) == hash(quor.compile("A:MA(C,N);", N=5))
    for other in (quor.compile("A:MA(C,N);", N=6), quor.compile("A:MA(C,N);", N=5, period="week"),
                  quor.compile("A:MA(C,5);"), "A:MA(C,N);"):
        assert script != other


@pytest.mark.parametrize("source, text", [
    (None, "a script is a text, and not None"), (SAMPLES / "kdj.quor", "read the file first"),
    (b"A:C;", "and not bytes")])
def test_what_is_no_script_is_refused(source, text, frame):
    for use in (quor.compile, lambda source: quor.scan(source, {"x": frame}),
                lambda source: quor.sweep(source, frame, N=[1])):
        with pytest.raises(TypeError, match=text.partition(";")[0].replace("read the", ".*")):
            use(source)
    with pytest.raises(TypeError, match="script comes first"):
        quor.sweep(frame, "A:C*N;", N=[1])


def test_live_bars_travel(frame):
    script = quor.compile("A:EMA(C,5);CROSS(C,A),BK(1);")
    for bars in (frame, frame.tz_localize("Asia/Tokyo")):
        live = script.live(bars.head(100))
        again = pickle.loads(pickle.dumps(live))
        assert len(again) == 100 and again.last == live.last
        for moment, bar in bars.tail(20).iterrows():
            assert again.update(moment, close=bar["close"]) == live.update(
                moment, close=bar["close"])
        assert same_bits(again.values(), live.values())
        assert again.values().index.equals(live.values().index)
        assert again.events.equals(live.events)


def test_bars_that_need_a_second_look_are_as_good_as_others(frame):
    script = quor.compile("A:C+O;")
    times = ["2030-01-01", datetime.datetime(2030, 1, 1, 9, 35), pd.Timestamp("2030-01-02"),
             np.datetime64("2030-01-03"), 20300104, "20300105 0935", "2030-01-06 09:35",
             datetime.date(2030, 1, 7), pd.Timestamp("2030-01-08 09:35:07.5"), "2030/01/09"]
    values = [1, 1.5, np.float64(2), np.float32(2.5), True, np.int64(3), 4, 5.0, 6, 7]
    live = script.live()
    for moment, value in zip(times, values):
        assert live.update(moment, close=value, open=1) == {"A": float(value) + 1}
    live.update(times[-1], open=1, close=8)
    live.update(times[-1], C=9, O=1)
    whole = live.values()
    assert whole["A"].tolist() == [2.0, 2.5, 3.0, 3.5, 2.0, 4.0, 5.0, 6.0, 7.0, 10.0]
    assert list(whole.index) == [pd.Timestamp(time) for time in (
        "2030-01-01", "2030-01-01 09:35", "2030-01-02", "2030-01-03", "2030-01-04",
        "2030-01-05 09:35", "2030-01-06 09:35", "2030-01-07", "2030-01-08 09:35:07", "2030-01-09")]
    with pytest.raises(ValueError, match="no time"):
        live.update(pd.NaT, close=1, open=1)
    with pytest.raises(ValueError, match="reads 'open'"):
        live.update(times[-1], close=1)
    with pytest.warns(quor.BarsWarning, match="infinite"):
        live.update("2030-02-01", close=np.inf, open=1)


@pytest.fixture
def interrupts_arrive():
    """A shell starts programs in the background deaf to interrupts."""
    before = signal.signal(signal.SIGINT, signal.default_int_handler)
    yield
    signal.signal(signal.SIGINT, before)


def test_an_interrupt_ends_a_long_run_and_leaves_the_script_sound(
        frame, monkeypatch, interrupts_arrive):
    def interrupted_after(seconds):
        threading.Timer(seconds, os.kill, (os.getpid(), signal.SIGINT)).start()

    started = time.monotonic()
    interrupted_after(0.1)
    with pytest.raises(KeyboardInterrupt):
        interrupts.interruptible(lambda: time.sleep(20), 10**6)
    assert time.monotonic() - started < 10
    wanted = AVERAGE.run(frame)
    monkeypatch.setattr(interrupts, "_LONG", 1)
    assert same_bits(AVERAGE.run(frame), wanted)
    with pytest.raises(ValueError, match="have one time"):
        AVERAGE.run(pd.concat([frame, frame]))

    class Slow:
        def __init__(self, engine):
            self.engine = engine

        def run(self, *bars):
            time.sleep(1)
            return self.engine.run(*bars)

        def __getattr__(self, name):
            return getattr(self.engine, name)

    script = quor.compile(AVERAGE.source)
    script._idle[0] = Slow(script._idle[0])
    interrupted_after(0.1)
    with pytest.raises(KeyboardInterrupt):
        script.run(frame * 2)
    assert script._idle == []
    assert same_bits(script.run(frame), wanted)


def test_the_memory_of_many_bars_is_given_back(frame):
    script = quor.compile("A:MA(C,2);")
    many = {"time": np.arange("1970-01-01", 70000, dtype="M8[m]").astype("M8[s]"),
            "close": np.ones(70000)}
    script.run(many, out="numpy")
    assert script._idle == []
    script.run(many, out="numpy", keep=True)
    assert [engine.row_count() for engine in script._idle] == [70000]
    assert same_bits(script.run(frame), quor.compile("A:MA(C,2);").run(frame))


@pytest.mark.parametrize("change", [
    lambda bars: bars, lambda bars: {name: values[::-1] for name, values in bars.items()},
    lambda bars: {**bars, "close": np.where(bars["close"] > 110, np.nan, bars["close"])},
    lambda bars: {**bars, "volume": bars["volume"].astype(int)}])
def test_many_bars_are_read_in_place_and_their_lines_handed_over(tmp_path, change):
    script = quor.compile("A:MA(C,20);B:C;C2:B+HHV(H,9);D:=EMA(V,5);E:REF(D,1);F:SMA(L,3,1);"
                          "G:BARSLAST(CROSS(A,B));CROSS(A,B),BK(1);")
    random = np.random.default_rng(5)
    shape = (4, 70000)
    path = tmp_path / "bars"
    cells = np.memmap(path, np.float64, "w+", shape=shape)
    cells[:] = 100 + random.normal(0, 1, shape).cumsum(axis=1) / 10
    cells.flush()
    # Nobody can write there.
    cells = np.memmap(path, np.float64, "r", shape=shape)
    bars = change({"time": np.arange("2000-01-01", shape[1], dtype="M8[m]").astype("M8[s]"),
                   **dict(zip(("close", "high", "low", "volume"), cells))})
    wanted = script.run(bars, lines="all", keep=True)
    events = script.events
    found = script.run(bars, lines="all")
    assert same_bits(found, wanted) and events.equals(script.events) and len(events) > 100
    twice = script.run(bars, lines=["B", "A", "B"])
    assert same_bits(twice, pd.concat([wanted["B"], wanted["A"], wanted["B"]], axis=1))
    arrays = script.run(bars, out="numpy")
    assert all(same_bits(arrays[name], wanted[name].to_numpy()) for name in script.lines)


def test_a_notebook_shows_the_source_with_its_findings():
    text = quor.compile("A:MA(C,N),LINETHIK2;\nB:C<5;", N=5)._repr_html_()
    assert "LINETHIK" in text and "warning" in text and "wavy" in text
    assert "C&lt;5" in text and "<b>parameters</b> N=5" in text and "<b>fields</b> close" in text
    assert quor.__version__.count(".") == 2


def test_a_plot_asks_the_program_for_its_chart(frame, tmp_path, monkeypatch):
    program = tmp_path / "quor"
    program.write_text(f"""#!{sys.executable}
import json, pathlib, sys
words = sys.argv[1:]
bars = pathlib.Path(words[words.index("--bars") + 1]).read_text()
texts = [words, pathlib.Path(words[1]).read_text(), bars]
pathlib.Path(words[words.index("--out") + 1]).write_text("<svg>" + json.dumps(texts) + "</svg>")
""")
    program.chmod(0o755)
    monkeypatch.setenv("QUOR_PROGRAM", str(program))
    script = quor.compile("A:MA(C,N);", N=5, code="600000", period="week")
    chart = script.plot(frame, last=30, theme="dark", size=(640, 480), volume=False)
    words, source, bars = json.loads(str(chart)[5:-6])
    assert source == script.source and words[0] == "chart" and words[-1] == "--no-volume"
    options = dict(zip(words[2:-1:2], words[3:-1:2]))
    assert options["--set"] == "N=5.000000" and options["--code"] == "600000"
    assert (options["--period"], options["--size"]) == ("0x5000", "640x480")
    (tmp_path / "bars.csv").write_text(bars)
    pd.testing.assert_frame_equal(quor.read_csv(tmp_path / "bars.csv"), frame.astype(float),
                                  check_freq=False)
    chart.save(tmp_path / "chart.svg")
    assert (tmp_path / "chart.svg").read_text() == str(chart) == chart._repr_svg_()
    program.write_text("#!/bin/sh\necho no font >&2; exit 1\n")
    with pytest.raises(RuntimeError, match="could not be drawn: no font"):
        script.plot(frame)
    monkeypatch.setenv("QUOR_PROGRAM", str(tmp_path / "nowhere"))
    with pytest.raises(RuntimeError, match="isn't in PATH"):
        script.plot(frame)


def test_events_are_values(frame):
    script = quor.compile("A:C;CROSS(C,101),NOTICE('up');C<95,SP;C<90,BK(3);")
    shuffled = frame.tz_localize("Asia/Tokyo").sample(frac=1, random_state=1)
    script.run(shuffled)
    events = script.events
    low = shuffled.index[shuffled["close"] < 95].sort_values()
    assert list(events.loc[events["word"] == "SP", "time"]) == list(low)
    assert events.loc[events["word"] == "SP", "quantity"].isna().all()
    assert set(events.loc[events["word"] == "BK", "quantity"]) <= {3.0}
    assert set(events.loc[events["word"] == "NOTICE", "name"]) == {"up"}
    assert events["statement"].isin([1, 2, 3]).all() and events["time"].is_monotonic_increasing
    assert script.run(frame.head(0)).empty and script.events.empty


def test_live_bars_give_what_a_whole_run_gives(frame):
    script = quor.compile("A:EMA(C,5);CROSS(C,A),BK(1);")
    live = script.live(frame.head(100))
    for moment, bar in frame.tail(20).iterrows():
        live.update(moment, close=bar["close"] + 3)
        assert live.update(moment, close=bar["close"]) == live.last
    whole = script.run(frame)
    assert len(live) == len(frame)
    assert same_bits(live.values(), whole) and live.values(3).index.equals(whole.index[-3:])
    fired = script.events["time"].tolist()
    assert live.events["time"].tolist() == [time for time in fired if time == frame.index[-1]]


def test_live_bars_must_be_whole_and_have_a_time(frame):
    live = quor.compile("A:C+O;").live(frame.tz_localize("Asia/Tokyo"))
    with pytest.raises(ValueError, match="the script reads 'open'"):
        live.update("2030-01-01", close=1)
    with pytest.raises(ValueError, match="no time"):
        live.update(None, close=1, open=1)
    assert live.update(pd.Timestamp("2030-01-01", tz="UTC"), close=1, open=2) == {"A": 3.0}
    assert live.values(1).index[0] == pd.Timestamp("2030-01-01 09:00", tz="Asia/Tokyo")
    assert np.isnan(live.update("2030-01-01 00:00Z", close=None, open=2)["A"]) and len(live) == 121
    for moment, text in (("01/02/2030", "is no date"), (20300102.0, "for a time"),
                         (5, "integers"), ([1], "isn't one value"), ("2030-02-30", "is no date")):
        with pytest.raises(ValueError, match=text):
            live.update(moment, close=1, open=2)
    for value in ("5", [1, 2], [[1]]):
        with pytest.raises(ValueError, match="column 'close'"):
            live.update("2030-01-02", close=value, open=2)
    live.update(20300103, close=1, open=2)
    live.update(datetime.date(2030, 1, 2), close=1, open=2)
    assert list(live.values(2).index.day) == [2, 3]
    with pytest.raises(ValueError, match="has a zone"):
        quor.compile("A:C;").live().update(pd.Timestamp("2030-01-01", tz="UTC"), close=1)


def test_a_clock_that_is_set_back_shows_no_bar_twice(frame):
    times = pd.date_range("2024-11-03 00:30", periods=6, freq="30min", tz="America/New_York")
    bars = frame.head(6).set_axis(times)
    with pytest.raises(ValueError, match="one time by the clock of their zone, 2024-11-03 01:00"):
        AVERAGE.run(bars)
    assert same_bits(AVERAGE.run(bars.tz_convert("UTC")), AVERAGE.run(frame.head(6)))
    script = quor.compile("A:C;C>0,BK;")
    for some in (bars.iloc[[0, 1, 2, 5]], bars.iloc[[0, 3, 4]]):
        live = script.live(some)
        assert list(live.values().index) == list(some.index)
        live.update(some.index[1], close=7)
        assert list(live.events["time"]) == list(some.index[1:])
        with pytest.raises(ValueError, match="two bars have one time by the clock"):
            live.update(times[[3, 1][some.index[1] == times[3]]], close=5)
    with pytest.raises(ValueError, match="never shows 2025-03-09 02:30"):
        script.live(frame.tz_localize("America/New_York")).update("2025-03-09 02:30", close=1)


@pytest.mark.parametrize("source", [
    "K:=0;A:SET(K,K+1);B:K;", "A:FILTER(C>100,5);", "A:DIVERGENCE(C,V,5,1,1);"])
def test_a_run_remembers_nothing_of_the_one_before(frame, source):
    script = quor.compile(source)
    script.run(made_up(7, 90))
    assert same_bits(script.run(frame), quor.compile(source).run(frame))


def test_one_script_serves_many_threads(frame):
    script = quor.compile("A:MA(C,5);B:FILTER(C>100,3);")
    frames = [made_up(seed) for seed in range(8)]
    expected = [quor.compile(script.source).run(one) for one in frames]
    faults = []

    def work(number):
        for _ in range(20):
            if not same_bits(script.run(frames[number]), expected[number]):
                faults.append(number)

    threads = [threading.Thread(target=work, args=(number,)) for number in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not faults
