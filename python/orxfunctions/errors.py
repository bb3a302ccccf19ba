"""What the functions of the package raise, beside `TypeError`, `ValueError`, `OSError` and `MemoryError`."""
from ._core import OpenCVError

__all__ = ["OpenCVError"]
