"""One picture, within limits of time and memory."""
from __future__ import annotations

import ctypes
import functools
import os
import resource
import signal
import socket
import sys
import time
from collections.abc import Iterator
from contextlib import contextmanager
from typing import NamedTuple, Optional

from .._threads import set_threads
from ._inspections import Inspection
from ._pictures import Picture
from ._reading import DamagedPicture
from ._rows import NotARecord, Row, failed

_PAGE = os.sysconf("SC_PAGE_SIZE")
_M_TRIM_THRESHOLD, _M_MMAP_THRESHOLD = -1, -3  # of malloc.h


class Bounds(NamedTuple):
    """What a picture may take."""

    seconds: Optional[float] = 60.0
    bytes: Optional[int] = 2 << 30
    """Of memory beyond what the process had before."""

    def too_long(self) -> str:
        return f"took longer than {self.seconds:g} s"

    def too_much(self) -> str:
        return f"needed more than {self.bytes:,} bytes of memory"


def prepare_process() -> None:
    """Keeps this process to one processor, cv2 included where the inspection has brought that (it may have an OpenCV of its
    own), and the memory of one picture for the next one."""
    set_threads(1)
    if "cv2" in sys.modules:
        sys.modules["cv2"].setNumThreads(1)
    _keep_freed_memory()


def _keep_freed_memory() -> None:
    """To give it back to the system after each picture and to take it again costs hundreds of page faults, which is as much
    time as to read it: with the GNU library, whether it happens hangs on what lies on top of the heap."""
    set_option = getattr(ctypes.CDLL(None), "mallopt", None)
    if set_option is not None:
        for option, size in ((_M_MMAP_THRESHOLD, 32 << 20), (_M_TRIM_THRESHOLD, 256 << 20)):
            set_option(option, size)


def measured(inspection: Inspection, picture: Picture, bounds: Bounds) -> Row:
    """The row of a picture, whatever happens, but for what ends the process: a crash, and running out of time."""
    start = time.perf_counter()
    try:
        with _timer(bounds.seconds), _memory(bounds.bytes):
            record = inspection.record(picture.path)
        seconds = time.perf_counter() - start
        return Row(picture, "ok", seconds, "", record, verdict=inspection.verdict(record))
    except (DamagedPicture, NotARecord) as error:
        reason = str(error)
    except MemoryError:
        reason = bounds.too_much()
    except SystemExit as error:
        reason = f"the inspection asked to end the program ({error.code})"
    except Exception as error:  # whatever the user's function raises
        if isinstance(error, FileNotFoundError) and error.filename == picture.path:
            return failed(picture, "there is no such file")._replace(here=socket.gethostname())
        # OpenCV's own word for memory that is refused.
        reason = bounds.too_much() if getattr(error, "code", None) == -4 else _told(error)
    return failed(picture, reason, time.perf_counter() - start)


def _told(error: Exception) -> str:
    return f"{type(error).__name__}: {error}"


@contextmanager
def _timer(seconds: Optional[float]) -> Iterator[None]:
    """The system ends the process when time is up: nothing else stops a call of compiled code, and nobody need watch."""
    if seconds is None:
        yield
        return
    signal.setitimer(signal.ITIMER_REAL, seconds)
    try:
        yield
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0.0)


@functools.lru_cache(maxsize=1)
def _statm_of(process: int) -> int:
    """A file on this process, open: to open it takes longer than to read it. What a forked one inherits is not its own."""
    return os.open("/proc/self/statm", os.O_RDONLY | os.O_CLOEXEC)


@contextmanager
def _memory(more: Optional[int]) -> Iterator[None]:
    """Lets the process take so many bytes more; beyond them the system refuses, and Python raises MemoryError."""
    if more is None:
        yield
        return
    soft, hard = resource.getrlimit(resource.RLIMIT_DATA)
    held = int(os.pread(_statm_of(os.getpid()), 100, 0).split()[5]) * _PAGE
    wanted = held + more
    if hard == resource.RLIM_INFINITY or wanted < hard:
        resource.setrlimit(resource.RLIMIT_DATA, (wanted, hard))
    try:
        yield
    finally:
        resource.setrlimit(resource.RLIMIT_DATA, (soft, hard))
