"""One grey level for a whole picture, or for each of its quadrants."""
from __future__ import annotations

from typing import Literal, NamedTuple, Optional

from .. import _core
from .._choices import choice
from .._types import Bytes

ThresholdMethod = Literal["otsu", "triangle", "minimum", "intermodes", "huang", "iterative", "max-entropy", "isodata",
                          "moments", "min-error", "shanbhag"]
_METHODS = {"otsu": 0, "triangle": 1, "minimum": 2, "intermodes": 3, "huang": 4, "iterative": 5, "max-entropy": 7,
            "isodata": 8, "moments": 9, "min-error": 10, "shanbhag": 11}
_OPERATIONS = {"erode": 0, "dilate": 1, "open": 2, "close": 3, "gradient": 4, "tophat": 5, "blackhat": 6}


class OtsuLevel(NamedTuple):
    """A level and how clearly it parts two classes."""

    level: int
    score: float
    """Variance between the classes, squared grey levels: the larger the clearer the split."""


def threshold_level(image: Bytes, *, method: ThresholdMethod = "otsu") -> Optional[int]:
    """A grey level that parts objects from the ground; pixels above it are one class.

    Parameters
    ----------
    image : uint8 array (rows, columns)
    method : str
        ``"otsu"``, the first choice for two classes of similar size; ``"triangle"`` for one dominant class with a small one
        in its tail; ``"minimum"`` and ``"intermodes"`` for two distinct classes of very different size; ``"huang"`` for
        classes that overlap; ``"iterative"`` and ``"isodata"`` for classes of similar spread; ``"max-entropy"`` and, more
        cautious, ``"shanbhag"`` for small or faint objects; ``"moments"`` for uneven light; ``"min-error"`` for classes of
        very different spread. The papers are named in the C++ header.

    Returns
    -------
    int or None
        0 to 255 (``"triangle"`` may give 256); None where the histogram leaves nothing to choose.

    Examples
    --------
    >>> import numpy as np
    >>> image = np.full((4, 4), 40, np.uint8)
    >>> image[1:3, 1:3] = 200
    >>> threshold_level(image)
    40

    C++: orx::getThresholdValue, orx::TThresholdMethod
    """
    return _core.threshold_level(image, choice("method", method, _METHODS))


def otsu_level(image: Bytes) -> Optional[OtsuLevel]:
    """The level by Otsu's method, with its score; None where none was scored.

    N. Otsu, "A threshold selection method from gray-level histograms", IEEE Trans. SMC 9 (1979). Pixels of level 255 do not
    count.

    C++: orx::getThresholdValOTSU
    """
    found = _core.otsu_level(image)
    return None if found is None else OtsuLevel(*found)


def level_for_count(image: Bytes, count: int) -> Optional[int]:
    """The highest level such that more than `count` pixels lie at or above it.

    For objects of known area that are brighter than everything else. Pixels of level 255 do not count. None when no level
    has so many.

    C++: orx::getThresholdValueByRequiredNumber
    """
    return _core.level_for_count(image, count)


def threshold_quadrants(image: Bytes, *,
                        operation: Literal["erode", "dilate", "open", "close", "gradient", "tophat", "blackhat"] = "open",
                        size: int = 3) -> Bytes:
    """Binarises each quadrant of a picture by its own Otsu level, for light that falls off to one side.

    The quadrants meet in the centre of the largest object of the picture binarised as a whole and cleaned by `operation`
    with a square of `size` pixels.

    Returns
    -------
    uint8 array (rows, columns)
        0 and 255.

    C++: orx::OTSUfourPartsThreshold
    """
    return _core.threshold_quadrants(image, choice("operation", operation, _OPERATIONS), size)
