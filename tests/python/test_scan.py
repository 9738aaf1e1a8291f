"""Many securities and many parameters."""

import functools
import os
import warnings
from concurrent.futures import BrokenExecutor, ProcessPoolExecutor, ThreadPoolExecutor
from concurrent.futures.process import BrokenProcessPool

import numpy as np
import pandas as pd
import pytest
from conftest import bars_of_worker, made_up

import quor
from quor import scanning

SCRIPT = quor.compile("M:MA(C,5);BUY:CROSS(C,M);S:FILTER(BUY,3);")
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
    with pytest.warns(quor.ScanWarning, match="1 of 7 .* twice: bars 0 and 10"):
        some = quor.scan(SCRIPT, odd, last=100, jobs=1)
    result = quor.scan(SCRIPT, odd, last=100, jobs=1, duplicates="last")
    assert list(some.attrs["failures"]) == ["twice"] and result.attrs["failures"] == {}
    assert set(result.index.get_level_values(0)) == set(odd) - {"empty"}
    for name in set(odd) - {"empty"}:
        wanted = SCRIPT.run(odd[name], duplicates="last").rename_axis("time").sort_index()
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


def test_failures_are_listed_and_cost_nothing_else(tmp_path):
    old = tmp_path / "old.csv"
    old.write_text("date,close\n1600-01-01,1\n")
    bad = {
        "text": FRAMES["S00"].assign(close="x"),
        "gone": "no/such/file.csv",
        "lost": FRAMES["S00"].drop(columns="close"),
        "close": FRAMES["S00"].set_axis(FRAMES["S00"].index[:1].append(
            FRAMES["S00"].index[:-1] + pd.Timedelta("1ms"))),
        "own": functools.partial(int, "x"),
        "old": str(old),
    }
    with pytest.warns(quor.ScanWarning, match="6 of 36 securities failed"):
        result = quor.scan(SCRIPT, {**bad, **FRAMES})
    failures = result.attrs["failures"]
    assert list(failures) == sorted(bad)
    assert "holds text" in failures["text"] and "no such file" in failures["gone"].lower()
    assert "one second" in failures["close"] and "invalid literal" in failures["own"]
    assert "before 1678" in failures["old"]
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
    functions = {name: functools.partial(str, tmp_path / f"{name}.csv") for name in ["S00", "S01"]}
    assert_same(quor.scan(SCRIPT, functions), expected().head(2))
    with pytest.raises(ValueError, match="no such CSV files"):
        quor.scan(SCRIPT, tmp_path / "X*.csv")


@pytest.mark.parametrize("text, fault", [
    ("date,close\n01/02/2024,1\n", ":2: '01/02/2024' is no date"),
    ("date,close\n2024-01-02,1\n13/01/2024,2\n", ":3: '13/01/2024' is no date"),
    ("date,close\n2023-02-29,1\n", ":2: '2023-02-29' is no date"),
    ("date,close\n2024-01-02,1\n2024-01-02,2\n", ":3: same date as in line 2"),
    ("date,close\n2024-01-02,\"1,000\"\n", ":2: '1,000' in the column of CLOSE (11) is no number"),
    ("date,close\n2024-01-02,inf\n", ":2: 'inf' in the column of CLOSE (11) is no number"),
    ("date,close\n2024-01-02\n", ":2: 1 cells instead of 2"),
    ("date,close,C\n2024-01-02,1,2\n", ":1: two columns are the field CLOSE"),
    ("when,close\n2024-01-02,1\n", ":1: the header names no 'date' column"),
    ("date,last\n2024-01-02,1\n", ":1: the header names no 'close' column"),
    ("date,close\n\"2024-01-02,1\n", ": a quote is out of place"),
    ("date,close\n2024-01-02,\udcb7\udce1\n", ":2: '\ufffd\ufffd' in the column of CLOSE (11)"),
    ("date,close\n", ": no bars"), ("", ": is empty"),
])
def test_odd_files_are_refused_by_their_line(tmp_path, text, fault):
    path = tmp_path / "odd.csv"
    path.write_text(text, encoding="utf-8", errors="surrogateescape")
    with pytest.raises(ValueError, match="odd.csv") as caught:
        quor.read_csv(path)
    assert str(caught.value).startswith(str(path)) and fault in str(caught.value)
    with pytest.warns(quor.ScanWarning, match="1 of 1"):
        result = quor.scan("A:C;", path)
    assert result.attrs["failures"] == {"odd": str(caught.value)}


