"""What the functions of the package raise, beside `TypeError`, `ValueError`, `OSError` and `MemoryError`."""
from ._core import OpenCVError

__all__ = ["CameraError", "CameraLost", "CameraNotFound", "CameraTimeout", "OpenCVError"]


class CameraError(RuntimeError):
    """A camera, or the module that drives it, did not do what it was asked for."""


class CameraNotFound(CameraError):
    """There is no such camera, or another program has it: what drives it does not tell these apart."""


class CameraLost(CameraError):
    """The camera gives no pictures any more: it was unplugged, or does not answer."""


class CameraTimeout(CameraError, TimeoutError):
    """No frame came in time, although the camera is there: one that waits for a trigger, or is slower than that."""
