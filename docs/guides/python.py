"""The program of docs/guides/python.md."""
from __future__ import annotations

import runpy
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any

import cv2
import numpy as np

import guide
from orxfunctions import analysis, drawing, fitting, measuring

TREE = Path(__file__).resolve().parent.parent.parent
EXAMPLE = runpy.run_path(str(TREE / "python" / "examples" / "parts_picture.py"))


def nearest_to(circles: Any, x: float, y: float) -> Any:
    return min(circles, key=lambda circle: float(np.hypot(circle.center[0] - x, circle.center[1] - y)))


def measure() -> None:
    image = EXAMPLE["render"]()
    # [measure]
    level = analysis.threshold_level(image)               # a number: image > level is the binary picture
    edges = analysis.edges(image, min_points=60)          # chains of points between the pixels
    found = [fitting.find_circle(edge, min_support=0.8) for edge in edges]
    circles = [circle for circle in found if circle]      # None: a bar is no circle
    # [measure end]
    # [judge]
    for circle in circles:
        diameter, deviation = 2 * circle.radius, 2 * circle.radius_deviation
        judged = measuring.judge(diameter, deviation, circle.report.degrees_of_freedom, lower=58.7, upper=81.7)
        print(f"diameter {diameter:.3f} +- {deviation:.3f}: {judged.verdict}")
    # [judge end]
    stated = ((81.604, 0.004), (104.900, 0.004), (64.354, 0.005), (70.201, 0.004), (58.804, 0.004))
    for part, (diameter, deviation) in zip(EXAMPLE["PARTS"], stated):
        nearest = nearest_to(circles, part.x, part.y)
        guide.expect_about(2 * nearest.radius, diameter, 0.002, "the diameter that the page prints")
        guide.expect_about(2 * nearest.radius_deviation, deviation, 0.001, "its uncertainty")
    guide.expect(level is not None and 50 < level < 200, "the level lies between ground and parts")
    guide.expect(len(circles) == len(EXAMPLE["PARTS"]), "five parts are round")
    for part in EXAMPLE["PARTS"]:
        nearest = nearest_to(circles, part.x, part.y)
        guide.expect(abs(2 * nearest.radius - part.diameter) < 0.1, "each diameter is right to a tenth of a pixel")
        judged = measuring.judge(2 * nearest.radius, 2 * nearest.radius_deviation, nearest.report.degrees_of_freedom,
                                 lower=58.7, upper=81.7)
        guide.expect(judged.verdict == ("pass" if part.diameter < 82 else "fail"), "the largest part fails")
    large = cv2.resize(image, None, fx=2, fy=2, interpolation=cv2.INTER_CUBIC)
    rings = [(2 * c.center[0] + 0.5, 2 * c.center[1] + 0.5, 2 * c.radius) for c in circles]
    guide.save("python-circles", drawing.show(large, circles=rings, thickness=2).array)


def refuse() -> None:
    image = np.zeros((48, 64), np.uint8)
    messages = []
    # [refused]
    for wrong in (lambda: analysis.threshold_level(image.astype("float32")), lambda: analysis.edges(image, sigma=0.1)):
        try:
            wrong()
        except (TypeError, ValueError) as problem:
            messages.append(f"{type(problem).__name__}: {problem}")
    # [refused end]
    print("\n".join(messages))
    guide.expect(messages == ["TypeError: image: expected a grey image: uint8 array of shape (rows, columns), "
                              "got float32 array of shape (48, 64)",
                              "ValueError: sigma is 0.1; 0.5 to 20 are taken"],
                 "another type is a TypeError, an option out of range a ValueError")
    guide.expect(len(analysis.edges(image)) == 0, "a picture with nothing in it is no mistake")


def share() -> None:
    # [threads]
    images = [EXAMPLE["render"](seed=seed, fine=2) for seed in range(6)]
    with ThreadPoolExecutor() as pool:
        together = list(pool.map(analysis.edges, images))
    # [threads end]
    alone = [analysis.edges(image) for image in images]
    guide.expect(all(np.array_equal(a.points, b.points) for a, b in zip(together, alone)), "threads change no result")


def main() -> None:
    measure()
    refuse()
    share()


if __name__ == "__main__":
    guide.run(main)
