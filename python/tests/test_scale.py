"""The simulation behind docs/scale.md: what can be worked out by hand, and whether the page tells what it does."""
from __future__ import annotations

import importlib
import subprocess
import sys
from pathlib import Path
from typing import Any

import pytest

FARM = Path(__file__).resolve().parents[1] / "bench" / "farm"
sys.path.insert(0, str(FARM))
simulate: Any = importlib.import_module("simulate")


def run(pictures: int, workers: int, batch: int, **changes: float) -> Any:
    costs = {"picture": 0.01, "picture_client": 0.0, "batch_client": 0.0, "batch_worker": 0.0, "row_bytes": 1.0,
             "start": 0.0, "core_hour": 1.0, **changes}
    return simulate.simulate(pictures, workers, batch, simulate.Costs(**costs))


def test_runs_take_what_is_worked_out_by_hand() -> None:
    assert run(800, 4, 10) == pytest.approx((2.0, 1.0, 0.0))  # 8 s of work on four workers
    assert run(800, 4, 10, start=3.0).seconds == pytest.approx(5.0)
    assert run(800, 4, 10, batch_worker=0.1).occupancy == pytest.approx(0.5)
    slow = run(8000, 100, 10, batch_client=0.05)  # 800 batches through a client that takes 50 ms for each
    assert slow.seconds == pytest.approx(800 * 0.05 + 0.1) and slow.client == pytest.approx(1.0, abs=0.01)


def test_what_is_not_gone_through_is_carried_on(monkeypatch: pytest.MonkeyPatch) -> None:
    whole = run(500_000, 7, 10, batch_client=0.003, picture_client=1e-5, batch_worker=0.002)
    monkeypatch.setattr(simulate, "MOST_EVENTS", 5_000)
    assert run(500_000, 7, 10, batch_client=0.003, picture_client=1e-5, batch_worker=0.002) == pytest.approx(whole, rel=1e-3)


def test_the_page_tells_what_is_simulated() -> None:
    told = subprocess.run([sys.executable, FARM / "simulate.py", "--check"], capture_output=True, text=True)
    assert told.returncode == 0, told.stderr
