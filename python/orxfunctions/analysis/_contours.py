"""Outlines of the objects in a binary picture."""
from __future__ import annotations

from collections.abc import Sequence
from typing import Any, Literal, NamedTuple, Optional

from numpy.typing import NDArray

from .. import _core
from .._choices import choice
from .._types import Binary, Ints, Points

ContourType = Literal["external", "all", "holes", "largest", "convex-hull"]
_TYPES = {"external": 0, "all": 1, "holes": 2, "largest": 3, "convex-hull": 4}
_POINTS = {"all": 0, "corners": 1}
_CENTERS = {"gravity": 0, "box": 1, "circle": 2}
NO_LIMIT = 1e300


class Center(NamedTuple):
    """The centre of a contour, pixels."""

    x: float
    y: float


def contours(image: Binary, type: ContourType = "external", *, min_length: float = 0.0, min_area: float = 0.0,
             max_area: Optional[float] = None, points: Literal["all", "corners"] = "all") -> list[Ints]:
    """The outlines of the objects (what is not 0) in a binary picture.

    Parameters
    ----------
    image : uint8 or bool array (rows, columns)
    type : {"external", "all", "holes", "largest", "convex-hull"}
        Outlines of objects that lie in no hole of another; of objects and holes; of holes; the one of largest area; convex
        hulls of the external ones.
    min_length : float
        Least length of the closed outline, pixels.
    min_area, max_area : float
        What the outline encloses, square pixels. It runs through the centres of pixels: a block of w x h pixels encloses
        (w - 1) x (h - 1).
    points : {"all", "corners"}
        Every pixel of the outline, or only where it changes its direction.

    Returns
    -------
    list of int32 arrays (n, 2)
        x before y, from the last row upwards; empty where there is none. Outer outlines turn counter-clockwise on the
        screen.

    Notes
    -----
    S. Suzuki, K. Abe, CVGIP 30 (1985).

    Examples
    --------
    >>> import numpy as np
    >>> image = np.zeros((10, 10), bool)
    >>> image[2:5, 3:7] = True
    >>> [len(contour) for contour in contours(image)]
    [10]

    C++: orx::getContours, orx::TContourOptions, orx::TContourType, orx::TContourPoints
    """
    return _core.contours(image, choice("type", type, _TYPES), min_length, min_area,
                          NO_LIMIT if max_area is None else max_area, choice("points", points, _POINTS))


def contour_center(contour: NDArray[Any], *, mode: Literal["gravity", "box", "circle"] = "gravity") -> Center:
    """The centre of a closed contour, not rounded to a pixel.

    Parameters
    ----------
    contour : integer array (n, 2)
    mode : {"gravity", "box", "circle"}
        The centre of gravity of what it encloses; of the upright bounding rectangle; of the smallest enclosing circle.

    C++: orx::getContourCenterSubPix
    """
    return Center(*_core.contour_center(contour, choice("mode", mode, _CENTERS)))


def remove_small_contours(contours: Sequence[Points], min_area: float, *, min_length: float = 0.0) -> list[Ints]:
    """The contours that enclose `min_area` square pixels and are `min_length` long, in their order.

    C++: orx::removeSmallContours
    """
    return _core.remove_small_contours(contours, min_area, min_length)
