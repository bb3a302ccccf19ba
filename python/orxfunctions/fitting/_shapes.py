"""Measured shapes: lines, circles, arcs and ellipses with their uncertainty."""
from __future__ import annotations

from collections.abc import Iterable
from math import inf
from typing import Any, NamedTuple, Optional, Tuple, Type, TypeVar, Union

import numpy as np
from numpy.typing import NDArray

from .. import _core
from .._types import Doubles, Points

Pair = Tuple[float, float]
Values = Union[float, NDArray[Any]]
Shape = TypeVar("Shape", bound=Tuple[Any, ...])
_new = tuple.__new__


def _rows(points: Union[Points, Pair]) -> Doubles:
    """(n, 2) points, or a single one, as numbers; TypeError for anything else."""
    rows = np.asarray(points)
    if rows.dtype.kind not in "iuf" or rows.ndim not in (1, 2) or rows.shape[-1] != 2:
        raise TypeError(f"points: expected points: array of numbers of shape (n, 2) or (2,), "
                        f"got {rows.dtype} array of shape {rows.shape}")
    return rows.astype(np.float64, copy=False)


def _table(name: str, rows: Iterable[Tuple[str, float, float, str]], report: FitReport) -> str:
    cells = "".join(f"<tr><td>{what}</td><td>{value:.4f}</td><td>{deviation:.4f}</td><td>{unit}</td></tr>"
                    for what, value, deviation, unit in rows)
    return (f"<p>{name}: {report.used_points} of {report.points} points, rms {report.rms:.4f} px</p><table><tr><th></th>"
            f"<th>value</th><th>standard uncertainty</th><th>unit</th></tr>{cells}</table>")


class FitReport(NamedTuple):
    """What a fit tells beside the shape.

    C++: orx::TFitReport
    """

    points: int
    """How many were given."""
    used_points: int
    """How many had a say."""
    effective_points: float
    """How many independent points would be worth as much."""
    degrees_of_freedom: float
    """Of the noise; infinite where deviations are absolute. `coverage_factor` takes it."""
    noise: float
    """Standard deviation of a point (of an average one, with deviations), pixels."""
    rms: float
    """Root mean square distance of the used points, pixels."""
    peak_to_valley: float
    """Largest less smallest signed distance of the used points, pixels."""
    iterations: int
    used: NDArray[np.bool_]
    """(n,): for each point whether it had a say."""

    def __repr__(self) -> str:
        return f"FitReport({self.used_points} of {self.points} points, noise={self.noise:.4g}, rms={self.rms:.4g})"


class MeasuredLine(NamedTuple):
    """A straight line, upright ones like all others, and the stretch of it that the used points cover.

    C++: orx::TMeasuredLine
    """

    point: Pair
    """On the line, at the middle of the used points by their weights: where its place is known best, or near there for edge
    chains whose points lie unevenly."""
    direction: Pair
    """Of length 1; leads from the first points to the last."""
    angle: float
    """Of the direction, degrees in (-180, 180]."""
    from_: float
    """The stretch: from ``point + from_ * direction``"""
    to: float
    """to ``point + to * direction``."""
    covariance: Doubles
    """(2, 2): of the offset of `point` along the normal, pixels, and of the angle, degrees."""
    offset_deviation: float
    """Root of the first element of its diagonal."""
    angle_deviation: float
    report: FitReport

    @property
    def normal(self) -> Pair:
        """Of length 1, a quarter turn from the direction (clockwise on the screen)."""
        return (-self.direction[1], self.direction[0])

    @property
    def start(self) -> Pair:
        """Where the stretch begins."""
        return self._at(self.from_)

    @property
    def end(self) -> Pair:
        return self._at(self.to)

    def _at(self, along: float) -> Pair:
        return (self.point[0] + along * self.direction[0], self.point[1] + along * self.direction[1])

    def signed_distance(self, points: Union[Points, Pair]) -> Doubles:
        """The distances of (n, 2) points from the line, above 0 on the side of `normal`."""
        return np.asarray((_rows(points) - self.point) @ np.asarray(self.normal))

    def deviation_at(self, along: Values) -> Doubles:
        """The standard uncertainty of the line's place across itself at ``point + along * direction``, pixels."""
        lever = np.radians(along)
        c = self.covariance
        return np.asarray(np.sqrt(np.maximum(0.0, c[0, 0] + 2.0 * lever * c[0, 1] + lever * lever * c[1, 1])))

    def slope_form(self) -> Pair:
        """k and b of y = k x + b; k is infinite, or as good as that, for a vertical line."""
        x, y = self.direction
        slope = y / x if x != 0.0 else inf if y > 0.0 else -inf
        return (slope, self.point[1] - slope * self.point[0])

    def __repr__(self) -> str:
        return (f"MeasuredLine(point=({self.point[0]:.4f}, {self.point[1]:.4f}) +- {self.offset_deviation:.2g}, "
                f"angle={self.angle:.4f} +- {self.angle_deviation:.2g}, {self.report.used_points} of "
                f"{self.report.points} points)")

    def _repr_html_(self) -> str:
        return _table("Line", [("x", self.point[0], self.offset_deviation, "px"),
                               ("y", self.point[1], self.offset_deviation, "px"),
                               ("angle", self.angle, self.angle_deviation, "degrees")], self.report)


