"""How far a run is, in a line on the screen."""
from __future__ import annotations

import sys
import threading
import time
from collections import deque
from typing import Callable, NamedTuple, Optional, Union

from ._pictures import Source, can_be_counted, names_of
from ._window import Counts

_TERMINAL_SECONDS = 0.5
_FILE_SECONDS = 10.0
_RATE_SECONDS = 30.0


class Progress(NamedTuple):
    """How far a run is."""

    total: Optional[int]
    """Pictures there are; None as long as that is not known."""
    skipped: int
    """That had results before."""
    measured: int
    failed: int
    rate: float
    """Pictures a second, of the last half minute."""
    seconds_left: Optional[float]

    def __str__(self) -> str:
        seen = self.skipped + self.measured + self.failed
        of_all = "" if self.total is None else f" of {self.total:,}"
        left = "" if self.seconds_left is None else f", {_duration(self.seconds_left)} left"
        return f"{seen:,}{of_all} pictures, {self.failed:,} failed, {self.rate:,.0f}/s{left}"


Watcher = Union[bool, Callable[[Progress], None]]


class Teller:
    """Tells of a run: a line on standard error that changes (a line every 10 s where that is a file), or a user's function."""

    def __init__(self, watcher: Optional[Watcher], source: Source) -> None:
        terminal = sys.stderr.isatty()
        self._call = watcher if callable(watcher) else None
        self._shown = terminal if watcher is None else watcher is True
        self._every = _TERMINAL_SECONDS if terminal or self._call else _FILE_SECONDS
        self._terminal = terminal
        self._told = time.monotonic()
        self._past: deque[tuple[float, int]] = deque([(self._told, 0)])
        self._total: Optional[int] = None
        self._closed = False
        if (self._shown or self._call) and can_be_counted(source):
            threading.Thread(target=self._count, args=(source,), name="orxfunctions.batch names", daemon=True).start()

    def _count(self, source: Source) -> None:
        total = 0
        for _ in names_of(source):
            total += 1
            if self._closed:
                return
        self._total = total

    def update(self, counts: Counts) -> None:
        """Tells how far it is, where it is time."""
        now = time.monotonic()
        if now - self._told < self._every or not (self._shown or self._call):
            return
        self._told = now
        progress = self._progress(counts, now)
        if self._call:
            self._call(progress)
        elif self._terminal:
            print(f"\r\x1b[K{progress}", end="", file=sys.stderr, flush=True)
        else:
            print(progress, file=sys.stderr, flush=True)

    def _progress(self, counts: Counts, now: float) -> Progress:
        worked = counts.measured + counts.failed
        self._past.append((now, worked))
        while len(self._past) > 2 and now - self._past[0][0] > _RATE_SECONDS:
            self._past.popleft()
        since, before = self._past[0]
        rate = (worked - before) / max(1e-6, now - since)
        # The file system may hold other pictures than those that were counted.
        left = None if self._total is None or rate <= 0 else max(0, self._total - counts.seen) / rate
        return Progress(self._total, counts.skipped, counts.measured, counts.failed, rate, left)

    def tell(self, text: str) -> None:
        """Something that the user should know, whether a line is shown or not."""
        print(f"\r\x1b[K{text}" if self._shown and self._terminal else text, file=sys.stderr, flush=True)

    def close(self) -> None:
        """Ends the line."""
        self._closed = True
        if self._shown and self._terminal:
            print("\r\x1b[K", end="", file=sys.stderr, flush=True)


def _duration(seconds: float) -> str:
    whole = int(seconds + 0.5)
    if whole < 60:
        return f"{whole} s"
    if whole < 3600:
        return f"{whole // 60} min {whole % 60:02d} s"
    return f"{whole // 3600} h {whole % 3600 // 60:02d} min"