def test_what_no_market_has_quoted_is_doubted(tmp_path):
    path = tmp_path / "odd.csv"
    path.write_text("date,high,low,close\n2024-01-02,1,3,2\n")
    with pytest.warns(quor.BarsWarning, match="odd.csv:2: the high 1 is below the low 3"):
        assert quor.read_csv(path)["high"].tolist() == [1]
    with pytest.warns(quor.BarsWarning, match="odd.csv:2: the high 1 is below"):
        assert quor.scan("A:C;", path)["A"].tolist() == [2]


def test_a_file_is_read_by_the_names_of_its_columns(tmp_path):
    path = tmp_path / "odd \udce9.csv"
    path.write_text("\ufeffDay,Open_Interest,last price,note,HIGH,date\n"
                    "20240103 0935,7,1.5,x,,bad\n2024-01-02T10:00:00.9+08:00,8,2,,3,bad\n")
    columns = {"time": "Day", "close": "last price"}
    frame = quor.read_csv(path, columns)
    assert list(frame) == ["high", "close", "openinterest"] and frame.index.name == "date"
    assert list(frame.index) == [pd.Timestamp("2024-01-03 09:35"), pd.Timestamp("2024-01-02 10:00")]
    assert frame["openinterest"].tolist() == [7, 8]
    assert frame["high"].isna().tolist() == [True, False]
    more = {**columns, "open": "a column that nobody reads"}
    assert quor.scan("A:C+OPI;", {"x": path}, columns=more)["A"].tolist() == [8.5]
    assert quor.scan("A:C;", {"x": path}, columns={**columns, "close": None})["A"].isna().all()
    with pytest.warns(quor.ScanWarning, match="reads 'volume', and no column of the file"):
        assert quor.scan("A:V;", {"x": path}, columns=columns).empty
    with pytest.raises(ValueError, match="names no 'first price' column"):
        quor.read_csv(path, {"time": "Day", "close": "first price"})
    path.write_text("date,close,600000|11\n2024-01-02,1,5\n2024-01-02,2,6\n")
    script = quor.compile('A:C;B:"600000$CLOSE";')
    assert quor.scan(script, {"x": path}, duplicates="last").to_numpy().tolist() == [[2.0, 6.0]]
    assert quor.read_csv(path, duplicates="last")["close"].tolist() == [1, 2]


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
    for last in (0, -3, 2.5, "1", True):
        with pytest.raises(ValueError, match="last must be a whole number"):
            quor.scan(SCRIPT, FRAMES, last=last)
    with pytest.raises(ValueError, match="'closed' is the name of no field"):
        quor.scan(SCRIPT, FRAMES, columns={"closed": "c"})
    for where in ("", " ", "\n", 5):
        with pytest.raises(ValueError, match="where must be"):
            quor.scan(SCRIPT, FRAMES, where=where)
    with pytest.raises(ValueError, match='by="..." names the column.*frame.groupby'):
        quor.scan(SCRIPT, FRAMES["S00"])
    with pytest.raises(TypeError, match="the script comes first"):
        quor.scan(FRAMES["S00"], SCRIPT)
    for jobs in (0, 1.5):
        with pytest.raises(ValueError, match="jobs must be a whole number"):
            quor.scan(SCRIPT, FRAMES, jobs=jobs)
    with pytest.raises(ValueError, match="pairs of a name and bars, and 5 is none"):
        quor.scan(SCRIPT, [5])


@pytest.mark.parametrize("jobs", [1, 3])
def test_a_security_comes_once(tmp_path, jobs):
    with pytest.raises(ValueError, match="'S03' comes twice"):
        quor.scan(SCRIPT, [*FRAMES.items(), ("S03", FRAMES["S04"])], jobs=jobs)
    for folder in ("a", "b"):
        (tmp_path / folder).mkdir()
        FRAMES["S00"].to_csv(tmp_path / folder / "S00.csv")
    with pytest.raises(ValueError, match="'S00' comes twice: .*a.S00.csv and .*b.S00.csv"):
        quor.scan(SCRIPT, tmp_path / "*" / "*.csv", jobs=jobs)


def test_groups_of_a_long_frame_are_securities():
    long = pd.concat(FRAMES, names=["code", "date"])
    assert_same(quor.scan(SCRIPT, long.groupby(level="code"), last=2), expected(2))
    assert_same(quor.scan(SCRIPT, long.reset_index().groupby("code")), expected())


