"""The far end of `LocalWorkers`: a worker of Dask that is there as long as the program that started it."""
from __future__ import annotations

import asyncio
import importlib
import logging
import os
import sys
import threading
from typing import Any

_JOIN_SECONDS = 60.0


def main() -> None:
    """``-c ... ADDRESS NAME``: until the scheduler sends it away, or the program has ended."""
    address, name = sys.argv[1:]
    # Nothing is ever written there. What an inspection reads must not be taken from it.
    program = os.dup(0)
    os.dup2(os.open(os.devnull, os.O_RDONLY), 0)
    threading.Thread(target=_end_with, args=(program,), name="orxfunctions.batch program", daemon=True).start()
    dask: Any = importlib.import_module("dask")
    distributed: Any = importlib.import_module("distributed")
    # Their words on ends of connections are for who mends Dask; the program tells what is an event.
    for logger in ("asyncio", "distributed", "tornado.application"):
        logging.getLogger(logger).setLevel(logging.CRITICAL)
    distributed.utils.silence_logging(logging.CRITICAL)
    with dask.config.set({"distributed.worker.profile.enabled": False}):
        asyncio.run(_work(distributed.Worker, address, name))


async def _work(worker: Any, address: str, name: str) -> None:
    # Without a limit of memory, at which Dask would let a worker pause: pictures have theirs.
    async with worker(address, name=name, nthreads=1, dashboard=False, death_timeout=_JOIN_SECONDS,
                      memory_limit=0) as running:
        await running.finished()


def _end_with(program: int) -> None:
    os.read(program, 1)  # returns where the other end is closed, however the program has ended
    os._exit(0)
