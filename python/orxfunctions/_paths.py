"""Names of files and texts, as the compiled core takes them: bytes."""
from __future__ import annotations

import os
from typing import Union

Path = Union[str, "os.PathLike[str]"]
"""A file's name."""


def path_bytes(path: Path) -> bytes:
    """The bytes by which the file system knows a file; TypeError and ValueError for what is no name of one."""
    name = os.fsencode(path)
    if b"\0" in name:
        raise ValueError("path: expected a name without null characters")
    return name


def text_bytes(name: str, text: str) -> bytes:
    """A text in UTF-8; what came from undecodable bytes becomes them again."""
    try:
        return text.encode("utf-8", "surrogateescape")
    except AttributeError:
        raise TypeError(f"{name}: expected str, got {type(text).__name__}") from None
