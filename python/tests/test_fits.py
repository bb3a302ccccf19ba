"""Fits and searches for measuring: truth that is known, what is refused and in which words, what is None."""
from __future__ import annotations

import pickle
from concurrent.futures import ThreadPoolExecutor
from typing import Any, Callable

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import analysis, fitting

Doubles = NDArray[np.float64]


def ring(count: int = 72, radius: float = 20.0, center: tuple[float, float] = (50.0, 40.0), sweep: float = 360.0) -> Doubles:
    turn = np.radians(np.arange(count) * sweep / count)
    return np.stack([center[0] + radius * np.cos(turn), center[1] + radius * np.sin(turn)], axis=1)


def row(count: int = 50, slope: float = 0.5, intercept: float = 3.0) -> Doubles:
    x = np.arange(float(count))
    return np.stack([x, slope * x + intercept], axis=1)


def noisy(points: Doubles, noise: float, seed: int = 5) -> Doubles:
    return points + np.random.default_rng(seed).normal(0.0, noise, points.shape)


def strewn(points: Doubles, count: int, seed: int = 3) -> Doubles:
    return np.concatenate([points, np.random.default_rng(seed).uniform(0.0, 100.0, (count, 2))])


def test_a_line_is_where_it_is_and_uncertain_at_its_ends() -> None:
    line = fitting.fit_line(noisy(row(), 0.1))
    assert line is not None and line.report.used.dtype == np.bool_ and line.report.used.all()
    assert abs(line.angle - np.degrees(np.arctan(0.5))) < 4 * line.angle_deviation
    slope, intercept = line.slope_form()
    assert abs(slope - 0.5) < 0.01 and abs(intercept - 3.0) < 0.2
    assert 0.07 < line.report.noise < 0.14 and line.report.degrees_of_freedom == pytest.approx(48.0)
    assert np.abs(line.signed_distance(row())).max() < 0.1
    x, y = line.point
    assert line.signed_distance((x + 2 * line.normal[0], y + 2 * line.normal[1])) == pytest.approx(2.0)
    assert line.deviation_at(0.0) == pytest.approx(line.offset_deviation)
    assert line.deviation_at(np.array([0.0, 30.0]))[1] > 2 * line.offset_deviation
    assert np.allclose(line.start, row()[0], atol=0.5) and np.allclose(line.end, row()[-1], atol=0.5)


@pytest.mark.parametrize("fit", [fitting.fit_line, fitting.fit_circle, fitting.fit_arc, fitting.fit_ellipse])
def test_shapes_have_every_field(fit: Callable[..., Any]) -> None:
    shape = fit(noisy(ring(sweep=200.0), 0.05))
    assert shape is not None and len(shape) == len(shape._fields) and shape == type(shape)(*shape)
    assert len(shape.report) == len(shape.report._fields) and shape.report is shape[-1]


def test_an_upright_line_has_no_slope() -> None:
    line = fitting.fit_line(np.array([[3, 0], [3, 1], [3, 5], [3, 9]]))
    assert line is not None and abs(line.angle) == pytest.approx(90.0)
    assert abs(line.slope_form()[0]) > 1e12


def test_an_arc_knows_its_ends() -> None:
    arc = fitting.fit_arc(ring(91, sweep=91.0))
    assert arc is not None
    assert np.allclose(arc.start, (70.0, 40.0)) and np.allclose(arc.end, (50.0, 60.0))
    assert arc.length == pytest.approx(10.0 * np.pi) and arc.sweep == pytest.approx(90.0)
    assert np.allclose(arc.at(45.0), arc.middle) and arc.circle.radius == arc.radius == pytest.approx(20.0)
    assert arc.signed_distance((80.0, 40.0)) == pytest.approx(10.0)


