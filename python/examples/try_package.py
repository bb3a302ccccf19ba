"""Tries an installed package: that it is the one below FOLDER, measures what is known, and refuses what it should.

    python3 try_package.py FOLDER
"""
import pickle
import sys
from pathlib import Path

import numpy as np

import orxfunctions
from orxfunctions import analysis
from parts_picture import PARTS, render


def main() -> None:
    place = Path(orxfunctions.__file__).resolve()
    assert Path(sys.argv[1]).resolve() in place.parents, f"another package is found first: {place}"
    image = render()
    level = analysis.threshold_level(image)
    assert level is not None and 90 < level < 160, f"the threshold between 50 and 200 is {level}"
    edges = pickle.loads(pickle.dumps(analysis.edges(image, min_points=60)))
    for part in PARTS:
        near = min(edges, key=lambda edge: float(np.hypot(*(edge.points.mean(axis=0) - [part.x, part.y]))))
        radii = np.hypot(near.points[:, 0] - part.x, near.points[:, 1] - part.y)
        assert abs(2.0 * float(np.median(radii)) - part.diameter) < 0.1, f"{part}: {2.0 * np.median(radii)}"
    try:
        analysis.threshold_level(image.astype(np.float32))
    except TypeError as error:
        assert "uint8" in str(error) and "float32" in str(error), error
    else:
        raise AssertionError("a picture of floating-point numbers was taken")
    print(f"orxfunctions {orxfunctions.__version__} in {place.parent}: {edges}")


if __name__ == "__main__":
    main()
