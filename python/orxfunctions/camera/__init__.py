"""Cameras: frames with their numbers and times, parameters, a live view.

GigE Vision and USB3 Vision cameras of any brand, the pictures of a folder, and a moving part without a camera, as the
settings file of the driver module says (drivers/README.md).
"""
from ._camera import (Camera, CameraInfo, CameraStatus, FrameCounts, connected_brand, has_runtime, list_cameras)
from ._frame import Frame, FrameInfo
from ._live import Live, live

__all__ = [
    "Camera",
    "CameraInfo",
    "CameraStatus",
    "Frame",
    "FrameCounts",
    "FrameInfo",
    "Live",
    "connected_brand",
    "has_runtime",
    "list_cameras",
    "live",
]
