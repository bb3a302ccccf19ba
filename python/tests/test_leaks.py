"""Nothing is left behind by ten thousand calls, refused ones included."""
from __future__ import annotations

import gc
import os
import sys
from typing import Any, Callable

import numpy as np
import pytest

from orxfunctions import analysis, fitting


def resident() -> int:
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def refused(call: Callable[[], Any]) -> None:
    with pytest.raises((TypeError, ValueError)):
        call()


SMALL = np.full((24, 24), 40, np.uint8)
SMALL[6:18, 6:18] = 200
PLACES = np.stack([np.cos(np.arange(16.0)), np.sin(np.arange(16.0))], axis=1)

CALLS: list[Callable[[], Any]] = [
    lambda: analysis.threshold_level(SMALL),
    lambda: analysis.edges(SMALL),
    lambda: analysis.edges(SMALL.T[::-1]),
    lambda: analysis.caliper(SMALL, (1, 12), (22, 12)),
    lambda: analysis.contours(SMALL > 100),
    lambda: analysis.to_bgr(SMALL),
    lambda: fitting.fit_circle(PLACES, deviations=np.ones(16)),
    lambda: fitting.find_lines(PLACES, max_trials=20),
    lambda: refused(lambda: fitting.fit_line(PLACES[:0])),
    lambda: refused(lambda: analysis.edges(SMALL, sigma=0.0)),
    lambda: refused(lambda: analysis.focus(SMALL.astype(float))),
]


@pytest.mark.skipif("libasan" in os.environ.get("LD_PRELOAD", ""), reason="a sanitizer keeps what is freed")
@pytest.mark.parametrize("call", CALLS)
def test_memory_and_references_stay(call: Callable[[], Any]) -> None:
    for _ in range(500):
        call()
    gc.collect()
    memory, references = resident(), sys.getrefcount(SMALL)
    for _ in range(10_000):
        call()
    gc.collect()
    assert sys.getrefcount(SMALL) == references
    assert resident() - memory < 2 * 2**20  # 10,000 lost results of the smallest size would be more
