"""The type stub of the compiled core says what the core offers."""
from __future__ import annotations

import subprocess
import sys
from pathlib import Path

import pytest

PYTHON = Path(__file__).resolve().parent.parent


def test_stub_is_that_of_the_core(tmp_path: Path, checker: str) -> None:
    if not checker.startswith("1.0"):
        pytest.skip(f"the type stub is written by mypy 1.0, and this is {checker}")
    fresh = tmp_path / "_core.pyi"
    subprocess.run([sys.executable, str(PYTHON / "tools" / "make_stubs.py"), "--output", str(fresh)], check=True)
    committed = (PYTHON / "orxfunctions" / "_core.pyi").read_text(encoding="utf-8")
    assert fresh.read_text(encoding="utf-8") == committed, "run python/tools/make_stubs.py"
