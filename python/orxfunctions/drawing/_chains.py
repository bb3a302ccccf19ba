"""What is to be drawn, as chains of points or rows of numbers."""
from __future__ import annotations

import math
from collections.abc import Iterable
from typing import Any, NamedTuple, Tuple

import numpy as np
from numpy.typing import NDArray

from .._types import Doubles

Numbers = NDArray[np.float64]


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


def _row(item: Any, inner: str, fields: Tuple[Tuple[str, ...], ...], fail: TypeError) -> list[float]:
    item = getattr(item, inner, item)
    found = [next((getattr(item, field) for field in names if hasattr(item, field)), None) for names in fields]
    if None in [None if value is None else 0 for value in found]:
        found = item
    try:
        row = np.concatenate([np.atleast_1d(np.asarray(value, np.float64)) for value in found])
    except (TypeError, ValueError):
        raise fail from None
    if row.ndim != 1:
        raise fail
    return [float(value) for value in row]


def rows_of(what: Any, name: str, inner: str, fields: Tuple[Tuple[str, ...], ...], width: int, expected: str) -> Numbers:
    """(n, width): numbers of one record or of many; a record has the fields (each under one of its names), is what has
    such a one as its attribute `inner`, or is a sequence of the numbers themselves."""
    fail = TypeError(f"{name}: expected {expected}, got {_told(what)}")
    if isinstance(what, (str, bytes)) or what is None:
        raise fail
    if isinstance(what, np.ndarray):
        if what.dtype.kind not in "iuf" or what.ndim not in (1, 2) or what.shape[-1] != width:
            raise fail
        return np.asarray(what, np.float64).reshape(-1, width)
    if hasattr(what, inner) or hasattr(what, fields[0][0]):
        what = [what]
    elif isinstance(what, Iterable):
        what = list(what)
        if what and isinstance(what[0], (int, float, np.number)):
            what = [what]
    else:
        raise fail
    rows = [_row(item, inner, fields, fail) for item in what]
    if any(len(row) != width for row in rows):
        raise fail
    return np.array(rows, np.float64).reshape(-1, width)


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
