#include "orxFunctions/calibration/plane/observations.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/calibration/plane/mapping.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx::plane {
namespace {

constexpr std::size_t kFewestPoints = 6;
constexpr std::size_t kMostPoints = 1000000;
constexpr double kFarthest = 1e6;
constexpr int kOutlinePoints = 48;

bool isNear(cv::Point2d p) { return std::abs(p.x) <= kFarthest && std::abs(p.y) <= kFarthest; }

// The centre of the area within a closed polygon.
cv::Point2d centroid(const std::vector<cv::Point2d>& polygon) {
    const cv::Point2d origin = polygon.front();
    double area = 0.0;
    cv::Point2d moment;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const cv::Point2d a = polygon[i] - origin;
        const cv::Point2d b = polygon[(i + 1) % polygon.size()] - origin;
        const double cross = a.cross(b);
        area += cross;
        moment += cross * (a + b);
    }
    return origin + moment * (1.0 / (3.0 * area));
}

}  // namespace

bool observe(const TTargetView& view, Observation& observation, std::string& problem) {
    const std::size_t count = view.pixels.size();
    const auto refuse = [&](const char* why) {
        problem = why;
        return false;
    };
    if (view.plane.size() != count || (!view.deviations.empty() && view.deviations.size() != count))
        return refuse("the lists of a view differ in length");
    if (count < kFewestPoints || count > kMostPoints) return refuse("a view has too few or too many points");
    if (view.imageSize.width < 1 || view.imageSize.height < 1) return refuse("a view has no picture size");
    if (!std::all_of(view.pixels.begin(), view.pixels.end(), isNear) ||
        !std::all_of(view.plane.begin(), view.plane.end(), isNear))
        return refuse("a point of a view is not finite, or too far away");
    if (!(view.dotDiameter >= 0.0 && view.dotDiameter <= kFarthest)) return refuse("a dot has no diameter");
    double information = 0.0;
    for (const double deviation : view.deviations) {
        if (!(deviation > 1e-9 && deviation <= kFarthest)) return refuse("a deviation is not above 0");
        information += 1.0 / (deviation * deviation);
    }
    observation.plane = view.plane;
    observation.pixels = view.pixels;
    observation.dotDiameter = view.dotDiameter;
    observation.weights.assign(count, 1.0);
    observation.variance = 1.0;
    if (view.deviations.empty()) return true;
    observation.variance = static_cast<double>(count) / information;
    for (std::size_t i = 0; i < count; ++i)
        observation.weights[i] = observation.variance / (view.deviations[i] * view.deviations[i]);
    return true;
}

std::vector<cv::Point2d> outlineShifts(const TPlaneCalibration& calibration, const Observation& observation) {
    std::vector<cv::Point2d> shifts(observation.plane.size());
    if (observation.dotDiameter <= 0.0) return shifts;
    const Mapping mapping(calibration);
    std::vector<cv::Point2d> outline(kOutlinePoints);
    for (std::size_t i = 0; i < shifts.size(); ++i) {
        cv::Point2d middle;
        bool seen = mapping.toImage(observation.plane[i], middle);
        for (int k = 0; k < kOutlinePoints && seen; ++k) {
            const double angle = 2.0 * kPi * k / kOutlinePoints;
            const cv::Point2d radius(std::cos(angle), std::sin(angle));
            seen = mapping.toImage(observation.plane[i] + 0.5 * observation.dotDiameter * radius,
                                   outline[static_cast<std::size_t>(k)]);
        }
        if (seen) shifts[i] = centroid(outline) - middle;
    }
    return shifts;
}

double coverageOf(const std::vector<Observation>& observations, cv::Size imageSize) {
    constexpr double kSide = 256.0;
    const double scale = kSide / std::max(imageSize.width, imageSize.height);
    const cv::Size size(std::max(1, static_cast<int>(std::lround(imageSize.width * scale))),
                        std::max(1, static_cast<int>(std::lround(imageSize.height * scale))));
    cv::Mat reached = cv::Mat::zeros(size, CV_8U);
    for (const Observation& observation : observations) {
        std::vector<cv::Point> points;
        for (const cv::Point2d& p : observation.pixels) {
            points.emplace_back(std::clamp(static_cast<int>(p.x * scale), 0, size.width - 1),
                                std::clamp(static_cast<int>(p.y * scale), 0, size.height - 1));
        }
        std::vector<cv::Point> hull;
        cv::convexHull(points, hull);
        cv::fillConvexPoly(reached, hull, cv::Scalar(1));
    }
    return cv::countNonZero(reached) / static_cast<double>(size.area());
}

}  // namespace orx::plane
