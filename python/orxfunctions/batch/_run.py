"""A run: an inspection on many pictures, into a store."""
from __future__ import annotations

import os
import signal
import threading
import time
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from types import FrameType
from typing import Any, NamedTuple, Optional, Union

from ..files import Mode
from ._engines import HereEngine, LoopEngine
from ._inspections import Inspect, Inspection, Limits, inspection_of, packed
from ._measure import Bounds
from ._pictures import Source, check_source, pictures_of
from ._progress import Teller, Watcher
from ._store import Store, open_store
from ._window import BatchSize, Engine, Window


class Summary(NamedTuple):
    """What a run did."""

    measured: int
    failed: int
    """Recorded with the reason."""
    skipped: int
    """That had results before."""
    verdicts: dict[str, int]
    """How many of those measured have each."""
    seconds: float
    batches: int
    busy_seconds: float
    """That workers measured, all together."""
    interrupted: bool
    """By Ctrl-C or SIGTERM: the same call goes on where this one stopped."""

    def __str__(self) -> str:
        rate = (self.measured + self.failed) / self.seconds if self.seconds > 0 else 0.0
        verdicts = "".join(f", {count:,} {verdict}" for verdict, count in sorted(self.verdicts.items()))
        before = f", {self.skipped:,} had results before" if self.skipped else ""
        stopped = "; interrupted: the same call goes on from here" if self.interrupted else ""
        return (f"{self.measured:,} measured{verdicts}, {self.failed:,} failed{before}; {self.seconds:.1f} s, "
                f"{rate:,.0f}/s{stopped}")


