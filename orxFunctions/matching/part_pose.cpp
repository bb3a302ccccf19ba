#include "orxFunctions/matching/part_pose.h"

#include <cmath>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx {
namespace {

// In [-180, 180).
double wrapped(double angle) {
    const double turned = std::remainder(angle, 360.0);
    return turned >= 180 ? turned - 360 : turned;
}

}  // namespace

cv::Point2d applyPose(const TPartPose& pose, cv::Point2d point) {
    const double c = pose.scale * std::cos(radians(pose.angle));
    const double s = pose.scale * std::sin(radians(pose.angle));
    return {pose.x + c * point.x - s * point.y, pose.y + s * point.x + c * point.y};
}

TPartPose composePoses(const TPartPose& outer, const TPartPose& inner) {
    const cv::Point2d place = applyPose(outer, {inner.x, inner.y});
    return {place.x, place.y, wrapped(outer.angle + inner.angle), outer.scale * inner.scale};
}

TPartPose invertPose(const TPartPose& pose) {
    const TPartPose turnedBack{0, 0, -pose.angle, 1 / pose.scale};
    const cv::Point2d origin = applyPose(turnedBack, {-pose.x, -pose.y});
    return {origin.x, origin.y, wrapped(-pose.angle), 1 / pose.scale};
}

}  // namespace orx
