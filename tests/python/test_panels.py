"""Bars of many securities in one piece, in and out; signals as frames."""

import functools
import sqlite3
import warnings
from concurrent.futures import ProcessPoolExecutor

import numpy as np
import pandas as pd
import pytest
from conftest import made_up

import quor

SCRIPT = quor.compile("M:MA(C,5);BUY:CROSS(C,M);HI:H;")
FRAMES = {f"S{seed}": made_up(seed, 30 + 7 * seed) for seed in range(5)}
LONG = pd.concat(FRAMES, names=["code", "date"])
SINGLE = {name: SCRIPT.run(frame) for name, frame in FRAMES.items()}
WANTED = pd.concat(SINGLE, names=["code", "date"])


def same(got, wanted):
    pd.testing.assert_frame_equal(got, wanted, check_exact=True, check_freq=False)


@pytest.mark.parametrize("change, by", [
    (lambda long: long, None),
    (lambda long: long, "code"),
    (lambda long: long.swaplevel(), None),
    (lambda long: long.swaplevel().sort_index(), None),
    (lambda long: long.reset_index(), "code"),
    (lambda long: long.reset_index("code"), "code"),
    (lambda long: long.reset_index("code").sort_index(kind="stable"), "code"),
    (lambda long: long.reset_index().sample(frac=1, random_state=1), "code"),
    (lambda long: long.sample(frac=1, random_state=2), None),
    (lambda long: long.reset_index().assign(
        code=lambda x: x["code"].astype("category"),
        date=lambda x: x["date"].dt.strftime("%Y-%m-%d")), "code"),
])
@pytest.mark.parametrize("jobs", [1, 3])
def test_a_panel_keeps_its_rows_and_gives_the_lines_of_single_runs(change, by, jobs, monkeypatch):
    monkeypatch.setattr("quor.panels.BARS", 64)
    panel = change(LONG)
    result = SCRIPT.run(panel, by=by, jobs=jobs)
    assert result.index.equals(panel.index)
    keys = panel.reset_index().assign(date=lambda x: pd.to_datetime(x["date"]))
    rows = pd.MultiIndex.from_frame(keys[["code", "date"]].astype({"code": object}))
    same(result, WANTED.reindex(rows).set_axis(panel.index))


def test_a_scan_of_a_panel_is_one_of_its_frames():
    for last in (1, 4, None):
        wanted = quor.scan(SCRIPT, FRAMES, last=last)
        for frames, by in ((LONG, None), (LONG.swaplevel(), None), (LONG.reset_index(), "code"),
                           (LONG.groupby(level="code"), None),
                           (LONG.reset_index().to_dict("list"), "code")):
            same(quor.scan(SCRIPT, frames, by=by, last=last), wanted)
            same(quor.scan(SCRIPT, LONG, last=last, where="BUY OR C>0"), wanted)
    assert len(quor.scan(SCRIPT, LONG, last=None)) == len(LONG)
    same(quor.scan(SCRIPT, LONG, last=None).rename_axis(["code", "date"]), WANTED)


def wide(names=("high", "close")):
    same_times = {name: frame.head(30) for name, frame in FRAMES.items()}
    return {field: pd.DataFrame({name: frame[field] for name, frame in same_times.items()})
            for field in names}


def test_wide_frames_go_in_and_out():
    wanted = pd.concat({name: SCRIPT.run(frame.head(30)) for name, frame in FRAMES.items()},
                       names=["security", "time"])
    columns = pd.concat(wide(), axis=1)
    backwards = {field: frame.iloc[::-1] for field, frame in wide().items()}
    for panel in (wide(), columns, columns.swaplevel(axis=1)):
        same(SCRIPT.run(panel).rename_axis(["security", "time"]), wanted)
        out = SCRIPT.run(panel, out="wide")
        assert out.index.equals(columns.index)
        same(out["M"].rename_axis(columns=None), wanted["M"].unstack(0).rename_axis(columns=None)
             .rename_axis("date"))
        same(quor.scan(SCRIPT, panel, last=None), wanted)
    same(SCRIPT.run(backwards, out="wide"), out.iloc[::-1])
    arrays = SCRIPT.run(wide(), out="numpy")
    assert arrays["HI"].shape == (30, 5)
    assert np.array_equal(arrays["HI"], wide()["high"].to_numpy())
    with pytest.raises(ValueError, match="other times or other securities"):
        SCRIPT.run({**wide(), "high": wide()["high"].tail(9)})
    with pytest.raises(ValueError, match="the script reads 'high'"):
        SCRIPT.run(wide(["close"]))


