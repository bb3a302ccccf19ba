"""What is measured of each disk of make_pictures.py, and what it may be.

    python3 -m orxfunctions.batch inspect_disks.py PICTURES results.sqlite --workers 2
"""
from orxfunctions import analysis, fitting, measuring

LOWER, UPPER = 23.8, 24.2


def inspect(image):
    """The diameter with its uncertainty and the verdict on it, in the form of a recipe's values."""
    edges = analysis.edges(image, min_points=30)
    circle = fitting.fit_circle(max(edges, key=len)) if len(edges) else None
    if circle is None:
        return {"verdict": "not measured", "problem": "there is no disk", "values": []}
    diameter, deviation = 2 * circle.radius, 2 * circle.radius_deviation
    verdict = measuring.judge(diameter, deviation, circle.report.degrees_of_freedom, lower=LOWER, upper=UPPER).verdict
    return {"verdict": verdict, "values": [
        {"name": "diameter", "unit": "px", "value": diameter, "deviation": deviation, "lower": LOWER, "upper": UPPER,
         "verdict": verdict},
        {"name": "x", "unit": "px", "value": circle.center[0]}, {"name": "y", "unit": "px", "value": circle.center[1]}]}
