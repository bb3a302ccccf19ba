#include "orxFunctions/fitting/ellipse_geometric.h"

#include <cmath>

#include "orxFunctions/fitting/fit_refusal_internal.h"
#include "orxFunctions/fitting/geometric/fit_points.h"
#include "orxFunctions/fitting/geometric/measured_ellipse.h"
#include "orxFunctions/fitting/kernels/foot.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

foot_kernels::Ellipse ellipseOf(const TMeasuredEllipse& e) {
    const double turn = radians(e.angle);
    return {e.center.x, e.center.y, e.semiMajor, e.semiMinor, std::cos(turn), std::sin(turn)};
}

cv::Point2d onOutline(const foot_kernels::Ellipse& e, double cosine, double sine) {
    const double x = e.a * cosine;
    const double y = e.b * sine;
    return {e.x + e.cosine * x - e.sine * y, e.y + e.sine * x + e.cosine * y};
}

bool hasOutline(const TMeasuredEllipse& e, const char* function) {
    return e.semiMinor > 0.0 ||
           refuse(rcNotReady, function, "there is no ellipse: %s", fitStatusText(e.status));
}

template <class Point>
TMeasuredEllipse fitEllipse(const std::vector<Point>& given, const TFitOptions& options) {
    TMeasuredEllipse result;
    geometric::FitPoints points;
    result.points = geometric::countOf(given.size());
    result.status = points.take(given, options, geometric::kFewestEllipsePoints);
    if (result.status == fsOk) geometric::measureEllipse(options, points, result);
    isFitted(result.status, "fitEllipseGeometric");
    return result;
}

}  // namespace

double TMeasuredEllipse::signedDistance(cv::Point2d p) const {
    if (!hasOutline(*this, "signedDistance")) return 0.0;
    double d = 0.0;
    foot_kernels::chosen().distances({&p.x, &p.y, nullptr, 1}, ellipseOf(*this), &d);
    return d;
}

cv::Point2d TMeasuredEllipse::nearest(cv::Point2d p) const {
    if (!hasOutline(*this, "nearest")) return center;
    const foot_kernels::Ellipse ellipse = ellipseOf(*this);
    double c = 0.0;
    double s = 0.0;
    foot_kernels::chosen().feet({&p.x, &p.y, nullptr, 1}, ellipse, &c, &s);
    return onOutline(ellipse, c, s);
}

cv::Point2d TMeasuredEllipse::at(double parameter) const {
    return onOutline(ellipseOf(*this), std::cos(radians(parameter)), std::sin(radians(parameter)));
}

TMeasuredEllipse fitEllipseGeometric(const std::vector<cv::Point2d>& points, const TFitOptions& options) {
    return fitEllipse(points, options);
}

TMeasuredEllipse fitEllipseGeometric(const std::vector<cv::Point2f>& points, const TFitOptions& options) {
    return fitEllipse(points, options);
}

}  // namespace orx
