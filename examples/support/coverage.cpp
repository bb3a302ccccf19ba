// Exact areas of a pixel under a disk and under a rotated rectangle.
#include "support/synthetic_scene.h"

#include <array>
#include <cmath>

#include "support/angles.h"

namespace scenes {
namespace {

double cross(cv::Point2d a, cv::Point2d b) { return a.x * b.y - a.y * b.x; }

// The signed area of the circle sector at the origin between two directions.
double sectorArea(cv::Point2d a, cv::Point2d b, double radius) {
    return 0.5 * radius * radius * std::atan2(cross(a, b), a.dot(b));
}

// The signed area that the triangle (origin, a, b) has in common with the disk around the origin.
double triangleInDisk(cv::Point2d a, cv::Point2d b, double radius) {
    const cv::Point2d step = b - a;
    const double stepSquared = step.dot(step);
    const double middle = -a.dot(step) / stepSquared;
    const cv::Point2d nearest = a + middle * step;
    const double halfSquared = (radius * radius - nearest.dot(nearest)) / stepSquared;
    if (halfSquared <= 0.0) return sectorArea(a, b, radius);
    const double half = std::sqrt(halfSquared);
    const double enter = middle - half;
    const double leave = middle + half;
    if (leave <= 0.0 || enter >= 1.0) return sectorArea(a, b, radius);

    const cv::Point2d from = enter > 0.0 ? a + enter * step : a;
    const cv::Point2d to = leave < 1.0 ? a + leave * step : b;
    double area = 0.5 * cross(from, to);
    if (enter > 0.0) area += sectorArea(a, from, radius);
    if (leave < 1.0) area += sectorArea(to, b, radius);
    return area;
}

// The part of a convex polygon where normal * p <= limit.
std::vector<cv::Point2d> clip(const std::vector<cv::Point2d>& polygon, cv::Point2d normal, double limit) {
    std::vector<cv::Point2d> kept;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const cv::Point2d a = polygon[i];
        const cv::Point2d b = polygon[(i + 1) % polygon.size()];
        const double da = normal.dot(a) - limit;
        const double db = normal.dot(b) - limit;
        if (da <= 0.0) kept.push_back(a);
        if ((da < 0.0 && db > 0.0) || (da > 0.0 && db < 0.0)) kept.push_back(a + (da / (da - db)) * (b - a));
    }
    return kept;
}

double polygonArea(const std::vector<cv::Point2d>& polygon) {
    double twice = 0.0;
    for (std::size_t i = 0; i < polygon.size(); ++i)
        twice += cross(polygon[i], polygon[(i + 1) % polygon.size()]);
    return std::abs(twice) / 2.0;
}

std::array<cv::Point2d, 4> pixelCorners(cv::Point2d middle) {
    return {middle + cv::Point2d(-0.5, -0.5), middle + cv::Point2d(0.5, -0.5), middle + cv::Point2d(0.5, 0.5),
            middle + cv::Point2d(-0.5, 0.5)};
}

constexpr double kHalfDiagonal = 0.7071067811865476;

}  // namespace

double pixelCoverage(const Disk& disk, int column, int row) {
    const cv::Point2d middle = cv::Point2d(column, row) - disk.center;
    const double distance = std::hypot(middle.x, middle.y);
    if (distance >= disk.radius + kHalfDiagonal) return 0.0;
    if (distance <= disk.radius - kHalfDiagonal) return 1.0;
    const auto corners = pixelCorners(middle);
    double area = 0.0;
    for (std::size_t i = 0; i < 4; ++i) area += triangleInDisk(corners[i], corners[(i + 1) % 4], disk.radius);
    return area;
}

double pixelCoverage(const Bar& bar, int column, int row) {
    const cv::Point2d along(std::cos(bar.angle * kDegree), std::sin(bar.angle * kDegree));
    const cv::Point2d across(-along.y, along.x);
    const cv::Point2d middle = cv::Point2d(column, row) - bar.center;
    const double u = std::abs(along.dot(middle));
    const double v = std::abs(across.dot(middle));
    if (u >= bar.length / 2 + kHalfDiagonal || v >= bar.width / 2 + kHalfDiagonal) return 0.0;
    if (u <= bar.length / 2 - kHalfDiagonal && v <= bar.width / 2 - kHalfDiagonal) return 1.0;

    const auto corners = pixelCorners(middle);
    std::vector<cv::Point2d> polygon(corners.begin(), corners.end());
    polygon = clip(polygon, along, bar.length / 2);
    polygon = clip(polygon, -along, bar.length / 2);
    polygon = clip(polygon, across, bar.width / 2);
    polygon = clip(polygon, -across, bar.width / 2);
    return polygonArea(polygon);
}

}  // namespace scenes
