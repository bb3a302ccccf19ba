"""Pictures decoded, matrices in raw files, more training pictures from few, pictures saved in the background."""
from __future__ import annotations

import atexit
import os
from collections.abc import Callable
from typing import Any, Literal, NamedTuple, Optional, Tuple, Union

import numpy as np
from numpy.typing import NDArray

from . import _core
from ._choices import choice
from ._paths import Path, path_bytes
from ._types import Doubles, Image

__all__ = ["AugmentationReport", "Mode", "StreamFile", "augment", "decode_picture", "flush", "read_stream", "save_image",
           "write_stream"]

Mode = Literal["grey", "colour", "unchanged"]
"""What a picture is read as: 8 bits of grey, 8 bits of colour (BGR), or as it is."""
_FLAGS = {"grey": 0, "colour": 1, "unchanged": -1}  # IMREAD_GRAYSCALE, IMREAD_COLOR, IMREAD_UNCHANGED of cv2

_TEXT_BYTES = 254  # the 255th is the NUL that ends it


class StreamFile(NamedTuple):
    """What a stream file holds."""

    matrix: Doubles
    """(rows, columns)"""
    size: Tuple[int, int]
    """Width and height, as the writer meant them."""
    text: str


class AugmentationReport(NamedTuple):
    """What `augment` has made."""

    completed: bool
    """False where `progress` stopped it."""
    images: int
    """Of which variants were made."""
    skipped: int
    """That could not be read, or whose annotation could not."""
    written: int
    """Variants."""
    problems: list[str]
    """A text for each skipped picture and each file that could not be written."""


def _path(name: bytes) -> str:
    """A name that the library gave; on Windows it is in code page 936 where that can tell it."""
    if os.name == "nt":
        try:
            return name.decode("utf-8")
        except UnicodeDecodeError:
            return name.decode("gbk", "replace")
    return os.fsdecode(name)


def decode_picture(data: Union[bytes, bytearray, memoryview, NDArray[np.uint8]], mode: Mode = "grey") -> Image:
    """The pixels of a picture file that was read into memory, as `cv2.imdecode` gives them for the same flags.

    To be preferred to it where a program should start quickly or reads many pictures: a plain PNG file (grey of 8 or 16 bits
    for ``"grey"``; colour of 8 bits, also by a palette, for ``"colour"``) takes a third to a half of the time, and OpenCV's
    formats, with the many libraries that they bring, are loaded when the first other file comes. Thread-safe.

    Parameters
    ----------
    data : bytes-like
        PNG, JPEG, TIFF, BMP and what else OpenCV reads; also a view with gaps.
    mode : str
        ``"grey"``: 8 bits, (rows, columns); ``"colour"``: 8 bits, (rows, columns, 3), BGR; ``"unchanged"``: as it is, with
        its depth and its channels.

    Raises
    ------
    ValueError
        No bytes, no picture, a damaged one that the decoder gives up, or one larger than it takes. A JPEG that is cut off or
        damaged within gives a picture: see `batch.read_picture`.
    MemoryError
        No memory for it.

    C++: orx::decodePicture
    """
    return _core.decode_picture(data, choice("mode", mode, _FLAGS))


def write_stream(path: Path, matrix: Doubles, *, size: Optional[Tuple[int, int]] = None, text: str = "") -> None:
    """Writes a matrix of doubles into a raw binary file, replacing one that exists: a height map, a calibration result.

    Little-endian, without magic number: rows and columns (int32), the elements row by row, `size` (int32), 255 bytes of
    text.

    Parameters
    ----------
    path : str or path
    matrix : float64 array (rows, columns)
    size : (width, height)
        Whatever the reader is to know; (columns, rows) where none is given.
    text : str
        At most 254 bytes of UTF-8.

    C++: orx::image2StreamFile
    """
    words = text.encode("utf-8")
    if len(words) > _TEXT_BYTES or b"\0" in words:
        raise ValueError(f"text: expected at most {_TEXT_BYTES} bytes without a NUL, got {len(words)}")
    if size is None:  # what is no matrix is refused below
        rows, columns = matrix.shape if getattr(matrix, "ndim", 0) == 2 else (0, 0)
        size = columns, rows
    _core.write_stream(path_bytes(path), matrix, size, words)


