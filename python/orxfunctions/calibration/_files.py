"""A camera's calibration on disk, as any program with OpenCV reads it."""
from __future__ import annotations

from typing import Any, NamedTuple, Tuple

import numpy as np
from numpy.typing import ArrayLike, NDArray

from .. import _core
from .._paths import Path, path_bytes, text_bytes


class CameraCalibration(NamedTuple):
    """What a calibration file holds."""

    intrinsic: NDArray[Any]
    """(3, 3): the camera matrix, as `cv2.calibrateCamera` gives it."""
    distortion: NDArray[Any]
    """The lens' coefficients; (1, n) or (n, 1) as they were written."""
    image_size: Tuple[int, int]
    """Width and height, pixels."""
    description: str = ""


def save_calibration(path: Path, intrinsic: ArrayLike, distortion: ArrayLike, image_size: Tuple[int, int],
                     description: str = "") -> None:
    """Writes a camera's calibration, replacing an earlier file once the new one is whole on the disk.

    Parameters
    ----------
    path : str or os.PathLike
        The extension chooses the format: .xml, .json, else YAML.
    intrinsic, distortion : arrays (rows, columns)
        A flat one is written as one row. float32 stays what it is, other numbers are written as float64.
    image_size : (width, height)
    description : str
        Any text; it comes back to the letter.

    Raises
    ------
    OSError
        Where the file can't be written. The earlier one stays.

    Examples
    --------
    >>> import tempfile, numpy as np
    >>> with tempfile.TemporaryDirectory() as folder:
    ...     save_calibration(folder + "/camera.yml", np.diag([900.0, 900.0, 1.0]), np.zeros(5), (640, 480), "left")
    ...     load_calibration(folder + "/camera.yml").description
    'left'

    C++: orx::calibrateData2File
    """
    _core.save_calibration(path_bytes(path), intrinsic, distortion, image_size, text_bytes("description", description))


def load_calibration(path: Path) -> CameraCalibration:
    """Reads what `save_calibration` wrote, and files of `PlaneCalibration.save`.

    Matrices of whole numbers come as float64; missing ones are empty, as an ``image_size`` that is missing is (0, 0).

    Raises
    ------
    FileNotFoundError, OSError
        Where there is no such file, or it can't be read.
    ValueError
        Where it holds no calibration, or is longer than 64 MiB.

    C++: orx::calibrateDataFromFile
    """
    intrinsic, distortion, image_size, description = _core.load_calibration(path_bytes(path))
    return CameraCalibration(np.asarray(intrinsic), np.asarray(distortion), image_size,
                             description.decode("utf-8", "surrogateescape"))
