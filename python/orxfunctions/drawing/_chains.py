"""What is to be drawn, as chains of points or rows of numbers."""
from __future__ import annotations

import math
from collections.abc import Callable, Iterable, Sequence
from typing import Any, NamedTuple, Optional, Tuple

import numpy as np
from numpy.typing import NDArray

from .._types import Doubles

Numbers = NDArray[np.float64]
Record = Callable[[Any], Optional[Sequence[Any]]]
"""The numbers of a record, single or in sequences; None for what is no such record."""


class Chains(NamedTuple):
    """Chain i has the points from ``offsets[i]`` to ``offsets[i + 1]``."""

    points: Doubles
    offsets: list[int]
    closed: list[bool]


def _pairs(points: Any, name: str) -> Doubles:
    try:
        pairs = np.asarray(points, np.float64)
        if pairs.size == 0:
            return np.empty((0, 2))
        if pairs.ndim == 1 or (pairs.ndim == 3 and pairs.shape[1] == 1):  # one place, or contours of cv2
            pairs = pairs.reshape(-1, pairs.shape[-1])
        if pairs.ndim == 2 and pairs.shape[1] == 2:
            return pairs
    except (TypeError, ValueError):
        pass
    raise TypeError(f"{name}: expected places: numbers of shape (n, 2), got {_told(points)}")


def _told(what: Any) -> str:
    return f"array of {what.dtype} of shape {what.shape}" if isinstance(what, np.ndarray) else type(what).__name__


def joined(chains: Iterable[Tuple[Any, bool]], name: str) -> Chains:
    """Chains out of points, each with whether its last is followed by its first."""
    parts, offsets, closed = [np.empty((0, 2))], [0], []
    for points, is_closed in chains:
        parts.append(_pairs(points, name))
        offsets.append(offsets[-1] + len(parts[-1]))
        closed.append(is_closed)
    return Chains(np.concatenate(parts), offsets, closed)


def chains_of(what: Any, name: str, closed: bool) -> Chains:
    """The chains of edges, of contours, or of one of these."""
    if hasattr(what, "offsets") and hasattr(what, "points"):
        flags = getattr(what, "closed", None)
        count = len(what.offsets) - 1
        return Chains(_pairs(what.points, name), [int(i) for i in what.offsets],
                      [closed] * count if flags is None else [bool(flag) for flag in flags])
    if hasattr(what, "points") or isinstance(what, np.ndarray):
        what = [what]
    elif isinstance(what, (str, bytes)) or not isinstance(what, Iterable):
        raise TypeError(f"{name}: expected edges, contours or one of them, got {_told(what)}")
    return joined(((getattr(item, "points", item), bool(getattr(item, "closed", closed))) for item in what), name)


def places_of(what: Any, name: str) -> Doubles:
    """(n, 2): one place, places, or the points of what has some."""
    return _pairs(getattr(what, "points", what), name)


def _row(item: Any, record: Record, fail: TypeError) -> list[float]:
    known = record(item)
    fields = item if known is None else known
    try:
        row = np.concatenate([np.atleast_1d(np.asarray(value, np.float64)) for value in fields])
    except (TypeError, ValueError):
        raise fail from None
    if row.ndim != 1:
        raise fail
    return [float(value) for value in row]


def rows_of(what: Any, name: str, record: Record, width: int, expected: str) -> Numbers:
    """(n, width): numbers of one thing or of many, each a record or a sequence of the numbers themselves."""
    fail = TypeError(f"{name}: expected {expected}, got {_told(what)}")
    if isinstance(what, (str, bytes)) or what is None:
        raise fail
    if isinstance(what, np.ndarray):
        if what.dtype.kind not in "iuf" or what.ndim not in (1, 2) or what.shape[-1] != width:
            raise fail
        return np.asarray(what, np.float64).reshape(-1, width)
    if record(what) is not None:
        what = [what]
    elif isinstance(what, Iterable):
        what = list(what)
        if what and isinstance(what[0], (int, float, np.number)):
            what = [what]
    else:
        raise fail
    rows = [_row(item, record, fail) for item in what]
    if any(len(row) != width for row in rows):
        raise fail
    return np.array(rows, np.float64).reshape(-1, width)


def circle_of(item: Any) -> Optional[Sequence[Any]]:
    """Center and radius of a record; None for what is none."""
    item = getattr(item, "circle", item)
    if hasattr(item, "center") and hasattr(item, "radius"):
        return [item.center, item.radius]
    if hasattr(item, "x") and hasattr(item, "y"):
        return [item.x, item.y, getattr(item, "radius", getattr(item, "r", None))]
    return None


def ellipse_of(item: Any) -> Optional[Sequence[Any]]:
    """Center, full axes and angle."""
    item = getattr(item, "ellipse", item)
    if hasattr(item, "semi_major"):
        return [item.center, 2.0 * item.semi_major, 2.0 * item.semi_minor, item.angle]
    return [item.x, item.y, item.width, item.height, item.angle] if hasattr(item, "width") and hasattr(item, "x") else None


def segment_of(item: Any) -> Optional[Sequence[Any]]:
    """Both ends; of a measured line those of the stretch that its points cover."""
    if hasattr(item, "direction") and hasattr(item, "from_"):
        point, direction = np.asarray(item.point, np.float64), np.asarray(item.direction, np.float64)
        return [point + item.from_ * direction, point + item.to * direction]
    return [item.start, item.end] if hasattr(item, "start") and hasattr(item, "end") else None


def line_of(item: Any) -> Optional[Sequence[Any]]:
    """Slope and intercept."""
    item = getattr(item, "line", item)
    if hasattr(item, "slope") and hasattr(item, "intercept"):
        return [item.slope, item.intercept]
    return [item.k, item.b] if hasattr(item, "k") and hasattr(item, "b") else None


def polar_of(item: Any) -> Optional[Sequence[Any]]:
    """Angle of the normal, radians, and distance from the origin."""
    if hasattr(item, "direction") and hasattr(item, "point"):
        normal = -float(item.direction[1]), float(item.direction[0])
        return [math.atan2(normal[1], normal[0]), normal[0] * item.point[0] + normal[1] * item.point[1]]
    return [item.theta, item.rho] if hasattr(item, "theta") and hasattr(item, "rho") else None


def arc_of(item: Any) -> Optional[Sequence[Any]]:
    """Center, radius, and the angles of begin and end, degrees from the x axis towards the y axis."""
    circle = circle_of(item)
    if circle is None or not hasattr(item, "start_angle"):
        return None
    return [*circle, item.start_angle, item.start_angle + item.sweep if hasattr(item, "sweep") else item.end_angle]


def finite(numbers: Numbers, name: str) -> Numbers:
    if not np.isfinite(numbers).all():
        raise ValueError(f"{name}: expected finite numbers")
    return numbers


def arc_points(x: float, y: float, half_width: float, half_height: float, turn: float, start: float,
               sweep: float) -> Doubles:
    """Points along an ellipse's arc; angles in radians from the x axis towards the y axis, the arc's within the ellipse.
    They deviate from it by less than a twentieth of a pixel."""
    size = max(abs(half_width), abs(half_height), 1e-3)
    count = int(min(max(math.ceil(abs(sweep) / (2.0 * math.acos(max(1.0 - 0.05 / size, 0.0)) + 1e-9)), 8), 20_000))
    angles = start + sweep * np.linspace(0.0, 1.0, count + 1)
    along, across = half_width * np.cos(angles), half_height * np.sin(angles)
    cosine, sine = math.cos(turn), math.sin(turn)
    return np.stack([x + along * cosine - across * sine, y + along * sine + across * cosine], axis=1)
