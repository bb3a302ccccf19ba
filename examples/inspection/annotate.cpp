#include "inspection/annotate.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <string>

#include "inspection/least_squares.h"

namespace inspection {
namespace {

const cv::Scalar kShapeColor(90, 230, 60);
const cv::Scalar kWeakColor(40, 170, 255);
const cv::Scalar kOffColor(230, 60, 230);
const cv::Scalar kTextColor(255, 255, 255);
const cv::Scalar kTextEdge(40, 30, 20);

// Fractional bits of OpenCV's drawing coordinates.
constexpr int kShift = 6;
constexpr int kUnit = 1 << kShift;
constexpr double kDegree = 3.141592653589793 / 180.0;

int enlargement(cv::Size size) {
    return std::clamp(1100 / std::max(1, std::max(size.width, size.height)), 1, 4);
}

// Draws in coordinates of the original picture.
class Pen {
  public:
    Pen(cv::Mat& canvas, int scale) : canvas_(canvas), scale_(scale) {}

    void circle(cv::Point2d center, double radius, const cv::Scalar& color) {
        cv::circle(canvas_, fixed(center), cvRound(radius * scale_ * kUnit), color, thickness(), cv::LINE_AA,
                   kShift);
    }
    void line(cv::Point2d from, cv::Point2d to, const cv::Scalar& color) {
        cv::line(canvas_, fixed(from), fixed(to), color, thickness(), cv::LINE_AA, kShift);
    }
    void dot(cv::Point2d at, const cv::Scalar& color) {
        cv::circle(canvas_, fixed(at), kUnit * std::max(1, scale_ / 2), color, cv::FILLED, cv::LINE_AA,
                   kShift);
    }
    void cross(cv::Point2d at, double arm, const cv::Scalar& color) {
        line(at - cv::Point2d(arm, 0.0), at + cv::Point2d(arm, 0.0), color);
        line(at - cv::Point2d(0.0, arm), at + cv::Point2d(0.0, arm), color);
    }
    // Centred on `at`, edged so that it can be read on any ground.
    void label(cv::Point2d at, const std::string& text) {
        int baseline = 0;
        const double size = 0.5;
        const cv::Size extent = cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, size, 1, &baseline);
        const cv::Point middle(cvRound(enlarged(at.x)), cvRound(enlarged(at.y)));
        const cv::Point origin = middle + cv::Point(-extent.width / 2, extent.height / 2);
        cv::putText(canvas_, text, origin, cv::FONT_HERSHEY_SIMPLEX, size, kTextEdge, 4, cv::LINE_AA);
        cv::putText(canvas_, text, origin, cv::FONT_HERSHEY_SIMPLEX, size, kTextColor, 1, cv::LINE_AA);
    }
    // Pixels of the canvas in pixels of the picture.
    double canvasPixels(double count) const { return count / scale_; }

  private:
    // Where the centre of a pixel comes to lie when every pixel becomes scale x scale ones.
    double enlarged(double v) const { return (v + 0.5) * scale_ - 0.5; }
    cv::Point fixed(cv::Point2d p) const {
        return {cvRound(enlarged(p.x) * kUnit), cvRound(enlarged(p.y) * kUnit)};
    }
    int thickness() const { return scale_ > 2 || std::max(canvas_.cols, canvas_.rows) > 1500 ? 2 : 1; }

    cv::Mat& canvas_;
    int scale_;
};

cv::Point2d directionOf(const Feature& feature) {
    return {std::cos(feature.angle * kDegree), std::sin(feature.angle * kDegree)};
}

double distanceFrom(const Feature& feature, cv::Point2d p) {
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
    } else {
        pen.circle(feature.center, feature.radius, color);
        pen.cross(feature.center, pen.canvasPixels(4.0), color);
    }
}

// Beside the centre mark rather than on it.
cv::Point2d labelPlace(const Pen& pen, const Feature& feature) {
    if (feature.shape == Shape::kCircle) return feature.center - cv::Point2d(0.0, pen.canvasPixels(14.0));
    const cv::Point2d up = Line{{}, directionOf(feature)}.normal();
    const double away = 0.5 * feature.width + pen.canvasPixels(14.0);
    return feature.center + (up.y < 0.0 ? away : -away) * up;
}

}  // namespace

cv::Mat annotate(const cv::Mat& grey, const std::vector<Feature>& features, double tolerance) {
    cv::Mat canvas;
    cv::cvtColor(grey, canvas, cv::COLOR_GRAY2BGR);
    const int scale = enlargement(grey.size());
    if (scale > 1) cv::resize(canvas, canvas, cv::Size(), scale, scale, cv::INTER_CUBIC);
    Pen pen(canvas, scale);
    for (const Feature& feature : features) drawFeature(pen, feature, tolerance);
    for (std::size_t i = 0; i < features.size(); ++i)
        pen.label(labelPlace(pen, features[i]), std::to_string(i + 1));
    return canvas;
}

}  // namespace inspection
