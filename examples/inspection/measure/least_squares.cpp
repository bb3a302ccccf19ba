#include "inspection/measure/least_squares.h"

#include <cmath>

#include "support/angles.h"

namespace inspection {
namespace {

constexpr int kSteps = 30;

cv::Point2d meanOf(const std::vector<cv::Point2d>& points) {
    cv::Point2d sum;
    for (const cv::Point2d& p : points) sum += p;
    return points.empty() ? sum : sum / static_cast<double>(points.size());
}

// Second moments about a centre, added up over point lists.
struct Scatter {
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;

    void add(const std::vector<cv::Point2d>& points, cv::Point2d center) {
        for (const cv::Point2d& p : points) {
            const cv::Point2d d = p - center;
            xx += d.x * d.x;
            xy += d.x * d.y;
            yy += d.y * d.y;
        }
    }
    bool isPoint() const { return xx + yy < 1e-12; }
    cv::Point2d mainDirection() const {
        const double angle = 0.5 * std::atan2(2.0 * xy, xx - yy);
        return {std::cos(angle), std::sin(angle)};
    }
};

}  // namespace

double Circle::distance(cv::Point2d p) const {
    return std::abs(std::hypot(p.x - center.x, p.y - center.y) - radius);
}

double Line::signedDistance(cv::Point2d p) const { return normal().dot(p - point); }

double Line::angle() const {
    const double degrees =
        std::fmod(std::atan2(direction.y, direction.x) * 180.0 / scenes::kPi + 360.0, 180.0);
    return degrees;
}

std::optional<Circle> fitCircleFrom(const Circle& start, const std::vector<cv::Point2d>& points) {
    if (points.size() < 3) return std::nullopt;
    Circle circle = start;
    for (int step = 0; step < kSteps; ++step) {
        // Normal equations of the residuals |p - c| - r; their derivatives are the unit vectors (-u, -1).
        cv::Matx33d normal = cv::Matx33d::zeros();
        cv::Vec3d right(0.0, 0.0, 0.0);
        for (const cv::Point2d& p : points) {
            const cv::Point2d ray = p - circle.center;
            const double length = std::hypot(ray.x, ray.y);
            if (length < 1e-9) continue;
            const cv::Vec3d row(ray.x / length, ray.y / length, 1.0);
            normal += row * row.t();
            right += row * (length - circle.radius);
        }
        cv::Vec3d change;
        if (!cv::solve(normal, right, change, cv::DECOMP_CHOLESKY)) return std::nullopt;
        circle.center += cv::Point2d(change[0], change[1]);
        circle.radius += change[2];
        const double size = cv::norm(change);
        if (!(size < 1e6) || !(circle.radius > 0.0)) return std::nullopt;
        if (size < 1e-9) break;
    }
    return circle;
}

std::optional<Line> fitLineThrough(const std::vector<cv::Point2d>& points) {
    const cv::Point2d center = meanOf(points);
    Scatter scatter;
    scatter.add(points, center);
    if (scatter.isPoint()) return std::nullopt;
    return Line{center, scatter.mainDirection()};
}

std::optional<ParallelLines> fitParallelLines(const std::vector<cv::Point2d>& first,
                                              const std::vector<cv::Point2d>& second) {
    if (first.empty() || second.empty()) return std::nullopt;
    const cv::Point2d a = meanOf(first);
    const cv::Point2d b = meanOf(second);
    Scatter scatter;
    scatter.add(first, a);
    scatter.add(second, b);
    if (scatter.isPoint()) return std::nullopt;
    ParallelLines lines;
    lines.axis = {0.5 * (a + b), scatter.mainDirection()};
    lines.width = std::abs(lines.axis.normal().dot(a - b));
    return lines;
}

}  // namespace inspection