def test_odd_bars_are_told_beside_the_results():
    odd = FRAMES["S05"].assign(close=[*FRAMES["S05"]["close"][:-1], np.inf])
    with pytest.warns(quor.BarsWarning, match="1 of 30 securities have odd bars, one is S05"):
        result = quor.scan(SCRIPT, {**FRAMES, "S05": odd})
    assert list(result.attrs["findings"]) == ["S05"] and result.attrs["failures"] == {}
    assert "'close' of bar 64" in result.attrs["findings"]["S05"][0].sentence


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
    with ProcessPoolExecutor(2) as pool, pytest.warns(quor.ScanWarning, match="1 of 31 .*pickle"):
        result = quor.scan(SCRIPT, {"unsent": lambda: None, **sources}, executor=pool)
    assert list(result.attrs["failures"]) == ["unsent"] and len(result) == 30


def die(seed):
    """Ends its process."""
    os._exit(1)


def test_what_a_dead_process_leaves_undone_is_done_once_more(tmp_path):
    names = [f"S{number:03}" for number in range(200)]
    sources = {name: functools.partial(bars_of_worker, int(name[1:])) for name in names}
    wanted = pd.concat({name: SCRIPT.run(source()).tail(1) for name, source in sources.items()},
                       names=["security", "time"])
    sources["S090"] = functools.partial(die_once, str(tmp_path / "died"), 90)
    with ProcessPoolExecutor(2) as pool:
        result = quor.scan(SCRIPT, sources, executor=pool)
        assert (tmp_path / "died").exists() and result.attrs["failures"] == {}
        assert_same(result, wanted)
        # The pool is broken now, which costs the next scan nothing but what kills its process.
        deadly = {**sources, "S017": functools.partial(die, 17), "S019": functools.partial(die, 19)}
        with pytest.warns(quor.ScanWarning, match="2 of 200 .* S017: BrokenProcessPool: .*termin"):
            result = quor.scan(SCRIPT, iter(deadly.items()), executor=pool)
    assert list(result.attrs["failures"]) == ["S017", "S019"]
    result.attrs.clear()
    assert_same(result, wanted.drop(index=["S017", "S019"]))


def test_processes_that_never_start_end_the_scan():
    sources = {"S01": functools.partial(bars_of_worker, 1)}
    with ProcessPoolExecutor(2, initializer=die, initargs=(1,)) as pool:
        with pytest.raises(BrokenProcessPool):
            quor.scan(SCRIPT, sources, executor=pool)


class _Breaking(ThreadPoolExecutor):
    """Breaks over some of its tasks, by their numbers."""

    def __init__(self, *numbers):
        super().__init__(1)
        self.numbers, self.count = numbers, 0

    def submit(self, *task):
        self.count += 1
        if self.count in self.numbers:
            raise BrokenExecutor("gone")
        return super().submit(*task)


def test_another_executor_that_breaks_is_tried_once_more():
    with _Breaking(2) as pool:
        assert_same(quor.scan(SCRIPT, FRAMES, executor=pool), expected())
    with _Breaking(2, 3) as pool, pytest.warns(quor.ScanWarning, match="14 of 30 .* broke twice"):
        result = quor.scan(SCRIPT, iter(FRAMES.items()), executor=pool)
    assert len(result) == 16


def interrupted():
    raise KeyboardInterrupt


@pytest.mark.parametrize("jobs", [1, 2, None])
def test_an_interrupt_in_a_loader_ends_the_scan(jobs):
    sources = {**FRAMES, "S14": interrupted}
    with ProcessPoolExecutor(2) as pool, pytest.raises(KeyboardInterrupt):
        quor.scan(SCRIPT, sources, **({"jobs": jobs} if jobs else {"executor": pool}))


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
    result = quor.sweep("A:MA(C,N)*M;B:REF(C,N);", frame, N=range(2, 6), M=[1, 0.5], jobs=2)
    assert result.columns.names == ["N", "M", "line"] and result.shape == (len(frame), 16)
    for n in range(2, 6):
        for m in (1, 0.5):
            single = quor.compile("A:MA(C,N)*M;B:REF(C,N);", N=n, M=m).run(frame)
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
    for values in (5, "35"):
        with pytest.raises(ValueError, match=r"as in N=\[2, 3\]"):
            quor.sweep("A:MA(C,N);", frame, N=values)
