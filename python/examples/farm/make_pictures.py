"""Many small pictures of disks whose radii are known, some of them bad: for trying what is for very many.

    python3 make_pictures.py FOLDER [--count 20000]

The radius is 12 pixels, give or take what a lathe does; every two hundredth disk is too large, every two thousandth file is
cut off. Equal counts give equal pictures.
"""
from __future__ import annotations

import argparse
from pathlib import Path

import cv2
import numpy as np

SIZE = 48
PICTURES_A_FOLDER = 1000


def disk(number: int) -> np.ndarray:
    """The picture of a part."""
    random = np.random.default_rng(number)
    radius = random.normal(12.0, 0.02) + (0.3 if number % 200 == 77 else 0.0)
    x, y = SIZE / 2 + random.uniform(-3, 3, 2)
    rows, columns = np.mgrid[:SIZE, :SIZE]
    bright = 80.0 * (1.0 + np.tanh(1.2 * (radius - np.hypot(columns - x, rows - y))))
    return np.clip(np.rint(40.0 + bright + random.normal(0.0, 1.5, (SIZE, SIZE))), 0, 255).astype(np.uint8)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=Path)
    parser.add_argument("--count", type=int, default=20_000)
    given = parser.parse_args()
    for number in range(given.count):
        path = given.folder / f"{number // PICTURES_A_FOLDER:03d}" / f"part-{number:06d}.png"
        if path.exists():
            continue
        path.parent.mkdir(parents=True, exist_ok=True)
        content = cv2.imencode(".png", disk(number))[1].tobytes()
        path.write_bytes(content[:len(content) // 2] if number % 2000 == 1234 else content)


if __name__ == "__main__":
    main()
