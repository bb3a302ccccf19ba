#include "inspection/measure/ellipse_measure.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "inspection/measure/consensus.h"
#include "support/angles.h"

namespace inspection {
namespace {

using orx::TMeasuredEllipse;
using scenes::kDegree;

TMeasuredEllipse ellipseOfPixels(const std::vector<cv::Point>& points, const Settings& settings) {
    if (settings.ellipse == EllipseEstimator::kNorm)
        return orx::fitEllipseGeometric(std::vector<cv::Point2d>(points.begin(), points.end()));
    const cv::Rect box = cv::boundingRect(points);
    return searchEllipse(points, std::max(box.width, box.height), settings);
}

orx::TEdgeProbe probeAcross(const TMeasuredEllipse& ellipse, cv::Point pixel) {
    const cv::Point2d along(std::cos(ellipse.angle * kDegree), std::sin(ellipse.angle * kDegree));
    const cv::Point2d across(-along.y, along.x);
    const cv::Point2d foot = ellipse.nearest(pixel) - ellipse.center;
    const double a = ellipse.semiMajor * ellipse.semiMajor;
    const double b = ellipse.semiMinor * ellipse.semiMinor;
    const cv::Point2d gradient = foot.dot(along) / a * along + foot.dot(across) / b * across;
    const double slope = cv::norm(gradient);
    return probeAt(pixel, gradient / slope, 1.0 / (a * b * slope * slope * slope));
}

std::vector<cv::Point2d> edgesOf(const std::vector<cv::Point>& pixels, const TMeasuredEllipse& ellipse,
                                 const EdgeContext& context) {
    std::vector<orx::TEdgeProbe> probes;
    probes.reserve(pixels.size());
    for (const cv::Point& pixel : pixels) probes.push_back(probeAcross(ellipse, pixel));
    return placesOf(edgesAt(probes, context, kRoundReach));
}

Feature featureOf(const TMeasuredEllipse& ellipse) {
    const double a = ellipse.semiMajor;
    const double b = ellipse.semiMinor;
    Feature feature;
    feature.shape = Shape::kEllipse;
    feature.center = ellipse.center;
    feature.radius = std::sqrt(a * b);
    feature.angle = ellipse.angle;
    feature.length = 2.0 * a;
    feature.width = 2.0 * b;
    const auto& covariance = ellipse.covariance;
    const double relative =
        covariance(2, 2) / (a * a) + 2.0 * covariance(2, 3) / (a * b) + covariance(3, 3) / (b * b);
    feature.deviations = {ellipse.xDeviation,
                          ellipse.yDeviation,
                          0.5 * feature.radius * std::sqrt(relative),
                          ellipse.angleDeviation,
                          2.0 * ellipse.semiMajorDeviation,
                          2.0 * ellipse.semiMinorDeviation};
    return feature;
}

}  // namespace

std::optional<Feature> measureEllipse(const std::vector<cv::Point>& points, const EdgeContext& context) {
    const double tolerance = context.settings.tolerance;
    const bool takesAll = context.settings.ellipse == EllipseEstimator::kNorm;
    TMeasuredEllipse ellipse = ellipseOfPixels(points, context.settings);
    for (int pass = 0; pass < 2 && ellipse.valid(); ++pass) {
        std::vector<cv::Point2d> edges = edgesOf(points, ellipse, context);
        const auto isOff = [&](cv::Point2d p) { return std::abs(ellipse.signedDistance(p)) > tolerance; };
        if (!takesAll) edges.erase(std::remove_if(edges.begin(), edges.end(), isOff), edges.end());
        ellipse = orx::fitEllipseGeometric(edges, contourFit());
    }
    if (!ellipse.valid()) return std::nullopt;
    Feature feature = featureOf(ellipse);
    Residuals residuals(tolerance);
    for (const cv::Point2d& edge : edgesOf(points, ellipse, context))
        residuals.add(std::abs(ellipse.signedDistance(edge)));
    residuals.writeTo(feature, context.settings.minInliers);
    return feature;
}

TMeasuredEllipse ellipseOf(const Feature& feature) {
    TMeasuredEllipse ellipse;
    ellipse.status = orx::fsOk;
    ellipse.center = feature.center;
    ellipse.semiMajor = 0.5 * feature.length;
    ellipse.semiMinor = 0.5 * feature.width;
    ellipse.angle = feature.angle;
    return ellipse;
}

}  // namespace inspection