def read_stream(path: Path) -> StreamFile:
    """Reads what `write_stream` or a C++ program has written.

    What a short file lacks reads as zeros; an empty file gives a matrix of shape (0, 0). A text that is not UTF-8 is taken
    for code page 936.

    C++: orx::streamFile2Image
    """
    matrix, size, words = _core.read_stream(path_bytes(path))
    try:
        text = words.decode("utf-8")
    except UnicodeDecodeError:
        text = words.decode("gbk", "replace")
    return StreamFile(matrix, size, text)


def augment(input_folder: Path, output_folder: Path, *, seed: int = 0, flip_horizontal: bool = True,
            flip_vertical: bool = True, rotations: int = 1, max_angle: float = 15.0, scalings: int = 1,
            min_scale: float = 0.8, max_scale: float = 1.25, shifts: int = 1, max_shift: float = 0.1,
            brightness_changes: int = 1, max_brightness: float = 0.2, contrast_changes: int = 1, max_contrast: float = 0.3,
            blurs: int = 1, max_blur: float = 2.0, noises: int = 1, max_noise: float = 0.05,
            progress: Optional[Callable[[int, int, str], Optional[bool]]] = None) -> AugmentationReport:
    """Makes variants of every picture of a folder, with the polygons of its annotation moved alike.

    An annotation is the file NAME.json beside the picture, as polygon labelling tools write it. Equal seeds, options and
    pictures give equal variants, whatever other pictures lie beside them.

    Parameters
    ----------
    input_folder, output_folder : str or path
        Not the same. Subfolders are not entered; variants that exist are replaced.
    seed : int
        0 to 2**64 - 1.
    flip_horizontal, flip_vertical : bool
        Left and right, top and bottom change places.
    rotations, scalings, shifts, brightness_changes, contrast_changes, blurs, noises : int
        How many variants of each kind, cut to 0 to 1000.
    max_angle : float
        Degrees, about the centre, in both directions.
    min_scale, max_scale : float
        0.01 to 100; the picture is resized.
    max_shift : float
        Of width and height, at most 1.
    max_brightness, max_noise : float
        Of the full range of grey; for noise the standard deviation.
    max_contrast : float
        Distances from the middle grey change by a factor of up to 1 + this.
    max_blur : float
        Sigma of the Gaussian, pixels, at most 100.
    progress : callable or None
        Called with (done, total, file) before each picture and once at the end with ""; False stops the run, and so does
        what it raises, which is raised here.

    Returns
    -------
    AugmentationReport

    C++: orx::ImageDataAugmentation, orx::TAugmentationConfig, orx::TAugmentationReport
    """
    def tell(done: int, total: int, file: bytes) -> Any:
        return None if progress is None else progress(done, total, _path(file))

    counts = [rotations, scalings, shifts, brightness_changes, contrast_changes, blurs, noises]
    amounts = [max_angle, min_scale, max_scale, max_shift, max_brightness, max_contrast, max_blur, max_noise]
    flips = flip_horizontal, flip_vertical
    folders = path_bytes(input_folder), path_bytes(output_folder)
    return AugmentationReport(*_core.augment(*folders, seed, flips, counts, amounts, tell))


def save_image(image: Image, folder: Path, *, prefix: str = "", extension: str = ".png") -> str:
    """Saves a copy of a picture in the background; never waits for the disk.

    The file is ``PREFIXyyyymmdd_hhmmss_mmm_nnnnnn.EXT`` in `folder`, which is made where it is missing; names sort in the
    order of the calls. At most 64 pictures wait, of 1 GiB together.

    Returns
    -------
    str
        The full name. The file is there after `flush`, or at the end of the process.

    Raises
    ------
    ValueError
        The queue is full, the format is not known, or the prefix names a folder.

    C++: FileOperator::saveImage
    """
    return _path(_core.save_image(image, path_bytes(folder), path_bytes(prefix), extension))


def flush(timeout: Optional[float] = None) -> bool:
    """Waits until the pictures given to `save_image` before are written; False when `timeout` seconds ran out.

    C++: FileOperator::flush
    """
    if timeout is not None and not timeout >= 0.0:
        raise ValueError(f"timeout: expected 0 or more seconds, got {timeout}")
    return _core.flush_images(-1 if timeout is None else int(min(timeout * 1000.0, 2_000_000_000.0)))


atexit.register(flush)
