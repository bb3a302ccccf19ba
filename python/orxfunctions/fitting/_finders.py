"""Searches for measuring: shapes among many points that belong to none of them."""
from __future__ import annotations

from math import inf
from typing import Any, Optional, Tuple, Union

from .. import _core
from .._types import Points
from ..analysis._edges import Edge
from ._fits import Noise, Options, options_of
from ._shapes import FitReport, MeasuredCircle, MeasuredEllipse, MeasuredLine, measured

# tolerance, confidence, max_trials, seed, min_support, min_points, min_radius, max_radius, angle, angle_tolerance
_Search = Tuple[float, float, int, int, float, int, float, float, float, float]
# deviations, absolute_deviations, noise, smoothing, max_iterations
_Errors = Tuple[Any, bool, str, float, int]
_Asked = Tuple[Any, Optional[Tuple[Any, bool, float]], _Search, Options]


def _asked(points: Union[Edge, Points], sigma: float, search: _Search, errors: _Errors) -> _Asked:
    """What a search of the core takes: the points, what an edge knows beside them, how to search and how points err."""
    options = options_of("least-squares", 0.0, 0.0, *errors)
    if isinstance(points, Edge):
        return points.points, (points.deviation, points.closed, sigma), search, options
    return points, None, search, options


def find_line(points: Union[Edge, Points], *, tolerance: float = 2.0, confidence: float = 0.999, max_trials: int = 20000,
              seed: int = 1, min_support: float = 0.1, min_points: int = 0, angle: float = 0.0,
              angle_tolerance: float = 90.0, sigma: float = 1.0, deviations: Any = None, absolute_deviations: bool = False,
              noise: Noise = "independent", smoothing: float = 1.0, max_iterations: int = 50) -> Optional[MeasuredLine]:
    """The line with the most support among points of which many belong to something else.

    Only lines whose angle differs from `angle` (degrees) by at most `angle_tolerance`, 0 to 90; both senses of a line are
    one. The other options, failure and method are those of `find_circle`.

    C++: orx::findLine
    """
    asked = _asked(points, sigma,
                   (tolerance, confidence, max_trials, seed, min_support, min_points, 0.0, inf, angle, angle_tolerance),
                   (deviations, absolute_deviations, noise, smoothing, max_iterations))
    return measured(MeasuredLine, _core.find_line(*asked))


def find_circle(points: Union[Edge, Points], *, tolerance: float = 2.0, confidence: float = 0.999, max_trials: int = 20000,
                seed: int = 1, min_support: float = 0.1, min_points: int = 0, min_radius: float = 0.0,
                max_radius: float = inf, sigma: float = 1.0, deviations: Any = None, absolute_deviations: bool = False,
                noise: Noise = "independent", smoothing: float = 1.0,
                max_iterations: int = 50) -> Optional[MeasuredCircle]:
    """The circle with the most support among points of which many belong to something else.

    A search by random samples, then the fit of the points that support the winner, with its uncertainty. Prefer it to
    `find_circle_classic` for measuring. Where more than half of the points follow one shape, `fit_circle` with a robust
    loss finds it as well.

    Parameters
    ----------
    points : Edge, or array of shape (n, 2)
        Places in pixels, such as ``edges.points``, or one edge.
    tolerance : float
        Points within this distance support a shape during the search, pixels, above 0: three to four times the noise. The
        final fit finds the noise itself.
    confidence : float
        Trials go on until a shape with the best support so far would have been found with this probability, 0 to 1.
    max_trials : int
        1 to 10,000,000.
    seed : int
        Equal seeds give equal results, on any number of threads.
    min_support : float
        Least support, as a share of the points, 0 to 1.
    min_points : int
        Least support, in points; 0: twice as many as the shape has parameters.
    min_radius, max_radius : float
        Of circles; of both half axes of ellipses.
    sigma, deviations, absolute_deviations, noise, smoothing, max_iterations
        How the points err, as for `fit_circle`.

    Returns
    -------
    MeasuredCircle or None
        None where no circle has the support asked for, or no sample makes one. ``report.used`` marks the supporting points.

    Raises
    ------
    ValueError
        For too few points, coordinates that are not finite, and options outside of their ranges.

    Notes
    -----
    M. A. Fischler and R. C. Bolles, Comm. ACM 24 (1981); P. H. S. Torr and A. Zisserman, CVIU 78 (2000); O. Chum, J. Matas
    and J. Kittler, DAGM 2003. What strewn points would support as well by chance is no shape: A. Desolneux, L. Moisan and
    J.-M. Morel, IJCV 40 (2000).

    Examples
    --------
    >>> import numpy as np
    >>> turn = np.radians(np.arange(0, 360, 5))
    >>> ring = np.stack([60 + 25 * np.cos(turn), 50 + 25 * np.sin(turn)], axis=1)
    >>> others = np.random.default_rng(1).uniform(0, 120, (60, 2))
    >>> circle = find_circle(np.concatenate([ring, others]), tolerance=0.5)
    >>> round(circle.radius, 2), bool(circle.report.used[:72].all())
    (25.0, True)

    C++: orx::findCircle, orx::TConsensusOptions
    """
    asked = _asked(points, sigma,
                   (tolerance, confidence, max_trials, seed, min_support, min_points, min_radius, max_radius, 0.0, 90.0),
                   (deviations, absolute_deviations, noise, smoothing, max_iterations))
    return measured(MeasuredCircle, _core.find_circle(*asked))