def test_an_ellipse_answers_distances_and_feet() -> None:
    turn = np.radians(np.arange(0, 360, 5))
    ellipse = fitting.fit_ellipse(np.stack([50 + 30 * np.cos(turn), 40 + 20 * np.sin(turn)], axis=1))
    assert ellipse is not None and ellipse.covariance.shape == (5, 5)
    assert (ellipse.semi_major, ellipse.semi_minor) == pytest.approx((30.0, 20.0))
    places = np.array([[90.0, 40.0], [50.0, 70.0], [50.0, 45.0]])
    assert np.allclose(ellipse.signed_distance(places), [10.0, 10.0, -15.0])
    assert np.allclose(ellipse.nearest(places), [[80.0, 40.0], [50.0, 60.0], [50.0, 60.0]])
    assert ellipse.signed_distance((90, 40)) == pytest.approx(10.0)
    assert np.allclose(ellipse.signed_distance(ellipse.at(np.arange(0.0, 360.0, 30.0))), 0.0, atol=1e-9)
    circle = fitting.fit_ellipse(noisy(ring(), 0.05))
    assert circle is not None and not circle.angle_told and circle.angle_deviation == pytest.approx(180 / np.sqrt(12))


def test_an_edge_passes_on_what_its_finder_knows(disk: NDArray[np.uint8]) -> None:
    edge = analysis.edges(disk)[0]
    whole = fitting.fit_circle(edge, sigma=1.0)
    assert whole is not None and whole.sweep == 360.0
    assert abs(whole.radius - 30.0) < 0.01 and np.allclose(whole.center, (64.0, 48.0), atol=0.005)
    alone = fitting.fit_circle(edge.points, noise="normal")
    assert alone is not None
    # Neighbours along a chain see the same pixels: they are worth less than as many points of their own.
    assert whole.report.effective_points < 0.5 * alone.report.effective_points
    for shape in (fitting.fit_arc(edge), fitting.fit_ellipse(edge), fitting.find_circle(edge), fitting.find_ellipse(edge)):
        assert shape is not None and np.allclose(shape.center, (64.0, 48.0), atol=0.01)
    assert fitting.fit_line(edge) is not None
    with pytest.raises(ValueError, match="sigma: expected 0.5 to 20, got 0.2"):
        fitting.fit_circle(edge, sigma=0.2)
    with pytest.raises(ValueError, match="sigma: expected 0.5 to 20, got 99"):
        fitting.find_circle(edge, sigma=99.0)


def test_outliers_and_deviations_have_their_say() -> None:
    points = noisy(ring(), 0.02)
    points[::9] += 15.0
    plain, robust = fitting.fit_circle(points), fitting.fit_circle(points, loss="tukey")
    assert robust is not None and abs(robust.radius - 20.0) < 0.02 and not robust.report.used[::9].any()
    assert plain is not None and abs(plain.center[0] - 50.0) > 1.0
    deviations = np.full(72, 0.02)
    deviations[::9] = 0.0
    weighted = fitting.fit_circle(points, deviations=deviations, absolute_deviations=True)
    assert weighted is not None and abs(weighted.radius - 20.0) < 0.02
    assert weighted.report.used_points == 64 and np.isinf(weighted.report.degrees_of_freedom)


FITS: list[Callable[..., Any]] = [fitting.fit_line, fitting.fit_circle, fitting.fit_arc, fitting.fit_ellipse,
                                  fitting.find_line, fitting.find_circle, fitting.find_ellipse, fitting.find_lines,
                                  fitting.find_circles]


