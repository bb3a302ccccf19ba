"""Calipers, and edges across outlines."""
from __future__ import annotations

import pickle

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import analysis

Bytes = NDArray[np.uint8]


def bar() -> Bytes:
    """200 from x = 9.5 to 29.5 on 40."""
    image = np.full((30, 40), 40, np.uint8)
    image[:, 10:30] = 200
    return image


def test_calipers_see_both_sides_of_a_bar() -> None:
    found = analysis.caliper(bar(), (2, 15), (37, 15), width=9)
    assert found.position[:, 0] == pytest.approx([9.5, 29.5], abs=0.01)
    assert found.contrast == pytest.approx([160.0, -160.0], rel=0.02)
    assert found[0].distance == pytest.approx(7.5, abs=0.01) and len(list(found)) == 2
    rising = analysis.caliper(bar(), (37, 15), (2, 15), polarity="dark-to-bright", selection="first")
    assert len(rising) == 1 and rising.position[0, 0] == pytest.approx(29.5, abs=0.02)
    boxed = analysis.caliper_box(bar(), (0, 0, 40, 30), direction="right-to-left")
    assert boxed.position[:, 0] == pytest.approx([29.5, 9.5], abs=0.01)
    turned = analysis.caliper_rotated(bar(), (20, 15), (30, 6), 0.0)
    assert turned.position[:, 0] == pytest.approx([9.5, 29.5], abs=0.01)
    none = analysis.caliper(np.full((30, 40), 9, np.uint8), (2, 15), (37, 15))
    assert len(none) == 0 and none.position.shape == (0, 2)
    assert np.array_equal(pickle.loads(pickle.dumps(found)).position, found.position)


def test_a_fan_stands_round_a_disk(disk: Bytes) -> None:
    found = analysis.circle_caliper(disk, (65, 47), 28, count=24)
    assert list(found.caliper) == list(range(24))
    radii = np.hypot(found.position[:, 0] - 64.0, found.position[:, 1] - 48.0)
    assert radii == pytest.approx(30.0, abs=0.05)


def test_edges_across_a_disk_and_its_contour(disk: Bytes) -> None:
    found = analysis.edges_across(disk, analysis.probes_along_circle((64, 48), 30.5), polarity="bright-to-dark")
    assert found.found.all() and (found.deviations > 0).all()
    assert np.hypot(*(found.points - [64.0, 48.0]).T) == pytest.approx(30.0, abs=0.05)
    outline = analysis.contours(disk > 120, "largest")[0]
    along = analysis.edges_across(disk, analysis.probes_along_contour(outline))
    assert np.hypot(*(along.points - [64.0, 48.0]).T).mean() == pytest.approx(30.0, abs=0.02)
    other = analysis.edges_across(disk, analysis.probes_along_circle((64, 48), 30.5), polarity="dark-to-bright")
    assert not other.found.any() and len(other.points) == 0


def test_probes_stand_where_they_should() -> None:
    line = analysis.probes_along_line((0, 0), (10, 0), spacing=2)
    assert line.points[:, 0] == pytest.approx(np.linspace(0, 10, 6)) and line.normals[0] == pytest.approx([0, 1])
    ellipse = analysis.probes_along_ellipse((50, 40), (40, 20), 90.0)
    middle = (ellipse.points.max(axis=0) + ellipse.points.min(axis=0)) / 2
    assert middle == pytest.approx([50, 40], abs=0.1) and np.ptp(ellipse.points[:, 1]) == pytest.approx(40, abs=0.2)


def test_refusals_name_what_was_wrong() -> None:
    with pytest.raises(ValueError, match="sigma"):
        analysis.caliper(bar(), (2, 15), (37, 15), sigma=0.1)
    with pytest.raises(ValueError, match="start is nan"):
        analysis.caliper(bar(), (float("nan"), 15), (37, 15))
    with pytest.raises(TypeError, match=r"start: expected a place: a pair of numbers \(x, y\), got str"):
        analysis.caliper(bar(), "here", (37, 15))  # type: ignore[arg-type]
    probes = analysis.probes_along_line((0, 0), (10, 0))
    with pytest.raises(ValueError, match="expected as many of each"):
        analysis.edges_across(bar(), probes._replace(normals=probes.normals[:3]))
    with pytest.raises(ValueError, match="radius"):
        analysis.probes_along_circle((1, 1), 0.0)
