"""Contours as straight pieces and arcs."""
from __future__ import annotations

import pickle
from typing import Any

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import analysis, fitting, segmentation

Bytes = NDArray[np.uint8]


def stadium() -> Bytes:
    """Two half disks of radius 100 at x = 150 and x = 350, and what lies between them."""
    y, x = np.mgrid[:300, :500]
    beyond = np.maximum(np.maximum(150 - x, x - 350), 0)
    return np.asarray(np.where(np.hypot(beyond, y - 150) <= 100, 255, 0), np.uint8)


def test_a_stadium_is_two_lines_and_two_arcs() -> None:
    contour = analysis.contours(stadium())[0]
    lines, arcs = segmentation.segment_contour(contour)
    assert len(arcs) == 2
    for arc, center in zip(sorted(arcs, key=lambda arc: arc.center[0]), (150.0, 350.0)):
        assert arc.center == pytest.approx((center, 150.0), abs=6.0) and arc.radius == pytest.approx(100.0, abs=6.0)
        assert arc.fit_error < 3.5 and arc.start_angle <= arc.end_angle and arc.points.shape[1] == 2
    long = [line for line in lines if len(line.points) > 100]
    assert sorted(line.start[1] for line in long) == pytest.approx([50, 250], abs=3)
    for line in long:
        a, b, c = line.line
        assert a * a + b * b == pytest.approx(1.0) and abs(a) < 0.05
        assert line.max_dist < 8.0 and len(line.fit_points) <= len(line.points)
        measured = fitting.fit_line(line.fit_points)
        assert measured is not None and abs(np.sin(np.radians(measured.angle))) < 0.05


def test_options_and_nothing() -> None:
    contour = analysis.contours(stadium())[0]
    assert segmentation.segment_contour(contour, use_circles=False).arcs == []
    assert all(arc.radius < 80.0 for arc in segmentation.segment_contour(contour, max_radius=80.0).arcs)
    assert segmentation.segment_contour([(3, 3)]) == ([], [])
    assert segmentation.segment_contour(contour, first_epsilon=-1.0) == ([], [])
    with pytest.raises(ValueError, match="the contour is empty"):
        segmentation.segment_contour(contour[:0])
    wrongs: list[Any] = ["contour", None, contour.astype(float), [(1, 2, 3)]]
    for wrong in wrongs:
        with pytest.raises(TypeError, match="contour: expected whole pixels"):
            segmentation.segment_contour(wrong)


def test_segments_are_pickled_and_shown() -> None:
    found = segmentation.segment_contour(analysis.contours(stadium())[0])
    again = pickle.loads(pickle.dumps(found))
    assert again.arcs[0].center == found.arcs[0].center and np.array_equal(again.lines[0].points, found.lines[0].points)
    assert repr(found.arcs[0]).startswith("ArcSegment(center=(") and "max_dist=" in repr(found.lines[0])
