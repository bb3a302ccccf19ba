"""Drawing on a picture, in place and to a sixteenth of a pixel."""
from __future__ import annotations

import math
from typing import Any, Literal, Tuple, Union

import numpy as np
from numpy.typing import NDArray

from .. import _core
from .._choices import choice
from .._types import Bytes, Place, Points
from ._chains import (Chains, Record, arc_of, arc_points, chains_of, circle_of, ellipse_of, finite, joined, line_of,
                      places_of, polar_of, rows_of, segment_of)

Color = Union[int, float, Tuple[float, float, float]]
"""Blue, green and red, 0 to 255, or a grey level."""
Places = Union[Place, Points]
"""One place or many."""

GREEN = (0.0, 255.0, 0.0)
RED = (0.0, 0.0, 255.0)
_CORNERS = {"top-right": 0, "bottom-right": 1, "top-left": 2, "bottom-left": 3}
_LARGEST = 1e6


def _channels(image: Any, color: Color) -> Tuple[float, float, float, float]:
    """The colour as the channels of the picture take it: on a grey picture its brightness."""
    try:
        blue, green, red = (color, color, color) if isinstance(color, (int, float)) else (float(part) for part in color)
    except (TypeError, ValueError):
        raise TypeError(f"color: expected a grey level or (blue, green, red), got {color!r}") from None
    if not 0.0 <= min(blue, green, red) <= max(blue, green, red) <= 255.0:
        raise ValueError(f"color: expected 0 to 255, got {color!r}")
    if getattr(image, "ndim", 0) == 2 or getattr(image, "shape", (0,))[-1] == 1:
        return 0.114 * blue + 0.587 * green + 0.299 * red, 0.0, 0.0, 0.0
    return blue, green, red, 255.0


def _draw(image: Bytes, chains: Chains, color: Color, thickness: int) -> None:
    _core.draw_chains(image, chains.points, chains.offsets, chains.closed, _channels(image, color), thickness)


def points(image: Bytes, places: Places, *, color: Color = RED, radius: float = 1.5) -> None:
    """Draws a dot of `radius` pixels, 0 to 1000, at each place.

    Examples
    --------
    >>> import numpy as np
    >>> image = np.zeros((9, 9), np.uint8)
    >>> points(image, (4, 3), color=255, radius=1)
    >>> int(image[3, 4]), int(image[7, 4])
    (255, 0)

    C++: orx::drawContours
    """
    _core.draw_dots(image, places_of(places, "places"), radius, _channels(image, color))


def crosses(image: Bytes, places: Places, *, color: Color = RED, length: float = 5.0, angle: float = 0.0,
            thickness: int = 1) -> None:
    """Draws a cross with arms of `length` pixels at each place, turned by `angle` degrees from the x axis to the y axis.

    C++: orx::drawCorss
    """
    if not 0.0 <= length <= _LARGEST or not math.isfinite(angle):
        raise ValueError(f"length is {length}, angle {angle}; 0 to {_LARGEST:.0f} and a finite angle are expected")
    arm = length * np.array([math.cos(math.radians(angle)), math.sin(math.radians(angle))])
    across = np.array([-arm[1], arm[0]])
    ends = (([place - way, place + way], False) for place in places_of(places, "places") for way in (arm, across))
    _draw(image, joined(ends, "places"), color, thickness)


def edges(image: Bytes, edges: Any, *, color: Color = (0.0, 255.0, 255.0), thickness: int = 1) -> None:
    """Draws edges: `analysis.Edges`, one edge of them, or a list of chains of points (n, 2).
    """
    _draw(image, chains_of(edges, "edges", False), color, thickness)


def contours(image: Bytes, contours: Any, *, color: Color = GREEN, thickness: int = 1) -> None:
    """Draws closed outlines: one (n, 2) array or many, cv2's (n, 1, 2) too.
    """
    _draw(image, chains_of(contours, "contours", True), color, thickness)


def segments(image: Bytes, segments: Any, *, color: Color = (255.0, 128.0, 0.0), thickness: int = 1) -> None:
    """Draws straight pieces between two places.

    Parameters
    ----------
    image : uint8 array, drawn on
    segments : one or many
        What has `start` and `end`, as the lines of a contour, rows (x0, y0, x1, y1), or measured lines, of which the
        stretch is drawn that their points cover.
    """
    rows = finite(rows_of(segments, "segments", segment_of, 4, "segments: (x0, y0, x1, y1) each"), "segments")
    _draw(image, joined(((row.reshape(2, 2), False) for row in rows), "segments"), color, thickness)


def lines(image: Bytes, lines: Any, *, color: Color = (255.0, 0.0, 255.0), thickness: int = 1) -> None:
    """Draws lines across the whole picture.

    Parameters
    ----------
    image : uint8 array, drawn on
    lines : one or many
        What has `slope` and `intercept` (y = slope * x + intercept), rows (slope, intercept), or measured lines. Draw
        vertical ones without a record with `lines_polar` or `segments`.

    C++: orx::drawLine
    """
    items = [lines] if hasattr(lines, "direction") else lines
    if isinstance(items, (list, tuple)) and items and all(hasattr(item, "direction") for item in items):
        return lines_polar(image, items, color=color, thickness=thickness)
    rows = finite(rows_of(lines, "lines", line_of, 2, "lines: (slope, intercept) each"), "lines")
    angles = np.arctan2(1.0, -rows[:, 0])
    _draw(image, _across(image, angles, rows[:, 1] * np.sin(angles)), color, thickness)


