#include "inspection/measure/measurement.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "inspection/measure/consensus.h"
#include "inspection/measure/contour_edges.h"
#include "inspection/measure/ellipse_measure.h"
#include "inspection/measure/fit_estimators.h"
#include "inspection/measure/shapes.h"
#include "orxFunctions/analysis/image_noise.h"
#include "orxFunctions/fitting/geometric_fit.h"
#include "orxFunctions/fitting/point_list.h"
#include "orxFunctions/measuring/relations.h"

namespace inspection {
namespace {

constexpr double kElongated = 2.5;
constexpr std::size_t kLeastPoints = 8;
// The second side of an object supports its axis when it holds at least this part of the first side's points.
constexpr double kSecondSide = 0.3;
// How far the rounding of a blurred corner reaches along a side, pixels.
constexpr double kCorner = 5.0;
constexpr double kHalfPixel = 0.5;

// The line along a straight side. Its ends are left out, because a blurred corner is round; a side too short
// for that is used whole.
orx::TMeasuredLine measureSide(const LineConsensus& side, cv::Point2d outward, const EdgeContext& context) {
    const auto along = [&](const cv::Point& pixel) { return side.line.direction.dot(cv::Point2d(pixel)); };
    const auto [least, most] =
        std::minmax_element(side.inliers.begin(), side.inliers.end(),
                            [&](const cv::Point& a, const cv::Point& b) { return along(a) < along(b); });
    const bool isLong = along(*most) - along(*least) > 4.0 * kCorner;
    const double from = along(*least) + (isLong ? kCorner : 0.0);
    const double to = along(*most) - (isLong ? kCorner : 0.0);

    std::vector<orx::TEdgeProbe> probes;
    probes.reserve(side.inliers.size());
    for (const cv::Point& pixel : side.inliers)
        if (along(pixel) >= from && along(pixel) <= to) probes.push_back(probeAt(pixel, outward));
    return orx::fitLineGeometric(placesOf(edgesAt(probes, context)), contourFit());
}

// Of a shape that is not fitted: its own members and no uncertainty.
orx::TMeasuredCircle plainCircle(const Circle& circle) {
    orx::TMeasuredCircle plain;
    plain.center = circle.center;
    plain.radius = circle.radius;
    return plain;
}

std::optional<orx::TMeasuredCircle> searchedCircle(const std::vector<cv::Point>& points,
                                                   const EdgeContext& context) {
    const cv::Rect box = cv::boundingRect(points);
    const auto found = searchCircle(points, std::max(box.width, box.height), context.settings);
    if (!found.valid()) return std::nullopt;

    auto circle = plainCircle({found.center, found.radius});
    for (int pass = 0; pass < 2; ++pass) {
        std::vector<cv::Point2d> inliers;
        for (const cv::Point2d& edge :
             placesOf(edgesOfCircle(points, {circle.center, circle.radius}, context)))
            if (std::abs(circle.signedDistance(edge)) <= context.settings.tolerance) inliers.push_back(edge);
        const auto fitted = orx::fitCircleGeometric(inliers, contourFit());
        if (!fitted.valid()) break;
        circle = fitted;
    }
    return circle;
}

std::optional<orx::TMeasuredCircle> estimatedCircle(const std::vector<cv::Point>& points,
                                                    const EdgeContext& context) {
    auto circle = estimateCircle(points, context.settings);
    if (!circle) return std::nullopt;
    circle->radius += kHalfPixel;
    return plainCircle(*circle);
}

std::optional<Feature> measureCircle(const std::vector<cv::Point>& points, const EdgeContext& context) {
    const bool searches = context.settings.circle == CircleEstimator::kSearch;
    const auto circle = searches ? searchedCircle(points, context) : estimatedCircle(points, context);
    if (!circle) return std::nullopt;
    Feature feature;
    feature.shape = Shape::kCircle;
    feature.center = circle->center;
    feature.radius = circle->radius;
    feature.deviations.x = circle->xDeviation;
    feature.deviations.y = circle->yDeviation;
    feature.deviations.radius = circle->radiusDeviation;
    Residuals residuals(context.settings.tolerance);
    for (const auto& edge : edgesOfCircle(points, {circle->center, circle->radius}, context))
        residuals.add(std::abs(circle->signedDistance(edge.position)));
    residuals.writeTo(feature, context.settings.minInliers);
    return feature;
}

cv::Point2d meanOf(const std::vector<cv::Point>& points) {
    cv::Point2d sum;
    for (const cv::Point& p : points) sum += cv::Point2d(p);
    return sum / static_cast<double>(points.size());
}

// The normal of `line` that points away from the object's middle.
cv::Point2d outwardOf(const orx::TMeasuredLine& line, cv::Point2d middle) {
    return line.signedDistance(middle) > 0.0 ? -line.normal() : line.normal();
}

// The axis along the mean direction of two sides, each of which counts by how well its angle is known.
ParallelLines betweenSides(const orx::TMeasuredLine& first, const orx::TMeasuredLine& second,
                           const orx::TMeasuredValue& width) {
    const auto weightOf = [](const orx::TMeasuredLine& side) {
        return 1.0 / std::max(1e-12, side.angleDeviation * side.angleDeviation);
    };
    const cv::Point2d opposite =
        second.direction.dot(first.direction) < 0.0 ? -second.direction : second.direction;
    const cv::Point2d sum = weightOf(first) * first.direction + weightOf(second) * opposite;
    return {{0.5 * (first.point + second.point), sum / cv::norm(sum)},
            width.value,
            0.5 * std::hypot(first.offsetDeviation, second.offsetDeviation),
            1.0 / std::sqrt(weightOf(first) + weightOf(second)),
            width.deviation};
}

// The axis between the two long sides, or the one side that was found.
std::optional<ParallelLines> searchedSides(const std::vector<cv::Point>& points, const EdgeContext& context) {
    const LineConsensus first = searchLine(points, nullptr, context.settings);
    if (!first.line.valid()) return std::nullopt;
    const cv::Point2d outward = outwardOf(first.line, meanOf(points));
    const auto measured = measureSide(first, outward, context);
    if (!measured.valid())
        return ParallelLines{{first.line.point + kHalfPixel * outward, first.line.direction}};

    const LineConsensus second = searchLine(first.others, &first.line, context.settings);
    if (second.line.valid()) {
        const auto opposite = measureSide(second, -outward, context);
        const double away = outward.dot(second.line.point - first.line.point);
        const bool isOpposite = away < -2.0 * context.settings.tolerance;
        const orx::TMeasuredValue width = orx::distance(measured, opposite).middle;
        if (width.valid() && isOpposite && opposite.points >= kSecondSide * measured.points)
            return betweenSides(measured, opposite, width);
    }
    return ParallelLines{
        {measured.point, measured.direction}, 0.0, measured.offsetDeviation, measured.angleDeviation, 0.0};
}

std::optional<ParallelLines> estimatedSides(const std::vector<cv::Point>& points,
                                            const EdgeContext& context) {
    auto sides = estimateSides(points, context.settings);
    if (sides && sides->width > 0.0) sides->width += 2.0 * kHalfPixel;
    return sides;
}

std::optional<Feature> measureLine(const std::vector<cv::Point>& points, const EdgeContext& context) {
    const bool searches = context.settings.line == LineEstimator::kSearch;
    const auto sides = searches ? searchedSides(points, context) : estimatedSides(points, context);
    if (!sides) return std::nullopt;

    const Line& axis = sides->axis;
    Feature feature;
    feature.shape = Shape::kLine;
    feature.angle = axis.angle();
    feature.width = sides->width;
    feature.deviations.angle = sides->angleDeviation;
    feature.deviations.width = sides->widthDeviation;
    feature.deviations.offset = sides->offsetDeviation;
    Residuals residuals(context.settings.tolerance);
    double least = 0.0;
    double most = 0.0;
    std::vector<orx::TEdgeProbe> probes;
    probes.reserve(points.size());
    for (const cv::Point& pixel : points) {
        probes.push_back(probeAt(pixel, axis.signedDistance(pixel) < 0.0 ? -axis.normal() : axis.normal()));
        const double along = axis.direction.dot(cv::Point2d(pixel) - axis.point);
        least = std::min(least, along);
        most = std::max(most, along);
    }
    const auto distance = [&](cv::Point2d p) {
        return std::abs(std::abs(axis.signedDistance(p)) - 0.5 * sides->width);
    };
    if (sides->width > 0.0) {
        for (const orx::TContourEdge& edge : edgesAt(probes, context)) residuals.add(distance(edge.position));
    } else {
        for (const cv::Point& pixel : points) residuals.add(distance(pixel));
    }
    residuals.writeTo(feature, context.settings.minInliers);
    feature.center = axis.point + 0.5 * (least + most) * axis.direction;
    feature.length = most - least + 1.0;
    return feature;
}

bool isElongated(const std::vector<cv::Point>& contour, ShapeChoice choice) {
    if (choice != ShapeChoice::kAuto) return choice == ShapeChoice::kLine;
    const cv::Size2f size = cv::minAreaRect(contour).size;
    const float shorter = std::max(1.0F, std::min(size.width, size.height));
    return static_cast<double>(std::max(size.width, size.height) / shorter) >= kElongated;
}

std::optional<Feature> measureContour(const std::vector<cv::Point>& points, bool isLine, const cv::Mat& grey,
                                      double noise, const Preparation& prepared, const Settings& settings) {
    const bool usesPixels =
        isLine ? settings.line != LineEstimator::kSearch : settings.circle != CircleEstimator::kSearch;
    const EdgeContext context{grey, prepared.brightObjects, settings, settings.subPixel && !usesPixels,
                              noise};
    if (isLine) return measureLine(points, context);
    return settings.ellipse == EllipseEstimator::kNone ? measureCircle(points, context)
                                                       : measureEllipse(points, context);
}

double extentOf(const Feature& feature) {
    const cv::Rect box = cv::boundingRect(feature.contour);
    return std::max(box.width, box.height);
}

// Rows from top to bottom, each from left to right. A row takes in what lies less than three quarters of a
// usual object below its topmost centre.
void sortForReading(std::vector<Feature>& features) {
    if (features.empty()) return;
    std::vector<double> extents;
    extents.reserve(features.size());
    for (const Feature& feature : features) extents.push_back(extentOf(feature));
    const auto median = extents.begin() + static_cast<std::ptrdiff_t>(extents.size() / 2);
    std::nth_element(extents.begin(), median, extents.end());

    const auto isAbove = [](const Feature& a, const Feature& b) { return a.center.y < b.center.y; };
    const auto isLeft = [](const Feature& a, const Feature& b) { return a.center.x < b.center.x; };
    std::sort(features.begin(), features.end(), isAbove);
    for (auto row = features.begin(); row != features.end();) {
        const double bottom = row->center.y + 0.75 * *median;
        const auto end = std::find_if(row, features.end(),
                                      [&](const Feature& feature) { return feature.center.y > bottom; });
        std::sort(row, end, isLeft);
        row = end;
    }
}

}  // namespace

const char* nameOf(Shape shape) {
    return shape == Shape::kCircle ? "circle" : shape == Shape::kLine ? "line" : "ellipse";
}

std::vector<Feature> measure(const cv::Mat& grey, const Preparation& prepared, const Settings& settings) {
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(prepared.objects, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    const double noise = orx::getImageNoise(grey);
    std::vector<Feature> features;
    for (const std::vector<cv::Point>& contour : contours) {
        const double area = cv::contourArea(contour);
        if (area < settings.minArea) continue;
        std::vector<cv::Point> points = contour;
        orx::deleteImageSidePoints(points, grey.size(), 1);
        if (points.size() < kLeastPoints) continue;
        auto feature =
            measureContour(points, isElongated(contour, settings.shape), grey, noise, prepared, settings);
        if (!feature) continue;
        feature->area = area;
        feature->contour = contour;
        features.push_back(std::move(*feature));
    }
    sortForReading(features);
    return features;
}

}  // namespace inspection
