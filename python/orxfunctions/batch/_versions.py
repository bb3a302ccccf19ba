"""What must be equal on all machines of a run, so that equal pictures give equal results."""
from __future__ import annotations

import importlib
import platform

from .._core import __version__


def versions() -> dict[str, str]:
    """Versions of the library, of Python and of OpenCV for Python."""
    told = {"orxfunctions": __version__, "Python": ".".join(platform.python_version_tuple()[:2])}
    try:
        return {**told, "cv2": importlib.import_module("cv2").__version__}
    except ImportError:
        return told


def difference(theirs: dict[str, str], ours: dict[str, str]) -> str:
    """What is not equal, for people; empty where all is."""
    return "; ".join(f"{name} {theirs.get(name, 'missing')} there, {ours.get(name, 'missing')} here"
                     for name in {**ours, **theirs} if theirs.get(name) != ours.get(name))
