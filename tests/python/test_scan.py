"""Many securities and many parameters."""

import functools
import os
import warnings
from concurrent.futures import ProcessPoolExecutor, ThreadPoolExecutor

import numpy as np
import pandas as pd
import pytest
from conftest import bars_of_worker, made_up

import quor
from quor import scanning

SCRIPT = quor.compile("M:MA(C,5);BUY:CROSS(C,M);S:=FILTER(BUY,3);")
FRAMES = {f"S{seed:02}": made_up(seed, 60 + seed) for seed in range(30)}


def expected(last=1, keep=lambda rows: rows):
    parts = {name: keep(SCRIPT.run(frame).tail(last)) for name, frame in FRAMES.items()}
    return pd.concat(parts, names=["security", "time"])


def assert_same(got, wanted):
    pd.testing.assert_frame_equal(got, wanted, check_exact=True, check_freq=False)


@pytest.mark.parametrize("jobs", [1, 2, 5])
def test_a_scan_gives_the_last_bars_of_single_runs_sorted(jobs):
    backwards = dict(reversed(FRAMES.items()))
    assert_same(quor.scan(SCRIPT, backwards, jobs=jobs), expected())
    assert_same(quor.scan(SCRIPT, iter(FRAMES.items()), last=7, jobs=jobs), expected(7))


def test_a_condition_keeps_the_bars_at_which_it_holds():
    result = quor.scan(SCRIPT, FRAMES, last=20, where="BUY AND C>100")
    assert 0 < len(result) < 600
    wanted = expected(20)
    close = pd.concat(FRAMES, names=["security", "time"])["close"]
    assert_same(result, wanted[(wanted["BUY"] == 1) & (close.reindex(wanted.index) > 100)])
    assert quor.scan(SCRIPT, FRAMES, where="BUY>1").empty


def test_a_scan_takes_odd_frames_as_a_run_does():
    frame = FRAMES["S00"]
    odd = {
        "empty": frame.head(0),
        "one": frame.head(1),
        "no utf-8 \udce9": frame,
        "shuffled": frame.sample(frac=1, random_state=1),
        "twice": pd.concat([frame.iloc[[9]].assign(close=1e6), frame]),
        "integers": frame.astype({"close": "int64"}),
        "minutes": frame.set_axis(
            pd.date_range("1969-12-31 23:00", periods=len(frame), freq="min")),
    }
    result = quor.scan(SCRIPT, odd, last=100, jobs=1)
    assert set(result.index.get_level_values(0)) == set(odd) - {"empty"}
    for name in set(odd) - {"empty"}:
        wanted = SCRIPT.run(odd[name]).rename_axis("time").sort_index()
        assert_same(result.loc[name], wanted[~wanted.index.duplicated()])


@pytest.mark.parametrize("bars", [1, 150, 1 << 16])
def test_failures_shift_no_other_security(monkeypatch, bars):
    monkeypatch.setattr(scanning, "BARS", bars)
    script = quor.compile("A:STD(C,IFF(C>1000,0-5,3));B:CODELIKE('S0');")
    high = {name: frame.assign(close=2000.0) for name, frame in list(FRAMES.items())[3:25:4]}
    without_time = FRAMES["S01"].set_axis([pd.NaT, *FRAMES["S01"].index[1:]])
    with pytest.warns(quor.ScanWarning, match="7 of 30"):
        result = quor.scan(script, {**FRAMES, **high, "S01": without_time}, jobs=2)
    failures = result.attrs.pop("failures")
    assert set(failures) == {*high, "S01"} and "has no time" in failures["S01"]
    names = [name for name in FRAMES if name not in failures]
    assert list(result.index.get_level_values(0)) == names
    assert result["A"].tolist() == [script.run(FRAMES[name])["A"].iloc[-1] for name in names]
    assert result["B"].tolist() == [float(name < "S1") for name in names]
    assert script.run(FRAMES["S00"])["B"].eq(0).all()


def test_failures_are_listed_and_cost_nothing_else():
    bad = {
        "text": FRAMES["S00"].assign(close="x"),
        "gone": "no/such/file.csv",
        "lost": FRAMES["S00"].drop(columns="close"),
        "close": FRAMES["S00"].set_axis(FRAMES["S00"].index[:1].append(
            FRAMES["S00"].index[:-1] + pd.Timedelta("1ms"))),
        "own": functools.partial(int, "x"),
    }
    with pytest.warns(quor.ScanWarning, match="5 of 35 securities failed"):
        result = quor.scan(SCRIPT, {**bad, **FRAMES})
    failures = result.attrs["failures"]
    assert list(failures) == sorted(bad)
    assert "holds text" in failures["text"] and "no such file" in failures["gone"].lower()
    assert "one second" in failures["close"] and "invalid literal" in failures["own"]
    result.attrs.clear()
    assert_same(result, expected())
    with pytest.warns(quor.ScanWarning, match="vector too long"):
        assert quor.scan("A:STD(C,0-5);", FRAMES).empty


