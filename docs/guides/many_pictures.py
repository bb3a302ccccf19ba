"""The program of docs/guides/many-pictures.md."""
from __future__ import annotations

import json
import runpy
import sqlite3
import tempfile
from pathlib import Path
from typing import Any

import cv2
import numpy as np

import guide
from orxfunctions import batch

TREE = Path(__file__).resolve().parent.parent.parent
EXAMPLES = TREE / "python" / "examples" / "farm"
DISK = runpy.run_path(str(EXAMPLES / "make_pictures.py"))["disk"]
COUNT = 60


def write_pictures(folder: Path) -> None:
    """Disks of 24 pixels; number 7 is too large, 21 cut off in the middle of its file, 33 shows nothing, 40 is no picture."""
    folder.mkdir()
    for number in range(COUNT):
        image = DISK(77 if number == 7 else number)
        content = cv2.imencode(".png", np.full_like(image, 40) if number == 33 else image)[1].tobytes()
        if number == 21:
            content = content[: len(content) // 2]
        (folder / f"part-{number:02d}.png").write_bytes(b"no picture" if number == 40 else content)


def records_of(store: Path) -> list[tuple[str, str, str, Any]]:
    # [rows]
    with sqlite3.connect(store) as base:
        rows = base.execute("SELECT path, status, reason, record FROM results ORDER BY path").fetchall()
    # [rows end]
    return [(Path(path).name, status, reason, json.loads(record) if record else None) for path, status, reason, record in rows]


def diameters_of(records: list[tuple[str, str, str, Any]]) -> dict[str, tuple[float, str]]:
    return {name: (record["values"][0]["value"], record["verdict"])
            for name, status, _, record in records if status == "ok" and record["values"]}


def draw(diameters: dict[str, tuple[float, str]]) -> np.ndarray:
    """A run chart: each picture's diameter, green where it passes, red where it fails, yellow where it is undecided."""
    colours = {"pass": (70, 170, 60), "fail": (60, 60, 215), "undecided": (30, 180, 235)}
    canvas = np.full((260, 760, 3), 255, np.uint8)

    def at(diameter: float) -> int:
        return round(210 - (diameter - 23.7) / 1.1 * 180)

    for limit, name in ((23.8, "23.8"), (24.2, "24.2")):
        cv2.line(canvas, (60, at(limit)), (740, at(limit)), (120, 110, 100), 1)
        cv2.putText(canvas, name, (12, at(limit) + 5), cv2.FONT_HERSHEY_SIMPLEX, 0.42, (60, 50, 40), 1, cv2.LINE_AA)
    for name, (diameter, verdict) in diameters.items():
        number = int(name[5:7])
        cv2.circle(canvas, (70 + 11 * number, at(diameter)), 4, colours[verdict], cv2.FILLED, cv2.LINE_AA)
    for number in range(0, COUNT, 10):
        cv2.putText(canvas, str(number), (64 + 11 * number, 240), cv2.FONT_HERSHEY_SIMPLEX, 0.42, (60, 50, 40), 1, cv2.LINE_AA)
    return canvas


def main() -> None:
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        write_pictures(folder / "pictures")
        inspect, pictures, store = EXAMPLES / "inspect_disks.py", folder / "pictures", folder / "results.sqlite"
        # [run]
        summary = batch.run(inspect, pictures, store)
        print(summary)
        again = batch.run(inspect, pictures, store)  # nothing is measured twice
        # [run end]
        guide.expect(summary.measured == COUNT - 2 and summary.failed == 2, "all but two are measured")
        guide.expect(str(summary).startswith("58 measured, 1 fail, 1 not measured, 56 pass, 2 failed;"), "and so is told")
        guide.expect(again.measured == 0 and again.skipped == COUNT, "the second run measures nothing")
        records = records_of(store)
        reasons = {name: reason for name, status, reason, _ in records if status != "ok"}
        print(reasons)
        guide.expect(reasons == {"part-21.png": "a PNG that is cut off: its end chunk is missing",
                                 "part-40.png": "not a picture, or of a kind that can't be read (.png)"},
                     "those two with the reason")
        diameters = diameters_of(records)
        guide.expect(diameters["part-07.png"][1] == "fail", "the part that is too large fails")
        guide.expect("part-33.png" not in diameters, "a picture without a disk has no diameter")

        (pictures / "part-40.png").write_bytes(cv2.imencode(".png", DISK(40))[1].tobytes())
        changed = batch.run(inspect, pictures, store)  # a file that has changed is measured anew
        guide.expect(changed.measured == 1 and changed.skipped == COUNT - 1, "a changed file is measured, and no other")
        guide.save("many-pictures-run", draw(diameters_of(records_of(store))))


if __name__ == "__main__":
    guide.run(main)
