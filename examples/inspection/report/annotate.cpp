#include "inspection/report/annotate.h"

#include <cmath>
#include <string>
#include <vector>

#include "inspection/measure/ellipse_measure.h"
#include "inspection/measure/shapes.h"
#include "inspection/report/colors.h"
#include "inspection/report/pen.h"
#include "support/angles.h"

namespace inspection {
namespace {

using scenes::kDegree;

const cv::Scalar& kShapeColor = kGreen;
const cv::Scalar kWeakColor(40, 170, 255);
const cv::Scalar kOffColor(230, 60, 230);

cv::Point2d directionOf(const Feature& feature) {
    return {std::cos(feature.angle * kDegree), std::sin(feature.angle * kDegree)};
}

double distanceFrom(const Feature& feature, cv::Point2d p) {
    if (feature.shape == Shape::kEllipse) return std::abs(ellipseOf(feature).signedDistance(p));
    if (feature.shape == Shape::kCircle) return Circle{feature.center, feature.radius}.distance(p);
    const Line axis{feature.center, directionOf(feature)};
    return std::abs(std::abs(axis.signedDistance(p)) - 0.5 * feature.width);
}

void drawLineFeature(Pen& pen, const Feature& feature, const cv::Scalar& color) {
    const cv::Point2d along = 0.5 * feature.length * directionOf(feature);
    const cv::Point2d across = 0.5 * feature.width * Line{{}, directionOf(feature)}.normal();
    pen.line(feature.center - along, feature.center + along, color);
    if (feature.width <= 0.0) return;
    for (const double side : {-1.0, 1.0})
        pen.line(feature.center - along + side * across, feature.center + along + side * across, color);
}

void drawEllipseFeature(Pen& pen, const Feature& feature, const cv::Scalar& color) {
    constexpr int kCorners = 180;
    const orx::TMeasuredEllipse ellipse = ellipseOf(feature);
    std::vector<cv::Point2d> outline;
    outline.reserve(kCorners);
    for (int i = 0; i < kCorners; ++i) outline.push_back(ellipse.at(i * 360.0 / kCorners));
    pen.polyline(outline, true, color);
    pen.line(ellipse.at(0.0), ellipse.at(180.0), color);
    pen.line(ellipse.at(90.0), ellipse.at(270.0), color);
}

// The ends of an elongated object belong to it, though not to its sides.
bool isOnEnd(const Feature& feature, cv::Point2d p, double tolerance) {
    if (feature.shape != Shape::kLine) return false;
    const double along = std::abs(directionOf(feature).dot(p - feature.center));
    return std::abs(along - 0.5 * feature.length) <= tolerance + 0.5;
}

void drawFeature(Pen& pen, const Feature& feature, double tolerance) {
    // Half a pixel more: the contour runs through the centres of the object's outermost pixels.
    for (const cv::Point& p : feature.contour)
        if (distanceFrom(feature, p) > tolerance + 0.5 && !isOnEnd(feature, p, tolerance))
            pen.dot(p, kOffColor);
    const cv::Scalar& color = feature.weak ? kWeakColor : kShapeColor;
    if (feature.shape == Shape::kLine) {
        drawLineFeature(pen, feature, color);
    } else if (feature.shape == Shape::kEllipse) {
        drawEllipseFeature(pen, feature, color);
    } else {
        pen.circle(feature.center, feature.radius, color);
        pen.cross(feature.center, pen.canvasPixels(4.0), color);
    }
}

// Beside the centre mark rather than on it.
cv::Point2d labelPlace(const Pen& pen, const Feature& feature) {
    if (feature.isRound()) return feature.center - cv::Point2d(0.0, pen.canvasPixels(14.0));
    const cv::Point2d up = Line{{}, directionOf(feature)}.normal();
    const double away = 0.5 * feature.width + pen.canvasPixels(14.0);
    return feature.center + (up.y < 0.0 ? away : -away) * up;
}

}  // namespace

cv::Mat annotate(const cv::Mat& grey, const std::vector<Feature>& features, double tolerance) {
    Pen pen(grey);
    for (const Feature& feature : features) drawFeature(pen, feature, tolerance);
    for (std::size_t i = 0; i < features.size(); ++i)
        pen.label(labelPlace(pen, features[i]), std::to_string(i + 1));
    return pen.canvas();
}

}  // namespace inspection
