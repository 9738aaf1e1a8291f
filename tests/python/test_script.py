"""One script over one frame: values, times, names of columns, errors, events, live bars."""

import pickle
import re
import threading

import exports
import numpy as np
import pandas as pd
import pytest
from conftest import SAMPLES, made_up

import quor

AVERAGE = quor.compile("A:MA(C,2);B:=V+H;")


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
    assert script.lines == ["A", "HID"]
    assert script.fields == ["close"]
    assert script.look_back == 9
    assert script.report["words"] == ["MA", "POLYLINE"]
    assert script.line_details[0].look["width"] == 2.0
    assert script.line_details[1].look is None
    assert [shape["Field1Text"] for shape in script.shapes] == ["A"]
    assert script.findings == []
    assert "LINETHIK" in quor.compile("A:C,LINETHIK2;").findings[0].sentence


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
], ids=["zone", "periods", "column", "Time", "texts", "dates", "integers", "words", "ids",
        "nullable", "objects"])
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


def test_columns_can_be_named(frame):
    renamed = frame.rename(columns={"close": "last", "volume": "lots"}).reset_index(names="when")
    result = AVERAGE.run(renamed, columns={"close": "last", "Volume": "lots", "time": "when"})
    assert same_bits(result, AVERAGE.run(frame))
    without = AVERAGE.run(frame, columns={"volume": None})
    assert without["B"].isna().all() and same_bits(without["A"], AVERAGE.run(frame)["A"])


def test_bars_in_any_order_come_back_in_theirs(frame):
    shuffled = frame.sample(frac=1, random_state=3)
    assert same_bits(AVERAGE.run(shuffled), AVERAGE.run(frame).loc[shuffled.index])


def test_of_repeated_times_the_last_bar_counts(frame):
    first = frame.iloc[[5]].assign(close=1e6)
    result = AVERAGE.run(pd.concat([first, frame]))
    assert same_bits(result.iloc[1:], AVERAGE.run(frame))
    assert same_bits(result.iloc[0], AVERAGE.run(frame).iloc[5])


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
    (lambda frame: frame.set_axis([pd.NaT, *frame.index[1:]]), r"bar 0 \(the first is 0\) has no"),
    (lambda frame: frame.set_axis(["noon", *frame.index[1:]]), "the times can't be read"),
    (lambda frame: frame.set_axis(range(len(frame))), "integers are times only if written as"),
    (lambda frame: frame.set_axis(frame.index[:1].append(frame.index[:-1] + pd.Timedelta("1ms"))),
     "different times fall into one second"),
    (lambda frame: {"close": [1.0], "volume": [1], "high": [1]}, "no column holds the times"),
    (lambda frame: {"time": frame.index, "close": [1.0], "volume": [1], "high": [1]},
     "column 'high' has 1 values for 120 bars"),
])
def test_bad_frames_are_refused_and_leave_the_script_sound(frame, change, text):
    before = AVERAGE.run(frame)
    with pytest.raises(ValueError, match=text):
        AVERAGE.run(change(frame))
    assert same_bits(AVERAGE.run(frame), before)


def test_data_of_other_securities_comes_by_its_own_name(frame):
    script = quor.compile('A:C;B:="600000$CLOSE";')
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


def test_a_failing_run_raises_and_the_next_one_is_sound(frame):
    script = quor.compile("A:STD(C,IFF(C>200,0-5,3));")
    with pytest.raises(quor.ScriptError, match="vector too long"):
        script.run(frame.assign(close=300.0))
    assert script.run(frame)["A"].notna().sum() == len(frame) - 3


@pytest.mark.parametrize("value", [float("nan"), float("inf"), "many"])
def test_parameters_are_numbers(value):
    with pytest.raises(ValueError):
        quor.compile("A:MA(C,N);", N=value)


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
    for time, bar in frame.tail(20).iterrows():
        live.update(time, close=bar["close"] + 3)
        assert live.update(time, close=bar["close"]) == live.last
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
    with pytest.raises(ValueError, match="has a zone"):
        quor.compile("A:C;").live().update(pd.Timestamp("2030-01-01", tz="UTC"), close=1)


@pytest.mark.parametrize("source", [
    "K:=0;A:SET(K,K+1);B:K;", "A:FILTER(C>100,5);", "A:DIVERGENCE(C,V,5,1,1);"])
def test_a_run_remembers_nothing_of_the_one_before(frame, source):
    script = quor.compile(source)
    script.run(made_up(7, 90))
    assert same_bits(script.run(frame), quor.compile(source).run(frame))


def test_one_script_serves_many_threads(frame):
    script = quor.compile("A:MA(C,5);B:=FILTER(C>100,3);")
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
