"""The classic estimators: whole pixels, no uncertainty. The functions without `_classic` are those for measuring."""
from __future__ import annotations

from math import inf
from typing import Literal, NamedTuple, Optional, Tuple, Union

from .. import _core
from .._choices import choice
from .._types import Ints, Points

AngleRange = Literal["absolute", "0-180", "signed"]
Side = Literal["left", "right", "top", "bottom", "center"]
Weight = Literal["l1-l2", "l1", "fair", "welsch", "huber", "tukey", "equal"]
RobustLoss = Literal["tukey", "huber-influence", "huber-loss"]
_RANGES = {"absolute": 0, "0-180": 1, "signed": 2}
_SIDES = {"left": 0, "right": 1, "top": 2, "bottom": 3, "center": 4}
_WEIGHTS = {"l1-l2": 0, "l1": 1, "fair": 2, "welsch": 3, "huber": 4, "tukey": 5, "equal": 6}
_ROBUST_LOSSES = {"tukey": 5, "huber-influence": 4, "huber-loss": 0}
_CIRCLE_METHODS = {"least-squares": 0, "robust": 1, "ransac": 2}
_LINE_METHODS = {"robust": 0, "ransac": 1}
_ELLIPSE_METHODS = {"direct": 0, "ransac": 1}


class FoundLine(NamedTuple):
    """A line y = slope x + intercept, and the points near it."""

    slope: float
    """Infinite or very large for a vertical line."""
    intercept: float
    inliers: Ints
    """Indices of the points. The two sample points come first, and normally once more in their place."""


class FoundCircle(NamedTuple):
    """A circle through three of the points, and those near it."""

    x: float
    y: float
    radius: float
    inliers: Ints
    """Ascending indices of the points."""


class SideLine(NamedTuple):
    """The points of one line, and all others, each in input order."""

    points: Ints
    rest: Ints


class Line(NamedTuple):
    """y = slope x + intercept; the slope of a vertical line is up to 1e5.

    C++: orx::TLine
    """

    slope: float
    intercept: float


class Circle(NamedTuple):
    """A circle of `fit_circle_classic`.

    C++: orx::TCircle
    """

    x: float
    y: float
    radius: float
    inlier_ratio: float
    mean_residual: float
    """Pixels."""


class Ellipse(NamedTuple):
    """An ellipse of `fit_ellipse_classic`.

    C++: orx::TEllipse
    """

    x: float
    y: float
    width: float
    """Full axis along `angle`, the shorter one."""
    height: float
    """Full axis across `angle`."""
    angle: float
    """Degrees in (-90, 180] from the x axis towards the y axis; means nothing for a circle."""
    conic: Tuple[float, float, float, float, float, float]
    """A x^2 + B x y + C y^2 + D x + E y + F = 0 with F = 1, of single precision."""
    inlier_ratio: float
    mean_error: float
    """Mean radial distance of the points, pixels."""


def find_line_classic(points: Points, *, threshold: float = 2.0, iterations: int = 1000, cap: int = 1000,
                      angle_range: AngleRange = "signed", angle_limit: Optional[Tuple[float, float]] = None,
                      seed: int = 1) -> Optional[FoundLine]:
    """The line with the most whole pixels near it, of random pairs. Prefer `find_line` for measuring.

    Parameters
    ----------
    points : integer array (n, 2)
    threshold : float
        The largest distance of an inlier from the line, pixels.
    iterations, cap : int
        Samples that are drawn; sampling stops once more than `cap` lines are candidates.
    angle_range : {"signed", "absolute", "0-180"}
        How `angle_limit` counts the angles of samples: of the slope, (-90, 90]; of the absolute slope, [0, 90]; [0, 180).
    angle_limit : (lowest, highest), optional
        Only samples within it are accepted, degrees.
    seed : int
        Equal seeds give equal results, on any number of threads. Its low 32 bits count.

    Returns
    -------
    FoundLine or None
        None where no sample is within the limits. ValueError for fewer than two points or no samples.

    Notes
    -----
    M. A. Fischler, R. C. Bolles, Commun. ACM 24 (1981); the line is fitted anew to the inliers with Huber's loss.

    Examples
    --------
    >>> line = find_line_classic([(0, 3), (1, 4), (2, 5), (3, 6), (9, 1)], threshold=0.5)
    >>> round(line.slope, 3), round(line.intercept, 3), sorted(set(line.inliers.tolist()))
    (1.0, 3.0, [0, 1, 2, 3])

    C++: orx::TRansacLine, orx::TAngleType
    """
    kind = choice("angle_range", angle_range, _RANGES)
    limit = (0.0, 0.0, 3) if angle_limit is None else (angle_limit[0], angle_limit[1], kind)
    found = _core.find_line_classic(points, threshold, iterations, cap, limit, seed)
    return None if found is None else FoundLine(*found)