class MeasuredCircle(NamedTuple):
    """A circle, and the arc of it that the used points cover.

    C++: orx::TMeasuredCircle
    """

    center: Pair
    radius: float
    start_angle: float
    """Where the covered arc begins, degrees in (-180, 180] from the x axis towards the y axis (clockwise on the screen)."""
    sweep: float
    """How far it reaches from there, degrees: 360 where no gap reaches 4 degrees."""
    covariance: Doubles
    """(3, 3): of the center's x and y and the radius, square pixels."""
    x_deviation: float
    """Root of the first element of its diagonal; the others follow."""
    y_deviation: float
    radius_deviation: float
    report: FitReport

    def signed_distance(self, points: Union[Points, Pair]) -> Doubles:
        """The distances of (n, 2) points from the outline, above 0 outside."""
        return np.asarray(np.linalg.norm(_rows(points) - self.center, axis=-1) - self.radius)

    def at(self, angle: Values) -> Doubles:
        """(n, 2): the places on the outline at n angles in degrees; (2,) at a single one."""
        turn = np.radians(angle)
        return np.stack([self.center[0] + self.radius * np.cos(turn), self.center[1] + self.radius * np.sin(turn)], axis=-1)

    def __repr__(self) -> str:
        return "MeasuredCircle" + _circle_text(self)

    def _repr_html_(self) -> str:
        return _table("Circle", _circle_rows(self), self.report)


class MeasuredArc(NamedTuple):
    """A circular arc: the circle, and its ends where the outermost points stand at it.

    C++: orx::TMeasuredArc
    """

    center: Pair
    radius: float
    start_angle: float
    """Where the arc begins, degrees in (-180, 180]."""
    sweep: float
    """How far it reaches from there, degrees."""
    covariance: Doubles
    """(3, 3): of the center's x and y and the radius, square pixels."""
    x_deviation: float
    y_deviation: float
    radius_deviation: float
    start: Pair
    """At `start_angle`."""
    middle: Pair
    """Halfway along."""
    end: Pair
    """At ``start_angle + sweep``."""
    length: float
    """Along the arc, pixels."""
    report: FitReport

    @property
    def circle(self) -> MeasuredCircle:
        """The whole circle."""
        return MeasuredCircle(*self[:8], self.report)

    def signed_distance(self, points: Union[Points, Pair]) -> Doubles:
        """The distances of (n, 2) points from the whole circle, above 0 outside."""
        return self.circle.signed_distance(points)

    def at(self, angle: Values) -> Doubles:
        """(n, 2): the places on the circle at n angles in degrees; (2,) at a single one."""
        return self.circle.at(angle)

    def __repr__(self) -> str:
        return "MeasuredArc" + _circle_text(self)

    def _repr_html_(self) -> str:
        return _table("Arc", _circle_rows(self), self.report)


def _circle_text(shape: Union[MeasuredCircle, MeasuredArc]) -> str:
    return (f"(center=({shape.center[0]:.4f} +- {shape.x_deviation:.2g}, {shape.center[1]:.4f} +- {shape.y_deviation:.2g}), "
            f"radius={shape.radius:.4f} +- {shape.radius_deviation:.2g}, sweep={shape.sweep:.4g}, "
            f"{shape.report.used_points} of {shape.report.points} points)")


