"""Arrays of any kind: an answer, or an exception with what was expected and what came; never a crash."""
from __future__ import annotations

from typing import Any, Callable

import numpy as np
import pytest
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st
from hypothesis.extra import numpy as arrays
from numpy.typing import NDArray

from orxfunctions import analysis

Function = Callable[..., Any]

GREY: list[Function] = [analysis.threshold_level, analysis.otsu_level, lambda a: analysis.level_for_count(a, 5),
                        analysis.threshold_quadrants, analysis.edges, analysis.edges_classic]
ANY: list[Function] = [analysis.focus, analysis.image_noise, analysis.enhance, lambda a: analysis.correct_gamma(a, 2.0),
                       analysis.to_gray, analysis.to_bgr, analysis.auto_canny, analysis.white_balance,
                       lambda a: analysis.caliper(a, (0, 0), (5, 0))]
BINARY: list[Function] = [analysis.contours, analysis.fill_holes, analysis.thinning,
                          lambda a: analysis.remove_small_objects(a, 3), lambda a: analysis.remove_short_lines(a, 3)]


def equal(a: Any, b: Any) -> bool:
    if isinstance(a, np.ndarray):
        return bool(np.array_equal(a, b))
    if isinstance(a, (list, tuple)):
        return len(a) == len(b) and all(map(equal, a, b))
    if isinstance(a, (analysis.Edges, analysis.ContrastEdges)):
        return all(equal(getattr(a, name), getattr(b, name)) for name in a.__slots__)
    return bool(a == b)


@st.composite
def views(draw: st.DrawFn) -> NDArray[np.uint8]:
    """A part of an array, with steps of either sign, transposed or not."""
    shape = draw(st.tuples(st.integers(1, 40), st.integers(1, 40)))
    base = draw(arrays.arrays(np.uint8, shape, elements=st.integers(0, 255), fill=st.integers(0, 255)))
    steps = draw(st.tuples(st.sampled_from([1, -1, 2, -3]), st.sampled_from([1, -1, 2, -3])))
    view = base[:: steps[0], :: steps[1]]
    return view.T if draw(st.booleans()) else view


@pytest.mark.parametrize("function", GREY + ANY + BINARY)
@settings(max_examples=25, deadline=None, suppress_health_check=[HealthCheck.too_slow])
@given(view=views())
def test_views_give_what_their_copies_give(function: Function, view: NDArray[np.uint8]) -> None:
    copy = np.ascontiguousarray(view)
    try:
        expected = function(copy)
    except ValueError as error:
        with pytest.raises(ValueError) as again:
            function(view)
        assert str(again.value) == str(error)
    else:
        assert equal(function(view), expected)
    assert np.array_equal(view, copy)


@pytest.mark.parametrize("function", GREY + ANY + BINARY)
@pytest.mark.parametrize("bad", [np.zeros((8, 8)), np.zeros((8, 8), np.int32), np.zeros((8, 8), complex), np.zeros(8, np.uint8),
                                 np.zeros((2, 2, 2, 2), np.uint8), np.zeros((8, 8, 7), np.uint8), np.uint8(3), None,
                                 "picture", [[1, 2], [3, 4]], np.array([[None]]), np.zeros((8, 8), "S3"), b"\0\0"],
                         ids=lambda bad: f"{type(bad).__name__}-{getattr(bad, 'dtype', '')}")
def test_what_is_no_image_is_named(function: Function, bad: Any) -> None:
    with pytest.raises(TypeError, match=r"^image: expected an? .*, got "):
        function(bad)


@pytest.mark.parametrize("function", GREY + ANY + BINARY)
def test_no_pixels_and_pictures_that_cannot_be_written(function: Function, disk: NDArray[np.uint8]) -> None:
    for shape in ((0, 5), (5, 0), (0, 0)):
        with pytest.raises(ValueError, match="image: expected at least one pixel"):
            function(np.zeros(shape, np.uint8))
    expected = function(disk)
    disk.flags.writeable = False
    assert equal(function(disk), expected)


def test_other_bytes_and_other_orders() -> None:
    words = np.arange(0, 60_000, 100, dtype=np.uint16).reshape(20, 30)
    swapped = words.astype(words.dtype.newbyteorder())
    with pytest.raises(TypeError, match="image: expected an image: uint8 or uint16 array"):
        analysis.focus(swapped)
    raw = np.zeros(1201, np.uint8)
    askew = raw[1:].view(np.uint16).reshape(20, 30)
    askew[...] = words
    assert not askew.flags.aligned and analysis.focus(askew) == analysis.focus(words)
    colour = np.dstack([words] * 3)
    assert equal(analysis.to_gray(colour[:, :, ::-1]), analysis.to_gray(np.ascontiguousarray(colour[:, :, ::-1])))


@pytest.mark.parametrize("points", [np.zeros((5, 3), int), np.zeros(6, int), np.zeros((5, 2), float), np.zeros((5, 2), bool),
                                    [[1, 2], [3]], "ab", None, [None], [("a", "b")], {1: 2}, 7])
def test_what_are_no_pixels_is_named(points: Any) -> None:
    with pytest.raises(TypeError, match=r"^contour: expected whole pixels: integer array of shape \(n, 2\), got "):
        analysis.contour_center(points)


def test_pixels_of_any_integers_within_32_bits() -> None:
    square = [(0, 0), (4, 0), (4, 4), (0, 4)]
    kinds: list[Any] = [square, np.array(square, np.int8), np.array(square, np.uint64), np.array(square)[:, None, :],
                        np.array(square, ">i4"), np.array(square + square, np.int64)[:4]]
    for kind in kinds:
        assert analysis.contour_center(kind) == (2.0, 2.0)
    for far in (2**31, -(2**31) - 1):
        with pytest.raises(ValueError, match="within 32 bits"):
            analysis.contour_center(np.array([(0, 0), (far, 0)], np.int64))
    with pytest.raises(ValueError, match="within 32 bits"):
        analysis.contour_center(np.array([(0, 0), (2**63, 0)], np.uint64))
