"""The far end of `Quarantine`: a process that stays clean, and forks another one that measures.

Messages are pickles with their length: the inspection with its bounds and then lists of pictures come in, a row each
picture goes out as soon as it is measured. Where the measuring process ends, the clean one tells how and forks the next:
that takes milliseconds, while a new interpreter with its libraries takes a second.
"""
from __future__ import annotations

import os
import pickle
import signal
from typing import Any, BinaryIO, NamedTuple

from ._inspections import unpacked
from ._measure import Bounds, measured, prepare_process

_MARK = b"orx\n"
_HEAD = len(_MARK) + 8


class Ended(NamedTuple):
    """The measuring process has ended, with this exit code; less than 0: by that signal."""

    code: int


class Refused(NamedTuple):
    """The inspection can't be loaded."""

    reason: str


def send(stream: BinaryIO, message: Any) -> None:
    """Writes a message."""
    data = pickle.dumps(message)
    stream.write(_MARK + len(data).to_bytes(8, "big") + data)
    stream.flush()


def receive(stream: BinaryIO) -> Any:
    """The next message; EOFError where the other end is gone, or was cut off in the middle of one."""
    head = stream.read(_HEAD)
    if len(head) == _HEAD and head.startswith(_MARK):
        length = int.from_bytes(head[len(_MARK):], "big")
        data = stream.read(length)
        if len(data) == length:
            return pickle.loads(data)
    raise EOFError("the other process has ended")


def main() -> None:
    """Until nobody asks any more."""
    # What an inspection prints must not get between the rows, nor what it reads between the pictures.
    commands, rows = os.dup(0), os.dup(1)
    os.dup2(os.open(os.devnull, os.O_RDONLY), 0)
    os.dup2(2, 1)
    signal.signal(signal.SIGINT, signal.SIG_IGN)  # Ctrl-C is for the program, which ends this one when it wants
    # Without a buffer: what it had read would be lost with the measuring process.
    with os.fdopen(commands, "rb", buffering=0) as asked, os.fdopen(rows, "wb") as told:
        try:
            data, bounds = receive(_Whole(asked))  # type: ignore[arg-type]
        except EOFError:
            return
        while True:
            process = os.fork()
            if process == 0:
                _measure(data, bounds, _Whole(asked), told)
            code = os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])
            if code == _NOBODY_ASKS:
                return
            send(told, Ended(code))


_NOBODY_ASKS = 143  # as no inspection is likely to end itself


class _Whole:
    """Reads as much as is asked for, from what may give less."""

    def __init__(self, stream: Any) -> None:
        self._stream = stream

    def read(self, size: int) -> bytes:
        parts = []
        while size and (part := self._stream.read(min(size, 1 << 20))):
            parts.append(part)
            size -= len(part)
        return b"".join(parts)


def _measure(data: bytes, bounds: Bounds, commands: Any, rows: BinaryIO) -> None:
    """The measuring process; never returns."""
    try:
        try:
            inspection = unpacked(data)
            prepare_process()
        except Exception as error:  # told where the inspection was given
            send(rows, Refused(f"{type(error).__name__}: {error}"))
            receive(commands)
        while True:
            for picture in receive(commands):
                send(rows, measured(inspection, picture, bounds))
    finally:  # EOFError and BrokenPipeError: nobody is interested any more
        os._exit(_NOBODY_ASKS)
