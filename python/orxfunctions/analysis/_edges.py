"""Edges between the pixels, as chains of points."""
from __future__ import annotations

from typing import Literal, NamedTuple, Optional, Tuple

import numpy as np
from numpy.typing import NDArray

from .. import _core
from .._choices import choice
from .._collection import Collection
from .._types import Bytes, Floats, Ints

Retrieval = Literal["external", "list", "ccomp", "tree"]
_MODES = {"external": 0, "list": 1, "ccomp": 2, "tree": 3}


class Edge(NamedTuple):
    """One edge; row i of each array is its point i. The arrays are views into those of `Edges`."""

    points: Floats
    """(n, 2), pixels, in order along the edge, about one a pixel."""
    direction: Floats
    """Radians in [0, 2 pi): the unit normal from dark to bright is (cos, sin)."""
    contrast: Floats
    """Grey levels between the two sides, for a blurred step."""
    deviation: Floats
    """Estimated standard deviation of the position along the normal, pixels."""
    closed: bool
    """The last point is followed by the first."""

    def __len__(self) -> int:
        return len(self.points)


class Edges(Collection[Edge]):
    """The edges of a picture, one behind the other in flat arrays; a sequence of `Edge`."""

    __slots__ = ("points", "direction", "contrast", "deviation", "offsets", "closed")
    _name = "edges"

    points: Floats
    """(n, 2): the points of all edges."""
    direction: Floats
    contrast: Floats
    deviation: Floats
    offsets: Ints
    """Edge i has the points from ``offsets[i]`` to ``offsets[i + 1]``."""
    closed: NDArray[np.bool_]

    def __init__(self, points: Floats, direction: Floats, contrast: Floats, deviation: Floats, offsets: Ints,
                 closed: NDArray[np.bool_]) -> None:
        self.points = points
        self.direction = direction
        self.contrast = contrast
        self.deviation = deviation
        self.offsets = offsets
        self.closed = closed

    def __len__(self) -> int:
        return len(self.offsets) - 1

    def _at(self, i: int) -> Edge:
        part = slice(int(self.offsets[i]), int(self.offsets[i + 1]))
        return Edge(self.points[part], self.direction[part], self.contrast[part], self.deviation[part], bool(self.closed[i]))

    def __repr__(self) -> str:
        return f"Edges({len(self)} edges, {len(self.points)} points)"

    def _repr_html_(self) -> str:
        rows = "".join(f"<tr><td>{i}</td><td>{len(edge)}</td><td>{edge.contrast.mean():.1f}</td>"
                       f"<td>{edge.deviation.mean():.4f}</td><td>{'yes' if edge.closed else 'no'}</td></tr>"
                       for i, edge in enumerate(self[:20]))
        more = f"<p>and {len(self) - 20} more</p>" if len(self) > 20 else ""
        return (f"<p>{len(self)} edges, {len(self.points)} points</p><table><tr><th>edge</th><th>points</th>"
                f"<th>mean contrast</th><th>mean deviation, px</th><th>closed</th></tr>{rows}</table>{more}")


class ClassicEdge(NamedTuple):
    """A chain of `edges_classic`."""

    points: Floats
    direction: Floats
    """Radians in [0, 2 pi): the angle of the normal from the y axis towards the x axis; its sign carries no meaning."""
    response: Floats
    """Gradient magnitude, in the units of the thresholds."""


def edges(image: Bytes, *, sigma: float = 1.0, thresholds: Optional[Tuple[float, float]] = (12.0, 36.0),
          mode: Retrieval = "list", noise: float = 0.0, min_points: int = 3) -> Edges:
    """The edges of a picture with sub-pixel positions, each point with its uncertainty.

    Parameters
    ----------
    image : uint8 array (rows, columns)
    sigma : float
        Smoothing in pixels, 0.5 to 20. Edges closer together than about 4 sigma disturb one another.
    thresholds : (low, high) or None
        An edge point must reach `low` and be connected to one that reaches `high`: grey levels of a sharp step. None takes
        both from the image.
    mode : {"list", "external", "ccomp", "tree"}
        ``"external"`` leaves out what lies inside closed edges; the others find the same edges.
    noise : float
        Standard deviation of the image noise in grey levels; 0 measures it in the image.
    min_points : int
        Edges of fewer points are left out.

    Returns
    -------
    Edges
        Without any edge where there is none.

    Notes
    -----
    Gaussian gradients, Canny's suppression, a quadratic through the logarithms of 3 x 3 magnitudes, and a compensation of
    what blur does to curved edges: P. W. Verbeek and L. J. van Vliet, IEEE Trans. PAMI 16 (1994). The bias is a few
    thousandths of a pixel on edges that the optics blurs by 0.5 pixel or more.

    Examples
    --------
    >>> import numpy as np
    >>> image = np.full((20, 20), 40, np.uint8)
    >>> image[:, 10:] = 200
    >>> found = edges(image)
    >>> found
    Edges(1 edges, 20 points)
    >>> float(found.points[:, 0].mean().round(2))
    9.5

    C++: ORXEdge::edgesSubPixMetric, ORXEdge::TMetricOptions, ORXEdge::TMetricContour
    """
    return Edges(*_core.edges(image, sigma, thresholds, choice("mode", mode, _MODES), noise, min_points))


def edges_classic(image: Bytes, *, low: int = 12, high: int = 36, alpha: float = 1.0,
                  mode: Retrieval = "list") -> list[ClassicEdge]:
    """Edge chains as existing programs know them; `edges` is several times as exact.

    A chain runs along both sides of a thin edge, so most points of open edges come twice. A negative `high` takes both
    thresholds from the image.

    C++: ORXEdge::EdgesSubPix, ORXEdge::TContour
    """
    points, direction, response, offsets = _core.edges_classic(image, choice("mode", mode, _MODES), low, high, alpha)
    parts = (slice(int(a), int(b)) for a, b in zip(offsets[:-1], offsets[1:]))
    return [ClassicEdge(points[part], direction[part], response[part]) for part in parts]