def run(inspect: Inspect, pictures: Source, store: Union[str, os.PathLike[str], Store], *, workers: Optional[int] = None,
        cluster: Optional[str] = None, version: str = "", limits: Optional[Limits] = None, mode: Mode = "grey",
        reader: Optional[Callable[[str], Any]] = None, seconds: Optional[float] = 60.0, memory: Optional[int] = 2 << 30,
        retry_failed: bool = False, batch_seconds: float = 2.0, batch_size: Optional[int] = None, patience: float = 600.0,
        progress: Optional[Watcher] = None) -> Summary:
    """Measures many pictures, each once, and keeps what came of every one of them.

    What has a result in the store, of the same file by the same inspection, is passed over: the same call goes on where a
    run has ended, however it did. A picture that can't be read, that makes the inspection raise, takes too long or too much
    memory, or ends its process, is recorded with the reason; its neighbours are measured.

    Parameters
    ----------
    inspect : function, `measuring.Recipe`, or path
        A function takes the picture and gives a dict of what JSON can hold. A path is that of a recipe, or of a Python file
        with a function `inspect` (``FILE.py:NAME``: another one).
    pictures : path or iterable
        A folder and those below it, a pattern (``"a/**/*.png"``), a text file with a name a line, or what gives names (or
        `Picture`). Gone through once; names are never held all at once.
    store : path, address or store
        A file of SQLite, made where it is missing; ``postgresql://...``; or what has the methods of `Store`.
    workers : int
        1, the default: a loop in one process that this one watches. More: so many processes, by Dask. 0: in this very
        process, for a debugger; bounds don't hold there.
    cluster : str
        Address of a scheduler of Dask (``"tcp://host:8786"``) in place of workers here. All machines must see the pictures
        under the same names.
    version : str
        Of a function; results of another version are measured again. Empty: its source stands for it, but not what it calls.
    limits : mapping
        ``{"width": (9.5, 10.5)}``: for verdicts on the numbers of a function. Recipes bring their own.
    mode : str
        ``"grey"`` (8 bits), ``"colour"`` (BGR), or ``"unchanged"``.
    reader : function
        Takes the path and gives what `inspect` gets, in place of reading a picture.
    seconds, memory : float, int
        What a picture may take: time on the clock, and bytes beyond what its process holds. None: any.
    retry_failed : bool
        Measure pictures again that were recorded as failed.
    batch_seconds, batch_size : float, int
        How long a batch lasts, 0.05 to 60; or how many pictures it has.
    patience : float
        Seconds to wait for a scheduler that is gone.
    progress : bool or function
        True and False: a line on standard error or none; None: where that is a terminal. A function is called with
        `Progress`.

    Returns
    -------
    Summary
        Also after Ctrl-C, which ends the run after the batches in flight; a second one raises KeyboardInterrupt at once.

    Raises
    ------
    BatchError
        The run can't begin or go on: no scheduler, no worker of this version, a store that can't be written.
    ImportError
        What is missing, by the name of its package.

    Examples
    --------
    >>> import os, tempfile
    >>> from orxfunctions import _png
    >>> import numpy as np
    >>> with tempfile.TemporaryDirectory() as folder:
    ...     for level in range(5):
    ...         _ = open(f"{folder}/{level}.png", "wb").write(_png.png_of(np.full((8, 8), level, np.uint8)))
    ...     first = run(lambda path: {"bytes": os.path.getsize(path)}, folder, f"{folder}/results.sqlite", workers=0,
    ...                 reader=str, version="1")
    ...     again = run(lambda path: {"bytes": os.path.getsize(path)}, folder, f"{folder}/results.sqlite", workers=0,
    ...                 reader=str, version="1")
    >>> first.measured, again.measured, again.skipped
    (5, 0, 5)
    """
    if workers is not None and cluster is not None:
        raise ValueError("workers and cluster: expected one of them")
    _check("workers", 1 if workers is None else workers, 0, 10_000)
    _check("batch_seconds", batch_seconds, 0.05, 60.0)
    _check("batch_size", 1 if batch_size is None else batch_size, 1, 100_000)
    _check("seconds", 1.0 if seconds is None else seconds, 0.001, 1e6)
    _check("memory", 1 << 20 if memory is None else memory, 1 << 20, 1 << 50)
    check_source(pictures)
    inspection = inspection_of(inspect, version=version, mode=mode, reader=reader, limits=limits)
    opened = open_store(store)
    teller = Teller(progress, pictures)
    start = time.monotonic()
    try:
        with _interruptible(teller.tell) as stopped:
            engine = _engine(inspection, 1 if workers is None else workers, cluster, Bounds(seconds, memory), patience,
                             teller.tell)
            window = Window(inspection, pictures_of(pictures), engine, opened, BatchSize(batch_seconds, batch_size),
                            failed_too=not retry_failed, stopped=stopped.is_set, told=teller.update)
            now = True
            try:
                window.run()
                now = False
            finally:
                engine.close(now=now)
    finally:
        teller.close()
        if opened is not store:
            opened.close()
    counts = window.counts
    return Summary(counts.measured, counts.failed, counts.skipped, counts.verdicts, time.monotonic() - start, counts.batches,
                   counts.busy_seconds, stopped.is_set())


def _check(name: str, value: float, least: float, largest: float) -> None:
    if not least <= value <= largest:
        raise ValueError(f"{name} is {value:g}; {least:g} to {largest:g} is taken")


def _engine(inspection: Inspection, workers: int, cluster: Optional[str], bounds: Bounds, patience: float,
            tell: Callable[[str], None]) -> Engine:
    if cluster is None and workers == 0:
        return HereEngine(inspection)
    data = packed(inspection)
    if cluster is None and workers == 1:
        return LoopEngine(data, bounds)
    from ._cluster import ClusterEngine
    return ClusterEngine(data, inspection.fingerprint, bounds, workers=workers, address=cluster or "", patience=patience,
                         tell=tell)


@contextmanager
def _interruptible(tell: Callable[[str], None]) -> Iterator[threading.Event]:
    """An event that the first Ctrl-C or SIGTERM sets; the second one raises KeyboardInterrupt. Elsewhere than in the main
    thread signals are the program's own affair."""
    stopped = threading.Event()
    if threading.current_thread() is not threading.main_thread():
        yield stopped
        return

    def handle(number: int, frame: Optional[FrameType]) -> None:
        if stopped.is_set():
            raise KeyboardInterrupt
        stopped.set()
        tell("ending after the batches in flight; once more to end at once")

    before = {number: signal.signal(number, handle) for number in (signal.SIGINT, signal.SIGTERM)}
    try:
        yield stopped
    finally:
        for number, handler in before.items():
            signal.signal(number, handler)
