"""Poses of robots, and rigid motions between two lists of points."""
from __future__ import annotations

from collections.abc import Sequence
from typing import Any, Union

from numpy.typing import NDArray

from .. import _core
from .._types import Doubles, Points


def pose_matrix(pose: Union[Sequence[float], NDArray[Any]]) -> Doubles:
    """A robot's pose as a homogeneous matrix.

    Parameters
    ----------
    pose : (x, y, z, rx, ry, rz)
        A place, and turns about the axes in degrees.

    Returns
    -------
    float64 array (4, 4)
        [R t; 0 0 0 1] with R = Rx(rx) Ry(ry) Rz(rz) and t = (x, y, z).

    Raises
    ------
    ValueError
        For numbers that are not finite.

    Examples
    --------
    >>> pose_matrix((10, 20, 30, 0, 0, 90)).round(6)[0]
    array([ 0., -1.,  0., 10.])

    C++: orx::TPoint6DToMatrix
    """
    return _core.pose_matrix(pose)


def rigid_transform(source: Points, target: Points) -> Doubles:
    """The rigid motion that leads one list of points in space onto another, by least squares.

    The choice for calibration, for example between the same marks measured by a camera and by a robot.

    Parameters
    ----------
    source, target : arrays (n, 3)
        Row i of one corresponds to row i of the other; 4 rows or more.

    Returns
    -------
    float64 array (4, 4)
        [R t; 0 0 0 1] with target = R source + t as nearly as possible; R is a proper rotation.

    Raises
    ------
    ValueError
        For lists of different length, of fewer than 4 points, with coordinates that are not finite, and where the points of
        a list lie on one line, so that a turn about it stays open.

    Notes
    -----
    W. Kabsch, Acta Cryst. A32 (1976); K. S. Arun, T. S. Huang, S. D. Blostein, IEEE PAMI 9 (1987).

    Examples
    --------
    >>> import numpy as np
    >>> marks = np.array([(0, 0, 0), (10, 0, 0), (0, 20, 0), (0, 0, 30.0)])
    >>> rigid_transform(marks, marks + (1, 2, 3))[:3, 3].round(9)
    array([1., 2., 3.])

    C++: orx::calcAXequalsB
    """
    return _core.rigid_transform(source, target)


def rotation_between(source: Points, target: Points) -> Doubles:
    """The rotation alone between two lists of points in space that are moved to their centroids.

    As `rigid_transform`, from 3 points or more; coordinates are rounded to float32.

    Returns
    -------
    float64 array (3, 3)

    C++: orx::cpuTrsfMat
    """
    return _core.rotation_between(source, target)
