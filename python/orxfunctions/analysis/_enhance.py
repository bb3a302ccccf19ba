"""Enhancement, conversion and white balance: pictures made of pictures. Each gives a new array of the same kind."""
from __future__ import annotations

from typing import Literal, NamedTuple, Tuple, TypeVar, cast

import numpy as np
from numpy.typing import NDArray

from .. import _core
from .._choices import choice
from .._types import Bytes, Image

ImageT = TypeVar("ImageT", NDArray[np.uint8], NDArray[np.uint16])
_METHODS = {"equalize": 1, "detail": 0}
_BALANCES = {"grey-world": 0, "white-patch": 1}
_CANNY = {"median": 0, "otsu": 1}
BalanceMethod = Literal["grey-world", "white-patch"]
CannyMethod = Literal["median", "otsu"]


def enhance(image: ImageT, *, method: Literal["equalize", "detail"] = "equalize", clip_limit: float = 2.0, tiles: int = 8,
            gain: float = 1.0, sigma: float = 2.0) -> ImageT:
    """Raises local contrast, for the eye or for an operator that follows. Measure in the original.

    Parameters
    ----------
    image : uint8 or uint16 array (rows, columns) or (rows, columns, 1 to 4)
        Of colour the luma is changed; alpha is kept.
    method : {"equalize", "detail"}
        Contrast-limited adaptive histogram equalisation (K. Zuiderveld, Graphics Gems IV, 1994), or unsharp detail gain
        (W. Schreiber, Pattern Recognition 2, 1970).
    clip_limit, tiles
        For ``"equalize"``: largest slope of a tile's curve, above 0 to 100; tiles along each side, 1 to 64.
    gain, sigma
        For ``"detail"``: how much detail is added, 0 to 20; what counts as detail, pixels, 0.3 to 50.

    C++: orx::enhanceImage, orx::TEnhanceOptions, orx::TEnchanceMethod
    """
    return cast(ImageT, _core.enhance(image, choice("method", method, _METHODS), clip_limit, tiles, gain, sigma))


def correct_gamma(image: ImageT, gamma: float) -> ImageT:
    """``top * (level / top) ** gamma``, 0.01 to 100: below 1 brightens dark regions.

    C++: orx::correctGamma
    """
    return cast(ImageT, _core.correct_gamma(image, gamma))


def stretch_log(image: ImageT, *, gain: float = 255.0) -> ImageT:
    """``top * ln(1 + gain * level / top) / ln(1 + gain)``, gain above 0 to 1e6.

    C++: orx::stretchLog
    """
    return cast(ImageT, _core.stretch_log(image, gain))


def suppress_highlights(image: ImageT, *, knee: float = 0.7, ceiling: float = 0.85) -> ImageT:
    """Levels up to the knee (a share of full scale) stay, higher ones approach the ceiling in their order.

    C++: orx::suppressHighlights, orx::THighlightOptions
    """
    return cast(ImageT, _core.suppress_highlights(image, knee, ceiling))


def background(image: ImageT, *, window: int = 101, bright_objects: bool = True) -> ImageT:
    """What stays of a grey picture when objects narrower than `window` pixels are taken away, smoothed.

    P. Soille, "Morphological Image Analysis", 2nd edition (2003), section 4.3.

    C++: orx::getBackground, orx::TFlattenOptions
    """
    return cast(ImageT, _core.background(image, window, bright_objects))


def flatten_light(image: ImageT, *, window: int = 101, bright_objects: bool = True) -> ImageT:
    """A grey picture less its background, for light that falls off so far that no one threshold serves.

    The window must be wider than the widest object. For finding objects; measure edges in the original.

    C++: orx::flattenLight
    """
    return cast(ImageT, _core.flatten_light(image, window, bright_objects))


class WhiteBalance(NamedTuple):
    """A factor for each channel."""

    blue: float
    green: float
    red: float


def white_balance_gains(image: Image, *, method: BalanceMethod = "grey-world", white_share: float = 0.99) -> WhiteBalance:
    """The gains that remove the colour of the light; take them once from a grey card.

    ``"grey-world"``: the mean of a scene is grey (G. Buchsbaum, 1980). ``"white-patch"``: its brightest is white (E. Land,
    J. McCann, 1971): the lowest level that `white_share` of the pixels do not exceed.

    C++: orx::getWhiteBalance, orx::TWhiteBalance, orx::TWhiteBalanceOptions, orx::TWhiteBalanceMethod
    """
    return WhiteBalance(*_core.white_balance_gains(image, choice("method", method, _BALANCES), white_share))


def apply_white_balance(image: ImageT, gains: Tuple[float, float, float]) -> ImageT:
    """Multiplies blue, green and red by their gains, 0 to 1e6.

    C++: orx::applyWhiteBalance
    """
    return cast(ImageT, _core.apply_white_balance(image, gains))


def white_balance(image: ImageT, *, method: BalanceMethod = "grey-world", white_share: float = 0.99) -> ImageT:
    """Removes the colour of the light; see `white_balance_gains`.

    C++: orx::whiteBalance
    """
    return cast(ImageT, _core.white_balance(image, choice("method", method, _BALANCES), white_share))


def to_gray(image: Image, *, bits: int = 16) -> Bytes:
    """8-bit grey: 0.299 R + 0.587 G + 0.114 B. `bits` are in use of a 16-bit picture, 8 to 16.

    C++: orx::toGray
    """
    return _core.to_gray(image, bits)


def to_bgr(image: Image, *, bits: int = 16) -> Bytes:
    """8-bit BGR, (rows, columns, 3); grey goes into all three channels.

    C++: orx::toBGR
    """
    return _core.to_bgr(image, bits)


class CannyThresholds(NamedTuple):
    """For the magnitude of the 3 x 3 Sobel gradient, 0 to about 1,442."""

    low: float
    high: float


def auto_canny(image: Image, *, method: CannyMethod = "median", spread: float = 0.33, low_ratio: float = 0.5,
               blur: float = 0.0, bits: int = 16) -> Bytes:
    """Canny's edge picture (255 on edges one pixel wide), with thresholds out of the picture.

    Parameters
    ----------
    method : {"median", "otsu"}
        From the median level m, (1 - spread) m and (1 + spread) m: for scenes with much texture. From Otsu's level of the
        gradients and `low_ratio` of it: for few clear edges before a quiet ground.
    spread, low_ratio : float
        0 to 1.
    blur : float
        Standard deviation of a Gaussian before, pixels, 0 (none) to 50.
    bits : int
        In use of a 16-bit picture.

    C++: orx::autoCanny, orx::TAutoCannyOptions, orx::TCannyMethod
    """
    return _core.auto_canny(image, choice("method", method, _CANNY), spread, low_ratio, blur, bits)


def canny_thresholds(image: Image, *, method: CannyMethod = "median", spread: float = 0.33, low_ratio: float = 0.5,
                     blur: float = 0.0, bits: int = 16) -> CannyThresholds:
    """The thresholds of `auto_canny` alone.

    C++: orx::getCannyThresholds, orx::TCannyThresholds
    """
    return CannyThresholds(*_core.canny_thresholds(image, choice("method", method, _CANNY), spread, low_ratio, blur, bits))
