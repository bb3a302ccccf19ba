"""Mistakes that a checker of types must find; each line says which. test_types.py compares; this file is never run."""
import numpy as np

from orxfunctions import analysis, fitting

image = np.zeros((4, 4), np.uint8)

wrong = np.zeros((4, 4), np.float64)
analysis.threshold_level(wrong)  # error: arg-type
analysis.threshold_level(image, method="otzu")  # error: arg-type
analysis.threshold_level(image, metod="otsu")  # error: call-arg
analysis.threshold_level(image) + 1  # error: operator
analysis.edges(image, 2.0)  # error: misc
analysis.edges(image).point  # error: attr-defined
analysis.edges(image)[0].points.shape.foo  # error: attr-defined
analysis.caliper(image, (1, 2), 3)  # error: arg-type
analysis.contours(image, "outer")  # error: arg-type
analysis.otsu_level(image).score  # error: union-attr
fitting.fit_circle(image).radius  # error: union-attr
fitting.fit_circle(image, loss="tuckey")  # error: arg-type
fitting.find_line(image, min_radius=3.0)  # error: call-arg
