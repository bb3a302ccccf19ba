#include "orxFunctions/matching/part_pose.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx {
namespace {

// In [-180, 180).
double wrapped(double angle) {
    const double turned = std::remainder(angle, 360.0);
    return turned >= 180 ? turned - 360 : turned;
}

// The pose with its turn worked out.
struct Turned {
    explicit Turned(const TPartPose& pose)
        : c(pose.scale * std::cos(radians(pose.angle))),
          s(pose.scale * std::sin(radians(pose.angle))),
          x(pose.x),
          y(pose.y) {}

    cv::Point2d operator()(cv::Point2d p) const { return {x + c * p.x - s * p.y, y + s * p.x + c * p.y}; }

    double c;
    double s;
    double x;
    double y;
};

}  // namespace

cv::Point2d applyPose(const TPartPose& pose, cv::Point2d point) { return Turned(pose)(point); }

std::vector<cv::Point2d> applyPoseToPoints(const TPartPose& pose, const std::vector<cv::Point2d>& points) {
    const Turned turned(pose);
    std::vector<cv::Point2d> mapped(points.size());
    std::transform(points.begin(), points.end(), mapped.begin(), turned);
    return mapped;
}

double applyPoseToAngle(const TPartPose& pose, double angle) { return wrapped(pose.angle + angle); }

cv::RotatedRect applyPoseToBox(const TPartPose& pose, const cv::RotatedRect& box) {
    const cv::Point2d centre = applyPose(pose, cv::Point2d(box.center));
    const auto scale = static_cast<float>(pose.scale);
    return {cv::Point2f(centre), box.size * scale, static_cast<float>(wrapped(pose.angle + box.angle))};
}

TCircle applyPoseToCircle(const TPartPose& pose, const TCircle& circle) {
    TCircle mapped = circle;
    const cv::Point2d centre = applyPose(pose, cv::Point2d(circle.x, circle.y));
    mapped.x = centre.x;
    mapped.y = centre.y;
    mapped.r = pose.scale * circle.r;
    return mapped;
}

TLineSegment applyPoseToSegment(const TPartPose& pose, const TLineSegment& segment) {
    const Turned turned(pose);
    return {turned(segment.from), turned(segment.to)};
}

TCircleCaliperOptions applyPoseToCalipers(const TPartPose& pose, const TCircleCaliperOptions& options) {
    TCircleCaliperOptions mapped = options;
    mapped.startAngle = wrapped(pose.angle + options.startAngle);
    mapped.searchLength = std::max(1.0, pose.scale * options.searchLength);
    mapped.width = std::max(1.0, pose.scale * options.width);
    return mapped;
}

cv::Matx22d mappedCovariance(const TPartPose& pose, const cv::Matx44d& covariance, cv::Point2d point) {
    const double c = std::cos(radians(pose.angle));
    const double s = std::sin(radians(pose.angle));
    const cv::Point2d turned(c * point.x - s * point.y, s * point.x + c * point.y);
    const double arc = pose.scale * kRadiansPerDegree;
    const cv::Matx<double, 2, 4> slopes(1, 0, -arc * turned.y, turned.x,  //
                                        0, 1, arc * turned.x, turned.y);
    return slopes * covariance * slopes.t();
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
