"""Automatic levels."""
from __future__ import annotations

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import analysis

METHODS = ["otsu", "triangle", "minimum", "intermodes", "huang", "iterative", "max-entropy", "isodata", "moments",
           "min-error", "shanbhag"]


def two_classes() -> NDArray[np.uint8]:
    """A dark ground about 60 and a quarter of bright pixels about 180."""
    random = np.random.default_rng(7)
    image = random.normal(60.0, 6.0, (100, 120))
    image[25:75, 30:90] = random.normal(180.0, 6.0, (50, 60))
    return np.asarray(np.rint(image), np.uint8)


@pytest.mark.parametrize("method", METHODS)
def test_every_method_parts_two_clear_classes(method: str) -> None:
    image = two_classes()
    level = analysis.threshold_level(image, method=method)  # type: ignore[arg-type]
    assert level is not None and 60 <= level < 180
    inside = (image[25:75, 30:90] > level).mean()
    if method not in ("max-entropy", "shanbhag", "triangle", "min-error", "moments"):  # which may follow a tail
        assert inside > 0.999 and (image > level).mean() == pytest.approx(0.25, abs=0.002)


def test_levels_of_known_pictures() -> None:
    image = np.full((10, 10), 40, np.uint8)
    image[:3] = 200
    level = analysis.otsu_level(image)
    assert level is not None and level.level == 40 and level.score == pytest.approx(0.3 * 0.7 * 160.0**2)
    assert analysis.level_for_count(image, 29) == 200
    assert analysis.level_for_count(image, 30) == 40
    assert analysis.level_for_count(image, 100) is None
    assert analysis.threshold_level(np.full((5, 5), 255, np.uint8)) is None


def test_quadrants_follow_the_light() -> None:
    light = np.linspace(0.2, 1.0, 120)[None, :] * np.ones((100, 1))
    scene = np.full((100, 120), 80.0)
    scene[20:80, 20:100] = 200.0
    image = np.asarray(np.rint(scene * light), np.uint8)
    binary = analysis.threshold_quadrants(image)
    assert set(np.unique(binary)) == {0, 255}
    truth = scene > 100
    assert ((binary > 0) == truth).mean() > ((image > (analysis.threshold_level(image) or 0)) == truth).mean()
