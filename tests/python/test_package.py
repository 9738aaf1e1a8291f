"""What is shipped runs where it says, and is typed."""

import importlib.util
import re
import subprocess
import sys
from pathlib import Path

import pytest

import quor
from quor import _engine

ROOT = Path(__file__).resolve().parents[2]


@pytest.mark.skipif(sys.platform != "linux", reason="symbols of glibc")
def test_the_module_loads_with_glibc_2_28_and_brings_its_runtime_of_c_plus_plus():
    symbols = Path(_engine.__file__).read_bytes()
    versions = {int(version) for version in re.findall(rb"GLIBC_2\.(\d+)", symbols)}
    assert versions and max(versions) <= 28, versions
    assert b"libstdc++.so" not in symbols


def test_the_version_is_that_of_the_project():
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    assert f"VERSION {quor.__version__} " in text


@pytest.mark.parametrize("without, text", [
    (["numpy"], "quor needs numpy, which .*python.* hasn't got"),
    (["quor._engine"], "can't be loaded by Python 3.*built are _engine")])
def test_what_is_missing_is_said(without, text):
    hide = "".join(f"sys.modules[{name!r}] = None;" for name in without)
    done = subprocess.run([sys.executable, "-c", f"import sys;{hide}import quor"],
                          capture_output=True, text=True, check=False)
    assert done.returncode == 1 and re.search(text, done.stderr.splitlines()[-1]), done.stderr


USER = '''
import numpy as np
import quor

script: quor.Script = quor.compile("A:MA(C,N);", N=5)
count: int = script.look_back
live = script.live()
values: dict[str, float] = live.update("2024-01-02", close=1.0)
script.findings[0].line + 1
'''
WRONG = USER + '''
quor.compile(5)
live.update("2024-01-03", close="x")
script.lookback
'''


def test_types_are_strict_and_of_use_to_a_user(tmp_path, monkeypatch):
    if importlib.util.find_spec("mypy") is None:
        pytest.skip("mypy isn't installed")
    from mypy import api

    monkeypatch.setenv("MYPYPATH", str(ROOT / "python"))
    options = ["--strict", "--ignore-missing-imports", f"--cache-dir={tmp_path / 'cache'}"]
    said, _, status = api.run([*options, "-p", "quor"])
    assert status == 0, said
    for text, faults in ((USER, 0), (WRONG, 3)):
        (tmp_path / "user.py").write_text(text)
        said, _, _ = api.run([*options, str(tmp_path / "user.py")])
        assert len(re.findall(r"user\.py:\d+: error", said)) == faults, said
