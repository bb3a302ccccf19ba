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
           seed: int = 1) -> NDArray[np.uint8]:
    """Bright disks (200) on a dark ground (50), rims blurred by a lens of 0.8 pixel; one has a dent, a bar lies beside."""
    y, x = np.mgrid[: shape[0], : shape[1]].astype(np.float64)
    share = np.zeros(shape)
    for part in parts:
        inside = part.diameter / 2 - np.hypot(x - part.x, y - part.y)
        share = np.maximum(share, 0.5 + 0.5 * np.tanh(inside))
    dent = 7.0 - np.hypot(x - (parts[1].x + parts[1].diameter / 2), y - parts[1].y)
    share = np.minimum(share, 0.5 - 0.5 * np.tanh(dent))
    bar = np.minimum(38.0 - np.abs(x - 283.0), 9.0 - np.abs(y - 158.0))
    share = np.maximum(share, 0.5 + 0.5 * np.tanh(bar))
    levels = 50.0 + 150.0 * share + np.random.default_rng(seed).normal(0.0, noise, shape)
    return np.asarray(np.clip(np.rint(levels), 0, 255), np.uint8)


if __name__ == "__main__":
    import cv2  # type: ignore[import]

    cv2.imwrite(sys.argv[1], render())
