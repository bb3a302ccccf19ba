"""One number for a picture: how sharp it is, how much it flickers."""
from __future__ import annotations

from typing import Literal, Optional

import numpy as np
from numpy.typing import NDArray

from .. import _core
from .._choices import choice
from .._types import Image

_MEASURES = {"gray-difference": 0, "brenner": 1, "tenengrad": 2, "laplacian": 3}


def focus(image: Image, *, measure: Literal["gray-difference", "brenner", "tenengrad", "laplacian"] = "brenner") -> float:
    """How sharp a picture is: largest at best focus. Only pictures of one scene under one light compare.

    Parameters
    ----------
    image : uint8 or uint16 array
        Pass the part that matters: ``image[y0:y1, x0:x1]``.
    measure : str
        ``"gray-difference"``, cheap, with a wide slope, for a coarse search (R. Jarvis, 1976); ``"brenner"`` (J. Brenner et
        al., 1976); ``"tenengrad"``, the most reliable for scenes with edges (E. Krotkov, 1988); ``"laplacian"``, the
        variance of the Laplacian, the sharpest maximum (J. Pech-Pacheco et al., 2000).

    C++: AutoFocus::calcGrayDifference, AutoFocus::calcBrenner, AutoFocus::calcTenengrad, AutoFocus::calcLaplacianVariance
    """
    return _core.focus(image, choice("measure", measure, _MEASURES))


def image_noise(image: Image) -> float:
    """The standard deviation of the noise of one pixel, grey levels of 8 bits; 0.29 at the least.

    J. Immerkaer, "Fast noise variance estimation", Computer Vision and Image Understanding 64 (1996), with the median.

    C++: orx::getImageNoise
    """
    return _core.image_noise(image)


def edge_threshold(gx: NDArray[np.int16], gy: NDArray[np.int16]) -> Optional[float]:
    """The high threshold that `edges_classic` takes from a picture, out of gradients along x and y.

    C++: ORXEdge::calcEdgeThresVal
    """
    return _core.edge_threshold(gx, gy)
