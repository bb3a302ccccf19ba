"""Relations of shapes whose true places are known."""
from __future__ import annotations

import math
import pickle
from typing import Any

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import fitting, measuring
from orxfunctions.fitting import MeasuredCircle, MeasuredLine
from orxfunctions.measuring import MeasuredPoint, MeasuredValue

NOISE = 0.05


def line(start: tuple[float, float], end: tuple[float, float], seed: int = 1, count: int = 60) -> MeasuredLine:
    share = np.linspace(0.0, 1.0, count)[:, None]
    points = np.asarray(start) + share * (np.asarray(end) - np.asarray(start))
    found = fitting.fit_line(points + np.random.default_rng(seed).normal(0.0, NOISE, (count, 2)))
    assert found is not None
    return found


def circle(center: tuple[float, float], radius: float, seed: int = 1, count: int = 90) -> MeasuredCircle:
    turn = np.linspace(0.0, 2.0 * math.pi, count, endpoint=False)
    points = np.asarray(center) + radius * np.stack([np.cos(turn), np.sin(turn)], axis=1)
    found = fitting.fit_circle(points + np.random.default_rng(seed).normal(0.0, NOISE, (count, 2)))
    assert found is not None
    return found


def holds(told: Any, truth: float) -> bool:
    """The truth is within four of the stated deviations, which are those of many points."""
    assert isinstance(told, MeasuredValue)
    return abs(told.value - truth) < 4.0 * told.deviation < 0.4 and told.degrees_of_freedom > 10


BIG, SMALL = circle((50.0, 50.0), 30.0), circle((110.0, 130.0), 10.0, 2)
LEFT, RIGHT, ACROSS = line((10, 0), (10, 100), 3), line((40, 0), (40, 100), 4), line((0, 50), (100, 50), 5)


def test_values_hold_the_truth_within_what_is_stated() -> None:
    assert holds(measuring.distance(BIG, SMALL), 100.0)
    assert holds(measuring.gap(BIG, SMALL), 60.0)
    assert holds(measuring.concentricity(BIG, SMALL), 200.0)
    assert holds(measuring.distance(measuring.center_of(BIG), LEFT), 40.0)
    assert holds(measuring.distance(LEFT, measuring.center_of(BIG)), 40.0)
    assert holds(measuring.signed_distance((0.0, 20.0), ACROSS), -30.0)  # the normal of what leads to the right is down
    apart = measuring.line_distance(LEFT, RIGHT)
    assert apart is not None and holds(apart.middle, 30.0) and apart.least.value <= apart.middle.value <= apart.largest.value
    assert holds(measuring.angle(line((0, 0), (60, 60)), ACROSS), 45.0)
    assert holds(measuring.signed_angle(ACROSS, line((0, 0), (60, 60))), 45.0)
    assert holds(measuring.signed_angle(line((0, 0), (60, 60)), ACROSS), -45.0)
    slanted = line((0.0, 0.0), (100.0, 2.0), 6)
    strip = measuring.parallelism(slanted, ACROSS)
    assert strip is not None and abs(strip.value - 2.0) < 4.0 * strip.deviation
    upright = measuring.perpendicularity(line((0.0, 0.0), (2.0, 100.0), 7), ACROSS)
    assert upright is not None and abs(upright.value - 2.0) < 4.0 * upright.deviation


def test_near_the_end_of_what_can_be_values_are_folded() -> None:
    square, same = measuring.angle(LEFT, ACROSS), measuring.distance(BIG, circle((50.0, 50.0), 12.0, 8))
    assert square is not None and square.folded and 89.0 < square.value <= 90.0
    assert same is not None and same.folded
    far = measuring.distance(BIG, SMALL)
    assert far is not None and not far.folded


