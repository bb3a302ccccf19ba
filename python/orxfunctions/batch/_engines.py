"""What measures without a cluster: this process, or one that it watches."""
from __future__ import annotations

import queue
import threading
import time
from collections import deque
from collections.abc import Sequence
from typing import Optional, Union

from ._inspections import Inspection
from ._measure import Bounds, measured
from ._quarantine import Quarantine
from ._window import Batch, Outcome


class HereEngine:
    """Measures in this very process: for a debugger. Nothing stops a picture that takes long or ends the process."""

    slots = 1

    def __init__(self, inspection: Inspection) -> None:
        self._inspection = inspection
        self._batches: deque[Batch] = deque()

    def submit(self, batches: Sequence[Batch]) -> None:
        self._batches.extend(batches)

    def finished(self, seconds: float) -> list[Outcome]:
        if not self._batches:
            return []
        batch, start = self._batches.popleft(), time.perf_counter()
        rows = [measured(self._inspection, picture, Bounds(None, None)) for picture in batch.pictures]
        return [Outcome(batch.number, rows, time.perf_counter() - start)]

    def close(self, *, now: bool) -> None:
        """There is nothing to end."""


class LoopEngine:
    """A loop in one process that a thread of this one watches, so that no picture ends the run."""

    slots = 2

    def __init__(self, packed: bytes, bounds: Bounds) -> None:
        self._loop = Quarantine(packed, bounds)
        self._batches: queue.SimpleQueue[Optional[Batch]] = queue.SimpleQueue()
        self._outcomes: queue.SimpleQueue[Union[Outcome, Exception]] = queue.SimpleQueue()
        self._thread = threading.Thread(target=self._work, name="orxfunctions.batch", daemon=True)
        self._thread.start()

    def _work(self) -> None:
        try:
            while (batch := self._batches.get()) is not None:
                start = time.perf_counter()
                rows = list(self._loop.measure(batch.pictures))
                self._outcomes.put(Outcome(batch.number, rows, time.perf_counter() - start))
        except Exception as error:  # raised again in the thread that asks
            self._outcomes.put(error)

    def submit(self, batches: Sequence[Batch]) -> None:
        for batch in batches:
            self._batches.put(batch)

    def finished(self, seconds: float) -> list[Outcome]:
        try:
            outcome = self._outcomes.get(timeout=seconds)
        except queue.Empty:
            return []
        if isinstance(outcome, Exception):
            raise outcome
        return [outcome]

    def close(self, *, now: bool) -> None:
        if now:
            self._loop.stop()
        self._batches.put(None)
        self._thread.join()
        self._loop.close()
