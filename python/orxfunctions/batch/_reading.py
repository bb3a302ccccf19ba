"""Pictures from files, with a reason where there is none in them."""
from __future__ import annotations

import os
import re

from .._types import Image
from ..files import Mode, decode_picture

# Within the coded pixels of a JPEG 0xFF is followed by 0, by a restart mark or by another 0xFF; else a marker begins.
_MARKER = re.compile(rb"\xff([^\x00\xd0-\xd7\xff])", re.DOTALL)


class DamagedPicture(ValueError):
    """A file that holds no picture, or not all of one."""


def read_picture(path: str, mode: Mode = "grey") -> Image:
    """The picture in a file.

    Raises `DamagedPicture` for an empty file, one that `files.decode_picture` does not read, and a JPEG or PNG that is cut
    off: OpenCV gives pictures of JPEGs that are cut off, grey where nothing is left. A JPEG damaged within is not told from a
    whole one.
    """
    with open(path, "rb") as file:
        data = file.read()
    if not data:
        raise DamagedPicture("an empty file")
    if data.startswith(b"\xff\xd8") and not jpeg_is_whole(data):
        raise DamagedPicture("a JPEG that is cut off: its end marker is missing")
    if data.startswith(b"\x89PNG") and data.rfind(b"IEND\xaeB`\x82") < 0:
        raise DamagedPicture("a PNG that is cut off: its end chunk is missing")
    try:
        return decode_picture(data, mode)
    except ValueError as error:
        raise DamagedPicture(f"{error} ({os.path.splitext(path)[1]})") from error


def jpeg_is_whole(data: bytes) -> bool:
    """Whether the file's own end marker is there, not that of a thumbnail within."""
    place = 2
    while place + 4 <= len(data):
        if data[place] != 0xFF:
            return False
        kind = data[place + 1]
        if kind == 0xFF:  # filling
            place += 1
            continue
        if kind == 0xD9:
            return True
        place += 2 + int.from_bytes(data[place + 2:place + 4], "big")
        if kind == 0xDA:  # coded pixels follow, up to the next marker
            found = _MARKER.search(data, place)
            if found is None:
                return False
            place = found.start()
    return data[place:place + 2] == b"\xff\xd9"