def _circle_rows(shape: Union[MeasuredCircle, MeasuredArc]) -> list[Tuple[str, float, float, str]]:
    return [("center x", shape.center[0], shape.x_deviation, "px"), ("center y", shape.center[1], shape.y_deviation, "px"),
            ("radius", shape.radius, shape.radius_deviation, "px")]


class MeasuredEllipse(NamedTuple):
    """An ellipse, and the part of it that the used points cover.

    C++: orx::TMeasuredEllipse
    """

    center: Pair
    semi_major: float
    """Half axes, ``semi_major >= semi_minor > 0``."""
    semi_minor: float
    angle: float
    """Of the major axis, degrees in [0, 180)."""
    angle_told: bool
    """False where the points do not tell the angle: the axes are as good as equal. It then counts as evenly spread over
    the half turn: `angle_deviation` is 51.96, without covariance with the others."""
    start_angle: float
    """The covered part as seen from the center, as for a circle."""
    sweep: float
    covariance: Doubles
    """(5, 5): of the center's x and y and the half axes, pixels, and of the angle, degrees."""
    x_deviation: float
    """Roots of its diagonal."""
    y_deviation: float
    semi_major_deviation: float
    semi_minor_deviation: float
    angle_deviation: float
    report: FitReport

    def signed_distance(self, points: Union[Points, Pair]) -> Doubles:
        """The orthogonal distances of (n, 2) points from the outline, above 0 outside."""
        rows = _rows(points)
        return _core.ellipse_distances((*self.center, *self[1:4]), rows.reshape(-1, 2)).reshape(rows.shape[:-1])

    def nearest(self, points: Union[Points, Pair]) -> Doubles:
        """(n, 2): the feet of the orthogonal distances; one of them in a tie."""
        rows = _rows(points)
        return _core.ellipse_nearest((*self.center, *self[1:4]), rows.reshape(-1, 2)).reshape(rows.shape)

    def at(self, parameter: Values) -> Doubles:
        """(n, 2): places on the outline; the parameter is the eccentric angle in degrees from the major axis."""
        turn, eccentric = np.radians(self.angle), np.radians(parameter)
        along, across = self.semi_major * np.cos(eccentric), self.semi_minor * np.sin(eccentric)
        return np.stack([self.center[0] + np.cos(turn) * along - np.sin(turn) * across,
                         self.center[1] + np.sin(turn) * along + np.cos(turn) * across], axis=-1)

    def __repr__(self) -> str:
        angle = f"{self.angle:.4g} +- {self.angle_deviation:.2g}" if self.angle_told else "not told"
        return (f"MeasuredEllipse(center=({self.center[0]:.4f} +- {self.x_deviation:.2g}, {self.center[1]:.4f} +- "
                f"{self.y_deviation:.2g}), semi_major={self.semi_major:.4f} +- {self.semi_major_deviation:.2g}, "
                f"semi_minor={self.semi_minor:.4f} +- {self.semi_minor_deviation:.2g}, angle={angle}, "
                f"{self.report.used_points} of {self.report.points} points)")

    def _repr_html_(self) -> str:
        return _table("Ellipse", [("center x", self.center[0], self.x_deviation, "px"),
                                  ("center y", self.center[1], self.y_deviation, "px"),
                                  ("major half axis", self.semi_major, self.semi_major_deviation, "px"),
                                  ("minor half axis", self.semi_minor, self.semi_minor_deviation, "px"),
                                  ("angle", self.angle, self.angle_deviation, "degrees")], self.report)


def measured(shape: Type[Shape], found: Optional[Tuple[Tuple[Any, ...], Tuple[Any, ...]]]) -> Optional[Shape]:
    """A shape out of the core's fields and report; None for none.

    The core gives as many fields as there are: made without the constructors, which would count them again.
    """
    return None if found is None else _new(shape, (*found[0], _new(FitReport, found[1])))


def coverage_factor(probability: float, degrees_of_freedom: float) -> float:
    """How many standard uncertainties make the half width of the interval that holds the true value with `probability`.

    Student's t with the degrees of freedom of a fit's report: 1.96 for 0.95 and many points, more for few. ValueError for
    a probability outside of (0, 1) or degrees of freedom not above 0.

    Examples
    --------
    >>> round(coverage_factor(0.95, 10.0), 4)
    2.2281

    C++: orx::coverageFactor
    """
    return _core.coverage_factor(probability, degrees_of_freedom)