def find_circle_classic(points: Points, *, threshold: float = 2.0, iterations: int = 1000, cap: int = 1000,
                        radius: Tuple[int, int] = (5, 1000), seed: int = 1) -> Optional[FoundCircle]:
    """A circle through three of the whole pixels that many others lie near. Prefer `find_circle` for measuring.

    The winner is the last sample with more inliers than the first: deliberately not always the one with the most, and it is
    not fitted anew. Keep coordinates below about 1,000, where its 32-bit sums are exact. `radius` is the least and the
    largest, pixels; the other options are those of `find_line_classic`.

    Returns
    -------
    FoundCircle or None
        None where no sample makes a circle within the limits. ValueError for fewer than three points or no samples.

    C++: orx::TRansacCircle
    """
    found = _core.find_circle_classic(points, threshold, iterations, cap, radius, seed)
    return None if found is None else FoundCircle(*found)


def find_side_line(points: Points, *, side: Side, min_points: int = 3, refine: bool = True) -> Optional[SideLine]:
    """The line at one side of a part, among several lines in a list of whole pixels.

    Lines are found one after another, the strongest first; `side` selects among those: ``"left"`` and ``"right"`` of the
    upright ones, ``"top"`` and ``"bottom"`` of the level ones, ``"center"`` the one nearest the middle of all. `refine` fits
    the selected line anew. Equal points give equal results. `fit_line` of its points measures it.

    Returns
    -------
    SideLine or None
        None where no such line has `min_points` points. ValueError for fewer points than a line needs.

    C++: orx::getWantedLine, orx::TWantLineType
    """
    found = _core.find_side_line(points, choice("side", side, _SIDES), min_points, refine)
    return None if found is None else SideLine(*found)


def fit_circle_classic(points: Points, *, method: Literal["least-squares", "robust", "ransac"] = "least-squares",
                       weight: Weight = "huber", weight_parameter: float = 0.0, loss: RobustLoss = "huber-influence",
                       loss_constant: float = 2.5, step_size: float = 0.5, radius: Tuple[float, float] = (5.0, 1000.0),
                       inlier_distance: float = 2.0, iterations: int = 1000, set_cap: int = 1000) -> Optional[Circle]:
    """A circle among whole pixels. Prefer `fit_circle` and `find_circle` for measuring.

    Parameters
    ----------
    points : integer array (n, 2)
    method : {"least-squares", "robust", "ransac"}
        Least squares, reweighted by residuals, the fastest, for clean points; gradient descent on a robust loss, for few
        outliers; random samples that vote, for many. Equal points give equal results.
    weight, weight_parameter
        For ``"least-squares"``: the weight function, and where it bends in pixels; 0 takes its usual constant.
    loss, loss_constant, step_size
        For ``"robust"``: Tukey's biweight, or one of two pairings of Huber's and Tukey's functions; where it bends, pixels;
        the first step.
    radius, inlier_distance, iterations, set_cap
        For ``"ransac"``: least and largest radius, both excluded; pixels; samples drawn; the search ends with more
        candidates than `set_cap`.

    Returns
    -------
    Circle or None
        None where no sample or no step leads to a circle. ValueError for points that determine none.

    Notes
    -----
    I. Kasa, IEEE Trans. Instrum. Meas. 25 (1976); M. A. Fischler, R. C. Bolles, Commun. ACM 24 (1981).

    C++: orxFit::TCircleFitFactory, TCircleFit, TCircleFit_Ransac, TCircleFit_Robust, TCircleFit_WeightedLeastSquares
    """
    kind = choice("method", method, _CIRCLE_METHODS)
    if kind == 0:
        found = _core.fit_circle_weighted(points, choice("weight", weight, _WEIGHTS), weight_parameter)
    elif kind == 1:
        found = _core.fit_circle_robust(points, loss_constant, step_size, choice("loss", loss, _ROBUST_LOSSES))
    else:
        found = _core.fit_circle_ransac(points, radius[1], radius[0], inlier_distance, iterations, set_cap)
    return None if found is None else Circle(*found)


