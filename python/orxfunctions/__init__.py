"""Machine vision for inspection and measuring: edges between the pixels, fits with their uncertainty, parts, verdicts.

Pictures are arrays of numpy as OpenCV has them: uint8 (or uint16 where a function says so), shape ``(rows, columns)`` for
grey, ``(rows, columns, 3)`` for BGR. Points are arrays of shape ``(n, 2)``, x before y; the centre of the top-left pixel is
(0, 0), x runs to the right and y down. Nothing is converted silently: another type or shape is a `TypeError` that says what
is expected and what came, an option outside its range a `ValueError`. Where a sound picture holds nothing to be found the
answer is None, or an empty array.

All functions may be called from several threads at once, and let other threads run meanwhile. Where chance plays a part
there is an option ``seed``; equal seeds give equal results.
"""
from importlib import import_module
from types import ModuleType
from typing import TYPE_CHECKING

from ._core import __version__
from ._threads import set_threads, threads

if TYPE_CHECKING:
    from . import analysis, batch, calibration, camera, drawing, errors, files, fitting, matching, measuring, segmentation

__all__ = [
    "__version__",
    "analysis",
    "batch",
    "calibration",
    "camera",
    "drawing",
    "errors",
    "files",
    "fitting",
    "matching",
    "measuring",
    "segmentation",
    "set_threads",
    "threads",
]

if not TYPE_CHECKING:  # which would take any name for a module

    def __getattr__(name: str) -> ModuleType:
        """Modules are loaded when they are first asked for: who measures circles need not wait for cameras."""
        if name in __all__:
            return import_module(f"{__name__}.{name}")
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")

    def __dir__() -> list[str]:
        return sorted(__all__)