def test_shapes_meet_where_they_should() -> None:
    corner = measuring.intersection(LEFT, ACROSS)
    assert corner is not None and corner.position == pytest.approx((10.0, 50.0), abs=0.1)
    first, second = measuring.intersections(ACROSS, BIG)
    assert first.position == pytest.approx((20.0, 50.0), abs=0.1) and second.position == pytest.approx((80.0, 50.0), abs=0.1)
    assert np.all(np.linalg.eigvalsh(first.covariance) > 0.0) and first.degrees_of_freedom > 10
    crossing = measuring.intersections(BIG, circle((98.0, 50.0), 30.0, 9))
    # Half of the centres' distance is 24 of a radius of 30: 18 up and down; the right of the way to the right is down.
    assert crossing[0].position == pytest.approx((74.0, 68.0), abs=0.2)
    assert crossing[1].position == pytest.approx((74.0, 32.0), abs=0.2) and len(crossing) == 2
    assert measuring.intersections(BIG, SMALL) == [] and measuring.intersections(LEFT, SMALL) == []
    on = measuring.point_on(ACROSS, 10.0)
    assert on.position[1] == pytest.approx(50.0, abs=0.1)
    ellipse = fitting.fit_ellipse(BIG.center + np.array([20.0, 9.0]) * unit_circle(40))
    assert ellipse is not None and measuring.center_of(ellipse).position == pytest.approx(BIG.center)


def unit_circle(count: int) -> NDArray[np.float64]:
    turn = np.linspace(0.0, 2.0 * math.pi, count, endpoint=False)
    return np.stack([np.cos(turn), np.sin(turn)], axis=1)


def test_uncertainties_of_points_add_up_along_the_way() -> None:
    a = MeasuredPoint((0.0, 0.0), np.array([[0.09, 0.0], [0.0, 4.0]]), 10.0)
    b = MeasuredPoint((20.0, 0.0), np.array([[0.16, 0.0], [0.0, 9.0]]), 40.0)
    told = measuring.distance(a, b)
    assert told is not None and told.value == 20.0 and told.deviation == pytest.approx(0.5)
    # Welch and Satterthwaite: 0.25^2 / (0.09^2 / 10 + 0.16^2 / 40)
    assert told.degrees_of_freedom == pytest.approx(0.0625 / (0.00081 + 0.00064))
    assert measuring.judge(*told[:3], upper=21.0).verdict == "pass"
    assert measuring.judge(*told[:3], upper=20.4).verdict == "undecided"
    assert pickle.loads(pickle.dumps(told)) == told


def test_what_has_no_relation_is_none_or_refused() -> None:
    assert measuring.line_distance(LEFT, line((40, 150), (40, 200))) is None
    with pytest.raises(ValueError, match="45 degrees"):
        measuring.line_distance(LEFT, ACROSS)
    with pytest.raises(ValueError, match="parallel"):
        measuring.intersection(LEFT, RIGHT)
    broken = LEFT._replace(point=(math.nan, 0.0))
    with pytest.raises(ValueError, match="not finite"):
        measuring.distance((0.0, 0.0), broken)


@pytest.mark.parametrize(("relation", "shapes", "told"), [
    (measuring.distance, (LEFT, RIGHT), "b: .*line_distance is for two lines"),
    (measuring.distance, (BIG, LEFT), "a: expected a measured point, or a place"),
    (measuring.distance, ("ab", (0.0, 0.0)), "a: expected a measured point, .* got str"),
    (measuring.distance, (None, (0.0, 0.0)), "a: .* got NoneType"),
    (measuring.distance, ((0.0, 1.0, 2.0), (0.0, 0.0)), "a: expected a place"),
    (measuring.gap, (BIG, LEFT), "b: expected a measured circle, got MeasuredLine"),
    (measuring.angle, ((0.0, 0.0), LEFT), "a: expected a measured line, got tuple"),
    (measuring.center_of, (LEFT,), "shape: expected a measured circle, arc or ellipse"),
    (measuring.intersections, (LEFT, RIGHT), "b: expected a measured circle"),
    (measuring.distance, (MeasuredPoint((0.0, 0.0), np.zeros(2)), (0.0, 0.0)), "a.covariance: expected"),
    (measuring.gap, (BIG._replace(covariance=np.zeros((2, 2))), BIG), r"a.covariance: expected .*\(3, 3\)"),
])
def test_other_things_are_refused_by_name(relation: Any, shapes: tuple[Any, ...], told: str) -> None:
    with pytest.raises(TypeError, match=told):
        relation(*shapes)


def test_chains_are_a_little_smoother_than_their_sigma() -> None:
    assert 1.0 < measuring.chain_smoothing(1.0) < 2.0
    with pytest.raises(ValueError, match="sigma: expected 0.5 to 20, got 0.1"):
        measuring.chain_smoothing(0.1)