def test_long_frames_come_out_wide_and_as_arrays():
    out = SCRIPT.run(LONG, out="wide")
    same(out["M"], WANTED["M"].unstack(0).rename_axis(columns="security", index="time"))
    scanned = quor.scan(SCRIPT, FRAMES, last=3, out="wide")
    same(scanned["HI"], quor.scan(SCRIPT, FRAMES, last=3)["HI"].unstack(0))
    even = {name: frame.head(30) for name, frame in FRAMES.items()}
    same(quor.scan(SCRIPT, even, last=None, out="wide")["HI"],
         quor.scan(SCRIPT, even, last=None)["HI"].unstack(0))
    arrays = quor.scan(SCRIPT, FRAMES, last=2, out="numpy")
    frame = quor.scan(SCRIPT, FRAMES, last=2).reset_index()
    assert list(arrays) == list(frame) and arrays.attrs == {"failures": {}, "findings": {}}
    for name, values in arrays.items():
        assert frame[name].tolist() == list(pd.Series(values))
    alone = SCRIPT.run(FRAMES["S1"], out="numpy", lines=["hi"])
    assert list(alone) == ["HI"] and alone["HI"].tolist() == FRAMES["S1"]["high"].tolist()
    for form in ("tall", 5):
        with pytest.raises(ValueError, match="out is"):
            SCRIPT.run(LONG, out=form)


def test_results_are_no_copies_of_what_the_engine_wrote():
    frame = quor.scan(SCRIPT, FRAMES, last=None)
    assert all(frame[name].to_numpy().flags.c_contiguous for name in frame)
    base = {id(frame[name].to_numpy().base) for name in frame}
    assert len(base) == 1


def test_bars_that_repeat_in_a_panel(monkeypatch):
    twice = pd.concat([LONG.reset_index().iloc[[40]].assign(high=1.0, close=1.0),
                       LONG.reset_index()])
    name = twice["code"].iloc[0]
    with pytest.raises(ValueError, match=f"security '{name}': bars .* have one time"):
        SCRIPT.run(twice, by="code")
    result = SCRIPT.run(twice, by="code", duplicates="last")
    assert np.array_equal(result.iloc[1:], WANTED, equal_nan=True)
    assert result.iloc[0].equals(result.iloc[41])


@pytest.mark.parametrize("change, by, text", [
    (lambda long: long.reset_index(), "security", "by='security': the frame has no such column"),
    (lambda long: long.reset_index().assign(code=lambda x: x["code"].where(x["code"] != "S1")),
     "code", r"bar 30 \(the first is 0\) has no security"),
    (lambda long: long.reset_index().assign(date=lambda x: x["date"].where(x["code"] != "S1")),
     "code", r"bar 30 .* has no time"),
    (lambda long: long.drop(columns="high"), None, "the script reads 'high'"),
    (lambda long: long.assign(high=float("inf")), None, None),
])
def test_odd_panels(change, by, text):
    if text is None:
        with pytest.warns(quor.BarsWarning, match="security 'S0': 'high' of bar 0 .* is infinite"):
            SCRIPT.run(change(LONG), by=by)
        return
    for use in (SCRIPT.run, lambda frame, by: quor.scan(SCRIPT, frame, by=by)):
        with pytest.raises(ValueError, match=text):
            use(change(LONG), by=by)


def test_a_script_that_fails_over_one_security_names_it():
    script = quor.compile("A:STD(C,IFF(C>1000,0-5,3));")
    odd = LONG.assign(close=np.where(LONG.index.get_level_values(0) == "S3", 2000.0, 1.0))
    with pytest.raises(quor.ScriptError, match="security 'S3': .*vector too long"):
        script.run(odd)
    with pytest.warns(quor.ScanWarning, match="1 of 5"):
        assert len(quor.scan(script, odd)) == 4


def test_events_of_a_panel_and_of_its_securities():
    script = quor.compile("C>O,BK(2);C<95,NOTICE('low');")
    script.run(LONG.sample(frac=1, random_state=3))
    events = script.events.sort_values(["security", "time"], kind="stable", ignore_index=True)
    parts = []
    for name, frame in FRAMES.items():
        script.run(frame)
        parts.append(script.events.assign(security=name))
    pd.testing.assert_frame_equal(events[list(parts[0])], pd.concat(parts, ignore_index=True),
                                  check_dtype=False)


@pytest.fixture
def database():
    with sqlite3.connect(":memory:") as connection:
        LONG.reset_index().assign(date=lambda x: x["date"].dt.strftime("%Y-%m-%d")).to_sql(
            "bars", connection, index=False)
        yield connection


@pytest.mark.parametrize("rows", [1, 7, 64, 10**6])
def test_chunks_of_a_query_are_put_together_again(database, rows):
    query = "SELECT * FROM bars ORDER BY code, date"
    wanted = quor.scan(SCRIPT, FRAMES, last=3)
    chunks = pd.read_sql(query, database, chunksize=rows)
    same(quor.scan(SCRIPT, chunks, by="code", last=3), wanted)


