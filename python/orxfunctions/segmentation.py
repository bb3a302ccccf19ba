"""Contours as straight pieces and circular arcs."""
from __future__ import annotations

from typing import NamedTuple, Tuple

from . import _core
from ._types import Ints, Points

__all__ = ["ArcSegment", "LineSegment", "Segments", "segment_contour"]


class LineSegment(NamedTuple):
    """A straight piece: the chord between two key points, the contour points along it, and a robust line.

    C++: orx::TSegemetLine
    """

    start: Tuple[int, int]
    """A key point of the contour, x and y."""
    end: Tuple[int, int]
    """The next one."""
    fit_start: Tuple[int, int]
    """The first and the last point near the fitted line."""
    fit_end: Tuple[int, int]
    chord: Tuple[float, float, float]
    """a, b, c of the chord a x + b y + c = 0, (a, b) of length 1."""
    line: Tuple[float, float, float]
    """a, b, c of the fitted line (Huber's weights)."""
    points: Ints
    """(n, 2): the contour points of this piece."""
    fit_points: Ints
    """(m, 2): those of them less than 3 pixels from the fitted line."""
    max_dist: float
    """The largest distance of a point from the chord, pixels."""

    def __repr__(self) -> str:
        return f"LineSegment({self.start} to {self.end}, {len(self.points)} points, max_dist={self.max_dist:.3g})"


class ArcSegment(NamedTuple):
    """A circular piece.

    C++: orx::TSegemetCircle
    """

    center: Tuple[float, float]
    radius: float
    start_angle: float
    """Degrees, ``start_angle <= end_angle``, from the x axis towards the y axis (clockwise on the screen)."""
    end_angle: float
    fit_error: float
    """The largest distance of a point from the outline, pixels."""
    points: Ints
    """(n, 2)"""

    def __repr__(self) -> str:
        return (f"ArcSegment(center=({self.center[0]:.2f}, {self.center[1]:.2f}), radius={self.radius:.2f}, "
                f"{self.start_angle:.1f} to {self.end_angle:.1f} degrees, {len(self.points)} points)")


class Segments(NamedTuple):
    """The pieces of one contour."""

    lines: list[LineSegment]
    """Those that no arc stands for."""
    arcs: list[ArcSegment]


def segment_contour(contour: Points, *, first_epsilon: float = 8.0, second_epsilon: float = 2.0, max_radius: float = 300.0,
                    min_radius: float = 60.0, merge_center_dist: float = 50.0, err_threshold: float = 3.5,
                    use_second_pass: bool = True, use_circles: bool = True) -> Segments:
    """Describes a contour (an ordered list of pixels) as straight pieces and arcs.

    Parameters
    ----------
    contour : integer array (n, 2)
        As `analysis.contours` gives them. Closed where the ends touch.
    first_epsilon, second_epsilon : float
        Accuracy of the first polygon, and how near its chords collect points; the same for the second pass, pixels.
    max_radius, min_radius : float
        Of arcs, both excluded, pixels.
    merge_center_dist : float
        Arcs whose centres lie farther apart are not merged, pixels.
    err_threshold : float
        The largest distance of a point from its arc, pixels.
    use_second_pass : bool
        Split again, more finely, what no arc covers.
    use_circles : bool
        Build arcs at all.

    Returns
    -------
    Segments
        Without any where the contour has no two key points, or an accuracy is negative, not a number or 1e30 and more.
        ValueError for an empty contour, and for one that takes more than ten seconds.

    Notes
    -----
    A polygon (D. H. Douglas and T. K. Peucker, 1973) gives chords; those that bend consistently grow into arcs, which are
    merged; what remains is split again. `fitting.fit_line` and `fit_arc` of a piece's points measure it.

    Examples
    --------
    >>> import numpy as np
    >>> side = np.arange(100)
    >>> square = np.concatenate([np.stack([side, 0 * side], 1), np.stack([0 * side + 100, side], 1),
    ...                          np.stack([100 - side, 0 * side + 100], 1), np.stack([0 * side, 100 - side], 1)])
    >>> lines, arcs = segment_contour(square)
    >>> len(lines), len(arcs)
    (4, 0)

    C++: orx::TSegmentContour, orx::TSegemetParams
    """
    lines, arcs = _core.segment_contour(
        contour, (first_epsilon, second_epsilon, max_radius, min_radius, merge_center_dist, err_threshold), use_second_pass,
        use_circles)
    return Segments([LineSegment(*line) for line in lines], [ArcSegment(*arc) for arc in arcs])
