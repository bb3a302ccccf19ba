"""Binary pictures: holes, skeletons, specks. What is not 0 belongs to an object; bool in gives bool out."""
from __future__ import annotations

from typing import Any, Literal, Optional, TypeVar, cast

import numpy as np
from numpy.typing import NDArray

from .. import _core
from .._choices import choice
from .._types import Bytes
from ._contours import NO_LIMIT

BinaryT = TypeVar("BinaryT", NDArray[np.uint8], NDArray[np.bool_])
_THINNING = {"zhang-suen": 0, "guo-hall": 1}


def _like(image: NDArray[Any], result: Bytes) -> Any:
    return result != 0 if image.dtype == np.bool_ else result


def fill_holes(image: BinaryT, *, max_area: Optional[float] = None, connectivity: Literal[4, 8] = 8) -> BinaryT:
    """Fills each part of the ground that does not reach the border of the picture, with 255 (True).

    Parameters
    ----------
    image : uint8 or bool array (rows, columns)
    max_area : float
        Holes of more pixels stay open.
    connectivity : {8, 4}
        How pixels of an object hang together; holes hang together the other way.

    Notes
    -----
    P. Soille, "Morphological Image Analysis", 2nd edition (2003), section 6.3.7.

    C++: orx::fillHoles, orx::TFillHolesOptions, orx::TConnectivity
    """
    filled = _core.fill_holes(image, NO_LIMIT if max_area is None else max_area, connectivity)
    return cast(BinaryT, _like(image, filled))


def thinning(image: BinaryT, *, method: Literal["zhang-suen", "guo-hall"] = "zhang-suen") -> BinaryT:
    """Thins every object to lines one pixel wide, 255 (True) on the lines.

    ``"zhang-suen"`` (Commun. ACM 27, 1984) gives smooth lines with few spurs, squares of 2 x 2 pixels vanish;
    ``"guo-hall"`` (Commun. ACM 32, 1989) is thinner, and no object vanishes.

    C++: orx::thinning, orx::TThinningMethod
    """
    return cast(BinaryT, _like(image, _core.thinning(image, choice("method", method, _THINNING))))


def remove_small_objects(image: BinaryT, min_area: float) -> BinaryT:
    """Removes objects of fewer than `min_area` pixels (8-connected); all others stay as they are.

    L. Vincent, "Morphological area openings and closings for grey-scale images" (1994).

    C++: orx::removeSmallObjects
    """
    return cast(BinaryT, _like(image, _core.remove_small_objects(image, min_area)))


def remove_short_lines(image: BinaryT, min_length: float) -> BinaryT:
    """Removes lines shorter than `min_length` pixels from a picture of lines one pixel wide.

    The length is that of the path: 1 along rows and columns, sqrt(2) for diagonal steps; branches add up.

    C++: orx::removeShortLines
    """
    return cast(BinaryT, _like(image, _core.remove_short_lines(image, min_length)))
