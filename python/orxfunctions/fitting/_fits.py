"""Fits for measuring: the shape with the least orthogonal distances, with its uncertainty."""
from __future__ import annotations

from typing import Any, Literal, Optional, Tuple, Union

from .. import _core
from .._choices import choice
from .._types import Points
from ..analysis._edges import Edge
from ._shapes import MeasuredArc, MeasuredCircle, MeasuredEllipse, MeasuredLine, measured

Loss = Literal["least-squares", "huber", "cauchy", "tukey", "geman-mcclure"]
Noise = Literal["independent", "normal", "edge-chain"]
_LOSSES = {"least-squares": 0, "huber": 1, "cauchy": 2, "tukey": 3, "geman-mcclure": 4}
NOISES = {"independent": 0, "normal": 1, "edge-chain": 2}

Options = Tuple[int, float, float, Any, bool, int, float, int]


def options_of(loss: str, tuning: float, scale: float, deviations: Any, absolute_deviations: bool, noise: str,
               smoothing: float, max_iterations: int) -> Options:
    return (choice("loss", loss, _LOSSES), tuning, scale, deviations, absolute_deviations, choice("noise", noise, NOISES),
            smoothing, max_iterations)


def _parts(edge: Edge, sigma: float) -> Tuple[Any, Any, bool, float]:
    return (edge.points, edge.deviation, edge.closed, sigma)


def fit_line(points: Union[Edge, Points], *, sigma: float = 1.0, loss: Loss = "least-squares", tuning: float = 0.0,
             scale: float = 0.0, deviations: Any = None, absolute_deviations: bool = False,
             noise: Noise = "independent", smoothing: float = 1.0, max_iterations: int = 50) -> Optional[MeasuredLine]:
    """The line with the least orthogonal distances; at least 3 points (2 tell a line, but not how well).

    Options, failure and method are those of `fit_circle`.

    Examples
    --------
    >>> line = fit_line([(0, 1.0), (1, 1.1), (2, 0.9), (3, 1.0)])
    >>> line.report.used_points, round(line.slope_form()[1], 3)
    (4, 1.03)

    C++: orx::fitLineGeometric
    """
    options = options_of(loss, tuning, scale, deviations, absolute_deviations, noise, smoothing, max_iterations)
    return measured(MeasuredLine, _core.fit_line_edge(_parts(points, sigma), options) if isinstance(points, Edge)
                    else _core.fit_line(points, options))


def fit_circle(points: Union[Edge, Points], *, sigma: float = 1.0, loss: Loss = "least-squares", tuning: float = 0.0,
               scale: float = 0.0, deviations: Any = None, absolute_deviations: bool = False,
               noise: Noise = "independent", smoothing: float = 1.0, max_iterations: int = 50) -> Optional[MeasuredCircle]:
    """The circle with the least orthogonal distances from at least 4 points, with the covariance of its parameters.

    Prefer it to `fit_circle_classic` wherever a result is measured, and give it an edge of `analysis.edges` whole, which
    passes on what the finder knows: how well each point is known, and how neighbours share pixels. Where more than 40 % of
    the points belong to something else, `find_circle`.

    Parameters
    ----------
    points : Edge, or array of shape (n, 2)
        An edge of `analysis.edges`, or places in pixels.
    sigma : float
        For an `Edge`: the smoothing that it was found with (``edges(sigma=...)``), 0.5 to 20.
    loss : {"least-squares", "huber", "cauchy", "tukey", "geman-mcclure"}
        How a point's say falls off with its distance. All but the first bear outliers; the last three give far points
        (nearly) no say.
    tuning : float
        Where the loss bends, in scales: 0.1 to 100; 0 takes the constant of 95 % efficiency.
    scale : float
        The noise of an inlier in pixels; 0 estimates it from the points.
    deviations : (n,) numbers, optional
        The standard deviation of each point across the outline, in pixels; 0 leaves its point out. For an `Edge` they go
        before its own.
    absolute_deviations : bool
        The uncertainty follows from the deviations alone. Else they tell how the points compare, and the distances that
        remain tell how large they are.
    noise : {"independent", "normal", "edge-chain"}
        How points err that are not an `Edge`: in x and y alike (marks, clicked points); across the edge alone (calipers
        side by side); across it, in company (the points of an edge chain, in order).
    smoothing : float
        For ``noise="edge-chain"``: the smoothing of the edge finder in pixels, 0.3 to 50.
    max_iterations : int
        1 to 1,000.

    Returns
    -------
    MeasuredCircle or None
        None where sound points follow no such shape: the arc is too short to tell its radius, or the fit did not settle.

    Raises
    ------
    ValueError
        For too few points, such as all lie in one place or on a line, coordinates that are not finite, and options outside
        of their ranges.

    Notes
    -----
    An algebraic start (G. Taubin, IEEE Trans. PAMI 13 (1991)), or with a robust loss the least median of squares
    (P. J. Rousseeuw, J. Am. Stat. Assoc. 79 (1984)); then Gauss-Newton steps with Levenberg's damping. Two biases are taken
    back: A. Al-Sharadqah and N. Chernov, Electronic Journal of Statistics 3 (2009); M. J. Box, J. R. Statist. Soc. B 33
    (1971). The same points give the same result always.

    Examples
    --------
    >>> import numpy as np
    >>> turn = np.radians(np.arange(0, 360, 10))
    >>> circle = fit_circle(np.stack([50 + 20 * np.cos(turn), 40 + 20 * np.sin(turn)], axis=1))
    >>> round(circle.radius, 6), round(circle.center[0], 6), circle.report.used_points
    (20.0, 50.0, 36)

    C++: orx::fitCircleGeometric, orx::TFitOptions, orx::TFitLoss, orx::TPointNoise, orx::TFitStatus
    """
    options = options_of(loss, tuning, scale, deviations, absolute_deviations, noise, smoothing, max_iterations)
    return measured(MeasuredCircle, _core.fit_circle_edge(_parts(points, sigma), options) if isinstance(points, Edge)
                    else _core.fit_circle(points, options))


