"""What runs in a worker of Dask: nothing here imports Dask."""
from __future__ import annotations

import pickle
import signal
import threading
import time
from typing import Any

from ._inspections import Inspection, unpacked
from ._measure import measured, prepare_process
from ._quarantine import Quarantine
from ._versions import difference, versions

_packed: dict[str, bytes] = {}
_known: dict[str, Inspection] = {}
# A process has one timer and one limit of memory, so it measures one picture at a time, also where Dask gives it threads.
_one_at_a_time = threading.Lock()


class WrongWorker(RuntimeError):
    """This worker can't measure for this run: the batch belongs elsewhere."""


class InspectionPlugin:
    """Brings the inspection to every worker, those that join later or start anew included."""

    def __init__(self, fingerprint: str, packed: bytes) -> None:
        self.name = f"orxfunctions-{fingerprint}"
        self._fingerprint, self._data = fingerprint, packed

    def setup(self, worker: Any) -> None:
        """Called by Dask in the worker."""
        _packed[self._fingerprint] = self._data
        try:
            signal.signal(signal.SIGINT, signal.SIG_IGN)  # Ctrl-C in a terminal reaches all of its processes
        except ValueError:
            pass  # a thread other than the main one: the worker belongs to a program, which decides itself


def _inspection(fingerprint: str, expected: dict[str, str]) -> Inspection:
    if fingerprint not in _known:
        differs = difference(versions("cv2" in expected), expected)
        if differs:
            raise WrongWorker(differs)
        if fingerprint not in _packed:
            raise WrongWorker("it has no inspection")
        _known[fingerprint] = unpacked(_packed[fingerprint])
        prepare_process()
    return _known[fingerprint]


def measure_batch(order: bytes) -> bytes:
    """Measures a batch: number, rows and seconds, as bytes, which Dask does not look into."""
    (number, pictures), fingerprint, expected, bounds = pickle.loads(order)
    with _one_at_a_time:
        inspection = _inspection(fingerprint, expected)
        start = time.perf_counter()
        rows = [measured(inspection, picture, bounds) for picture in pictures]
        return pickle.dumps((number, rows, time.perf_counter() - start))


def measure_quarantined(order: bytes) -> bytes:
    """The same in a process of its own: one of these pictures may have ended its worker."""
    (number, pictures), fingerprint, expected, bounds = pickle.loads(order)
    with _one_at_a_time:
        _inspection(fingerprint, expected)
        with Quarantine(_packed[fingerprint], bounds) as quarantine:
            return pickle.dumps((number, list(quarantine.measure(pictures)), 0.0))
