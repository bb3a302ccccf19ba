"""Shapes through points: fits and searches that tell how well they know, classic estimators, curves."""
from ._classic import (Circle, Ellipse, FoundCircle, FoundLine, Line, SideLine, find_circle_classic, find_line_classic,
                       find_side_line, fit_circle_classic, fit_ellipse_classic, fit_line_classic)
from ._curves import Polynomial, PolynomialErrors, SplineCurve
from ._finders import find_circle, find_circles, find_ellipse, find_line, find_lines
from ._fits import fit_arc, fit_circle, fit_ellipse, fit_line
from ._geometry import ThreePointCircle, angle_of, circle_through, distance_to_line
from ._shapes import FitReport, MeasuredArc, MeasuredCircle, MeasuredEllipse, MeasuredLine, coverage_factor

__all__ = [
    "Circle",
    "Ellipse",
    "FitReport",
    "FoundCircle",
    "FoundLine",
    "Line",
    "MeasuredArc",
    "MeasuredCircle",
    "MeasuredEllipse",
    "MeasuredLine",
    "Polynomial",
    "PolynomialErrors",
    "SideLine",
    "SplineCurve",
    "ThreePointCircle",
    "angle_of",
    "circle_through",
    "coverage_factor",
    "distance_to_line",
    "find_circle",
    "find_circle_classic",
    "find_circles",
    "find_ellipse",
    "find_line",
    "find_line_classic",
    "find_lines",
    "find_side_line",
    "fit_arc",
    "fit_circle",
    "fit_circle_classic",
    "fit_ellipse",
    "fit_ellipse_classic",
    "fit_line",
    "fit_line_classic",
]
