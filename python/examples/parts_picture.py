"""Renders a picture of round parts whose truth is known, docs/images/python-parts.png of the sources.

    python3 parts_picture.py FILE
"""
from __future__ import annotations

import sys
from typing import NamedTuple

import numpy as np
from numpy.typing import NDArray


class Part(NamedTuple):
    """A disk; pixels."""

    x: float
    y: float
    diameter: float


PARTS = (Part(62.3, 58.7, 81.6), Part(171.4, 72.2, 104.9), Part(283.1, 51.8, 64.35), Part(84.6, 158.9, 70.2),
         Part(196.25, 176.4, 58.8))


def render(parts: tuple[Part, ...] = PARTS, shape: tuple[int, int] = (220, 340), noise: float = 2.0,
           seed: int = 1, fine: int = 8) -> NDArray[np.uint8]:
    """Bright disks (200) on a dark ground (50), as pixels gather light over their area; the second has a dent, and a bar
    lies beside them."""
    y, x = (np.mgrid[: shape[0] * fine, : shape[1] * fine] + 0.5) / fine - 0.5
    bright = (np.abs(x - 283.0) < 38.0) & (np.abs(y - 158.0) < 9.0)
    for part in parts:
        bright |= np.hypot(x - part.x, y - part.y) < part.diameter / 2
    bright &= np.hypot(x - (parts[1].x + parts[1].diameter / 2), y - parts[1].y) > 7.0
    share = bright.reshape(shape[0], fine, shape[1], fine).mean(axis=(1, 3))
    levels = 50.0 + 150.0 * share + np.random.default_rng(seed).normal(0.0, noise, shape)
    return np.asarray(np.clip(np.rint(levels), 0, 255), np.uint8)


if __name__ == "__main__":
    import cv2  # type: ignore[import]

    cv2.imwrite(sys.argv[1], render())
