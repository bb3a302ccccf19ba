"""Inspections and pictures for the tests of `batch`: what a process must be able to import."""
from __future__ import annotations

import os
import time
from pathlib import Path
from typing import Any

import numpy as np
from numpy.typing import NDArray

from orxfunctions import analysis
from orxfunctions._png import png_of

ABORTS, HANGS, GREEDY, RAISES, EXITS, NO_RECORD = 201, 202, 203, 204, 205, 206


def level(image: NDArray[np.uint8]) -> dict[str, Any]:
    """The threshold; what the first pixel says beside it is what may happen to an inspection."""
    trouble = int(image[0, 0])
    if trouble == ABORTS:
        os.abort()
    if trouble == HANGS:
        time.sleep(60)
    if trouble == GREEDY:
        return {"sum": np.ones(200 << 20, np.uint8).sum()}
    if trouble == RAISES:
        raise KeyError("no such part")
    if trouble == EXITS:
        os._exit(7)
    if trouble == NO_RECORD:
        return None  # type: ignore[return-value]
    return {"level": analysis.threshold_level(image), "mean": image.mean(), "none": float("nan"),
            "size": {"rows": len(image)}}


def slow(image: NDArray[np.uint8]) -> dict[str, Any]:
    time.sleep(0.01)
    return {"mean": image.mean()}


def write_picture(path: Path, number: int, trouble: int = 0) -> Path:
    """A picture of 48 x 64 of its own; the first pixel is `trouble`."""
    image = np.random.default_rng(number).integers(0, 200, (48, 64), np.uint8)
    image[:24] //= 4
    image[0, 0] = trouble
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(png_of(image))
    return path
