"""Where things are: this tree, what is built of it, the public headers with their rooms."""
from __future__ import annotations

import re
import sys
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent.parent
BUILT = TREE / "build" / "docs"
SOURCE = BUILT / "source"

sys.path.insert(0, str(TREE / "python" / "tools"))

from cpp_names import public_headers  # noqa: E402

ROOMS = {
    "orxFunctions": "The whole",
    "analysis": "Analysis: thresholds, edges, calipers, image operators",
    "fitting": "Fitting: primitives, estimators, searches, curves",
    "segmentation": "Segmentation: contours to lines and arcs",
    "matching": "Matching: parts at any place and angle",
    "measuring": "Measuring: form, relations, recipes, verdicts",
    "calibration": "Calibration: targets, planes, poses",
    "camera": "Cameras: drivers, grab threads, frames, states",
    "display": "Display: the picture box and its drawings",
    "files": "Files: pictures, streams, logs",
    "foundation": "Foundation: records, host bridge, refusals",
    "ZULLib": "ZULLib, the companion library",
    "drivers": "Drivers: the C interface of a module",
}


def _toolkit_headers() -> list[str]:
    """Those that need Qt or GTK, which orxfunctions.h leaves out."""
    folder = TREE / "orxFunctions" / "display"
    match = re.search(r"orx_toolkit_headers\(([^)]*)\)", (folder / "CMakeLists.txt").read_text(encoding="utf-8"))
    return [f"orxFunctions/display/{name}" for name in match[1].split()] if match else []


def documented_headers() -> list[str]:
    """Every header that is installed, by room."""
    headers = ["orxFunctions/orxfunctions.h", *public_headers(), *_toolkit_headers(), "drivers/vision_driver.h"]
    rooms = list(ROOMS)
    return sorted(headers, key=lambda header: (rooms.index(room_of(header)), header))


def room_of(header: str) -> str:
    parts = Path(header).parts
    return parts[1] if len(parts) == 3 else parts[0]


def write(name: str, text: str) -> None:
    """A page or picture of the site's source."""
    file = SOURCE / name
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(text, encoding="utf-8")


if __name__ == "__main__":  # a line of Doxygen's configuration
    print("INPUT = " + " ".join(documented_headers()))
