"""Functions let other threads run, and give equal results on several threads."""
from __future__ import annotations

import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from typing import Any, Callable

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import analysis


def large() -> NDArray[np.uint8]:
    return np.random.default_rng(5).integers(0, 255, (1500, 2000), dtype=np.uint8)


@pytest.mark.parametrize("call", [lambda image: analysis.edges(image, min_points=50), analysis.threshold_quadrants,
                                  lambda image: analysis.enhance(image), lambda image: analysis.thinning(image)],
                         ids=["edges", "threshold_quadrants", "enhance", "thinning"])
def test_another_thread_runs_meanwhile(call: Callable[[Any], Any]) -> None:
    image, counted, done = large(), [0], threading.Event()

    def count() -> None:
        while not done.is_set():
            counted[0] += 1
            time.sleep(0.0)

    other = threading.Thread(target=count)
    interval = sys.getswitchinterval()
    sys.setswitchinterval(100.0)  # a thread goes on until it lets others run by itself
    try:
        other.start()
        before = counted[0]
        call(image)
        after = counted[0]
        done.set()
        other.join()
    finally:
        sys.setswitchinterval(interval)
    assert after > before


def test_several_threads_give_what_one_gives() -> None:
    random = np.random.default_rng(11)
    pictures = [np.asarray(random.integers(0, 255, (120, 160)), np.uint8) for _ in range(24)]

    def inspect(image: NDArray[np.uint8]) -> tuple[Any, ...]:
        found = analysis.edges(image)
        return (analysis.threshold_level(image, method="huang"), found.points.tobytes(), found.deviation.tobytes(),
                analysis.focus(image), len(analysis.contours(image > 128)))

    serial = [inspect(image) for image in pictures]
    with ThreadPoolExecutor(2) as pool:
        assert list(pool.map(inspect, pictures)) == serial
