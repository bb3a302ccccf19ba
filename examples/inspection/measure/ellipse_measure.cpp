#include "inspection/measure/ellipse_measure.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/fitting/ellipse_fit.h"
#include "support/angles.h"

namespace inspection {
namespace {

using scenes::kDegree;

constexpr double kSmallestAxis = 4.0;
constexpr double kRoom = 1.5;

cv::Point2d longerDirection(const Ellipse& ellipse) {
    return {std::cos(ellipse.angle * kDegree), std::sin(ellipse.angle * kDegree)};
}

// Coordinates along the longer and the shorter axis.
cv::Point2d inAxes(const Ellipse& ellipse, cv::Point2d p) {
    const cv::Point2d way = p - ellipse.center;
    const cv::Point2d along = longerDirection(ellipse);
    return {along.dot(way), along.cross(way)};
}

// What the gradient of the ellipse's form u^2/a^2 + v^2/b^2 is proportional to.
cv::Point2d gradientAt(const Ellipse& ellipse, cv::Point2d q) {
    return {q.x / (ellipse.longer * ellipse.longer), q.y / (ellipse.shorter * ellipse.shorter)};
}

orx::TEllipse fitOnce(const std::vector<cv::Point2f>& points, double largestAxis, double minInliers,
                      const Settings& settings) {
    if (settings.ellipse == EllipseEstimator::kNorm)
        return orxFit::fitEllipseNorm(points, settings.tolerance, minInliers, kSmallestAxis, largestAxis,
                                      kSmallestAxis, largestAxis);
    return orxFit::fitEllipseRansac(points, settings.tolerance, settings.trials, minInliers, kSmallestAxis,
                                    largestAxis, kSmallestAxis, largestAxis);
}

std::optional<Ellipse> fitThrough(const std::vector<cv::Point2d>& points, cv::Point2d origin, double extent,
                                  const Settings& settings) {
    // The library computes conics in single precision, which is fine near the origin only.
    std::vector<cv::Point2f> local;
    local.reserve(points.size());
    for (const cv::Point2d& p : points) local.emplace_back(p - origin);
    orx::TEllipse found = fitOnce(local, kRoom * extent, settings.minInliers, settings);
    if (found.valid == 0) found = fitOnce(local, kRoom * extent, 0.0, settings);
    if (found.valid == 0) return std::nullopt;
    const double angle = std::fmod(static_cast<double>(found.angle) + 90.0 + 360.0, 180.0);
    return Ellipse{cv::Point2d(static_cast<double>(found.x), static_cast<double>(found.y)) + origin,
                   0.5 * static_cast<double>(found.height), 0.5 * static_cast<double>(found.width), angle};
}

Feature featureOf(const Ellipse& ellipse) {
    Feature feature;
    feature.shape = Shape::kEllipse;
    feature.center = ellipse.center;
    feature.radius = std::sqrt(ellipse.longer * ellipse.shorter);
    feature.angle = ellipse.angle;
    feature.length = 2.0 * ellipse.longer;
    feature.width = 2.0 * ellipse.shorter;
    return feature;
}

}  // namespace

double Ellipse::distance(cv::Point2d p) const {
    const cv::Point2d q = inAxes(*this, p);
    const double level = std::hypot(q.x / longer, q.y / shorter);
    if (level <= 0.0) return shorter;
    const cv::Point2d gradient = gradientAt(*this, q) / level;
    return std::abs(level - 1.0) / std::hypot(gradient.x, gradient.y);
}

cv::Point2d Ellipse::outward(cv::Point2d p) const {
    const cv::Point2d gradient = gradientAt(*this, inAxes(*this, p));
    const double length = std::hypot(gradient.x, gradient.y);
    const cv::Point2d along = longerDirection(*this);
    if (length <= 0.0) return along;
    return (gradient.x * along + gradient.y * cv::Point2d(-along.y, along.x)) / length;
}

cv::Point2d Ellipse::at(double parameter) const {
    const cv::Point2d along = longerDirection(*this);
    return center + longer * std::cos(parameter) * along +
           shorter * std::sin(parameter) * cv::Point2d(-along.y, along.x);
}

std::optional<Feature> measureEllipse(const std::vector<cv::Point>& points, const EdgeContext& context) {
    const cv::Rect box = cv::boundingRect(points);
    const cv::Point2d middle = 0.5 * cv::Point2d(box.tl() + box.br());
    const double extent = std::hypot(box.width, box.height);
    const std::vector<cv::Point2d> pixels(points.begin(), points.end());
    auto ellipse = fitThrough(pixels, middle, extent, context.settings);
    if (!ellipse) return std::nullopt;

    const auto edgesAcross = [&] {
        std::vector<orx::TEdgeProbe> probes;
        probes.reserve(points.size());
        for (const cv::Point& p : points) probes.push_back(probeAt(p, ellipse->outward(p)));
        return placesOf(edgesAt(probes, context));
    };
    std::vector<cv::Point2d> edges = edgesAcross();
    if (const auto refined = fitThrough(edges, middle, extent, context.settings)) {
        ellipse = refined;
        edges = edgesAcross();
    }
    Feature feature = featureOf(*ellipse);
    Residuals residuals(context.settings.tolerance);
    for (const cv::Point2d& edge : edges) residuals.add(ellipse->distance(edge));
    residuals.writeTo(feature, context.settings.minInliers);
    return feature;
}

}  // namespace inspection
