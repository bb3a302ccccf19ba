"""Form of outlines whose true zones are known."""
from __future__ import annotations

import math
import pickle

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import measuring


def lobed(lobes: int, amplitude: float, noise: float = 0.0, count: int = 400) -> NDArray[np.float64]:
    """Radius 50 + amplitude cos(lobes angle) about (100, 80)."""
    angle = np.linspace(0.0, 2.0 * np.pi, count, endpoint=False)
    radius = 50.0 + amplitude * np.cos(lobes * angle) + np.random.default_rng(3).normal(0.0, noise, count)
    return np.stack([100.0 + radius * np.cos(angle), 80.0 + radius * np.sin(angle)], axis=1)


def test_the_ring_of_a_lobed_outline_is_that_of_its_lobes() -> None:
    found = measuring.minimum_zone_circle(lobed(2, 0.5))
    assert found is not None and found.center == pytest.approx((100.0, 80.0), abs=1e-6)
    assert found.value == pytest.approx(1.0, abs=1e-6) and found.freed == found.value and found.deviation == 0.0
    assert [found.inner_radius, found.outer_radius] == pytest.approx([49.5, 50.5], abs=1e-6)
    assert len(found.contacts) == 4 and found.contacts.dtype == np.int32
    around = measuring.minimum_circumscribed_circle(lobed(2, 0.5))
    within = measuring.maximum_inscribed_circle(lobed(3, 0.5, count=360))
    assert around is not None and around.outer_radius == pytest.approx(50.5, abs=1e-6)
    assert within is not None and within.inner_radius == pytest.approx(49.5, abs=1e-6)


def test_noise_that_is_told_is_taken_off() -> None:
    noisy = lobed(3, 0.5, noise=0.1)
    found = measuring.minimum_zone_circle(noisy, noise=0.1)
    assert found is not None and found.value > 1.3 and abs(found.freed - 1.0) < 3.0 * found.deviation < 0.2
    again = measuring.minimum_zone_circle(noisy, noise=0.1)
    other = measuring.minimum_zone_circle(noisy, noise=0.1, seed=2)
    assert again is not None and again[:3] == found[:3] and other is not None and other.freed != found.freed
    restored = pickle.loads(pickle.dumps(found))
    assert restored[:3] == found[:3] and np.array_equal(restored.contacts, found.contacts)


def test_the_strip_of_a_bent_line_is_its_sagitta() -> None:
    x = np.arange(0, 101)
    found = measuring.minimum_zone_line(np.stack([x, 5.0 + (x - 50.0) ** 2 / 2500.0], axis=1))
    assert found is not None and found.value == pytest.approx(1.0) and found.direction == pytest.approx((1.0, 0.0))
    assert found.to - found.from_ == pytest.approx(100.0) and sorted(found.contacts) == [0, 50, 100]
    whole = measuring.minimum_zone_line(np.array([[3, 0], [0, 0], [1, 0]]))
    assert whole is not None and whole.value == 0.0 and whole.angle == pytest.approx(180.0)


def test_no_circle_is_none_and_bad_input_is_refused() -> None:
    half = lobed(3, 0.0)[:150]
    assert measuring.maximum_inscribed_circle(half) is None
    line = [(0.0, 0.0), (1.0, 1.0), (2.0, 2.0), (3.0, 3.0)]
    with pytest.raises(ValueError, match="line"):
        measuring.minimum_zone_circle(line)
    with pytest.raises(ValueError, match="few"):
        measuring.minimum_zone_circle(line[:3])
    with pytest.raises(ValueError, match="not a finite number"):
        measuring.minimum_zone_line([(0.0, 0.0), (1.0, math.nan), (2.0, 0.0)])
    with pytest.raises(ValueError, match="noise is -1.0; 0 or more"):
        measuring.minimum_zone_line(line, noise=-1)
    with pytest.raises(ValueError, match="smoothing is 0.1; 0.3 to 50"):
        measuring.minimum_zone_line(line, point_noise="edge-chain", smoothing=0.1)
    with pytest.raises(ValueError, match="point_noise: expected one of 'independent', 'normal', 'edge-chain'"):
        measuring.minimum_zone_line(line, point_noise="chain")  # type: ignore[arg-type]
    with pytest.raises(TypeError, match=r"points: expected points: array of numbers of shape \(n, 2\), got float64 array"):
        measuring.minimum_zone_line(np.zeros((5, 3)))
    with pytest.raises(TypeError):
        measuring.minimum_zone_line(line, seed=-1)
