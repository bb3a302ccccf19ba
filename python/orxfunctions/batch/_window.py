"""The window: batches in flight, as many as keep the workers busy and no more, so that memory does not grow with the run."""
from __future__ import annotations

import os
import time
from collections import deque
from collections.abc import Callable, Iterator, Sequence
from typing import NamedTuple, Optional, Protocol

from ._errors import BatchError
from ._inspections import Inspection
from ._pictures import Picture
from ._rows import Row
from ._store import Store

_ASKED_AT_ONCE = 500
_ROWS_KEPT_BACK = 5_000
_SECONDS_KEPT_BACK = 0.5
_FIRST_SIZE = 32
_LARGEST_SIZE = 5_000


class Batch(NamedTuple):
    """Pictures that go to a worker together."""

    number: int
    pictures: tuple[Picture, ...]


class Outcome(NamedTuple):
    """A batch that was measured."""

    number: int
    rows: Sequence[Row]
    seconds: float
    """That a worker was busy with it; 0 where that tells nothing of the next ones."""


class Engine(Protocol):
    """What measures batches."""

    @property
    def slots(self) -> int:
        """How many batches may be in flight now."""

    def submit(self, batches: Sequence[Batch]) -> None:
        """Begins to measure."""

    def finished(self, seconds: float) -> Sequence[Outcome]:
        """What has been measured; waits so long for a first one."""

    def close(self, *, now: bool) -> None:
        """Ends what was started; `now` also what is being measured."""


class BatchSize:
    """How many pictures make a batch of about so many seconds: 32 at first, then after what pictures take.

    A batch of 1 to 5 s makes little of the 5 ms that handing it out costs, and loses little with a worker that ends.
    """

    def __init__(self, seconds: float = 2.0, fixed: Optional[int] = None) -> None:
        self._seconds, self._fixed = seconds, fixed
        self._each: Optional[float] = None
        self.size = fixed or _FIRST_SIZE

    def learn(self, pictures: int, seconds: float) -> None:
        """A batch of so many pictures took so long."""
        if self._fixed or not pictures or seconds <= 0:
            return
        each = seconds / pictures
        self._each = each if self._each is None else 0.7 * self._each + 0.3 * each
        # One quick batch does not make the next ones huge.
        self.size = max(1, min(int(self._seconds / self._each), 2 * self.size, _LARGEST_SIZE))


class Counts:
    """How far a run is."""

    def __init__(self) -> None:
        self.skipped = 0
        self.measured = 0
        self.failed = 0
        self.verdicts: dict[str, int] = {}
        self.batches = 0
        self.busy_seconds = 0.0

    @property
    def seen(self) -> int:
        return self.skipped + self.measured + self.failed


class Window:
    """Takes pictures that have no row yet, has them measured batch by batch, and writes the rows.

    Parameters
    ----------
    stopped : callable
        Asked before each batch; where it says True, what is in flight is the last.
    told : callable
        Called with the counts after each step.
    """

    def __init__(self, inspection: Inspection, pictures: Iterator[Picture], engine: Engine, store: Store, size: BatchSize, *,
                 failed_too: bool, stopped: Callable[[], bool], told: Callable[[Counts], None]) -> None:
        self._inspection, self._engine, self._store, self._size = inspection, engine, store, size
        self._pictures, self._failed_too = pictures, failed_too
        self._stopped, self._told = stopped, told
        self._waiting: deque[Picture] = deque()
        self._flying: dict[int, Batch] = {}
        self._paths: set[str] = set()
        self._rows: list[Row] = []
        self._written = time.monotonic()
        self._next = 0
        self.counts = Counts()

    def run(self) -> None:
        """Until all is measured, or stopped; what was measured is written whatever happens."""
        try:
            more = True
            while True:
                more = more and not self._stopped() and self._submit()
                if not more and not self._flying:
                    break
                for outcome in self._engine.finished(0.2):
                    self._take(outcome)
                self._write(all_of_them=False)
                self._told(self.counts)
        finally:
            self._write(all_of_them=True)
            self._told(self.counts)

    def _submit(self) -> bool:
        """Fills the window; whether there may be more."""
        batches: list[Batch] = []
        more = True
        free = self._engine.slots - len(self._flying)
        while more and len(batches) < free:
            while more and len(self._waiting) < self._size.size:
                more = self._look_further()
            pictures = tuple(self._waiting.popleft() for _ in range(min(self._size.size, len(self._waiting))))
            if pictures:
                batches.append(Batch(self._next, pictures))
                self._next += 1
        if batches:
            self._flying.update((batch.number, batch) for batch in batches)
            self._engine.submit(batches)
        return more or bool(self._waiting)

    def _look_further(self) -> bool:
        """Asks for the next names, and the store which of them are done; whether there may be more."""
        some: dict[str, Picture] = {}
        for picture in self._pictures:
            if picture.path in self._paths or picture.path in some:  # named twice: it is under way
                continue
            some[picture.path] = picture
            if len(some) == _ASKED_AT_ONCE:
                break
        else:
            if not some:
                return False
        done = self._store.done(self._inspection, list(some.values()), failed_too=self._failed_too)
        self.counts.skipped += len(done)
        new = [picture for picture in some.values() if picture not in done]
        self._paths.update(picture.path for picture in new)
        self._waiting.extend(new)
        return True

    def _take(self, outcome: Outcome) -> None:
        batch = self._flying.pop(outcome.number)
        if [row.picture for row in outcome.rows] != list(batch.pictures):
            raise BatchError("a batch came back with other pictures than it went out with")
        self._size.learn(len(outcome.rows), outcome.seconds)
        self.counts.batches += 1
        self.counts.busy_seconds += outcome.seconds
        for row in outcome.rows:
            if row.here and os.path.exists(row.picture.path):
                raise BatchError(f"{row.picture.path} is here, but was not found at {row.here}: every machine must see the "
                                 "pictures under the same names")
            if row.status == "ok":
                self.counts.measured += 1
                if row.verdict:
                    self.counts.verdicts[row.verdict] = self.counts.verdicts.get(row.verdict, 0) + 1
            else:
                self.counts.failed += 1
        self._rows.extend(outcome.rows)

    def _write(self, *, all_of_them: bool) -> None:
        """Rows of several batches at once: each writing waits for the disk."""
        if self._rows and (all_of_them or len(self._rows) >= _ROWS_KEPT_BACK
                           or time.monotonic() - self._written >= _SECONDS_KEPT_BACK):
            rows, self._rows = self._rows, []
            self._store.write(self._inspection, rows)
            self._paths.difference_update(row.picture.path for row in rows)
            self._written = time.monotonic()
