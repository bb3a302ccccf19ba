"""Primitives on whole pixels."""
from __future__ import annotations

from typing import NamedTuple

from .. import _core
from .._choices import choice
from .._types import Doubles, Points
from ._classic import _RANGES, AngleRange


class ThreePointCircle(NamedTuple):
    """The circle of `circle_through`."""

    x: float
    y: float
    radius: float


def circle_through(points: Points) -> ThreePointCircle:
    """The circle through three whole pixels; ValueError where they lie on a line.

    Examples
    --------
    >>> circle_through([(10, 0), (0, 10), (-10, 0)])
    ThreePointCircle(x=0.0, y=0.0, radius=10.0)

    C++: orx::threePoints2circle2
    """
    return ThreePointCircle(*_core.circle_through(points))


def angle_of(points: Points, *, angle_range: AngleRange = "signed") -> float:
    """The angle in degrees of the line through two whole pixels, y running down.

    `angle_range` is as for `find_line_classic`. Points in one column give 90 whatever the range, equal ones too.

    C++: orx::angleFrom2Points
    """
    return _core.angle_of(points, choice("angle_range", angle_range, _RANGES))


def distance_to_line(points: Points, line: Points) -> Doubles:
    """(n,): the distances of whole pixels from the endless line through the two of `line`.

    C++: orx::pointDistance2Line
    """
    return _core.distance_to_line(points, line)
