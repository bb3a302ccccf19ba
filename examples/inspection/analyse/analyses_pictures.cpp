#include "inspection/analyse/analyses_pictures.h"

#include <array>
#include <cmath>

#include "inspection/report/colors.h"
#include "inspection/report/pen.h"
#include "inspection/report/table.h"
#include "support/angles.h"

namespace inspection {
namespace {

using scenes::kDegree;

// Blue, green, red. Lines are cool, arcs warm.
const std::array<cv::Scalar, 3> kLineColors = {kLightBlue, cv::Scalar(110, 235, 90),
                                               cv::Scalar(255, 130, 110)};
const std::array<cv::Scalar, 3> kArcColors = {cv::Scalar(60, 160, 255), cv::Scalar(200, 90, 255), kYellow};
const cv::Scalar& kRisingColor = kGreen;
const cv::Scalar kFallingColor(80, 80, 255);
const cv::Scalar& kRegionColor = kLightBlue;
const cv::Scalar& kFittedColor = kYellow;

cv::Point2d onCircle(const Circle& circle, double radius, double degrees) {
    return circle.center + radius * cv::Point2d(std::cos(degrees * kDegree), std::sin(degrees * kDegree));
}

// Of more than half a circle in its centre; otherwise beside the arc, inside where there is room.
void labelArc(Pen& pen, const ArcPiece& arc) {
    const std::string text = "R" + fixedText(arc.circle.radius, 1);
    if (arc.endAngle - arc.startAngle > 180.0) return pen.label(arc.circle.center, text);
    const double away = pen.canvasPixels(24.0);
    const double radius =
        arc.circle.radius > 3.0 * away ? arc.circle.radius - away : arc.circle.radius + away;
    pen.label(onCircle(arc.circle, radius, 0.5 * (arc.startAngle + arc.endAngle)), text);
}

void markEdge(Pen& pen, const orx::TContrastEdge& edge, cv::Point2d across) {
    const cv::Scalar& color = edge.contrast > 0.0 ? kRisingColor : kFallingColor;
    pen.line(edge.position - across, edge.position + across, color);
}

}  // namespace

cv::Mat drawPieces(const cv::Mat& grey, const std::vector<SplitContour>& contours) {
    Pen pen(grey);
    for (const SplitContour& contour : contours) {
        for (std::size_t i = 0; i < contour.lines.size(); ++i) {
            const StraightPiece& line = contour.lines[i];
            const cv::Scalar& color = kLineColors[i % kLineColors.size()];
            pen.line(line.from, line.to, color);
            pen.dot(line.from, color);
            pen.dot(line.to, color);
        }
        for (std::size_t i = 0; i < contour.arcs.size(); ++i) {
            const ArcPiece& arc = contour.arcs[i];
            const cv::Scalar& color = kArcColors[i % kArcColors.size()];
            pen.arc(arc.circle.center, arc.circle.radius, arc.startAngle, arc.endAngle, color);
            pen.dot(onCircle(arc.circle, arc.circle.radius, arc.startAngle), color);
            pen.dot(onCircle(arc.circle, arc.circle.radius, arc.endAngle), color);
        }
    }
    for (const SplitContour& contour : contours)
        for (const ArcPiece& arc : contour.arcs) labelArc(pen, arc);
    return pen.canvas();
}

cv::Mat drawEdges(const cv::Mat& grey, const EdgeChains& edges) {
    Pen pen(grey);
    std::size_t number = 0;
    for (const ORXEdge::TMetricContour& chain : edges.chains) {
        const std::vector<cv::Point2d> points(chain.points.begin(), chain.points.end());
        const std::size_t color = number++ % (kLineColors.size() + kArcColors.size());
        pen.polyline(points, chain.closed,
                     color < kArcColors.size() ? kArcColors[color] : kLineColors[color - kArcColors.size()]);
    }
    return pen.canvas();
}

cv::Mat drawCaliper(const cv::Mat& grey, const BoxCaliper& caliper) {
    Pen pen(grey);
    // The outer edges of the box's pixels.
    const cv::Point2d from = cv::Point2d(caliper.box.tl()) - cv::Point2d(0.5, 0.5);
    const cv::Point2d to = cv::Point2d(caliper.box.br()) - cv::Point2d(0.5, 0.5);
    pen.polyline({from, {to.x, from.y}, to, {from.x, to.y}}, true, kRegionColor);
    const cv::Point2d across = caliper.downwards ? cv::Point2d(0.5 * caliper.box.width, 0.0)
                                                 : cv::Point2d(0.0, 0.5 * caliper.box.height);
    for (const orx::TContrastEdge& edge : caliper.edges) markEdge(pen, edge, across);
    return pen.canvas();
}

cv::Mat drawCaliper(const cv::Mat& grey, const CircleCaliper& caliper) {
    Pen pen(grey);
    pen.circle(caliper.nominal.center, caliper.nominal.radius, kRegionColor);
    if (caliper.fitted.valid()) {
        pen.circle(caliper.fitted.center, caliper.fitted.radius, kFittedColor);
        pen.cross(caliper.fitted.center, pen.canvasPixels(5.0), kFittedColor);
    }
    for (const orx::TContrastEdge& edge : caliper.edges) {
        const cv::Point2d ray = edge.position - caliper.nominal.center;
        const double length = std::hypot(ray.x, ray.y);
        if (length > 0.0) markEdge(pen, edge, pen.canvasPixels(5.0) / length * ray);
    }
    return pen.canvas();
}

}  // namespace inspection
