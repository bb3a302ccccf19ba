#include "orxFunctions/measuring/recipe/shape.h"

#include <algorithm>
#include <cmath>

namespace orx::recipes {
namespace {

cv::Point2d meanOf(const std::vector<cv::Point2d>& points) {
    cv::Point2d sum;
    for (const cv::Point2d& p : points) sum += p;
    return points.empty() ? sum : sum / static_cast<double>(points.size());
}

void scaleReport(TFitReport& report, double factor) {
    report.noise *= factor;
    report.rms *= factor;
    report.peakToValley *= factor;
}

// Of a covariance whose parameters up to `lengths` are lengths and the rest angles.
template <int n>
cv::Matx<double, n, n> scaledCovariance(cv::Matx<double, n, n> covariance, int lengths, double factor) {
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            covariance(i, j) *= (i < lengths ? factor : 1.0) * (j < lengths ? factor : 1.0);
        }
    }
    return covariance;
}

}  // namespace

PlacedPoints placedPoints(const EdgePoints& edges, const Plane* plane) {
    if (plane == nullptr) return {edges.points, edges.deviations, 1.0};
    PlacedPoints placed;
    placed.size = plane->pixelSize(meanOf(edges.points));
    if (!(placed.size > 0.0) || !std::isfinite(placed.size)) return {};
    for (std::size_t i = 0; i < edges.points.size(); ++i) {
        const cv::Point2d onPlane = plane->toPlane(edges.points[i]) / placed.size;
        if (!std::isfinite(onPlane.x) || !std::isfinite(onPlane.y)) return {};
        placed.points.push_back(onPlane);
        // Of what moves across the edge, the part across the edge's place on the plane.
        const cv::Matx22d jacobian = plane->jacobian(edges.points[i]);
        const cv::Point2d n = edges.normals[i];
        const cv::Vec2d along = jacobian * cv::Vec2d(-n.y, n.x);
        const double across = std::abs(cv::determinant(jacobian)) / std::max(1e-300, cv::norm(along));
        placed.deviations.push_back(edges.deviations[i] * across / placed.size);
    }
    return placed;
}

TMeasuredPoint scaled(TMeasuredPoint point, double factor) {
    point.position *= factor;
    point.covariance = point.covariance * (factor * factor);
    return point;
}

TMeasuredLine scaled(TMeasuredLine line, double factor) {
    scaleReport(line, factor);
    line.point *= factor;
    line.from *= factor;
    line.to *= factor;
    line.offsetDeviation *= factor;
    line.covariance = scaledCovariance<2>(line.covariance, 1, factor);
    return line;
}

TMeasuredCircle scaled(TMeasuredCircle circle, double factor) {
    scaleReport(circle, factor);
    circle.center *= factor;
    circle.radius *= factor;
    circle.covariance = scaledCovariance<3>(circle.covariance, 3, factor);
    circle.xDeviation *= factor;
    circle.yDeviation *= factor;
    circle.radiusDeviation *= factor;
    return circle;
}

TMeasuredEllipse scaled(TMeasuredEllipse ellipse, double factor) {
    scaleReport(ellipse, factor);
    ellipse.center *= factor;
    ellipse.semiMajor *= factor;
    ellipse.semiMinor *= factor;
    ellipse.covariance = scaledCovariance<5>(ellipse.covariance, 4, factor);
    ellipse.xDeviation *= factor;
    ellipse.yDeviation *= factor;
    ellipse.semiMajorDeviation *= factor;
    ellipse.semiMinorDeviation *= factor;
    return ellipse;
}

}  // namespace orx::recipes