def test_a_cursor_of_a_database_serves(database, monkeypatch):
    monkeypatch.setattr("quor.sources._ROWS", 50)
    wanted = quor.scan(SCRIPT, FRAMES, last=3)
    cursor = database.execute("SELECT * FROM bars ORDER BY code, date")
    same(quor.scan(SCRIPT, cursor, by="code", last=3), wanted)
    with pytest.raises(ValueError, match="comes twice; pieces must come in the order of their"):
        quor.scan(SCRIPT, database.execute("SELECT * FROM bars ORDER BY date"), by="code")
    with pytest.raises(ValueError, match="by="):
        quor.scan(SCRIPT, database.execute("SELECT * FROM bars"))


def bars_from(path, code):
    with sqlite3.connect(path) as connection:
        return pd.read_sql("SELECT * FROM bars WHERE code = ?", connection, params=[code])


def test_workers_read_their_own_parts_of_a_database_and_take_panels(tmp_path):
    path = tmp_path / "bars.db"
    with sqlite3.connect(path) as connection:
        LONG.reset_index().to_sql("bars", connection, index=False)
    parts = {code: functools.partial(bars_from, path, code) for code in FRAMES}
    index = quor.compile('A:"000300$CLOSE";B:C;')
    references = {"000300": FRAMES["S4"]}
    with ProcessPoolExecutor(2) as pool:
        same(quor.scan(SCRIPT, parts, last=2, executor=pool), quor.scan(SCRIPT, FRAMES, last=2))
        same(quor.scan(SCRIPT, LONG, last=2, executor=pool), quor.scan(SCRIPT, FRAMES, last=2))
        same(quor.scan(index, parts, executor=pool, references=references),
             quor.scan(index, FRAMES, references=references))


def test_files_with_many_securities_and_lists_of_paths(tmp_path, monkeypatch):
    path = tmp_path / "all.csv"
    LONG.reset_index().replace({"code": {"S0": "000001"}}).to_csv(path, index=False)
    monkeypatch.setattr("quor.sources._ROWS", 50)
    result = quor.scan(SCRIPT, path, by="code")
    assert list(result.index.get_level_values(0)) == ["000001", "S1", "S2", "S3", "S4"]
    paths = [tmp_path / f"{name}.csv" for name in FRAMES]
    for path, frame in zip(paths, FRAMES.values()):
        frame.to_csv(path)
    same(quor.scan(SCRIPT, paths), quor.scan(SCRIPT, FRAMES))


def test_files_of_frames_are_read_where_there_is_a_reader(tmp_path, monkeypatch):
    for name, suffix in (("S1", ".parquet"), ("S2", ".feather")):
        FRAMES[name].to_pickle(tmp_path / f"{name}{suffix}")
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", quor.ScanWarning)
        failures = quor.scan(SCRIPT, tmp_path).attrs["failures"]
    if failures:  # as it is where pandas has no reader
        assert "needs pyarrow" in failures["S1"] and "needs pyarrow" in failures["S2"]
    monkeypatch.setattr(pd, "read_parquet", pd.read_pickle)
    monkeypatch.setattr(pd, "read_feather", pd.read_pickle)
    two = {name: FRAMES[name] for name in ("S1", "S2")}
    same(quor.scan(SCRIPT, tmp_path), quor.scan(SCRIPT, two))


def test_orders_are_a_tidy_frame():
    script = quor.compile("M:MA(C,5);CROSS(C,M),BK(3);CROSS(M,C),SP;C>0,NOTICE('seen');")
    result = quor.orders(script, LONG)
    assert list(result) == ["time", "security", "word", "quantity", "price"]
    assert result["time"].is_monotonic_increasing and set(result["word"]) == {"BK", "SP"}
    assert result.loc[result["word"] == "BK", "quantity"].eq(3).all()
    assert result.loc[result["word"] == "SP", "quantity"].isna().all()
    keys = pd.MultiIndex.from_frame(result[["security", "time"]])
    assert result["price"].tolist() == LONG["close"].reindex(keys).tolist()
    following = LONG["open"].groupby(level=0).shift(-1)
    for frames in (LONG, dict(reversed(FRAMES.items())), LONG.sample(frac=1, random_state=4)):
        later = quor.orders(script, frames, price="open", later=1)
        assert np.array_equal(later["price"], following.reindex(keys), equal_nan=True)
        assert later.drop(columns="price").equals(result.drop(columns="price"))
    alone = quor.orders(script, FRAMES["S2"], code="S2")
    assert alone.equals(result[result["security"] == "S2"].reset_index(drop=True))
    assert list(quor.orders("A:C;", LONG)) == list(result) and quor.orders("A:C;", LONG).empty
    for wrong, text in (({"price": "clsoe"}, "name of a field"), ({"later": -1}, "whole number")):
        with pytest.raises(ValueError, match=text):
            quor.orders(script, LONG, **wrong)