@pytest.mark.parametrize("fit", FITS)
def test_every_fit_refuses_in_the_words_of_python(fit: Callable[..., Any]) -> None:
    for wrong in ("points", None, 5, ring().astype(str), ring()[:, :1], np.zeros((3, 4, 2)), [object()], [(1, 2, 3)]):
        with pytest.raises(TypeError, match="points: expected points: array of numbers of shape"):
            fit(wrong)
    with pytest.raises(ValueError, match="too few points"):
        fit(np.empty((0, 2)))
    with pytest.raises(ValueError, match="not a finite number"):
        fit([(0.0, 0.0), (np.nan, 1.0), (5.0, 2.0), (1.0, 7.0), (9.0, 9.0), (4.0, 4.0), (3.0, 2.5)] * 3)
    with pytest.raises(ValueError, match="too large coordinates"):
        fit(ring() * 1e9)
    with pytest.raises(ValueError, match="deviations: expected one finite number of 0 or more for each of the 72 points, "
                                         "got 3 numbers"):
        fit(ring(), deviations=[1.0, 2.0, 3.0])
    with pytest.raises(TypeError, match="deviations: expected numbers"):
        fit(ring(), deviations="wide")
    with pytest.raises(ValueError, match="absolute_deviations: expected deviations beside it"):
        fit(ring(), absolute_deviations=True)
    with pytest.raises(ValueError, match="smoothing: expected 0.3 to 50, got 0.1"):
        fit(ring(), noise="edge-chain", smoothing=0.1)
    with pytest.raises(ValueError, match="max_iterations: expected 1 to 1000, got 0"):
        fit(ring(), max_iterations=0)
    with pytest.raises(ValueError, match="noise: expected one of 'independent', 'normal', 'edge-chain', got 'white'"):
        fit(ring(), noise="white")


def test_options_of_the_loss_are_named() -> None:
    with pytest.raises(ValueError, match="tuning: expected 0 or 0.1 to 100, got 0.01"):
        fitting.fit_circle(ring(), loss="huber", tuning=0.01)
    with pytest.raises(ValueError, match="scale: expected 0 or more, got -1"):
        fitting.fit_line(row(), loss="huber", scale=-1.0)
    with pytest.raises(ValueError, match="loss: expected one of 'least-squares'"):
        fitting.fit_line(row(), loss="l1")  # type: ignore[arg-type]


@pytest.mark.parametrize(("option", "text"), [
    ({"tolerance": 0.0}, "tolerance: expected more than 0, got 0"),
    ({"confidence": 1.0}, "confidence: expected more than 0 and less than 1, got 1"),
    ({"max_trials": 0}, "max_trials: expected 1 to 10000000, got 0"),
    ({"min_support": 1.5}, "min_support: expected 0 to 1, got 1.5"),
    ({"min_points": -1}, "min_points: expected 0 or more, got -1"),
    ({"min_radius": -1.0}, "min_radius: expected 0 or more, got -1"),
    ({"min_radius": 9.0, "max_radius": 8.0}, "max_radius: expected min_radius or more, got 8"),
    ({"most": -1}, "most: expected 0 or more, got -1"),
])
def test_options_of_a_search_are_named(option: dict[str, Any], text: str) -> None:
    with pytest.raises(ValueError, match=text):
        fitting.find_circles(ring(), **option)
    with pytest.raises(ValueError, match="angle_tolerance: expected 0 to 90, got 91"):
        fitting.find_line(row(), angle_tolerance=91.0)
    with pytest.raises(TypeError, match="seed: expected a whole number, got float"):
        fitting.find_line(row(), seed=1.5)  # type: ignore[arg-type]


def test_what_follows_no_such_shape_is_none_and_what_can_not_is_refused() -> None:
    assert fitting.fit_circle(noisy(ring(40, sweep=4.0), 0.1)) is None
    square = np.random.default_rng(2).uniform(0.0, 100.0, (200, 2))
    assert fitting.find_circle(square, tolerance=0.2) is None and fitting.find_lines(square, tolerance=0.1) == []
    assert fitting.find_circle(row()) is None and fitting.find_circles(row()) == []
    with pytest.raises(ValueError, match="on a straight line"):
        fitting.fit_circle(row())
    with pytest.raises(ValueError, match="all points lie in one place"):
        fitting.fit_line(np.full((9, 2), 4))


