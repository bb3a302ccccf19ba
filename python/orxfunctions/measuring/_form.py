"""How far an outline departs from a perfect circle or a perfect straight line."""
from __future__ import annotations

from typing import NamedTuple, Optional, Tuple

from .. import _core
from .._choices import choice
from .._types import Ints, Points
from ..fitting._fits import NOISES, Noise

PointNoise = Noise
_MINIMUM, _CIRCUMSCRIBED, _INSCRIBED = 0, 1, 2


class Roundness(NamedTuple):
    """A ring that holds all points, in their unit.

    C++: orx::TRoundness, orx::TFormError
    """

    value: float
    """Width of the ring: `outer_radius` less `inner_radius`. For pictures; verdicts are for `freed`."""
    freed: float
    """The same without the share of the noise, 0 or more."""
    deviation: float
    """Standard uncertainty of `freed`; 0 where no noise is told."""
    contacts: Ints
    """Indices of the points that the ring touches, of duplicates one."""
    center: Tuple[float, float]
    inner_radius: float
    outer_radius: float
    freed_inner: float
    """Both radii without the share of the noise, and their standard uncertainties."""
    freed_outer: float
    inner_deviation: float
    outer_deviation: float


class Straightness(NamedTuple):
    """A strip between two parallel lines that holds all points, in their unit.

    C++: orx::TStraightness
    """

    value: float
    """Width of the strip. For pictures; verdicts are for `freed`."""
    freed: float
    """The same without the share of the noise, 0 or more."""
    deviation: float
    """Standard uncertainty of `freed`; 0 where no noise is told."""
    contacts: Ints
    """Indices of the points that the strip touches, of duplicates one."""
    point: Tuple[float, float]
    """On the middle line, amid the points."""
    direction: Tuple[float, float]
    """Of length 1; leads from the first point to the last."""
    angle: float
    """Of the direction, degrees in (-180, 180]."""
    from_: float
    """The points reach from ``point + from_ * direction`` to ``point + to * direction``."""
    to: float


def _roundness(zone: int, points: Points, noise: float, point_noise: PointNoise, smoothing: float,
               seed: int) -> Optional[Roundness]:
    found = _core.roundness(points, zone, noise, choice("point_noise", point_noise, NOISES), smoothing, seed)
    return None if found is None else Roundness(*found)


def minimum_zone_circle(points: Points, *, noise: float = 0.0, point_noise: PointNoise = "normal", smoothing: float = 1.0,
                        seed: int = 1) -> Optional[Roundness]:
    """Roundness (ISO 12181-1, MZCI): the ring of least width that holds all points.

    No other ring is narrower, wherever its centre lies; the least-squares circle does not promise that.

    Parameters
    ----------
    points : array (n, 2)
        4 to 20 million, within 1e9 of the origin, in any order; for ``"edge-chain"`` in that of the outline.
    noise : float
        Standard deviation of a point across the outline, in the unit of the points; 0 takes nothing off. It must be known
        apart from the form: from the deviations of edges, from repeated pictures, or from the fit of a part whose form is
        much better.
    point_noise : {"normal", "edge-chain", "independent"}
        How the points err: ``"edge-chain"`` for points of an edge finder in order along the edge, whose neighbours share
        pixels.
    smoothing : float
        For ``"edge-chain"``: that of the edge finder, pixels, 0.3 to 50 (`chain_smoothing`).
    seed : int
        Of the simulated outlines from which the share of the noise is found.

    Returns
    -------
    Roundness or None
        Contacts are two points outside and two inside, in turn round the ring; the outer ones come first. None where a strip
        is narrower than every ring.

    Raises
    ------
    ValueError
        For too few points, points on a line, coordinates that are not finite, options out of range.

    Notes
    -----
    P. K. Agarwal and M. Sharir, "Efficient randomized algorithms for some geometric optimization problems", Discrete Comput.
    Geom. 16 (1996). The share of the noise is the mean over simulated outlines of that form: B. Efron and R. J. Tibshirani,
    "An Introduction to the Bootstrap" (1993), chapter 10. Equal input gives equal results.

    Examples
    --------
    >>> found = minimum_zone_circle([(5, 0), (0, 6), (-5, 0), (0, -6)])
    >>> found.center, found.inner_radius, found.outer_radius, found.value
    ((0.0, 0.0), 5.0, 6.0, 1.0)

    C++: orx::minimumZoneCircle, orx::TFormOptions
    """
    return _roundness(_MINIMUM, points, noise, point_noise, smoothing, seed)


def minimum_circumscribed_circle(points: Points, *, noise: float = 0.0, point_noise: PointNoise = "normal",
                                 smoothing: float = 1.0, seed: int = 1) -> Optional[Roundness]:
    """The smallest circle around all points (MCCI): its `outer_radius` is what a mating hole must have.

    At least 2 points; options as for `minimum_zone_circle`. Contacts are the two or three points on the circle;
    `inner_radius` is that of the nearest point to its centre. E. Welzl, "Smallest enclosing disks" (1991).

    Examples
    --------
    >>> minimum_circumscribed_circle([(0, 0), (6, 8), (3, 3)]).outer_radius
    5.0

    C++: orx::minimumCircumscribedCircle
    """
    return _roundness(_CIRCUMSCRIBED, points, noise, point_noise, smoothing, seed)


def maximum_inscribed_circle(points: Points, *, noise: float = 0.0, point_noise: PointNoise = "normal",
                             smoothing: float = 1.0, seed: int = 1) -> Optional[Roundness]:
    """The largest circle that holds no point, with its centre within their convex hull (MICI).

    Its `inner_radius` is what a mating shaft must have. At least 3 points; options as for `minimum_zone_circle`. Contacts
    are the three points on the circle; `outer_radius` is that of the farthest point from its centre. None where the outline
    has a gap so wide (half a turn or more) that no three points hold the circle.

    C++: orx::maximumInscribedCircle
    """
    return _roundness(_INSCRIBED, points, noise, point_noise, smoothing, seed)


def minimum_zone_line(points: Points, *, noise: float = 0.0, point_noise: PointNoise = "normal", smoothing: float = 1.0,
                      seed: int = 1) -> Optional[Straightness]:
    """Straightness (ISO 12780-1): the strip of least width that holds all points.

    At least 3 points; options as for `minimum_zone_circle`. Contacts are two points on one side and one between them on the
    other, or two points where all lie on a line. M. E. Houle and G. T. Toussaint, "Computing the width of a set", IEEE
    Trans. PAMI 10 (1988).

    Examples
    --------
    >>> found = minimum_zone_line([(0, 0), (5, 0.5), (10, 0)])
    >>> found.value, found.direction
    (0.5, (1.0, 0.0))

    C++: orx::minimumZoneLine
    """
    found = _core.straightness(points, noise, choice("point_noise", point_noise, NOISES), smoothing, seed)
    return None if found is None else Straightness(*found)
