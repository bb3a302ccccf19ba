#include "inspection/report/pen.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "support/angles.h"

namespace inspection {
namespace {

using scenes::kDegree;

const cv::Scalar kTextEdge(40, 30, 20);

// Fractional bits of OpenCV's drawing coordinates.
constexpr int kShift = 6;
constexpr int kUnit = 1 << kShift;
// Coordinates beyond this do not fit into the fixed-point numbers of the drawing functions.
constexpr double kFarthest = 1e6;

int enlargement(cv::Size size) {
    return std::clamp(1100 / std::max(1, std::max(size.width, size.height)), 1, 4);
}

}  // namespace

Pen::Pen(const cv::Mat& grey) : scale_(enlargement(grey.size())) {
    cv::cvtColor(grey, canvas_, cv::COLOR_GRAY2BGR);
    if (scale_ > 1) cv::resize(canvas_, canvas_, cv::Size(), scale_, scale_, cv::INTER_CUBIC);
}

void Pen::circle(cv::Point2d center, double radius, const cv::Scalar& color) {
    if (!(radius >= 0.0 && radius < kFarthest)) return;
    cv::circle(canvas_, fixed(center), cvRound(radius * scale_ * kUnit), color, thickness(), cv::LINE_AA,
               kShift);
}

void Pen::line(cv::Point2d from, cv::Point2d to, const cv::Scalar& color) {
    cv::line(canvas_, fixed(from), fixed(to), color, thickness(), cv::LINE_AA, kShift);
}

void Pen::polyline(const std::vector<cv::Point2d>& points, bool closed, const cv::Scalar& color) {
    std::vector<cv::Point> corners;
    corners.reserve(points.size());
    for (const cv::Point2d& p : points) corners.push_back(fixed(p));
    cv::polylines(canvas_, corners, closed, color, thickness(), cv::LINE_AA, kShift);
}

void Pen::arc(cv::Point2d center, double radius, double from, double to, const cv::Scalar& color) {
    constexpr int kSteps = 90;
    if (!(radius >= 0.0 && radius < kFarthest) || !std::isfinite(from) || !std::isfinite(to)) return;
    std::vector<cv::Point2d> points;
    for (int i = 0; i <= kSteps; ++i) {
        const double angle = (from + (to - from) * i / kSteps) * kDegree;
        points.push_back(center + radius * cv::Point2d(std::cos(angle), std::sin(angle)));
    }
    polyline(points, false, color);
}

void Pen::dot(cv::Point2d at, const cv::Scalar& color) {
    cv::circle(canvas_, fixed(at), kUnit * std::max(1, scale_ / 2), color, cv::FILLED, cv::LINE_AA, kShift);
}

void Pen::cross(cv::Point2d at, double arm, const cv::Scalar& color) {
    line(at - cv::Point2d(arm, 0.0), at + cv::Point2d(arm, 0.0), color);
    line(at - cv::Point2d(0.0, arm), at + cv::Point2d(0.0, arm), color);
}

void Pen::label(cv::Point2d at, const std::string& text, const cv::Scalar& color) {
    int baseline = 0;
    const double size = 0.5;
    const cv::Size extent = cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, size, 1, &baseline);
    const cv::Point middle(cvRound(enlarged(at.x)), cvRound(enlarged(at.y)));
    const auto within = [](int v, int low, int high) { return std::max(low, std::min(v, high)); };
    const cv::Point origin(within(middle.x - extent.width / 2, 2, canvas_.cols - extent.width - 2),
                           within(middle.y + extent.height / 2, extent.height + 2, canvas_.rows - 4));
    cv::putText(canvas_, text, origin, cv::FONT_HERSHEY_SIMPLEX, size, kTextEdge, 4, cv::LINE_AA);
    cv::putText(canvas_, text, origin, cv::FONT_HERSHEY_SIMPLEX, size, color, 1, cv::LINE_AA);
}

// Where the centre of a pixel comes to lie when every pixel becomes scale x scale ones.
double Pen::enlarged(double v) const { return (std::clamp(v, -kFarthest, kFarthest) + 0.5) * scale_ - 0.5; }

cv::Point Pen::fixed(cv::Point2d p) const {
    return {cvRound(enlarged(p.x) * kUnit), cvRound(enlarged(p.y) * kUnit)};
}

int Pen::thickness() const { return scale_ > 2 || std::max(canvas_.cols, canvas_.rows) > 1500 ? 2 : 1; }

}  // namespace inspection
