"""Writes the page of a benchmark run, and on request the picture of it that the documentation shows.

Usage: report_page.py [--picture FILE.svg] PAGE.html RESULTS_FOLDER...

Goals and notes are those beside this script. Of several folders, each of one run, the medians are shown.
"""

import json
import os
import pathlib
import platform
import sys

import report_growth
from report import figures, page, results, svg

# What the picture shows, where it was measured: a text and the goal's own benchmark and peer.
SHOWN = [
    ("sub-pixel edges, 5 MP / OpenCV calls", "edgesSubPix/5MP", "opencvCallsRefined/5MP"),
    ("Otsu's threshold, 5 MP / OpenCV", "threshold/otsu/1", "threshold/opencv_otsu/1"),
    ("RANSAC line, 2000 points / PCL", "ransac_line/2000", "pcl_line/2000"),
    ("circle fit, 2000 points / Eigen QR", "circle_weighted_first_pass/2000", "eigen_circle_qr/2000"),
    ("ellipse fit, 500 points / OpenCV", "fitEllipseNorm/500", "cv_fitEllipseDirect/500"),
    ("cubic fit, 10000 samples / Eigen QR", "cubicFit/10000", "eigenCubicQr/10000"),
    ("rigid motion, 1000 pairs / Eigen", "rigid_motion/1000", "eigen_umeyama/1000"),
    ("finding a part, 5 MP / one template", "find/5MP", "matchTemplate/5MP"),
    ("edges, lines, arcs, 5 MP / EdgeDrawing", "edgesAndSplit/parts_5MP", "edgeDrawing/lines_and_ellipses_5MP"),
    ("thinning, 5 MP / plain passes", "thinning/zhang_suen/2000", "thinning_plain/zhang_suen/2000"),
    ("holes' outlines, 5 MP / OpenCV", "contours/holes/2000", "opencv_contours/holes/2000"),
    ("calipers on a circle, 36 / OpenCV calls", "circle_calipers/36", "opencv_circle_calipers/36"),
]


def machine_of(folder):
    """Processor, cores, system and date in a line."""
    context = results.context_of(folder)
    processor = platform.machine()
    try:
        for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
            if line.startswith("model name"):
                processor = line.split(":", 1)[1].strip()
                break
    except OSError:
        pass
    cores = context.get("num_cpus", os.cpu_count())
    return f"{processor}, {cores} cores, {platform.system()}, {context.get('date', '')[:10]}"


def picture_of(judged, machine):
    by_names = {(row.goal["ours"], row.goal["peer"]): row for row in judged}
    rows = [(text, by_names.get((ours, peer))) for text, ours, peer in SHOWN]
    rows = [(text, row) for text, row in rows if row is not None and row.ratios]
    return svg.summary(rows, f"processor time; lines: goal, dashed the best that limits allow; {machine}")


def main():
    arguments = sys.argv[1:]
    picture = None
    if arguments[:1] == ["--picture"]:
        picture, arguments = pathlib.Path(arguments[1]), arguments[2:]
    if len(arguments) < 2:
        sys.exit(__doc__)
    target, folders = pathlib.Path(arguments[0]), arguments[1:]
    here = pathlib.Path(__file__).parent
    goals = json.loads((here / "goals.json").read_text())
    notes = json.loads((here / "growth_notes.json").read_text())
    judged = figures.judge(goals, [results.shortest_times(folder) for folder in folders])
    machine = machine_of(folders[0])
    target.parent.mkdir(parents=True, exist_ok=True)
    target.write_text(page.text_of(judged, report_growth.rows_of(folders, notes), machine, len(folders)))
    print(f"page: {target}")
    if picture is not None:
        picture.write_text(picture_of(judged, machine))
        print(f"picture: {picture}")


if __name__ == "__main__":
    main()
