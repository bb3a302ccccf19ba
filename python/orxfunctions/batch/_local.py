"""Workers of Dask on this machine, each a process of its own that is started again where it ends.

In place of `distributed.Nanny`, which waits for ever where a worker is killed as it starts: two of its tasks then take
messages from one queue, and one of them throws away what is meant for the other.
"""
from __future__ import annotations

import os
import subprocess
import sys
import time
from collections.abc import Collection
from contextlib import suppress

from ._errors import BatchError
from ._quarantine import environment_for_children, told

_PROGRAM = "from orxfunctions.batch._local_worker import main; main()"
_STARTS_EACH = 4
_PAUSE_SECONDS = 0.5
_LEAVE_SECONDS = 3.0


class LocalWorkers:
    """So many workers of a scheduler, kept up by who calls `tend` from time to time.

    One thread at a time.

    Parameters
    ----------
    address : str
        Of the scheduler.
    count : int
        Processes of one thread.
    """

    def __init__(self, address: str, count: int) -> None:
        self._address, self._count = address, count
        self._running: dict[str, subprocess.Popen[bytes]] = {}
        self._joined: set[str] = set()
        self._starts = 0
        self._in_vain = 0
        self._next_start = 0.0

    def tend(self, joined: Collection[str]) -> None:
        """Starts what is missing. `joined`: names of the workers that the scheduler knows.

        Raises `BatchError` where workers end again and again before they have joined.
        """
        new = (self._running.keys() & set(joined)) - self._joined
        if new:
            self._joined |= new
            self._in_vain = 0
        for name, process in list(self._running.items()):
            code = process.poll()
            if code is not None:
                self._ended(name, code)
        while len(self._running) < self._count and time.monotonic() >= self._next_start:
            self._start()

    def _start(self) -> None:
        self._starts += 1
        name = f"orx-{os.getpid()}-{self._starts}"
        # A session of its own: Ctrl-C in a terminal is for the program. The pipe tells the worker when that has ended.
        self._running[name] = subprocess.Popen([sys.executable, "-c", _PROGRAM, self._address, name], stdin=subprocess.PIPE,
                                               env=environment_for_children(), start_new_session=True)

    def _ended(self, name: str, code: int) -> None:
        _release(self._running.pop(name))
        if name in self._joined:
            self._joined.remove(name)
            return
        self._in_vain += 1
        if self._in_vain >= _STARTS_EACH * self._count:
            raise BatchError(f"workers on this machine end before they can measure: {self._in_vain} in a row, the last one "
                             f"{told(code)}")
        if self._in_vain > 1:  # one may be killed at any time; what ends by itself need not be tried at once
            self._next_start = time.monotonic() + _PAUSE_SECONDS

    def close(self, *, now: bool) -> None:
        """Waits a little for workers whose scheduler has told them to leave, and ends those that are still there."""
        until = time.monotonic() + (0.0 if now else _LEAVE_SECONDS)
        for process in self._running.values():
            try:
                process.wait(timeout=max(0.0, until - time.monotonic()))
            except subprocess.TimeoutExpired:
                process.kill()
        for process in self._running.values():
            _release(process)
        self._running = {}


def _release(process: subprocess.Popen[bytes]) -> None:
    with suppress(BrokenPipeError):
        if process.stdin is not None:
            process.stdin.close()
    process.wait()