def lines_polar(image: Bytes, lines: Any, *, color: Color = (255.0, 0.0, 255.0), thickness: int = 1) -> None:
    """Draws lines x cos(theta) + y sin(theta) = rho (radians, pixels) across the whole picture.

    Parameters
    ----------
    image : uint8 array, drawn on
    lines : one or many
        What has `theta` and `rho`, or rows (theta, rho).

    C++: orx::drawLineHough
    """
    rows = finite(rows_of(lines, "lines", polar_of, 2, "lines: (theta, rho) each"), "lines")
    _draw(image, _across(image, rows[:, 0], rows[:, 1]), color, thickness)


def _across(image: Bytes, theta: NDArray[np.float64], rho: NDArray[np.float64]) -> Chains:
    """Pieces of lines that are longer than the picture, about the foot of the perpendicular from its centre."""
    height, width = getattr(image, "shape", (1, 1))[:2]
    reach = 2.0 * (height + width) + 10.0
    chains = []
    for angle, distance in zip(theta, rho):
        normal = np.array([math.cos(angle), math.sin(angle)])
        center = np.array([0.5 * width, 0.5 * height])
        foot = center + (distance - center @ normal) * normal
        along = reach * np.array([-normal[1], normal[0]])
        chains.append(([foot - along, foot + along], False))
    return joined(chains, "lines")


def circles(image: Bytes, circles: Any, *, color: Color = RED, thickness: int = 1) -> None:
    """Draws circles.

    Parameters
    ----------
    image : uint8 array, drawn on
    circles : one or many
        What has `radius` and `center`, or `x` and `y`, what has such a one as `circle`, or rows (x, y, radius); 0 to
        1,000,000 pixels.

    C++: orx::drawContours
    """
    rows = _round(circles, "circles", circle_of, 3, "circles: (x, y, radius) each", 2)
    _draw(image, joined(((arc_points(x, y, r, r, 0.0, 0.0, 2.0 * math.pi), True) for x, y, r in rows), "circles"), color,
          thickness)


def ellipses(image: Bytes, ellipses: Any, *, color: Color = (255.0, 255.0, 0.0), thickness: int = 1) -> None:
    """Draws ellipses.

    Parameters
    ----------
    image : uint8 array, drawn on
    ellipses : one or many
        What has `x`, `y`, `width`, `height` (full axes) and `angle` (degrees of the first, from the x axis towards the y
        axis), a measured ellipse, what has either as `ellipse`, or rows of these five.
    """
    rows = _round(ellipses, "ellipses", ellipse_of, 5, "ellipses: (x, y, width, height, angle) each", 2)
    _draw(image, joined(((arc_points(x, y, 0.5 * width, 0.5 * height, math.radians(angle), 0.0, 2.0 * math.pi), True)
                         for x, y, width, height, angle in rows), "ellipses"), color, thickness)


def arcs(image: Bytes, arcs: Any, *, color: Color = (0.0, 128.0, 255.0), thickness: int = 1) -> None:
    """Draws arcs of circles.

    Parameters
    ----------
    image : uint8 array, drawn on
    arcs : one or many
        Rows (x, y, radius, start, end): degrees from the x axis towards the y axis, the arc runs that way from start to
        end; a circle's record with `start_angle` and `end_angle` or `sweep`, as the arcs of a contour and measured arcs
        are. Of one that has `points` instead the arc is drawn that these lie on.
    """
    items = [arcs] if hasattr(arcs, "points") else arcs
    if isinstance(items, (list, tuple)) and items and all(
            hasattr(item, "points") and not hasattr(item, "start_angle") for item in items):
        rows = np.array([_arc_along(arc) for arc in items])
    else:
        rows = _round(arcs, "arcs", arc_of, 5, "arcs: (x, y, radius, start, end) each", 2)
        sweep = rows[:, 4] - rows[:, 3]
        rows[:, 4] = np.where(sweep == 360.0, 360.0, sweep % 360.0)
    chains = ((arc_points(x, y, radius, radius, 0.0, math.radians(start), math.radians(sweep)), False)
              for x, y, radius, start, sweep in rows)
    _draw(image, joined(chains, "arcs"), color, thickness)


def _round(what: Any, name: str, record: Record, width: int, expected: str, size: int) -> NDArray[np.float64]:
    """Rows whose number `size` is a radius or a diameter."""
    rows = finite(rows_of(what, name, record, width, expected), name)
    if rows.size and not 0.0 <= rows[:, size].min() <= rows[:, size].max() <= _LARGEST:
        raise ValueError(f"{name}: expected sizes of 0 to {_LARGEST:.0f} pixels")
    return rows


def _arc_along(arc: Any) -> NDArray[np.float64]:
    """(x, y, radius, start, sweep) of the arc that the points of an outline lie on."""
    x, y, radius = _round(arc, "arcs", circle_of, 3, "arcs: what has a circle and points", 2)[0]
    points = places_of(arc, "arcs")
    if len(points) == 0:
        return np.array([x, y, radius, 0.0, 0.0])
    angles = np.unwrap(np.arctan2(points[:, 1] - y, points[:, 0] - x))
    return np.array([x, y, radius, *np.degrees([angles[0], angles[-1] - angles[0]])])


def text(image: Bytes, text: str, *, corner: Literal["top-right", "bottom-right", "top-left", "bottom-left"] = "top-left",
         ratio: float = 1000.0) -> None:
    """Writes a red caption of ASCII letters into a corner of a BGR picture.

    `ratio` is the width of a picture, in pixels, at which the font has its own size: twice the ratio, half the size
    of the letters.

    C++: orx::drawText
    """
    _core.draw_caption(image, text, choice("corner", corner, _CORNERS), ratio)