def test_folders_files_and_globs_of_csv(tmp_path):
    for name, frame in list(FRAMES.items())[:3]:
        frame.to_csv(tmp_path / f"{name}.csv")
    (tmp_path / "notes.txt").write_text("nothing")
    minutes = "date,time,close\n2024-01-02,09:35,1\n2024-01-02,09:36,2\n"
    (tmp_path / "min.CSV").write_text(minutes)
    result = quor.scan(SCRIPT, tmp_path)
    assert list(result.index.get_level_values(0)) == ["S00", "S01", "S02", "min"]
    assert result.index[3][1] == pd.Timestamp("2024-01-02 09:36")
    assert_same(quor.scan(SCRIPT, str(tmp_path / "S*.csv")), expected().head(3))
    assert len(quor.scan(SCRIPT, tmp_path / "S01.csv", last=4)) == 4
    with pytest.raises(ValueError, match="no such CSV files"):
        quor.scan(SCRIPT, tmp_path / "X*.csv")


@pytest.mark.parametrize("frames", [{}, [], iter(())])
def test_nothing_to_scan(frames):
    result = quor.scan(SCRIPT, frames)
    assert result.empty and list(result.columns) == SCRIPT.lines
    assert result.index.names == ["security", "time"]


def test_what_can_not_be_scanned_is_said_at_once():
    with pytest.raises(quor.ScriptError, match="nothing defines Z"):
        quor.scan(SCRIPT, FRAMES, where="Z>1")
    with pytest.raises(ValueError, match="plain expression"):
        quor.scan(SCRIPT, FRAMES, where="1;X:=2")
    with pytest.raises(ValueError, match="last"):
        quor.scan(SCRIPT, FRAMES, last=0)
    with pytest.raises(ValueError, match="'closed' is the name of no field"):
        quor.scan(SCRIPT, FRAMES, columns={"closed": "c"})


def die_once(marker, seed):
    """Ends its process the first time it is called."""
    if not os.path.exists(marker):
        open(marker, "w").close()
        os._exit(1)
    return made_up(seed)


def test_executors_of_the_standard_interface():
    sources = {name: functools.partial(bars_of_worker, int(name[1:])) for name in FRAMES}
    wanted = pd.concat({name: SCRIPT.run(bars_of_worker(int(name[1:]))).tail(1) for name in FRAMES},
                       names=["security", "time"])
    for pool in (ThreadPoolExecutor(2), ProcessPoolExecutor(2)):
        with pool:
            assert_same(quor.scan(SCRIPT, sources, executor=pool), wanted)


def test_a_process_that_dies_leaves_a_list_of_what_is_lost(tmp_path):
    sources = {"S01": functools.partial(die_once, str(tmp_path / "died"), 1)}
    with ProcessPoolExecutor(1) as pool, pytest.warns(quor.ScanWarning, match="terminated"):
        result = quor.scan(SCRIPT, sources, executor=pool)
    assert result.empty and list(result.attrs["failures"]) == ["S01"]


def test_a_cluster_of_two_processes_of_which_one_dies(tmp_path):
    distributed = pytest.importorskip("distributed")
    sources = {name: functools.partial(bars_of_worker, int(name[1:])) for name in FRAMES}
    sources["S07"] = functools.partial(die_once, str(tmp_path / "died"), 7)
    wanted = pd.concat({name: SCRIPT.run(bars_of_worker(int(name[1:]))).tail(2) for name in FRAMES},
                       names=["security", "time"])
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", DeprecationWarning)
        with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                      dashboard_address=None) as cluster:
            with distributed.Client(cluster) as client, client.get_executor() as executor:
                result = quor.scan(SCRIPT, sources, last=2, executor=executor)
    assert (tmp_path / "died").exists()
    assert result.attrs["failures"] == {}
    assert_same(result, wanted)


def test_a_sweep_is_one_run_for_each_combination(frame):
    result = quor.sweep("A:MA(C,N)*M;B:=REF(C,N);", frame, N=range(2, 6), M=[1, 0.5], jobs=2)
    assert result.columns.names == ["N", "M", "line"] and result.shape == (len(frame), 16)
    for n in range(2, 6):
        for m in (1, 0.5):
            single = quor.compile("A:MA(C,N)*M;B:=REF(C,N);", N=n, M=m).run(frame)
            some = result.xs((n, m), axis=1)
            pd.testing.assert_frame_equal(some, single, check_names=False, check_exact=True)
    shuffled = frame.sample(frac=1, random_state=2)
    some = quor.sweep(quor.compile("A:MA(C,N);B:C;", N=3), shuffled, lines=["a"], N=[4])
    assert np.array_equal(some[4, "A"], result[4, 1, "A"].loc[shuffled.index], equal_nan=True)


def test_bad_sweeps(frame):
    with pytest.raises(ValueError, match="parameters and values"):
        quor.sweep("A:C;", frame)
    with pytest.raises(ValueError, match="parameters and values"):
        quor.sweep("A:MA(C,N);", frame, N=[])
    with pytest.raises(ValueError, match="no line 'B'"):
        quor.sweep("A:MA(C,N);", frame, lines=["B"], N=[1])
    with pytest.raises(quor.ScriptError, match="with N=-5: .*vector too long"):
        quor.sweep("A:STD(C,N);", frame, N=[3, -5])
