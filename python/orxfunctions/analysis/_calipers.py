"""Calipers: contrast edges along a direction."""
from __future__ import annotations

from typing import Literal, NamedTuple, Tuple

from .. import _core
from .._choices import choice
from .._collection import Collection
from .._types import Doubles, Image, Ints, Place

Polarity = Literal["any", "dark-to-bright", "bright-to-dark"]
Selection = Literal["all", "first", "last", "strongest"]
ScanDirection = Literal["left-to-right", "right-to-left", "top-to-bottom", "bottom-to-top"]
POLARITIES = {"any": 0, "dark-to-bright": 1, "bright-to-dark": 2}
_SELECTIONS = {"all": 0, "first": 1, "last": 2, "strongest": 3}
_DIRECTIONS = {"left-to-right": 0, "right-to-left": 1, "top-to-bottom": 2, "bottom-to-top": 3}
_RADIAL = {"outward": 0, "inward": 1}


class ContrastEdge(NamedTuple):
    """One edge that a caliper found."""

    x: float
    y: float
    distance: float
    """Along the caliper from its start, pixels."""
    contrast: float
    """Grey step across the edge, levels: positive from dark to bright."""
    blur: float
    """Standard deviation of the edge's own transition, pixels."""
    caliper: int
    """Which caliper of a circle found it; 0 for a single one."""


class ContrastEdges(Collection[ContrastEdge]):
    """The edges that calipers found, as arrays; a sequence of `ContrastEdge`."""

    __slots__ = ("position", "distance", "contrast", "blur", "caliper")
    _name = "edges"

    position: Doubles
    """(n, 2), pixels."""
    distance: Doubles
    contrast: Doubles
    blur: Doubles
    caliper: Ints

    def __init__(self, position: Doubles, distance: Doubles, contrast: Doubles, blur: Doubles, caliper: Ints) -> None:
        self.position = position
        self.distance = distance
        self.contrast = contrast
        self.blur = blur
        self.caliper = caliper

    def __len__(self) -> int:
        return len(self.distance)

    def _at(self, i: int) -> ContrastEdge:
        x, y = self.position[i]
        return ContrastEdge(float(x), float(y), float(self.distance[i]), float(self.contrast[i]),
                            float(self.blur[i]), int(self.caliper[i]))

    def __repr__(self) -> str:
        places = ", ".join(f"{distance:.2f}" for distance in self.distance[:6])
        return f"ContrastEdges({len(self)} edges at {places}{', ...' if len(self) > 6 else ''})"

    def _repr_html_(self) -> str:
        rows = "".join(f"<tr><td>{edge.caliper}</td><td>{edge.x:.3f}</td><td>{edge.y:.3f}</td><td>{edge.distance:.3f}</td>"
                       f"<td>{edge.contrast:.1f}</td><td>{edge.blur:.2f}</td></tr>" for edge in self[:40])
        return ("<table><tr><th>caliper</th><th>x</th><th>y</th><th>distance</th><th>contrast</th><th>blur</th></tr>"
                f"{rows}</table>")


def _options(sigma: float, min_contrast: float, polarity: str, selection: str) -> Tuple[float, float, int, int]:
    return (sigma, min_contrast, choice("polarity", polarity, POLARITIES), choice("selection", selection, _SELECTIONS))


