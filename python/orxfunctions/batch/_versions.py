"""What must be equal on all machines of a run, so that equal pictures give equal results."""
from __future__ import annotations

import importlib
import platform

from .. import _core


def versions(cv2: bool) -> dict[str, str]:
    """Versions of the library, of its OpenCV and of Python; where asked, of OpenCV for Python, which takes longer to load than
    all the rest."""
    told = {"orxfunctions": _core.__version__, "OpenCV": _core.opencv_version(),
            "Python": ".".join(platform.python_version_tuple()[:2])}
    if not cv2:
        return told
    try:
        return {**told, "cv2": importlib.import_module("cv2").__version__}
    except ImportError:
        return told


def difference(theirs: dict[str, str], ours: dict[str, str]) -> str:
    """What is not equal, for people; empty where all is."""
    return "; ".join(f"{name} {theirs.get(name, 'missing')} there, {ours.get(name, 'missing')} here"
                     for name in {**ours, **theirs} if theirs.get(name) != ours.get(name))