def find_ellipse(points: Union[Edge, Points], *, tolerance: float = 2.0, confidence: float = 0.999,
                 max_trials: int = 20000, seed: int = 1, min_support: float = 0.1, min_points: int = 0,
                 min_radius: float = 0.0, max_radius: float = inf, sigma: float = 1.0, deviations: Any = None,
                 absolute_deviations: bool = False, noise: Noise = "independent", smoothing: float = 1.0,
                 max_iterations: int = 50) -> Optional[MeasuredEllipse]:
    """The ellipse with the most support among points of which many belong to something else.

    Options, failure and method are those of `find_circle`; `min_radius` and `max_radius` bound both half axes.

    C++: orx::findEllipse
    """
    asked = _asked(points, sigma,
                   (tolerance, confidence, max_trials, seed, min_support, min_points, min_radius, max_radius, 0.0, 90.0),
                   (deviations, absolute_deviations, noise, smoothing, max_iterations))
    return measured(MeasuredEllipse, _core.find_ellipse(*asked))


def find_lines(points: Union[Edge, Points], *, most: int = 0, tolerance: float = 2.0, confidence: float = 0.999,
               max_trials: int = 20000, seed: int = 1, min_support: float = 0.1, min_points: int = 0, angle: float = 0.0,
               angle_tolerance: float = 90.0, sigma: float = 1.0, deviations: Any = None,
               absolute_deviations: bool = False, noise: Noise = "independent", smoothing: float = 1.0,
               max_iterations: int = 50) -> list[MeasuredLine]:
    """All lines, one after another, each from the points that those before it left, by descending support.

    Until nothing has the support asked for (a share of all the points given), or `most` are found (0: no limit); empty
    where there is none. ``report.used`` is over all points given; no point supports two lines. Options, failure and method
    are those of `find_line`.

    C++: orx::findLines
    """
    asked = _asked(points, sigma,
                   (tolerance, confidence, max_trials, seed, min_support, min_points, 0.0, inf, angle, angle_tolerance),
                   (deviations, absolute_deviations, noise, smoothing, max_iterations))
    return [MeasuredLine(*shape, FitReport(*report)) for shape, report in _core.find_lines(*asked, most)]


def find_circles(points: Union[Edge, Points], *, most: int = 0, tolerance: float = 2.0, confidence: float = 0.999,
                 max_trials: int = 20000, seed: int = 1, min_support: float = 0.1, min_points: int = 0,
                 min_radius: float = 0.0, max_radius: float = inf, sigma: float = 1.0, deviations: Any = None,
                 absolute_deviations: bool = False, noise: Noise = "independent", smoothing: float = 1.0,
                 max_iterations: int = 50) -> list[MeasuredCircle]:
    """All circles, one after another, each from the points that those before it left, by descending support.

    As `find_lines`; options, failure and method are those of `find_circle`.

    C++: orx::findCircles
    """
    asked = _asked(points, sigma,
                   (tolerance, confidence, max_trials, seed, min_support, min_points, min_radius, max_radius, 0.0, 90.0),
                   (deviations, absolute_deviations, noise, smoothing, max_iterations))
    return [MeasuredCircle(*shape, FitReport(*report)) for shape, report in _core.find_circles(*asked, most)]
