"""Measuring by workers of Dask, on this machine or on many. Dask is imported here alone, and where it is asked for."""
from __future__ import annotations

import importlib
import itertools
import logging
import os
import pickle
import queue
import sys
import time
from collections.abc import Callable, Sequence
from typing import Any, NamedTuple, Optional

from ._errors import BatchError
from ._local import LocalWorkers
from ._measure import Bounds
from ._versions import difference, versions
from ._window import Batch, Outcome
from ._worker import InspectionPlugin, WrongWorker, measure_batch, measure_quarantined

_BATCHES_A_WORKER = 3
_GATHERED_AT_ONCE = 64
_QUARANTINES = 10
_LOOK_SECONDS = 2.0
_LOOK_SECONDS_HERE = 0.5
_PATIENCE_WITHOUT_WORKERS = 10.0
_START_SECONDS = 30.0
_ATTEMPTS = 5
_LOGGERS = ("distributed.client", "distributed.core", "distributed.utils")


class _Flight(NamedTuple):
    """A batch under way."""

    batch: Batch
    future: Any
    quarantines: int


class ClusterEngine:
    """Hands batches to workers of Dask.

    Batches of a worker that has ended run again in quarantine; a worker whose versions differ is left out; a scheduler that
    is gone is waited for.

    Parameters
    ----------
    workers : int
        Processes of one thread, started here, where there is no `address`.
    patience : float
        Seconds to wait for a scheduler that is gone.
    tell : callable
        Takes what the user should know.
    """

    def __init__(self, packed: bytes, fingerprint: str, bounds: Bounds, *, workers: int = 0, address: str = "",
                 patience: float = 600.0, tell: Callable[[str], None]) -> None:
        self._distributed = _dask("distributed")
        self._plugin = InspectionPlugin(fingerprint, packed)
        self._fingerprint, self._bounds, self._patience, self._tell = fingerprint, bounds, patience, tell
        # cv2 counts where this program uses it: pictures are read without.
        self._versions = versions("cv2" in sys.modules)
        self._flying: dict[str, _Flight] = {}
        self._finished: queue.SimpleQueue[Any] = queue.SimpleQueue()
        self._keys = itertools.count()
        self._name = f"orx-{os.getpid()}-{time.time_ns():x}"
        self._workers: dict[str, bool] = {}
        self._told: set[tuple[str, str]] = set()
        # How workers differ, as long as there was none that can measure.
        self._differs: Optional[str] = ""
        self._looked = self._had_workers = time.monotonic()
        self._cluster: Any = None
        self._client: Any = None
        self._local: Optional[LocalWorkers] = None
        # Pages of traces on a scheduler that is gone, which is told in a line here.
        self._loggers = [(logger, logger.level) for logger in map(logging.getLogger, _LOGGERS)]
        for logger, _ in self._loggers:
            logger.setLevel(logging.CRITICAL)
        try:
            if not address:
                self._cluster = self._scheduler_here()
            self._address = address or self._cluster.scheduler_address
            self._connect(timeout=min(30.0, patience))
            if not address:
                self._start_workers(workers)
        except BaseException:
            self.close(now=True)
            raise

    def _scheduler_here(self) -> Any:
        _dask("dask").config.set({"distributed.scheduler.allowed-failures": 0})
        # Its words on workers that end are for who mends Dask: here such a worker is no event, and a run tells what is one.
        return self._distributed.LocalCluster(n_workers=0, threads_per_worker=1, processes=True,
                                              dashboard_address="127.0.0.1:0", silence_logs=logging.CRITICAL)

    def _connect(self, timeout: float) -> None:
        try:
            self._client = self._distributed.Client(self._cluster or self._address, timeout=timeout, set_as_default=False)
        except (OSError, TimeoutError) as error:
            raise BatchError(f"there is no scheduler at {self._address}: {error}") from error
        # Functions of two lines go as they are: the scheduler's machine need not have this package.
        self._client.run_on_scheduler(lambda dask_scheduler: setattr(dask_scheduler, "allowed_failures", 0))
        self._workers = {}
        self._look(at_once=True)
        self._bring_inspection()

    def _bring_inspection(self) -> None:
        """To the workers there are, and by the scheduler to those that will join."""
        for attempts_left in reversed(range(_ATTEMPTS)):
            try:
                self._client.register_worker_plugin(self._plugin, name=self._plugin.name)
                return
            except OSError as error:  # a worker has gone meanwhile; the others may not have it
                if not attempts_left:
                    raise BatchError(f"the inspection can't be brought to the workers: {error}") from error
            time.sleep(0.2)

    def _start_workers(self, count: int) -> None:
        """Goes on with those that are there after a while; the others are welcome when they come."""
        self._local = LocalWorkers(self._address, count)
        until = time.monotonic() + _START_SECONDS
        while sum(self._workers.values()) < count and time.monotonic() < until:
            self._look(at_once=True)
            time.sleep(0.05)

    # Workers

    @property
    def slots(self) -> int:
        self._look()
        return _BATCHES_A_WORKER * max(1, sum(self._workers.values()))

    def _look(self, *, at_once: bool = False) -> None:
        """Which workers there are; those that have joined are asked for their versions."""
        now = time.monotonic()
        if not at_once and now - self._looked < (_LOOK_SECONDS if self._local is None else _LOOK_SECONDS_HERE):
            return
        self._looked = now
        try:
            known = self._client.scheduler_info()["workers"]
            if self._local is not None:
                self._local.tend([worker["name"] for worker in known.values()])
            there = list(known)
            new = [worker for worker in there if worker not in self._workers]
            self._workers = {worker: self._workers[worker] for worker in there if worker in self._workers}
            if new:
                self._ask(new)
        except (OSError, TimeoutError, ValueError) as error:  # the scheduler or a worker is going away: seen soon
            logging.getLogger(__name__).debug("workers can't be asked: %s", error)
        if any(self._workers.values()):
            self._had_workers, self._differs = now, None
        elif now - self._had_workers > _PATIENCE_WITHOUT_WORKERS:
            if self._differs:  # others may join at any time, but nobody should wait for what was never there
                raise BatchError(f"no worker at {self._address} can measure: {self._differs}")
            self._tell(f"there are no workers at {self._address}; waiting for some")
            self._had_workers = now + _PATIENCE_WITHOUT_WORKERS * 5  # told again after a minute

    def _ask(self, workers: list[str]) -> None:
        answers = self._client.run(_versions_there, "cv2" in self._versions, workers=workers, on_error="return")
        for worker, theirs in answers.items():
            if isinstance(theirs, OSError):
                continue  # it has gone meanwhile
            differs = difference(theirs, self._versions) if isinstance(theirs, dict) else str(theirs)
            self._workers[worker] = not differs
            if differs:
                self._differs = None if self._differs is None else differs
                self._tell_once(worker, differs)
        wrong = [worker for worker in workers if self._workers.get(worker) is False]
        if wrong:
            # Their nannies first: one that is not told starts a worker again, however it ends.
            self._client.run(_not_again, workers=wrong, nanny=True, on_error="ignore")
            self._client.retire_workers(wrong, close_workers=True, remove=True)

    def _tell_once(self, worker: str, differs: str) -> None:
        """Of each machine: who starts its workers may do so for as long as they are sent away."""
        machine = worker.rpartition(":")[0]
        if (machine, differs) not in self._told:
            self._told.add((machine, differs))
            self._tell(f"worker {worker} is left out: {differs}")

    # Batches

    def submit(self, batches: Sequence[Batch]) -> None:
        self._send(measure_batch, [(batch, 0) for batch in batches])

    def _send(self, function: Callable[..., Any], batches: Sequence[tuple[Batch, int]]) -> None:
        if not batches:
            return
        keys = [f"{self._name}-{next(self._keys)}" for _ in batches]
        # As bytes: Dask would look into every tuple for tasks.
        orders = [pickle.dumps((batch, self._fingerprint, self._versions, self._bounds)) for batch, _ in batches]
        futures = self._client.map(function, orders, key=keys, pure=False)
        for key, future, (batch, quarantines) in zip(keys, futures, batches):
            self._flying[key] = _Flight(batch, future, quarantines)
            future.add_done_callback(self._finished.put)

    def finished(self, seconds: float) -> list[Outcome]:
        if self._client.status != "running":
            self._wait_for_scheduler()
        self._look()  # also when all is handed out: workers end then, too
        return self._settle([future for future in self._taken(seconds) if future.key in self._flying])

    def _taken(self, seconds: float) -> list[Any]:
        """Futures that are done, some at once: to fetch their results is a question to the scheduler."""
        taken: list[Any] = []
        try:
            taken.append(self._finished.get(timeout=seconds))
            while len(taken) < _GATHERED_AT_ONCE:
                taken.append(self._finished.get_nowait())
        except queue.Empty:
            pass
        return taken

    def _settle(self, done: list[Any]) -> list[Outcome]:
        good = [future for future in done if future.status == "finished"]
        outcomes = self._gathered(good)
        for future in done:
            if future.key not in self._flying or future.status == "finished":
                continue
            if self._client.status != "running":
                break  # all of them are sent again once the scheduler is back
            flight = self._flying.pop(future.key)
            error = future.exception() if future.status == "error" else None
            self._again(flight, error)
        return outcomes

    def _gathered(self, futures: list[Any]) -> list[Outcome]:
        if not futures:
            return []
        try:
            results = self._client.gather(futures)
        except Exception as error:  # the worker that had a result is gone, or the scheduler: measured again
            logging.getLogger(__name__).debug("results are lost: %s", error)
            if self._client.status == "running":
                self._send(measure_batch, [(flight.batch, flight.quarantines)
                                           for flight in (self._flying.pop(future.key) for future in futures)])
            return []
        for future in futures:
            del self._flying[future.key]
        return [Outcome(number, rows, seconds) for number, rows, seconds in map(pickle.loads, results)]

    def _again(self, flight: _Flight, error: Optional[BaseException]) -> None:
        """A batch that was not measured goes out once more, or ends the run with what is wrong."""
        if isinstance(error, self._distributed.KilledWorker):
            if flight.quarantines == _QUARANTINES:
                raise BatchError(f"the workers of a batch have ended {_QUARANTINES + 1} times; its first picture is "
                                 f"{flight.batch.pictures[0].path}")
            self._send(measure_quarantined, [(flight.batch, flight.quarantines + 1)])
        elif error is None or isinstance(error, (WrongWorker, ModuleNotFoundError)):
            if error is not None:
                self._workers = {}
                self._look(at_once=True)
            function = measure_quarantined if flight.quarantines else measure_batch
            self._send(function, [(flight.batch, flight.quarantines)])
        elif isinstance(error, BatchError):
            raise error
        else:
            raise BatchError(f"a worker can't measure: {type(error).__name__}: {error}") from error

    def _wait_for_scheduler(self) -> None:
        if self._cluster is not None:
            raise BatchError("the scheduler of this machine's workers has ended")
        self._tell(f"the scheduler at {self._address} is gone; waiting for it for {self._patience:g} s "
                   "(what was measured is kept)")
        batches = [(flight.batch, flight.quarantines) for flight in self._flying.values()]
        self._flying = {}
        self._close_client()
        until = time.monotonic() + self._patience
        while True:
            try:
                self._connect(timeout=5.0)
                break
            except Exception as error:  # it may be there and go again while it is asked
                self._close_client()
                if time.monotonic() > until:
                    raise BatchError(f"the scheduler at {self._address} did not come back: {error}; the same call goes on "
                                     "where this one stopped") from error
            time.sleep(1.0)
        self._tell(f"the scheduler at {self._address} is back")
        self._send(measure_batch, [batch for batch in batches if not batch[1]])
        self._send(measure_quarantined, [batch for batch in batches if batch[1]])

    def close(self, *, now: bool) -> None:
        self._flying = {}
        cluster, self._cluster = self._cluster, None
        local, self._local = self._local, None
        if now and local is not None:
            local.close(now=True)
        self._close_client()
        if cluster is not None:
            try:
                cluster.close(timeout=1.0 if now else 10.0)
            except Exception as error:  # its processes end with this one at the latest
                logging.getLogger(__name__).debug("closing: %s", error)
        if local is not None:
            local.close(now=now)
        for logger, level in self._loggers:
            logger.setLevel(level)

    def _close_client(self) -> None:
        client, self._client = self._client, None
        if client is not None:
            try:
                client.close(timeout=2.0)
            except Exception as error:  # it is of no use any more, however it ends
                logging.getLogger(__name__).debug("closing: %s", error)


def _dask(name: str) -> Any:
    try:
        return importlib.import_module(name)
    except ImportError:
        raise ImportError("several workers and clusters need Dask: install python3-distributed (workers=1 needs nothing)") \
            from None


# Lambdas: they go as code, and a worker without this package can answer them.
_versions_there = lambda cv2: __import__("orxfunctions.batch._versions", fromlist=["_"]).versions(cv2)  # noqa: E731
_not_again = lambda dask_worker: dask_worker.close_gracefully("another version")  # noqa: E731