def fit_line_classic(points: Points, *, method: Literal["robust", "ransac"] = "robust", weight: Weight = "huber",
                     weight_parameter: float = 0.0, target_angle: float = 0.0, angle_tolerance: float = 90.0,
                     inlier_distance: float = 2.0, sample_size: int = 2) -> Optional[Line]:
    """A line y = k x + b among whole pixels. Prefer `fit_line` and `find_line` for measuring.

    ``"robust"`` reweights least squares (`weight`, `weight_parameter` as for `fit_circle_classic`) and gives a single point
    a level line. ``"ransac"`` lets 1,000 samples of `sample_size` (2 or 3) points vote that lie less than `angle_tolerance`
    from `target_angle`, degrees. None where no line is near the wanted angle; equal points give equal results.

    C++: orxFit::TLineFitFactory, TLineFit, TLineFit_Ransac, TLineFit_Robust
    """
    if choice("method", method, _LINE_METHODS) == 0:
        found = _core.fit_line_robust(points, choice("weight", weight, _WEIGHTS), weight_parameter)
    else:
        found = _core.fit_line_ransac(points, target_angle, inlier_distance, sample_size, angle_tolerance)
    return None if found is None else Line(*found)


def fit_ellipse_classic(points: Points, *, method: Literal["direct", "ransac"] = "direct", error_threshold: float = 2.0,
                        min_inlier_ratio: float = 0.5, min_axis: Tuple[float, float] = (0.0, inf),
                        max_axis: Tuple[float, float] = (0.0, inf),
                        iterations: Union[int, float] = 1000) -> Optional[Ellipse]:
    """The ellipse with the least algebraic distances. Prefer `fit_ellipse` and `find_ellipse` for measuring.

    Parameters
    ----------
    points : array (n, 2)
        At least 6 places.
    method : {"direct", "ransac"}
        Of all points; the best of many through six each, for points of which some belong to something else.
    error_threshold, min_inlier_ratio : float
        More than this share of the points must lie closer than so many pixels.
    min_axis, max_axis : (low, high)
        Bounds of the shorter and of the longer axis, pixels.
    iterations : number
        For ``"ransac"``: samples that are drawn, more than 0.

    Returns
    -------
    Ellipse or None
        None where no ellipse is within the bounds and near enough points. ValueError for points that determine none.

    Notes
    -----
    A. Fitzgibbon, M. Pilu, R. Fisher, IEEE Trans. PAMI 21 (1999). Noise on a short arc pulls it towards smaller ellipses.

    C++: orxFit::fitEllipseNorm, orxFit::fitEllipseRansac
    """
    ransac = choice("method", method, _ELLIPSE_METHODS) == 1
    found = _core.fit_ellipse_classic(points, iterations, error_threshold, min_inlier_ratio, min_axis, max_axis, ransac)
    return None if found is None else Ellipse(*found)
