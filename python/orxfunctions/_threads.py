"""How many threads a single call may use."""
from . import _core


def set_threads(count: int) -> None:
    """Lets a call use `count` threads, 1 or more; 0 as many as the machine has, which is the default.

    Results do not depend on it. For programs that run several calls at once, on threads or in processes: 1. It is OpenCV's
    own number, that of cv2 included where both use the same OpenCV.

    Examples
    --------
    >>> set_threads(1)
    >>> threads()
    1
    >>> set_threads(0)

    C++: cv::setNumThreads
    """
    if count < 0:
        raise ValueError(f"count: expected 0 or more, got {count}")
    _core.set_threads(count)


def threads() -> int:
    """How many threads a call may use.

    C++: cv::getNumThreads
    """
    return _core.threads()
