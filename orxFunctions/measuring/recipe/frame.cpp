#include "orxFunctions/measuring/recipe/frame.h"

#include <cmath>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::recipes {
namespace {

constexpr double kLever = 50.0;  // pixels along the reference direction that tell it on the plane

bool isFinite(cv::Point2d p) { return std::isfinite(p.x) && std::isfinite(p.y); }

TPartPose poseThrough(cv::Point2d origin, cv::Point2d ahead) {
    const cv::Point2d way = ahead - origin;
    return {origin.x, origin.y, degrees(std::atan2(way.y, way.x)), 1.0};
}

// From dx, dy (pixels) and the angle (degrees) of a pose of the picture to those on the plane.
cv::Matx44d carriedCovariance(const Plane& plane, const UncertainPose& picture, double angleOnPlane) {
    const cv::Matx22d jacobian = plane.jacobian({picture.pose.x, picture.pose.y});
    const double turn = radians(picture.pose.angle);
    const cv::Vec2d across = jacobian * cv::Vec2d(-std::sin(turn), std::cos(turn));
    const cv::Vec2d along = jacobian * cv::Vec2d(std::cos(turn), std::sin(turn));
    const double out = radians(angleOnPlane);
    // The lever's end moves by `across` for a radian and a pixel of lever.
    const double rate = (-std::sin(out) * across[0] + std::cos(out) * across[1]) / cv::norm(along);
    cv::Matx44d carry = cv::Matx44d::zeros();
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 2; ++j) carry(i, j) = jacobian(i, j);
    }
    carry(2, 2) = rate;
    return carry * picture.covariance * carry.t();
}

}  // namespace

double Frame::scaleAt(cv::Point2d p) const {
    if (plane == nullptr) return pose.scale;
    return 1.0 / plane->pixelSize(toImage(p));
}

bool poseOnPlane(const Plane& plane, const UncertainPose& picture, UncertainPose& result) {
    const double turn = radians(picture.pose.angle);
    const cv::Point2d origin(picture.pose.x, picture.pose.y);
    const cv::Point2d lever = kLever * cv::Point2d(std::cos(turn), std::sin(turn));
    const cv::Point2d placed = plane.toPlane(origin);
    const cv::Point2d ahead = plane.toPlane(origin + lever);
    const cv::Point2d behind = plane.toPlane(origin - lever);
    if (!isFinite(placed) || !isFinite(ahead) || !isFinite(behind)) return false;
    result.pose = poseThrough(placed, placed + (ahead - behind));
    result.covariance = carriedCovariance(plane, picture, result.pose.angle);
    result.degreesOfFreedom = picture.degreesOfFreedom;
    result.shifted.clear();
    const cv::Mat shifts = plane.shiftsOf({origin, origin + lever, origin - lever});
    for (int k = 0; k < shifts.cols; ++k) {
        const auto moved = [&](int i) {
            return cv::Point2d(shifts.at<double>(2 * i, k), shifts.at<double>(2 * i + 1, k));
        };
        const cv::Point2d at = placed + moved(0);
        result.shifted.push_back(poseThrough(at, at + (ahead + moved(1)) - (behind + moved(2))));
    }
    return true;
}

bool poseInPicture(const Plane& plane, const TPartPose& onPlane, TPartPose& result) {
    const cv::Point2d origin = plane.toImage({onPlane.x, onPlane.y});
    if (!isFinite(origin)) return false;
    const double size = plane.pixelSize(origin);
    const double turn = radians(onPlane.angle);
    const cv::Point2d lever = size * kLever * cv::Point2d(std::cos(turn), std::sin(turn));
    const cv::Point2d ahead = plane.toImage(cv::Point2d(onPlane.x, onPlane.y) + lever);
    if (!isFinite(ahead) || !(size > 0.0)) return false;
    result = poseThrough(origin, ahead);
    result.scale = 1.0 / size;
    return true;
}

}  // namespace orx::recipes