def test_searches_find_what_is_among_strewn_points() -> None:
    circle = fitting.find_circle(strewn(noisy(ring(), 0.05), 150), tolerance=0.3, min_radius=10.0, max_radius=30.0)
    assert circle is not None and abs(circle.radius - 20.0) < 0.05 and circle.report.used[:72].sum() > 65
    line = fitting.find_line(strewn(noisy(row(), 0.05), 80), tolerance=0.3, angle=26.0, angle_tolerance=5.0)
    assert line is not None and line.angle % 180.0 == pytest.approx(26.565, abs=0.3)
    two = np.concatenate([row(60), row(40, slope=-1.0, intercept=60.0)])
    lines = fitting.find_lines(two, tolerance=0.2)
    assert [found.angle % 180.0 for found in lines] == pytest.approx([26.565, 135.0], abs=0.1)
    assert len(fitting.find_lines(two, tolerance=0.2, most=1)) == 1
    # A point of both lines supports one of them only.
    assert not (lines[0].report.used & lines[1].report.used).any()
    circles = fitting.find_circles(np.concatenate([ring(100), ring(60, radius=8.0)]), tolerance=0.2)
    assert [round(found.radius, 3) for found in circles] == [20.0, 8.0]


def test_equal_seeds_give_equal_results_on_threads_too() -> None:
    points = strewn(noisy(ring(), 0.3), 150)
    with ThreadPoolExecutor(4) as pool:
        found = list(pool.map(lambda seed: fitting.find_circle(points, tolerance=1.0, seed=seed), [1, 2, -1, 2**70] * 10))
    first = fitting.find_circle(points, tolerance=1.0)
    assert first is not None
    for again in found[::4]:
        assert again is not None and again.center == first.center and again.radius == first.radius


def test_views_of_any_kind_are_read_as_they_are() -> None:
    expected = fitting.fit_circle(ring())
    backwards = np.ascontiguousarray(ring()[::-1])[::-1]
    swapped = np.ascontiguousarray(ring()[:, ::-1])[:, ::-1]
    frozen = ring()
    frozen.setflags(write=False)
    assert expected is not None
    for view in (backwards, swapped, frozen, np.asfortranarray(ring()), ring().astype(">f8"), ring()[:, None, :],
                 ring().tolist()):
        again = fitting.fit_circle(view)
        assert again is not None and again.radius == expected.radius


def test_shapes_are_pickled_and_shown() -> None:
    shapes = [fitting.fit_line(noisy(row(), 0.1)), fitting.fit_circle(noisy(ring(), 0.1)),
              fitting.fit_arc(noisy(ring(), 0.1)), fitting.fit_ellipse(noisy(ring(), 0.1))]
    for shape in shapes:
        assert shape is not None
        again = pickle.loads(pickle.dumps(shape))
        assert type(again) is type(shape) and np.array_equal(again.covariance, shape.covariance)
        assert np.array_equal(again.report.used, shape.report.used)
        assert repr(shape).startswith(type(shape).__name__ + "(") and "+-" in repr(shape) and "array" not in repr(shape)
        assert "<table>" in shape._repr_html_() and "72 points" in repr(shape) or "50 points" in repr(shape)
    assert shapes[0] is not None and "of 50 points, noise=" in repr(shapes[0].report)


def test_distances_take_places_alone() -> None:
    circle = fitting.fit_circle(ring())
    assert circle is not None and np.allclose(circle.at(90.0), (50.0, 60.0)) and circle.at(np.arange(3)).shape == (3, 2)
    assert np.allclose(circle.signed_distance([(50.0, 40.0), (50.0, 70.0)]), [-20.0, 10.0])
    wrongs: list[Any] = ["here", [(1.0, 2.0, 3.0)], [("1", "2")], None]
    for wrong in wrongs:
        with pytest.raises(TypeError, match="points: expected points"):
            circle.signed_distance(wrong)


def test_coverage_is_students() -> None:
    assert fitting.coverage_factor(0.95, np.inf) == pytest.approx(1.959964, abs=1e-6)
    assert fitting.coverage_factor(0.95, 1.0) == pytest.approx(12.7062, abs=1e-4)
    with pytest.raises(ValueError, match="a probability of 1 and 3 degrees of freedom"):
        fitting.coverage_factor(1.0, 3.0)