def caliper(image: Image, start: Place, end: Place, *, width: float = 1.0, sigma: float = 1.0, min_contrast: float = 10.0,
            polarity: Polarity = "any", selection: Selection = "all") -> ContrastEdges:
    """The edges along the segment from `start` to `end`, in their order.

    A caliper averages the grey levels across its width into a profile, smooths it, and gives every extremum of its slope. It
    takes microseconds: for widths, gaps and positions whose place is roughly known.

    Parameters
    ----------
    image : uint8 or uint16 array (rows, columns) or (rows, columns, 1 to 4)
        Colour is weighted to grey; 16-bit levels are divided by 257. Outside, border pixels are repeated.
    start, end : (x, y)
    width : float
        Pixels averaged across the segment, half to each side; rounded, below 1 counts as 1.
    sigma : float
        Smoothing along the profile, pixels, 0.5 to 50.
    min_contrast : float
        Least step of an edge, grey levels.
    polarity : {"any", "dark-to-bright", "bright-to-dark"}
        Which edges count, seen from `start`.
    selection : {"all", "first", "last", "strongest"}
        Which of those are given.

    Returns
    -------
    ContrastEdges
        Without any where no edge counts. On straight edges without noise right to 0.01 pixel.

    Notes
    -----
    J. Canny, "A computational approach to edge detection", IEEE Trans. PAMI 8 (1986).

    Examples
    --------
    >>> import numpy as np
    >>> image = np.full((20, 40), 40, np.uint8)
    >>> image[:, 10:30] = 200
    >>> gap = caliper(image, (2, 10), (37, 10), width=5)
    >>> float((gap.distance[-1] - gap.distance[0]).round(3))
    20.0

    C++: orx::getContrastEdges, orx::TCaliperOptions, orx::TContrastEdge, orx::TEdgePolarity, orx::TEdgeSelection
    """
    return ContrastEdges(*_core.caliper(image, start, end, width, _options(sigma, min_contrast, polarity, selection)))


def caliper_box(image: Image, box: Tuple[int, int, int, int], *, direction: ScanDirection = "left-to-right",
                sigma: float = 1.0, min_contrast: float = 10.0, polarity: Polarity = "any",
                selection: Selection = "all") -> ContrastEdges:
    """The edges in the pixels of an upright rectangle ``(x, y, width, height)``, searched in `direction`.

    `distance` counts from the centres of the first row or column. Options as for `caliper`.

    C++: orx::getContrastEdges, orx::TScanDirection
    """
    return ContrastEdges(*_core.caliper_box(image, box, choice("direction", direction, _DIRECTIONS),
                                            _options(sigma, min_contrast, polarity, selection)))


def caliper_rotated(image: Image, center: Place, size: Place, angle: float, *, sigma: float = 1.0,
                    min_contrast: float = 10.0, polarity: Polarity = "any",
                    selection: Selection = "all") -> ContrastEdges:
    """The edges in a turned rectangle of `size` ``(length, width)``, searched along its length.

    The length runs in the direction of `angle`, degrees from the x axis towards the y axis. Options as for `caliper`.

    C++: orx::getContrastEdges
    """
    return ContrastEdges(*_core.caliper_rotated(image, center, size, angle,
                                                _options(sigma, min_contrast, polarity, selection)))


def circle_caliper(image: Image, center: Place, radius: float, *, count: int = 36, search_length: float = 20.0,
                   width: float = 5.0, direction: Literal["outward", "inward"] = "outward", start_angle: float = 0.0,
                   sweep: float = 360.0, compensate_blur: bool = True, sigma: float = 1.0, min_contrast: float = 10.0,
                   polarity: Polarity = "any", selection: Selection = "strongest") -> ContrastEdges:
    """The edges along calipers that stand around a nominal circle or arc, in the order of the calipers.

    Parameters
    ----------
    image : uint8 or uint16 array
    center : (x, y)
    radius : float
        Of the nominal circle, pixels.
    count : int
        Calipers, 1 to 100,000, at equal steps; of an arc the first and the last stand at its ends.
    search_length, width : float
        Of each caliper, pixels, half to each side; it averages along the arc.
    direction : {"outward", "inward"}
    start_angle, sweep : float
        Degrees from the x axis towards the y axis; -360 to 360.
    compensate_blur : bool
        Takes back what the optics' blur does to a curved edge (it moves inwards by blur^2 / (2 R)).
    sigma, min_contrast, polarity, selection
        As for `caliper`; one edge from each is what a fit wants.

    Notes
    -----
    P. W. Verbeek and L. J. van Vliet, IEEE Trans. PAMI 16 (1994).

    C++: orx::getCircleEdges, orx::TCircleCaliperOptions, orx::TRadialDirection
    """
    fan = (count, search_length, width, choice("direction", direction, _RADIAL), start_angle, sweep, compensate_blur)
    return ContrastEdges(*_core.circle_caliper(image, center, radius, fan,
                                               _options(sigma, min_contrast, polarity, selection)))
