"""What bars are about: period, code, market, calendar, constants, references."""

import json
import pickle
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pandas as pd
import pytest
from conftest import SAMPLES, made_up

import quor

CALENDAR = SAMPLES / "night-calendar.json"
NIGHT = ["2024-01-05 14:30", "2024-01-06 01:00", "2024-01-08 10:00", "2024-01-08 16:00",
         "2024-01-08 22:00"]
#: With this calendar, by the table of the guide for hosts.
SESSIONS = quor.Sessions(["2024-01-04", "20240105", pd.Timestamp("2024-01-08"), "2024/01/09"],
                         [("21:00", "23:00", -1), ("09:00", "15:00")])
TRADING_DAYS = [20240105, 20240108, 20240108, 20240109, 20240109]
CLOCK_DAYS = [20240105, 20240106, 20240108, 20240108, 20240108]


def night_bars(close=1.0):
    return pd.DataFrame({"close": close}, index=pd.DatetimeIndex(NIGHT))


def dates(script, **context):
    return script.run(night_bars(), **context)["A"].astype(int).tolist()


def test_a_calendar_moves_the_night_to_the_next_trading_day():
    script = quor.compile("A:DATE;", period="5min")
    assert dates(script) == CLOCK_DAYS
    assert dates(script, calendar=SESSIONS) == TRADING_DAYS
    assert dates(script, calendar=SESSIONS.json, code="a", market="b") == TRADING_DAYS
    assert dates(script) == CLOCK_DAYS, "a calendar outlives its run"
    with_calendar = quor.compile("A:DATE;", period="5min", calendar=json.loads(SESSIONS.json))
    assert with_calendar.findings == [] and len(script.findings) == 1
    frames = {name: night_bars() for name in "abc"}
    for jobs in (1, 3):
        result = quor.scan(script, frames, last=None, market="X", calendar=SESSIONS, jobs=jobs)
        assert result["A"].tolist() == 3 * TRADING_DAYS
    swept = quor.sweep("A:DATE+N;", night_bars(), N=[0, 1], period="5min", calendar=SESSIONS)
    assert (swept[1, "A"] - 1).tolist() == TRADING_DAYS
    live = script.live(night_bars().head(4), calendar=SESSIONS)
    assert live.update("2024-01-08 22:00", close=1) == {"A": 20240109.0}


def test_two_calendars_of_one_security_stay_apart():
    other = quor.Sessions(["2024-01-04", "2024-01-05", "2024-01-09", "2024-01-10"],
                          [("21:00", "23:00", -1), ("09:00", "15:00")])
    script = quor.compile("A:DATE;", period="5min", code="600000", market="M")
    wanted = [20240105, 20240109, 20240109, 20240109, 20240109]

    def work(number):
        return dates(script, calendar=(SESSIONS, other)[number % 2])

    with ThreadPoolExecutor(4) as pool:
        results = list(pool.map(work, range(40)))
    assert results == 20 * [TRADING_DAYS, wanted]


@pytest.mark.parametrize("calendar, text", [
    ("nothing", "the calendar is no JSON.*pathlib"), ({"status_code": 0}, '"data"'),
    ({"status_code": 0, "data": {"timezone": "UTC+08:00"}}, 'lacks "trade_dates"'), (5, "not int"),
    ({"status_code": 0, "data": dict.fromkeys(
        ["timezone", "trade_dates", "daylight_save_times", "trade_times",
         "special_trade_times"])}, "calendar can't be read"),
])
def test_what_is_no_calendar_is_refused(calendar, text):
    with pytest.raises(ValueError, match=text):
        quor.compile("A:DATE;", period="5min", calendar=calendar).run(night_bars())


@pytest.mark.parametrize("days, sessions, text", [
    ([], [("09:00", "15:00")], "needs trading days"),
    (["2024-1-5"], [("09:00", "15:00")], "no day"),
    (["2024-01-05"], [], "needs trading days"), (["2024-01-05"], [("9:00", "15:00")], "no time of"),
    (["2024-01-05"], ["09:00-15:00"], "a session is a start"),
    (["2024-01-05"], [("09:00", "15:00", "x")], "whole number of trading days"),
])
def test_sessions_are_checked(days, sessions, text):
    with pytest.raises(ValueError, match=text):
        quor.Sessions(days, sessions)


def test_a_calendar_file_serves(tmp_path):
    night = pd.read_csv(SAMPLES / "night.csv")
    script = quor.compile("A:DATE;", period="5min", calendar=CALENDAR)
    result = script.run(night)["A"]
    assert (result != quor.compile("A:DATE;", period="5min").run(night)["A"]).any()
    (tmp_path / "x.json").write_text("[]")
    with pytest.raises(ValueError, match="x.json needs"):
        quor.compile("A:DATE;", calendar=tmp_path / "x.json")


