"""Flat calibration targets: found in pictures between the pixels, printed to scale, and drawn in pixels."""
from __future__ import annotations

from typing import Literal, NamedTuple, Optional, Tuple

from .. import _core
from .._choices import choice
from .._types import Bytes, Doubles, Image

TargetKind = Literal["chessboard", "dot-grid"]
_KINDS = {"chessboard": 0, "dot-grid": 1}


class Target(NamedTuple):
    """A chessboard or a grid of dots.

    C++: orx::TTarget, orx::TTargetKind
    """

    kind: TargetKind = "chessboard"
    """The points of a ``"chessboard"`` are the inner corners, where four squares meet; those of a ``"dot-grid"`` the centres
    of dots that are dark on a bright ground."""
    columns: int = 9
    """Points across, 3 to 200."""
    rows: int = 6
    """Points down, 3 to 200."""
    pitch: float = 10.0
    """Millimetres from one point to the next, 0.001 to 10,000."""
    diameter: float = 5.0
    """Of a dot, millimetres, 0.1 to 0.9 of the pitch."""


class TargetView(NamedTuple):
    """A target as a picture shows it; row i of each array is its point i.

    C++: orx::TTargetView
    """

    plane: Doubles
    """(n, 2), millimetres, row by row: (0, 0), (pitch, 0), ..."""
    pixels: Doubles
    """(n, 2): where they lie in the picture. For dots the centres of their outlines, which in perspective are not the
    pictures of the dots' centres; `calibrate_plane` takes that into account."""
    deviations: Doubles
    """The standard uncertainty of each in x and in y (the root of their mean square), pixels."""
    image_size: Tuple[int, int]
    """Width and height of the picture."""
    dot_diameter: float = 0.0
    """Millimetres; 0 for corners."""

    def __repr__(self) -> str:
        return f"TargetView({len(self.plane)} points in {self.image_size[0]} x {self.image_size[1]} pixels)"


def _numbers(target: Target) -> Tuple[int, int, int, float, float]:
    if not isinstance(target, Target):
        raise TypeError(f"target: expected a Target, got {type(target).__name__}")
    return choice("kind", target.kind, _KINDS), target.columns, target.rows, target.pitch, target.diameter


def find_target(image: Image, target: Target) -> Optional[TargetView]:
    """Looks for the whole of a target.

    Parameters
    ----------
    image : uint8 or uint16 array (rows, columns) or (rows, columns, 1 to 4)
        20 to 32,767 pixels a side.
    target : Target

    Returns
    -------
    TargetView or None
        None where the target is not seen. The millimetres' axes turn as the pixels' do, and rows lead to the right as far as
        the target allows: a board that looks the same half turned has no upper side of its own.

    Notes
    -----
    Corners by A. Duda and U. Frese, "Accurate detection and localization of checkerboard corners for calibration", BMVC
    2018, then where the grey levels are a saddle. Dots by an ellipse through the edges along calipers across each.

    Examples
    --------
    >>> board = chessboard(320, 240, 30, margin=20)
    >>> find_target(board, Target(columns=8, rows=5, pitch=3))
    TargetView(40 points in 320 x 240 pixels)

    C++: orx::findTarget
    """
    found = _core.find_target(image, *_numbers(target))
    return None if found is None else TargetView(*found)


def target_svg(target: Target, *, width: float = 297.0, height: float = 210.0, scale_bar: bool = True) -> str:
    """A page of SVG with a target in its middle, to print without scaling.

    Parameters
    ----------
    target : Target
    width, height : float
        Of the page, millimetres, 10 to 10,000 each.
    scale_bar : bool
        A line of 100 mm (10 mm on small pages) below the target, by which to check the print.

    Raises
    ------
    ValueError
        Where the target does not fit, with a white margin of a pitch around it (of a quarter for dots).

    C++: orx::targetToSvg, orx::TTargetPage
    """
    return _core.target_svg(*_numbers(target), width, height, scale_bar)


def target_pdf(target: Target, *, width: float = 297.0, height: float = 210.0, scale_bar: bool = True) -> bytes:
    """The page of `target_svg` as the bytes of a PDF.

    C++: orx::targetToPdf
    """
    return _core.target_pdf(*_numbers(target), width, height, scale_bar)


def checkerboard(width: int, height: int, cell_size: int, *, levels: Tuple[int, int] = (0, 255),
                 channels: Literal[1, 3, 4] = 1) -> Bytes:
    """A picture full of cells of `cell_size` x `cell_size` pixels.

    Parameters
    ----------
    width, height, cell_size : int
        Pixels.
    levels : (first, second)
        Of the top-left cell and of the one beside it, modulo 256.
    channels : {1, 3, 4}
        3 for BGR, 4 for BGRA (opaque).

    Returns
    -------
    uint8 array (height, width) or (height, width, channels)

    C++: orx::createBackgroundImg
    """
    if channels not in (1, 3, 4):
        raise ValueError(f"channels: expected 1, 3 or 4, got {channels!r}")
    return _core.checkerboard(width, height, channels, cell_size, levels[0], levels[1])


def chessboard(width: int, height: int, square_size: int, *, margin: int = 0) -> Bytes:
    """Black squares on white, to show on a display: as many as fit inside the picture less the margin on each side.

    Returns
    -------
    uint8 array (height, width)
        White where a square does not fit.

    C++: orx::createCalibrateImage
    """
    return _core.chessboard(width, height, square_size, margin)
