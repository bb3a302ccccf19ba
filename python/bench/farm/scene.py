"""Pictures and the inspection that the measurements of this folder share."""
from __future__ import annotations

import importlib
from pathlib import Path
from typing import Any

import numpy as np
from numpy.typing import NDArray

from orxfunctions import analysis, fitting

cv2: Any = importlib.import_module("cv2")


def disks(number: int, rows: int = 480, columns: int = 640) -> NDArray[np.uint8]:
    """Six disks of known radii, blurred at their rims, with a little noise."""
    random = np.random.default_rng(number)
    y, x = np.mgrid[:rows, :columns]
    image = np.full((rows, columns), 40.0)
    for row in range(2):
        for column in range(3):
            radius = 0.11 * rows + random.uniform(0, 0.06 * rows)
            across = columns * (2 * column + 1) / 6 + random.uniform(-3, 3)
            down = rows * (2 * row + 1) / 4 + random.uniform(-3, 3)
            image += 80.0 * (1.0 + np.tanh(1.2 * (radius - np.hypot(x - across, y - down))))
    return np.asarray(np.clip(np.rint(image + random.normal(0, 2, image.shape)), 0, 255), np.uint8)


def write_pictures(folder: Path, count: int, *, different: int = 20, rows: int = 480, columns: int = 640) -> None:
    """So many files, of so many different pictures, as PNG."""
    folder.mkdir(parents=True, exist_ok=True)
    contents = [cv2.imencode(".png", disks(number, rows, columns))[1].tobytes() for number in range(different)]
    for number in range(count):
        path = folder / f"{number:06d}.png"
        if not path.exists():
            path.write_bytes(contents[number % different])


def inspect(image: NDArray[np.uint8]) -> dict[str, Any]:
    """Threshold, edges between the pixels, and the circles through them."""
    level = analysis.threshold_level(image)
    circles = [fitting.fit_circle(edge.points) for edge in analysis.edges(image, min_points=60)]
    return {"level": level, "radii": [circle.radius for circle in circles if circle]}


def empty(_: Any) -> dict[str, Any]:
    """What costs nothing."""
    return {}
