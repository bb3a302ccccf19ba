"""The classic estimators, primitives and profiles: truth that is known, refusals, None, equal seeds."""
from __future__ import annotations

import pickle
from concurrent.futures import ThreadPoolExecutor
from typing import Any, Callable

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import fitting

Ints = NDArray[np.int64]


def disk_outline(radius: int = 200, center: tuple[int, int] = (300, 250), count: int = 180) -> Ints:
    turn = np.linspace(0.0, 2.0 * np.pi, count, endpoint=False)
    places = np.stack([center[0] + radius * np.cos(turn), center[1] + radius * np.sin(turn)], axis=1)
    return np.asarray(np.rint(places), np.int64)


def strewn(count: int) -> Ints:
    return np.random.default_rng(4).integers(0, 600, (count, 2))


LEVEL = np.stack([np.arange(100), np.full(100, 40)], axis=1)
UPRIGHT = np.stack([np.full(60, 20), np.arange(60)], axis=1)


def test_classic_searches_find_line_and_circle() -> None:
    line = fitting.find_line_classic(np.concatenate([LEVEL, strewn(40)]), threshold=0.5)
    assert line is not None and abs(line.slope) < 0.01 and abs(line.intercept - 40.0) < 0.2
    assert set(range(100)) <= set(line.inliers.tolist()) and line.inliers.dtype == np.int32
    steep = fitting.find_line_classic(np.concatenate([LEVEL, UPRIGHT]), threshold=0.5, angle_range="absolute",
                                      angle_limit=(80.0, 90.0))
    assert steep is not None and abs(steep.slope) > 10.0
    circle = fitting.find_circle_classic(np.concatenate([disk_outline(), strewn(60)]), threshold=1.5, radius=(150, 250))
    assert circle is not None and circle.radius == pytest.approx(200.0, abs=3.0) and len(circle.inliers) > 60


def test_equal_seeds_give_equal_results_on_threads_too() -> None:
    points = np.concatenate([disk_outline(), strewn(200)])
    def search(seed: int) -> tuple[Any, Any]:
        line = fitting.find_line_classic(points, iterations=50, seed=seed)
        circle = fitting.find_circle_classic(points, iterations=50, radius=(20, 400), seed=seed)
        return line and line[:2], circle and circle[:3]
    alone = [search(seed) for seed in range(8)]
    with ThreadPoolExecutor(4) as pool:
        assert list(pool.map(search, list(range(8)) * 5)) == alone * 5
    assert len(set(alone)) > 4  # another seed, another result


def test_the_line_at_a_side() -> None:
    points = np.concatenate([LEVEL, UPRIGHT, UPRIGHT + [70, 0]])
    right = fitting.find_side_line(points, side="right", min_points=30)
    assert right is not None and set(right.points[:, 0]) <= {88, 89, 90, 91, 92} and len(right.points) + len(right.rest) == 220
    top = fitting.find_side_line(points, side="top", min_points=30)
    assert top is not None and abs(top.points[:, 1].mean() - 40.0) < 0.5
    assert fitting.find_side_line(UPRIGHT, side="bottom", min_points=30) is None
    with pytest.raises(ValueError, match="side: expected one of 'left'"):
        fitting.find_side_line(points, side="inside")  # type: ignore[arg-type]


def test_classic_circles_by_their_method() -> None:
    outline = disk_outline()
    found = [fitting.fit_circle_classic(outline), fitting.fit_circle_classic(outline, method="robust"),
             fitting.fit_circle_classic(np.concatenate([outline, strewn(60)]), method="ransac", radius=(150, 250))]
    for circle in found:
        assert circle is not None and circle[:3] == pytest.approx((300.0, 250.0, 200.0), abs=0.5)
    assert fitting.fit_circle_classic(outline, method="ransac", radius=(5.0, 50.0)) is None
    for points in (LEVEL, LEVEL[:2], LEVEL[:0]):
        with pytest.raises(ValueError, match="they determine no circle"):
            fitting.fit_circle_classic(points)
    with pytest.raises(ValueError, match="2 points; at least 3"):
        fitting.fit_circle_classic(LEVEL[:2], method="ransac")


def test_classic_lines_by_their_method() -> None:
    robust = fitting.fit_line_classic(LEVEL)
    ransac = fitting.fit_line_classic(np.concatenate([LEVEL, strewn(40)]), method="ransac", angle_tolerance=20.0,
                                      inlier_distance=1.0)
    for line in (robust, ransac):
        assert line is not None and line == pytest.approx((0.0, 40.0), abs=0.05)
    assert fitting.fit_line_classic(LEVEL, method="ransac", target_angle=60.0, angle_tolerance=10.0) is None
    with pytest.raises(ValueError, match="samples of 5 points; 2 and 3 are taken"):
        fitting.fit_line_classic(LEVEL, method="ransac", sample_size=5)


