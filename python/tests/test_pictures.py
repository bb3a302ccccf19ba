"""Outlines of binary pictures, and pictures made of pictures."""
from __future__ import annotations

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import analysis


def frame() -> NDArray[np.bool_]:
    """A frame of 20 x 10 pixels with a hole of 16 x 6, and a single pixel."""
    image = np.zeros((20, 30), bool)
    image[2:12, 4:24] = True
    image[4:10, 6:22] = False
    image[16, 2] = True
    return image


def test_contours_by_type_and_limits() -> None:
    binary = frame()
    assert len(analysis.contours(binary)) == 2 and len(analysis.contours(binary, "all")) == 3
    largest = analysis.contours(binary, "largest")[0]
    assert largest.dtype == np.int32 and len(largest) == 2 * (19 + 9)
    assert analysis.contour_center(largest) == pytest.approx((13.5, 6.5))
    assert analysis.contour_center(largest, mode="circle") == pytest.approx((13.5, 6.5), abs=0.01)
    corners = analysis.contours(binary, "largest", points="corners")[0]
    assert sorted(map(tuple, corners)) == [(4, 2), (4, 11), (23, 2), (23, 11)]
    assert len(analysis.contours(binary, min_area=10)) == 1 and analysis.contours(binary, min_area=1000) == []
    assert len(analysis.remove_small_contours(analysis.contours(binary), 10.0)) == 1
    same = analysis.contours(np.where(binary, np.uint8(7), np.uint8(0)), "all")
    assert all(np.array_equal(a, b) for a, b in zip(same, analysis.contours(binary, "all")))
    with pytest.raises(ValueError, match="a contour without points"):
        analysis.contour_center(np.zeros((0, 2), np.int32))


def test_binary_pictures_stay_of_their_kind() -> None:
    binary = frame()
    filled = analysis.fill_holes(binary)
    assert filled.dtype == np.bool_ and filled.sum() == 200 + 1
    assert analysis.fill_holes(binary, max_area=50).sum() == binary.sum()
    bytes_in = np.where(binary, np.uint8(9), np.uint8(0))
    assert set(np.unique(analysis.fill_holes(bytes_in))) == {0, 9, 255}
    assert analysis.remove_small_objects(binary, 2).sum() == binary.sum() - 1
    thin = analysis.thinning(filled)
    assert thin.dtype == np.bool_ and 0 < thin[2:12].sum() < 30
    assert not analysis.remove_short_lines(thin, 1.0)[16, 2]


def test_enhancement_keeps_kind_and_size_and_does_what_it_says() -> None:
    ramp = np.tile(np.arange(0, 256, 2, dtype=np.uint8), (40, 1))
    assert analysis.correct_gamma(ramp, 0.5)[0, 32] == round(255 * (64 / 255) ** 0.5)
    assert analysis.stretch_log(ramp)[0, 32] == round(255 * np.log(65) / np.log(256))
    assert analysis.suppress_highlights(ramp).max() <= 0.85 * 255 + 1
    words = np.asarray(ramp * 257.0, np.uint16)
    for method in ("equalize", "detail"):
        assert analysis.enhance(words, method=method).dtype == np.uint16  # type: ignore[arg-type]
    colour = np.dstack([ramp // 2, ramp, ramp])
    gains = analysis.white_balance_gains(colour)
    assert gains.blue > gains.red and gains.green == pytest.approx(gains.red)
    balanced = analysis.apply_white_balance(colour, gains)
    assert np.array_equal(balanced, analysis.white_balance(colour)) and balanced.shape == colour.shape
    means = balanced.reshape(-1, 3).mean(axis=0)
    assert np.ptp(means) < 1.0
    assert analysis.to_bgr(ramp).shape == (*ramp.shape, 3)
    assert analysis.to_gray(colour)[0, 50] == round(0.114 * 50 + 0.587 * 100 + 0.299 * 100)
    assert analysis.to_gray(np.full((2, 2), 1023, np.uint16), bits=10)[0, 0] == 255


def test_flattening_evens_out_the_light() -> None:
    light = np.tile(np.linspace(60.0, 160.0, 200), (120, 1))
    light[50:60, 95:105] += 60.0
    image = np.asarray(np.rint(light), np.uint8)
    flat = analysis.flatten_light(image, window=31)
    assert flat[55, 100] > 50 and np.median(flat) < 4
    assert abs(int(analysis.background(image, window=31)[55, 100]) - 110) < 6


def test_one_number_for_a_picture(disk: NDArray[np.uint8]) -> None:
    soft = np.asarray((np.roll(disk, 1, 1) / 3.0 + disk / 3.0 + np.roll(disk, -1, 1) / 3.0), np.uint8)
    for measure in ("gray-difference", "brenner", "tenengrad", "laplacian"):
        sharp = analysis.focus(disk, measure=measure)  # type: ignore[arg-type]
        assert sharp > analysis.focus(soft, measure=measure) > 0.0  # type: ignore[arg-type]
    noisy = np.asarray(np.clip(np.random.default_rng(3).normal(100.0, 5.0, (200, 200)), 0, 255).round(), np.uint8)
    assert analysis.image_noise(noisy) == pytest.approx(5.0, rel=0.1)
    edges = analysis.auto_canny(disk, method="otsu")
    assert set(np.unique(edges)) == {0, 255} and 150 < (edges > 0).sum() < 300
    low, high = analysis.canny_thresholds(disk, method="otsu")
    assert low == pytest.approx(high / 2)
    gradient = np.zeros((40, 40), np.int16)
    gradient[:, 20] = 40 * 256
    assert analysis.edge_threshold(gradient, np.zeros_like(gradient)) == 0.0  # 40 pixels are fewer than 2.5 x 80
    gradient[:, 15:25] = 40 * 256
    assert analysis.edge_threshold(gradient, np.zeros_like(gradient)) == 40.0
    assert analysis.edge_threshold(gradient[:1, :1], gradient[:1, :1]) is None
    with pytest.raises(TypeError, match="gx: expected a gradient: int16 array"):
        analysis.edge_threshold(gradient.astype(np.uint16), gradient)
