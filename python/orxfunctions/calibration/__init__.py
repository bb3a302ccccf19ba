"""From pixels to millimetres, poses and motions in space, calibration files and targets."""
from ._files import CameraCalibration, load_calibration, save_calibration
from ._plane import PlaneCalibration, calibrate_plane
from ._poses import pose_matrix, rigid_transform, rotation_between
from ._targets import Target, TargetView, checkerboard, chessboard, find_target, target_pdf, target_svg

__all__ = [
    "CameraCalibration",
    "PlaneCalibration",
    "Target",
    "TargetView",
    "calibrate_plane",
    "checkerboard",
    "chessboard",
    "find_target",
    "load_calibration",
    "pose_matrix",
    "rigid_transform",
    "rotation_between",
    "save_calibration",
    "target_pdf",
    "target_svg",
]