@pytest.mark.parametrize("method", ["direct", "ransac"])
def test_classic_ellipses(method: Any) -> None:
    turn = np.linspace(0.0, 2.0 * np.pi, 90, endpoint=False)
    points = np.stack([100 + 60 * np.cos(turn), 80 + 30 * np.sin(turn)], axis=1)
    ellipse = fitting.fit_ellipse_classic(points, method=method)
    assert ellipse is not None and ellipse[:4] == pytest.approx((100.0, 80.0, 60.0, 120.0), abs=0.01)
    assert ellipse.conic[5] == 1.0 and ellipse.inlier_ratio == 1.0 and ellipse.mean_error < 0.01
    assert fitting.fit_ellipse_classic(points, method=method, max_axis=(10.0, 50.0)) is None
    with pytest.raises(ValueError, match="5 points; at least 6 are taken"):
        fitting.fit_ellipse_classic(points[:5], method=method)
    with pytest.raises(ValueError, match="a coordinate is not a finite number"):
        fitting.fit_ellipse_classic(points * np.inf, method=method)


PIXEL_FITS: list[Callable[..., Any]] = [
    fitting.find_line_classic, fitting.find_circle_classic, fitting.fit_circle_classic, fitting.fit_line_classic,
    lambda points: fitting.find_side_line(points, side="left"), fitting.circle_through, fitting.angle_of]


@pytest.mark.parametrize("fit", PIXEL_FITS)
def test_pixel_estimators_take_whole_pixels_alone(fit: Callable[..., Any]) -> None:
    for wrong in ("points", None, LEVEL.astype(float), LEVEL[:, :1], [(1, 2, 3)]):
        with pytest.raises(TypeError, match="points: expected whole pixels"):
            fit(wrong)
    with pytest.raises(ValueError, match="within 32 bits"):
        fit([(0, 0), (1, 1), (2**40, 5)])
    if fit is not fitting.fit_circle_classic:
        with pytest.raises(ValueError, match="points"):
            fit(LEVEL[:0])


def test_primitives() -> None:
    assert fitting.circle_through([(10, 0), (0, 10), (-10, 0)]) == (0.0, 0.0, 10.0)
    with pytest.raises(ValueError, match="lie on a line"):
        fitting.circle_through(LEVEL[:3])
    with pytest.raises(ValueError, match="points: expected 3 points, got 4"):
        fitting.circle_through(LEVEL[:4])
    assert fitting.angle_of([(0, 0), (10, -10)]) == -45.0 and fitting.angle_of([(0, 0), (0, 9)]) == 90.0
    assert fitting.angle_of([(0, 0), (10, -10)], angle_range="0-180") == 135.0
    assert fitting.angle_of([(0, 0), (10, -10)], angle_range="absolute") == 45.0
    assert np.allclose(fitting.distance_to_line([(0, 0), (0, 10)], [(0, 5), (9, 5)]), 5.0)


def test_a_polynomial_follows_its_samples() -> None:
    x = np.arange(-10.0, 11.0)
    curve = fitting.Polynomial(np.stack([x, 3.0 - 0.5 * (x - 2.0) ** 2], axis=1), order=2)
    assert np.allclose(curve.coefficients, [1.0, 2.0, -0.5]) and np.allclose(curve(np.array([[2.0, 4.0]])), [[3.0, 1.0]])
    assert curve(2.0) == pytest.approx(3.0) and curve.slope(0.0) == pytest.approx(2.0)
    assert curve.extreme(-5, 5) == pytest.approx((2.0, 3.0)) and curve.extreme(0, 3, kind="min")[0] == 0.0
    assert curve.errors() == pytest.approx((0.0, 0.0, 1.0), abs=1e-9)
    assert np.allclose(curve.samples()[:, 0], x) and np.allclose(curve.slope_samples()[:, 1], 2.0 - x)
    again = pickle.loads(pickle.dumps(curve))
    assert np.array_equal(again.coefficients, curve.coefficients) and repr(again) == "Polynomial(order=2, 21 samples)"
    for points, order, text in (([(0, 0), (0, 1)], 1, ""), ([(0, 0), (1, 1)], -1, "order"), (np.empty((0, 2)), 1, "")):
        with pytest.raises(ValueError, match=text):
            fitting.Polynomial(points, order)  # type: ignore[arg-type]
    with pytest.raises(ValueError, match="5"):
        curve.extreme(5, 5)
    with pytest.raises(TypeError, match="x: expected numbers"):
        curve("2")  # type: ignore[arg-type]


def test_a_spline_passes_its_samples() -> None:
    x = np.linspace(0.0, 10.0, 41)
    curve = fitting.SplineCurve(np.stack([x, np.sin(x)], axis=1)[::-1], order=3)
    assert np.allclose(curve(x), np.sin(x), atol=1e-6) and np.isnan(curve(11.0)) and curve(np.empty(0)).shape == (0,)
    top = curve.extreme(1.0, 2.5)
    assert top == pytest.approx((np.pi / 2, 1.0), abs=0.02) and curve.extreme(kind="min")[1] == pytest.approx(-1.0, abs=0.001)
    ends, coefficients = curve.segments
    assert ends.shape == (38, 2) and coefficients.shape == (38, 4) and ends[0].tolist() == [0.0, 0.75]
    assert curve.samples(digits=1).shape == (101, 2)
    assert np.array_equal(pickle.loads(pickle.dumps(curve))(x), curve(x))
    with pytest.raises(ValueError, match="3 samples"):
        fitting.SplineCurve([(0, 0), (1, 1), (2, 2)], order=3)
    with pytest.raises(ValueError, match="bounds"):
        curve.extreme(0.0, np.inf)
