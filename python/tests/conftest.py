"""Pictures whose truth is known, for every test."""
from __future__ import annotations

import numpy as np
import pytest
from numpy.typing import NDArray


def disk_picture(radius: float = 30.0, center: tuple[float, float] = (64.0, 48.0), shape: tuple[int, int] = (96, 128),
                 levels: tuple[float, float] = (40.0, 200.0)) -> NDArray[np.uint8]:
    """A bright disk whose rim is blurred by 0.7 pixel, by its distance to the rim."""
    y, x = np.mgrid[: shape[0], : shape[1]]
    inside = radius - np.hypot(x - center[0], y - center[1])
    share = 0.5 * (1.0 + np.tanh(1.2 * inside))
    return np.asarray(np.rint(levels[0] + (levels[1] - levels[0]) * share), np.uint8)


def step_picture() -> NDArray[np.uint8]:
    """40 to the left and 200 to the right of x = 9.5."""
    image = np.full((20, 20), 40, np.uint8)
    image[:, 10:] = 200
    return image


@pytest.fixture
def disk() -> NDArray[np.uint8]:
    return disk_picture()


@pytest.fixture
def step() -> NDArray[np.uint8]:
    return step_picture()


@pytest.fixture
def checker() -> str:
    """The version of mypy, whose words differ from one to the next; skips where there is none."""
    return str(pytest.importorskip("mypy.version").__version__)
