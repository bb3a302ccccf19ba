"""Which pictures: of a folder, a pattern, a list in a file, or whatever gives names; one at a time, never all of them."""
from __future__ import annotations

import fnmatch
import os
import re
import sys
import warnings
from collections.abc import Iterable, Iterator
from typing import NamedTuple, Union

EXTENSIONS = frozenset({".bmp", ".dib", ".jp2", ".jpe", ".jpeg", ".jpg", ".pbm", ".pgm", ".png", ".pnm", ".ppm", ".tif",
                        ".tiff", ".webp"})
"""Of files that are taken for pictures where a folder is given."""
_LISTS = frozenset({".csv", ".list", ".lst", ".txt"})
_MAGIC = re.compile(r"[*?[]")


class Picture(NamedTuple):
    """A picture, known by its path, size and time of change: a file that was changed is another picture."""

    path: str
    size: int = -1
    """Bytes; -1 where there is no such file."""
    changed: int = -1
    """Nanoseconds since 1970; -1 where there is no such file."""


Name = Union[str, "os.PathLike[str]"]
Source = Union[Name, Iterable[Union[Name, Picture]]]
"""A folder with the ones below it, a pattern (``**`` stands for any folders), a list in a text file with a name a line
(``"-"``: of standard input), a picture, or what gives names."""


def pictures_of(source: Source) -> Iterator[Picture]:
    """The pictures of a source with their size and time of change, in the order in which the system tells them.

    Only as much is held in memory as there are folders below one another. A name that is no file is given, too, so that it
    is recorded; a folder that can't be read is told by a warning. What is a `Picture` already is not looked up.
    """
    for name in names_of(source):
        yield name if isinstance(name, Picture) else looked_up(name)


def names_of(source: Source) -> Iterator[Union[str, Picture]]:
    """The same without asking for sizes; names become absolute, so that every process finds them."""
    if not isinstance(source, (str, os.PathLike)):
        for given in source:
            yield given if isinstance(given, Picture) else os.path.abspath(os.fspath(given))
        return
    name = os.fspath(source)
    if name == "-":
        yield from _listed(sys.stdin)
    elif os.path.isdir(name):
        yield from (path for path in _below(os.path.abspath(name)) if _extension(path) in EXTENSIONS)
    elif os.path.exists(name):
        if _extension(name) not in _LISTS:
            yield os.path.abspath(name)
            return
        with open(name, encoding="utf-8", errors="surrogateescape") as lines:
            yield from _listed(lines)
    else:
        check_source(name)
        yield from _matching(os.path.abspath(name))


def check_source(source: Source) -> None:
    """Refuses at once what would be refused with the first picture."""
    if isinstance(source, (str, os.PathLike)):
        name = os.fspath(source)
        if name != "-" and not _MAGIC.search(name) and not os.path.exists(name):
            raise FileNotFoundError(f"pictures: there is no folder, list or picture {name!r}")
    elif not isinstance(source, Iterable):
        raise TypeError(f"pictures: expected a folder, a pattern, a list or what gives names, got {type(source).__name__}")


def can_be_counted(source: Source) -> bool:
    """Whether the names can be gone through twice: once to be counted."""
    return source != "-" and (isinstance(source, (str, os.PathLike, list, tuple)))


def looked_up(path: str) -> Picture:
    """The picture by its name."""
    try:
        told = os.stat(path)
    except (OSError, ValueError):  # a name with a null character is a ValueError
        return Picture(path)
    return Picture(path, told.st_size, told.st_mtime_ns)


def _extension(name: str) -> str:
    return os.path.splitext(name)[1].lower()


def _listed(lines: Iterable[str]) -> Iterator[str]:
    for line in lines:
        name = line.rstrip("\r\n")
        if name:
            yield os.path.abspath(name)


def _entries(folder: str) -> Iterator[os.DirEntry[str]]:
    try:
        with os.scandir(folder) as entries:
            yield from entries
    except OSError as error:
        warnings.warn(f"{folder}: {error.strerror}; the pictures there are left out", stacklevel=2)


def _below(folder: str) -> Iterator[str]:
    """All files below a folder; links to folders are not followed, which could lead round in circles."""
    for entry in _entries(folder):
        if entry.is_dir(follow_symlinks=False):
            yield from _below(entry.path)
        elif entry.is_file():
            yield entry.path


def _matching(pattern: str) -> Iterator[str]:
    """Files whose names match, a folder at a time; unlike those of the module glob never a list of a whole folder."""
    parts = pattern.split(os.sep)
    fixed = next(index for index, part in enumerate(parts) if _MAGIC.search(part))
    yield from _matching_below(os.sep.join(parts[:fixed]) or os.sep, parts[fixed:])


def _matching_below(folder: str, parts: list[str]) -> Iterator[str]:
    part, rest = parts[0], parts[1:]
    if part == "**":
        yield from _matching_below(folder, rest or ["*"])
    for entry in _entries(folder):
        is_folder = entry.is_dir(follow_symlinks=False)
        if part == "**":
            if is_folder and not entry.name.startswith("."):
                yield from _matching_below(entry.path, parts)
        elif fnmatch.fnmatchcase(entry.name, part) and (part.startswith(".") or not entry.name.startswith(".")):
            if not rest:
                if not is_folder and entry.is_file():
                    yield entry.path
            elif is_folder:
                yield from _matching_below(entry.path, rest)
