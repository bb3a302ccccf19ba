"""Where a part lies in a picture."""
from __future__ import annotations

from typing import NamedTuple, Tuple

from .. import _core
from .._types import Doubles, Place, Points

Pair = Tuple[float, float]
Box = Tuple[Pair, Pair, float]


class CaliperPlacement(NamedTuple):
    """What of calipers around a circle depends on where a part lies; ``_asdict()`` gives options of `circle_caliper`."""

    start_angle: float
    search_length: float
    width: float


class PartPose(NamedTuple):
    """Shift, turn and scale from a model's plane into a picture.

    The plane has its origin at the model's reference point and its x axis along the reference direction; its unit is the
    pixel of the picture that it was taught from. What was laid out once in the plane follows the part. Numbers that are not
    finite give numbers that are not.

    Examples
    --------
    >>> pose = PartPose(100, 50, 90, 2)
    >>> pose.apply([(10, 0)]).round(9)
    array([[100.,  70.]])

    C++: orx::TPartPose
    """

    x: float
    """Of the reference point, pixels."""
    y: float
    angle: float = 0.0
    """Of the reference direction, degrees from the x axis towards the y axis, clockwise on the screen."""
    scale: float = 1.0
    """Pixels for a unit of the model, above 0."""

    def apply(self, points: Points) -> Doubles:
        """Where points (n, 2) of the model's plane lie in the picture.

        C++: orx::applyPoseToPoints
        """
        return _core.pose_points(self, points)

    def apply_to_point(self, point: Place) -> Pair:
        """Where one point of the model's plane lies in the picture.

        C++: orx::applyPose
        """
        return _core.pose_point(self, point)

    def apply_to_angle(self, angle: float) -> float:
        """A direction of the model's plane in the picture, degrees in [-180, 180).

        C++: orx::applyPoseToAngle
        """
        return _core.pose_angle(self, angle)

    def apply_to_box(self, box: Box) -> Box:
        """A box ((x, y), (width, height), angle) as cv2 has it: moved, turned and scaled, in single precision.

        C++: orx::applyPoseToBox
        """
        return _core.pose_box(self, box)

    def apply_to_circle(self, centre: Place, radius: float) -> Tuple[Pair, float]:
        """A circle: its centre and its radius.

        C++: orx::applyPoseToCircle
        """
        return _core.pose_circle(self, centre, radius)

    def apply_to_segment(self, start: Place, end: Place) -> Tuple[Pair, Pair]:
        """Both ends of a segment.

        C++: orx::applyPoseToSegment, orx::TLineSegment
        """
        return _core.pose_segment(self, start, end)

    def apply_to_calipers(self, *, start_angle: float = 0.0, search_length: float = 20.0,
                          width: float = 5.0) -> CaliperPlacement:
        """Calipers around a circle: the start turns along; length and width, at least a pixel, grow with the scale.

        C++: orx::applyPoseToCalipers
        """
        return CaliperPlacement(*_core.pose_calipers(self, start_angle, search_length, width))

    def covariance_of(self, point: Place, covariance: Doubles) -> Doubles:
        """The covariance (2, 2), pixels squared, of where a point of the model's plane lies in the picture.

        From that of the pose (4, 4) as `FoundPart` has it, to first order. What the outline can't tell has no share in it:
        see ``FoundPart.free``.

        C++: orx::mappedCovariance
        """
        return _core.pose_covariance(self, covariance, point)

    def compose(self, inner: PartPose) -> PartPose:
        """What `inner` does, and then this pose; the angle is in [-180, 180).

        C++: orx::composePoses
        """
        return PartPose(*_core.compose_poses(self, inner))

    def inverse(self) -> PartPose:
        """The way back, from the picture into the model's plane; ValueError for a scale of 0.

        C++: orx::invertPose
        """
        return PartPose(*_core.invert_pose(self))
