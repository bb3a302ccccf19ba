"""Relations of measured shapes: distances, angles, intersections and tolerances of place, with their uncertainty."""
from __future__ import annotations

import math
from typing import NamedTuple, Optional, Tuple, Union

import numpy as np

from .. import _core
from .._types import Doubles, Place
from ..fitting import MeasuredArc, MeasuredCircle, MeasuredEllipse, MeasuredLine

Circle = Union[MeasuredCircle, MeasuredArc]
_EXACT: Doubles = np.zeros((2, 2))
_EXACT.setflags(write=False)


class MeasuredValue(NamedTuple):
    """A length in pixels or an angle in degrees. The first three fields are what `judge` takes.

    C++: orx::TMeasuredValue
    """

    value: float
    deviation: float
    """Standard uncertainty."""
    degrees_of_freedom: float
    """Of the deviation; infinite where it is known."""
    folded: bool
    """The end of what there can be (0 for a length, 90 degrees for an angle) is less than three deviations away. What is
    measured near such an end is folded back from beyond it, and lies inwards of the truth on average; its interval reaches
    to the end."""


class MeasuredPoint(NamedTuple):
    """A place in pixels; ``MeasuredPoint((x, y))`` is known exactly.

    C++: orx::TMeasuredPoint
    """

    position: Tuple[float, float]
    covariance: Doubles = _EXACT
    """(2, 2), pixels squared."""
    degrees_of_freedom: float = math.inf
    """Of the covariance."""


class LineDistance(NamedTuple):
    """Of two nearly parallel edges, across the line midway between them, where their stretches lie side by side.

    C++: orx::TLineDistance
    """

    middle: MeasuredValue
    """In the middle of the common stretch."""
    least: MeasuredValue
    """At its ends; 0 where the lines cross there."""
    largest: MeasuredValue


Point = Union[MeasuredPoint, Place]


def _value(told: Optional[Tuple[float, float, float, bool]]) -> Optional[MeasuredValue]:
    return None if told is None else MeasuredValue(*told)


def center_of(shape: Union[MeasuredCircle, MeasuredArc, MeasuredEllipse]) -> MeasuredPoint:
    """The centre of a measured circle, arc or ellipse.

    C++: orx::centerOf
    """
    return MeasuredPoint(*_core.center_of(shape))


def point_on(line: MeasuredLine, along: float) -> MeasuredPoint:
    """``line.point + along * line.direction``; uncertain across the line alone.

    C++: orx::pointOn
    """
    return MeasuredPoint(*_core.point_on(line, along))


def distance(a: Union[Point, MeasuredLine, Circle], b: Union[Point, MeasuredLine, Circle]) -> Optional[MeasuredValue]:
    """Between two points, a point and a line (which has no ends here), or the centres of two circles; without sign.

    Uncertainties are propagated to first order from the covariances of the shapes (JCGM 100:2008, chapter 5), which are
    taken for independent of one another; degrees of freedom after Welch and Satterthwaite (ibid. G.4).

    Parameters
    ----------
    a, b : MeasuredPoint, (x, y), MeasuredLine, MeasuredCircle or MeasuredArc
        Results of `orxfunctions.fitting`. A place as a pair of numbers counts as exact. `line_distance` is for two lines,
        `gap` for outlines of circles.

    Examples
    --------
    >>> distance((0, 0), (3, 4))
    MeasuredValue(value=5.0, deviation=0.0, degrees_of_freedom=inf, folded=False)
    >>> distance(MeasuredPoint((0, 0), np.diag([0.09, 0.01]), 20), (8, 0))
    MeasuredValue(value=8.0, deviation=0.3, degrees_of_freedom=20.0, folded=False)

    C++: orx::distance, orx::TRelationStatus, orx::relationStatusText
    """
    return _value(_core.distance(a, b))


def signed_distance(point: Point, line: MeasuredLine) -> Optional[MeasuredValue]:
    """Across a line; above 0 on the side to which its normal (-direction y, direction x) leads. Never folded.

    C++: orx::signedDistance
    """
    return _value(_core.signed_distance(point, line))


def line_distance(a: MeasuredLine, b: MeasuredLine) -> Optional[LineDistance]:
    """Of two nearly parallel edges, where their measured stretches lie side by side; None where no part of them does.

    ValueError for lines more than 45 degrees apart.

    C++: orx::distance
    """
    told = _core.line_distance(a, b)
    return None if told is None else LineDistance(*(MeasuredValue(*value) for value in told))


def gap(a: Circle, b: Circle) -> Optional[MeasuredValue]:
    """Between the outlines of two circles where they are nearest, also of a circle within the other.

    Below 0 where they cross: by how much one must be moved (along the line of the centres) until they touch.

    C++: orx::gap
    """
    return _value(_core.gap(a, b))


def angle(a: MeasuredLine, b: MeasuredLine) -> Optional[MeasuredValue]:
    """Between two lines, 0 to 90 degrees.

    C++: orx::angle
    """
    return _value(_core.angle(a, b))


def signed_angle(a: MeasuredLine, b: MeasuredLine) -> Optional[MeasuredValue]:
    """From line `a` to line `b`, -90 to 90 degrees: as lines, whatever way their directions point. Never folded.

    C++: orx::signedAngle
    """
    return _value(_core.signed_angle(a, b))


def parallelism(line: MeasuredLine, datum: MeasuredLine) -> Optional[MeasuredValue]:
    """The width of the strip parallel to the datum that holds the line's measured stretch, as a straight one (ISO 1101).

    Add the line's straightness (`minimum_zone_line`) where it matters.

    C++: orx::parallelism
    """
    return _value(_core.parallelism(line, datum))


def perpendicularity(line: MeasuredLine, datum: MeasuredLine) -> Optional[MeasuredValue]:
    """The width of the strip perpendicular to the datum that holds the line's measured stretch (ISO 1101).

    As a straight one, as for `parallelism`.

    C++: orx::perpendicularity
    """
    return _value(_core.perpendicularity(line, datum))


def concentricity(circle: Circle, datum: Circle) -> Optional[MeasuredValue]:
    """The diameter of the circle about the datum's centre that holds the other's centre: twice their distance (ISO 1101).

    C++: orx::concentricity
    """
    return _value(_core.concentricity(circle, datum))


def intersection(a: MeasuredLine, b: MeasuredLine) -> Optional[MeasuredPoint]:
    """Where two lines cross, which go on beyond what was measured of them.

    ValueError for lines that are parallel within three deviations of their angle.

    C++: orx::intersection
    """
    told = _core.intersection(a, b)
    return None if told is None else MeasuredPoint(*told)


def intersections(a: Union[MeasuredLine, Circle], b: Union[MeasuredLine, Circle]) -> list[MeasuredPoint]:
    """The two points where a line and a circle, or two circles, meet.

    Returns
    -------
    list of MeasuredPoint
        In order along the line; those of circles with the one first that is on the right of the way from `a` to `b` on the
        screen (y down). Empty where they do not meet, or are within three deviations of touching.

    C++: orx::intersections, orx::TIntersections
    """
    return [MeasuredPoint(*told) for told in _core.intersections(a, b)]


def chain_smoothing(sigma: float) -> float:
    """The smoothing that fits and forms want for points which `analysis.edges` found with `sigma` (0.5 to 20 pixels).

    A little more than sigma, since the finder's facet smooths too. Fits of a whole `Edge` know it themselves.

    C++: orx::chainSmoothing
    """
    return _core.chain_smoothing(sigma)
