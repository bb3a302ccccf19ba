#include "orxFunctions/fitting/geometric_fit.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/fit_refusal_internal.h"
#include "orxFunctions/fitting/geometric/fit_points.h"
#include "orxFunctions/fitting/geometric/measured_circle.h"
#include "orxFunctions/fitting/geometric/measured_line.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

// `least` points at least; `measure(options, points, result)` does the rest. True where there is a result;
// otherwise `function` keeps the refusal.
template <class Point, class Shape>
bool fit(const std::vector<Point>& given, std::size_t least, const TFitOptions& options,
         void (*measure)(const TFitOptions&, geometric::FitPoints&, Shape&), const char* function,
         Shape& result) {
    geometric::FitPoints points;
    result.points = geometric::countOf(given.size());
    result.status = points.take(given, options, least);
    if (result.status == fsOk) measure(options, points, result);
    return isFitted(result.status, function);
}

template <class Point>
TMeasuredLine fitLine(const std::vector<Point>& points, const TFitOptions& options) {
    TMeasuredLine line;
    fit(points, 3, options, geometric::measureLine, "fitLineGeometric", line);
    return line;
}

template <class Point>
TMeasuredCircle fitCircle(const std::vector<Point>& points, const TFitOptions& options) {
    TMeasuredCircle circle;
    fit(points, 4, options, geometric::measureCircle, "fitCircleGeometric", circle);
    return circle;
}

template <class Point>
TMeasuredArc fitArc(const std::vector<Point>& points, const TFitOptions& options) {
    TMeasuredArc arc;
    if (!fit<Point, TMeasuredCircle>(points, 4, options, geometric::measureCircle, "fitArcGeometric", arc))
        return arc;
    arc.start = arc.at(arc.startAngle);
    arc.middle = arc.at(arc.startAngle + arc.sweep / 2.0);
    arc.end = arc.at(arc.startAngle + arc.sweep);
    arc.length = arc.radius * radians(arc.sweep);
    return arc;
}

}  // namespace

double TMeasuredLine::deviationAt(double along) const {
    const double lever = radians(along);
    return std::sqrt(
        std::max(0.0, covariance(0, 0) + 2.0 * lever * covariance(0, 1) + lever * lever * covariance(1, 1)));
}

TLine TMeasuredLine::slopeForm() const {
    TLine line;
    line.valid = valid();
    if (!line.valid) {
        refuse(rcNotReady, "slopeForm", "there is no line: %s", fitStatusText(status));
        return line;
    }
    line.k = direction.y / direction.x;
    line.b = point.y - line.k * point.x;
    return line;
}

cv::Point2d TMeasuredCircle::at(double angle) const {
    return {center.x + radius * std::cos(radians(angle)), center.y + radius * std::sin(radians(angle))};
}

TMeasuredLine fitLineGeometric(const std::vector<cv::Point2d>& points, const TFitOptions& options) {
    return fitLine(points, options);
}

TMeasuredLine fitLineGeometric(const std::vector<cv::Point2f>& points, const TFitOptions& options) {
    return fitLine(points, options);
}

TMeasuredCircle fitCircleGeometric(const std::vector<cv::Point2d>& points, const TFitOptions& options) {
    return fitCircle(points, options);
}

TMeasuredCircle fitCircleGeometric(const std::vector<cv::Point2f>& points, const TFitOptions& options) {
    return fitCircle(points, options);
}

TMeasuredArc fitArcGeometric(const std::vector<cv::Point2d>& points, const TFitOptions& options) {
    return fitArc(points, options);
}

TMeasuredArc fitArcGeometric(const std::vector<cv::Point2f>& points, const TFitOptions& options) {
    return fitArc(points, options);
}

}  // namespace orx
