"""A checker of types finds the mistakes of users, at the very lines, and nothing else there."""
from __future__ import annotations

import re
from pathlib import Path

import pytest

import orxfunctions

api = pytest.importorskip("mypy.api")
MISTAKES = Path(__file__).with_name("mistakes.py")


def test_mistakes_are_found(tmp_path: Path, monkeypatch: pytest.MonkeyPatch, checker: str) -> None:
    if not checker.startswith("1.0"):
        pytest.skip(f"the mistakes are told in the words of mypy 1.0, and this is {checker}")
    monkeypatch.setenv("MYPYPATH", str(Path(orxfunctions.__file__).parent.parent))
    output, _, _ = api.run(["--strict", "--no-error-summary", "--cache-dir", str(tmp_path), str(MISTAKES)])
    found = {(int(line), code) for line, code in re.findall(r"mistakes\.py:(\d+): error: .*\[([a-z-]+)\]", output)}
    lines = MISTAKES.read_text(encoding="utf-8").splitlines()
    expected = {(number, match[1]) for number, line in enumerate(lines, 1)
                if (match := re.search(r"# error: ([a-z-]+)$", line))}
    assert len(expected) >= 10 and found == expected, output
