"""Pictures with what was found in them, for a notebook or a file."""
from __future__ import annotations

import os
from typing import Any, Optional, Tuple, Union

import numpy as np
from numpy.typing import NDArray

from .._png import png_of
from .._types import Bytes
from . import _shapes


class Picture:
    """A picture of 8 bits, grey or BGR, that a notebook shows and that can be saved."""

    __slots__ = ("array",)

    array: Bytes

    def __init__(self, array: Bytes) -> None:
        self.array = array

    def save(self, path: Union[str, os.PathLike[str]]) -> None:
        """Writes a PNG file; the name ends with .png."""
        if not os.fspath(path).lower().endswith(".png"):
            raise ValueError(f"path: expected a name that ends with .png, got {os.fspath(path)!r}")
        with open(path, "wb") as file:
            file.write(self._repr_png_())

    def _repr_png_(self) -> bytes:
        return png_of(self.array)

    def __reduce__(self) -> Tuple[type[Picture], Tuple[Bytes]]:
        return Picture, (self.array,)

    def __repr__(self) -> str:
        return f"Picture({self.array.shape[1]} x {self.array.shape[0]})"


def _bytes_of(image: Any) -> Bytes:
    """Any picture, also of truth values or 16 bits, in BGR; of 16 bits the largest value becomes white."""
    known = isinstance(image, np.ndarray) and image.dtype in (np.uint8, np.uint16, np.bool_)
    if not known or not (image.ndim == 2 or (image.ndim == 3 and image.shape[2] in (1, 3, 4))):
        got = f"{image.dtype} array of shape {image.shape}" if isinstance(image, np.ndarray) else type(image).__name__
        raise TypeError("image: expected a picture: uint8, uint16 or bool array of shape (rows, columns), (rows, columns, 3)"
                        f" or (rows, columns, 4), got {got}")
    if image.size == 0:
        raise ValueError(f"image: expected at least one pixel, got shape {image.shape}")
    if image.dtype == np.bool_:
        image = image.astype(np.uint8) * np.uint8(255)
    elif image.dtype == np.uint16:
        image = (image * (255.0 / max(int(image.max()), 1))).astype(np.uint8)
    if image.ndim == 2 or image.shape[2] == 1:
        return np.repeat(image.reshape(image.shape[0], image.shape[1], 1), 3, axis=2)
    return np.array(image[:, :, :3], order="C", subok=False)


def picture(image: NDArray[Any]) -> Picture:
    """A picture to look at, without anything drawn on it."""
    return Picture(_bytes_of(image))


def show(image: NDArray[Any], *, edges: Any = None, contours: Any = None, segments: Any = None, lines: Any = None,
         arcs: Any = None, circles: Any = None, ellipses: Any = None, points: Optional[_shapes.Places] = None,
         text: Optional[str] = None, thickness: int = 1) -> Picture:
    """A copy of a picture with what was found in it, each kind in a colour of its own.

    Parameters
    ----------
    image : uint8, uint16 or bool array
        (rows, columns), (rows, columns, 3) or (rows, columns, 4). Of 16 bits the largest value is shown white.
    edges, contours, segments, lines, arcs, circles, ellipses, points
        As the functions of these names take them; None draws nothing.
    text : str or None
        A caption, top left.
    thickness : int
        Of the strokes, pixels.

    Returns
    -------
    Picture
        A notebook shows it; ``save("found.png")`` writes it, ``array`` is the picture itself (BGR).

    Examples
    --------
    >>> import numpy as np
    >>> found = show(np.zeros((60, 80), np.uint8), circles=(40, 30, 20), text="20 px")
    >>> found
    Picture(80 x 60)
    >>> bool(found.array[30, 60, 2] > 200)
    True
    """
    canvas = _bytes_of(image)
    for draw, what in ((_shapes.contours, contours), (_shapes.edges, edges), (_shapes.segments, segments),
                       (_shapes.lines, lines), (_shapes.arcs, arcs), (_shapes.circles, circles),
                       (_shapes.ellipses, ellipses)):
        if what is not None:
            draw(canvas, what, thickness=thickness)
    if points is not None:
        _shapes.points(canvas, points)
    if text is not None:
        _shapes.text(canvas, text)
    return Picture(canvas)
