"""The examples of the package's README run, in their order, as one session."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def test_the_examples_run(monkeypatch, capsys):
    monkeypatch.chdir(ROOT)
    text = (ROOT / "python" / "README.md").read_text(encoding="utf-8")
    examples = re.findall(r"```python\n(.*?)```", text, re.S)
    assert len(examples) == 11
    session = {}
    for example in examples:
        exec(compile(example, "README.md", "exec"), session)
    printed = capsys.readouterr().out
    for _, promised in re.findall(r"(print\(.*\))  # (.*)", text):
        assert promised in printed
    assert "1699.5250245 101 ['BK']" in printed