def test_constants_code_and_market_reach_the_script():
    bars = made_up(1, 5)
    script = quor.compile("A:C/MINPRICE+UNIT;B:CODELIKE('60');")
    assert script.run(bars)["A"].isna().all() and script.run(bars)["B"].eq(0).all()
    constants = {"minprice": 0.01, "UNIT": 100}
    result = script.run(bars, constants=constants, code="600000")
    assert result["A"].tolist() == [close / 0.01 + 100 for close in bars["close"]]
    assert result["B"].eq(1).all()
    compiled = quor.compile(script.source, constants=constants, code="600000")
    assert compiled.run(bars).equals(result) and pickle.loads(pickle.dumps(compiled)) == compiled
    assert len(script.findings) == 2 and compiled.findings == []
    scanned = quor.scan(script, {"600000": bars, "1": bars}, constants=constants)
    assert scanned["B"].tolist() == [0, 1] and scanned["A"].notna().all()
    for wrong, text in (({"TICK": 1}, "'TICK' is none of"), ({"UNIT": "x"}, "and no number"),
                        ({"UNIT": 1, "unit": 2}, "twice"), (5, "are a mapping")):
        with pytest.raises(ValueError, match=text):
            script.run(bars, constants=wrong)


@pytest.mark.parametrize("name, code", [("5min", 0x3005), ("day", 0x4000), ("2hour", 0x3078),
                                        ("Week", 0x5000), (0x3005, 0x3005), ("0x3005", 0x3005)])
def test_periods_go_by_their_names(name, code):
    bars = made_up(1, 3)
    source = "A:PERIOD;B:BARINTERVAL;"
    wanted = quor.compile(source, period=code).run(bars)
    assert quor.compile(source, period=name).run(bars).equals(wanted)
    assert quor.compile(source).run(bars, period=name).equals(wanted)


def test_another_security_counts_at_the_same_time():
    bars = made_up(1, 10)
    index = made_up(2, 10)
    script = quor.compile('A:"000300$CLOSE";B:C/A;')
    some = index.drop(index.index[[3, 7]])
    for result in (script.run(bars, references={"000300": some}),
                   quor.compile(script.source, references={"000300|11": some}).run(bars)):
        assert result["A"].equals(some["close"].reindex(bars.index).rename("A"))
    assert quor.compile(script.source, references={"000300": some}).fields == ["close"]
    scanned = quor.scan(script, {"x": bars, "y": bars.head(9)}, references={"000300": index})
    assert scanned["A"].tolist() == index["close"].iloc[[9, 8]].tolist()
    lasting = script.run(bars, references={"000300": quor.Reference(some, "label")})["A"]
    assert lasting.equals(some["close"].reindex(bars.index).ffill().rename("A"))
    live = script.live(bars.head(9), references={"000300": index})
    assert live.update(bars.index[9], close=2.0)["A"] == index["close"].iloc[9]
    again = pickle.loads(pickle.dumps(live))
    assert again.update(bars.index[9], close=4.0)["B"] == 4.0 / index["close"].iloc[9]
    swept = quor.sweep('A:"000300$CLOSE";B:A*N;', bars, N=[2], references={"000300": index})
    assert swept[2, "B"].tolist() == (2 * index["close"]).tolist()
    with pytest.raises(ValueError, match="doesn't read '000301'; it reads 000300"):
        script.run(bars, references={"000301": index})
    with pytest.raises(ValueError, match="the script reads 'close'"):
        script.run(bars, references={"000300": index.drop(columns="close")})
    with pytest.raises(ValueError, match='"closed" is for bars of another period'):
        script.run(bars, references={"000300": quor.Reference(index, "closed")})


def test_a_longer_period_shows_no_future_whichever_end_its_bars_are_dated_at():
    bars = made_up(3, 40)
    script = quor.compile('A:"WEEK$1$CLOSE";')
    weeks = bars["close"].groupby(bars.index.to_period("W")).last()
    wanted = [weeks.get(week - 1, np.nan) for week in bars.index.to_period("W")]
    for moments in (weeks.index.to_timestamp(how="start"), weeks.index,
                    weeks.index.to_timestamp(how="start") + pd.Timedelta("4d")):
        frame = pd.DataFrame({"close": weeks.to_numpy()}, index=moments)
        for name in ("week", "WEEK1"):
            result = script.run(bars, references={name: frame})["A"]
            assert np.array_equal(result, wanted, equal_nan=True)
    at_label = script.run(bars, references={
        "week": quor.Reference(pd.DataFrame({"close": weeks.to_numpy()}, index=moments), "label")})
    assert at_label["A"].iloc[4] == weeks.iloc[0] and np.isnan(at_label["A"].iloc[3])


@pytest.mark.parametrize("source, period, moment, first", [
    ("DAY$1", "5min", "2024-01-05 00:00", "2024-01-06 00:00"),
    ("DAY$1", "5min", "2024-01-05 15:00", "2024-01-06 00:00"),
    ("MONTH$1", "day", "2024-02-01", "2024-03-01"), ("MONTH$1", "day", "2024-12-31", "2025-01-01"),
    ("WEEK$1", "day", "1969-12-31", "1970-01-05"),
    ("HOUR$1", "5min", "2024-01-05 10:00", "2024-01-05 11:00"),
    ("MIN$15", "5min", "2024-01-05 10:00", "2024-01-05 10:15"),
])
def test_a_period_counts_from_its_end_on(source, period, moment, first):
    times = pd.Timestamp(first) + pd.to_timedelta([-1, 0, 1], "s")
    script = quor.compile(f'A:"{source}$CLOSE";', period=period)
    other = pd.DataFrame({"close": [7.0]}, index=pd.DatetimeIndex([moment]))
    result = script.run(pd.DataFrame(index=times), references={source.replace("$", ""): other})
    assert np.array_equal(result["A"], [np.nan, 7, 7], equal_nan=True)