def fit_arc(points: Union[Edge, Points], *, sigma: float = 1.0, loss: Loss = "least-squares", tuning: float = 0.0,
            scale: float = 0.0, deviations: Any = None, absolute_deviations: bool = False,
            noise: Noise = "independent", smoothing: float = 1.0, max_iterations: int = 50) -> Optional[MeasuredArc]:
    """The circle of `fit_circle`, with the ends of the arc that the points cover.

    Options, failure and method are those of `fit_circle`.

    C++: orx::fitArcGeometric
    """
    options = options_of(loss, tuning, scale, deviations, absolute_deviations, noise, smoothing, max_iterations)
    return measured(MeasuredArc, _core.fit_arc_edge(_parts(points, sigma), options) if isinstance(points, Edge)
                    else _core.fit_arc(points, options))


def fit_ellipse(points: Union[Edge, Points], *, sigma: float = 1.0, loss: Loss = "least-squares", tuning: float = 0.0,
                scale: float = 0.0, deviations: Any = None, absolute_deviations: bool = False,
                noise: Noise = "independent", smoothing: float = 1.0,
                max_iterations: int = 50) -> Optional[MeasuredEllipse]:
    """The ellipse with the least orthogonal distances from at least 6 points, with the covariance of its parameters.

    Prefer it to `fit_ellipse_classic` wherever a result is measured. Options and failure are those of `fit_circle`; None
    also where the points turn like a parabola or a hyperbola, or an axis is more uncertain than a fifth of it.

    Notes
    -----
    R. Halir and J. Flusser, "Numerically stable direct least squares fitting of ellipses" (1998), as a start; then the
    orthogonal distances: S. J. Ahn, W. Rauh and H.-J. Warnecke, Pattern Recognition 34 (2001).

    Examples
    --------
    >>> import numpy as np
    >>> turn = np.radians(np.arange(0, 360, 10))
    >>> ellipse = fit_ellipse(np.stack([50 + 30 * np.cos(turn), 40 + 20 * np.sin(turn)], axis=1))
    >>> round(ellipse.semi_major, 6), round(ellipse.semi_minor, 6), ellipse.angle_told
    (30.0, 20.0, True)

    C++: orx::fitEllipseGeometric
    """
    options = options_of(loss, tuning, scale, deviations, absolute_deviations, noise, smoothing, max_iterations)
    return measured(MeasuredEllipse, _core.fit_ellipse_edge(_parts(points, sigma), options) if isinstance(points, Edge)
                    else _core.fit_ellipse(points, options))
