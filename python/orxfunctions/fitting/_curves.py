"""Profiles y = f(x): one polynomial, or a chain of local ones."""
from __future__ import annotations

from typing import Any, Literal, NamedTuple, Optional, Tuple, Union

import numpy as np
from numpy.typing import NDArray

from .. import _core
from .._choices import choice
from .._types import Doubles, Points

Kind = Literal["max", "min"]
_MODES = {"max": 1, "min": 0}


def _column(x: Union[float, Doubles, NDArray[Any]]) -> Tuple[NDArray[Any], Tuple[int, ...]]:
    """x as a list of numbers, and the shape that its answer has."""
    values = np.asarray(x)
    if values.dtype.kind not in "iuf":
        raise TypeError(f"x: expected numbers, got {values.dtype} array of shape {values.shape}")
    return values.reshape(-1), values.shape


class PolynomialErrors(NamedTuple):
    """How far the samples lie from a `Polynomial`."""

    sse: float
    """Sum of squared errors."""
    rmse: float
    """Root of their mean."""
    r2: float
    """Coefficient of determination; not finite when all y are equal."""


class Polynomial:
    """A profile y = f(x) as one least-squares polynomial; called with x it gives the values.

    x is not centred or scaled, so orders above about 5 over hundreds of pixels lose digits: subtract the middle of the range
    first where that matters, or use `SplineCurve` for profiles that a low order can't follow.

    Parameters
    ----------
    points : array (n, 2)
        The samples, x and y.
    order : int
        0 to 200. ValueError for fewer different x than coefficients.

    Examples
    --------
    >>> curve = Polynomial([(0, 1), (1, 2), (2, 5), (3, 10)], order=2)
    >>> curve.coefficients.round(6).tolist(), round(float(curve(4.0)), 6)
    ([1.0, 0.0, 1.0], 17.0)

    C++: orx::TPolynomial
    """

    __slots__ = ("_curve", "points", "order")

    def __init__(self, points: Points, order: int = 2) -> None:
        self._curve = _core.Polynomial(points, order)
        self.points: Doubles = np.array(points, np.float64).reshape(-1, 2)
        self.order = order

    @property
    def coefficients(self) -> Doubles:
        """(order + 1,): element i multiplies x^i."""
        return self._curve.coefficients()

    def __call__(self, x: Union[float, NDArray[Any]]) -> Doubles:
        column, shape = _column(x)
        return self._curve.values(column).reshape(shape)

    def slope(self, x: Union[float, NDArray[Any]]) -> Doubles:
        """The derivative at x."""
        column, shape = _column(x)
        return self._curve.slopes(column).reshape(shape)

    def errors(self) -> PolynomialErrors:
        return PolynomialErrors(*self._curve.errors())

    def extreme(self, low: int, high: int, *, kind: Kind = "max") -> Tuple[float, float]:
        """(x, y) of the maximum or minimum over whole numbers low to high, searched in steps of 1, then down to 0.001.

        A peak narrower than a step can be missed.
        """
        return self._curve.extreme(low, high, choice("kind", kind, _MODES))

    def samples(self, *, digits: int = 0) -> Doubles:
        """(m, 2): x and value from the smallest to the largest sample in steps of 10^-digits."""
        return self._curve.samples(digits)

    def slope_samples(self, *, digits: int = 0) -> Doubles:
        """(m, 2): x and slope, as `samples`."""
        return self._curve.slope_samples(digits)

    def __reduce__(self) -> Tuple[type[Polynomial], Tuple[Doubles, int]]:
        return Polynomial, (self.points, self.order)

    def __repr__(self) -> str:
        return f"Polynomial(order={self.order}, {len(self.points)} samples)"


class SplineCurve:
    """A profile y = f(x) as a chain of overlapping local polynomials whose values are averaged.

    It passes near every sample, and so smooths little: prefer it to `Polynomial` for profiles that no low order follows.

    Parameters
    ----------
    points : array (n, 2)
        The samples, x and y, in any order; more than `order`.
    order : int
        0 to 200: one polynomial through each order + 1 neighbours.

    Examples
    --------
    >>> curve = SplineCurve([(0, 0), (1, 1), (2, 4), (3, 9), (4, 16)], order=2)
    >>> round(float(curve(2.5)), 6)
    6.25

    C++: orx::TSplineCurve, orx::TSplineSegment
    """

    __slots__ = ("_curve", "points", "order")

    def __init__(self, points: Points, order: int = 3) -> None:
        self._curve = _core.SplineCurve(points, order)
        self.points: Doubles = np.array(points, np.float64).reshape(-1, 2)
        self.order = order

    @property
    def segments(self) -> Tuple[Doubles, Doubles]:
        """(m, 2): where each local polynomial starts and ends; (m, order + 1): its coefficients, constant term first."""
        return self._curve.segments()

    def __call__(self, x: Union[float, NDArray[Any]]) -> Doubles:
        """The values at x; not a number outside of the samples."""
        column, shape = _column(x)
        return self._curve.values(column).reshape(shape)

    def extreme(self, low: Optional[float] = None, high: Optional[float] = None, *, kind: Kind = "max") -> Tuple[float, float]:
        """(x, y) of the maximum or minimum from low to high (the first and the last sample), in steps of 0.01."""
        ends = self._curve.segments()[0]
        first = float(ends[0, 0]) if low is None else low
        last = float(ends[-1, 1]) if high is None else high
        return self._curve.extreme(first, last, choice("kind", kind, _MODES))

    def samples(self, *, digits: int = 0) -> Doubles:
        """(m, 2): x and value over the whole chain in steps of 10^-digits."""
        return self._curve.samples(digits)

    def __reduce__(self) -> Tuple[type[SplineCurve], Tuple[Doubles, int]]:
        return SplineCurve, (self.points, self.order)

    def __repr__(self) -> str:
        return f"SplineCurve(order={self.order}, {len(self.points)} samples)"
