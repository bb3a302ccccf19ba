"""A picture of a camera, with its number and time."""
from __future__ import annotations

from typing import Any, NamedTuple, Optional, Tuple

import numpy as np
from numpy.typing import NDArray

from .._png import png_of


class FrameInfo(NamedTuple):
    """Which picture of a camera it is.

    Of frames that follow each other and come from the same start, ``number`` is the one of the frame before + 1 +
    ``lost_before`` + ``dropped_before``.

    C++: orx::TFrame
    """

    number: int
    """From 1 since the camera was started; 0 for an array that is no frame."""
    time_ns: int
    """When it arrived in this computer: nanoseconds since 1970, as `time.time_ns` counts."""
    device_time: int
    """Nanoseconds by the camera's own clock; 0 when it has none."""
    camera: int
    start: int
    """Which start of a camera it comes from; later ones have higher numbers."""
    is_numbered: bool
    """By what drives the camera. Else each fetch counts as a frame: a picture given twice is two."""
    lost_before: int
    """Frames that nobody got: overwritten, or lost on the way."""
    dropped_before: int
    """Frames that the full queue had no room for."""


_NO_FRAME = FrameInfo(0, 0, 0, 0, 0, False, 0, 0)


class Frame(np.ndarray[Any, np.dtype[np.uint8]]):
    """A picture of a camera: a uint8 array of its own, which knows its number and time.

    It is taken wherever an array is. Its slices and copies are frames as well; what is computed of it is a plain array. A
    notebook shows the picture.

    Attributes
    ----------
    info : FrameInfo

    C++: orx::TFrame
    """

    info: FrameInfo

    def __array_finalize__(self, parent: Optional[NDArray[Any]]) -> None:
        self.info = getattr(parent, "info", _NO_FRAME)

    def __array_wrap__(self, array: Any, context: Any = None) -> Any:
        return array if array is self else np.asarray(array)[()]

    @property
    def number(self) -> int:
        """From 1 since the camera was started, without gaps but those that `info` tells of."""
        return self.info.number

    @property
    def time(self) -> float:
        """When it arrived in this computer: seconds since 1970, as `time.time` counts."""
        return self.info.time_ns * 1e-9

    def __reduce__(self) -> Tuple[Any, ...]:
        return frame_of, (np.asarray(self), self.info)

    def _repr_png_(self) -> Optional[bytes]:
        shaped = self.ndim == 2 or (self.ndim == 3 and self.shape[2] in (1, 3, 4))
        return png_of(np.asarray(self)) if shaped and self.size > 0 and self.dtype == np.uint8 else None


def frame_of(image: NDArray[Any], info: FrameInfo) -> Frame:
    """An array as a frame, without a copy."""
    frame: Frame = image.view(Frame)
    frame.info = info
    return frame
