"""A process of its own for pictures that may end it: what happens to one does not happen to its neighbours."""
from __future__ import annotations

import os
import signal
import subprocess
import sys
from collections.abc import Iterator, Sequence
from types import TracebackType
from typing import Optional

from ._child import Ended, Refused, receive, send
from ._errors import BatchError
from ._measure import Bounds
from ._pictures import Picture
from ._rows import Row, failed

_FROM_OUTSIDE = frozenset({signal.SIGHUP, signal.SIGINT, signal.SIGKILL, signal.SIGTERM})
_ATTEMPTS = 3
_PROGRAM = "from orxfunctions.batch._child import main; main()"


class Quarantine:
    """Measures pictures in a child process, one after another; the child is started anew when a picture has ended it.

    One thread at a time, but for `stop`.

    Parameters
    ----------
    packed : bytes
        The inspection.
    bounds : Bounds
        What each picture may take.
    """

    def __init__(self, packed: bytes, bounds: Bounds) -> None:
        self._packed, self._bounds = packed, bounds
        self._process: Optional[subprocess.Popen[bytes]] = None
        self._stopped = False

    def measure(self, pictures: Sequence[Picture]) -> Iterator[Row]:
        """The rows of the pictures, in their order. A picture that ends the process is a failed one.

        Where the process was ended from outside, by hand or by the system that is short of memory, the picture is tried up
        to three times before it is blamed. Raises `BatchError` where the inspection can't be loaded.
        """
        left, attempts = list(pictures), 0
        while left:
            if self._stopped:
                raise BatchError("the measuring was stopped")
            try:
                process = self._started()
                send(process.stdin, left)  # type: ignore[arg-type]
                while isinstance(answer := receive(process.stdout), Row):  # type: ignore[arg-type]
                    left.pop(0)
                    attempts = 0
                    yield answer
                    if not left:
                        return
            except (EOFError, BrokenPipeError):
                answer = Ended(self._given_up())
                if answer.code > 0:
                    raise BatchError(f"a process for measuring can't be started (exit code {answer.code})") from None
            if isinstance(answer, Refused):
                raise BatchError(f"the inspection can't be loaded in another process: {answer.reason}")
            if self._stopped:
                continue
            code, attempts = answer.code, attempts + 1
            if -code not in _FROM_OUTSIDE or attempts == _ATTEMPTS:
                yield failed(left.pop(0), self._bounds.too_long() if code == -signal.SIGALRM else told(code))
                attempts = 0

    def stop(self) -> None:
        """Ends what is being measured at once; from any thread."""
        self._stopped = True
        process = self._process
        if process is not None:
            _kill(process)

    def close(self) -> None:
        """Ends the processes, and waits for nothing."""
        if self._process is not None:
            _kill(self._process)
            self._given_up()

    def __enter__(self) -> Quarantine:
        return self

    def __exit__(self, kind: Optional[type[BaseException]], value: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def _started(self) -> subprocess.Popen[bytes]:
        if self._process is None:
            # A session of its own: both processes are ended together.
            self._process = subprocess.Popen([sys.executable, "-c", _PROGRAM], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                             env=environment_for_children(), start_new_session=True)
            send(self._process.stdin, (self._packed, self._bounds))  # type: ignore[arg-type]
        return self._process

    def _given_up(self) -> int:
        """The exit code of the clean process, which is of no use any more."""
        process, self._process = self._process, None
        if process is None or process.stdin is None or process.stdout is None:
            return -signal.SIGKILL
        _kill(process)
        for stream in (process.stdin, process.stdout):
            try:
                stream.close()
            except BrokenPipeError:
                pass
        return process.wait()


def environment_for_children() -> dict[str, str]:
    """What can be imported here can be imported there."""
    return {**os.environ, "PYTHONPATH": os.pathsep.join(path or os.getcwd() for path in sys.path)}


def _kill(process: subprocess.Popen[bytes]) -> None:
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def told(code: int) -> str:
    """How a process ended."""
    if code >= 0:
        return f"ended its process (exit code {code})"
    try:
        return f"ended its process ({signal.Signals(-code).name})"
    except ValueError:
        return f"ended its process (signal {-code})"
