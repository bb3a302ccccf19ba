#include "inspection/measure/contour_edges.h"

#include <cmath>

#include "inspection/measure/edge_profile.h"

namespace inspection {

cv::Point2d edgeAt(cv::Point pixel, cv::Point2d outward, const EdgeContext& context) {
    const cv::Point2d point = pixel;
    if (context.subPixel)
        if (const auto edge = edgeAcross(context.grey, point, outward, context.brightObjects)) return *edge;
    return point + 0.5 * outward;
}

std::vector<cv::Point2d> edgesOfCircle(const std::vector<cv::Point>& pixels, cv::Point2d center,
                                       const EdgeContext& context) {
    std::vector<cv::Point2d> edges;
    edges.reserve(pixels.size());
    for (const cv::Point& pixel : pixels) {
        const cv::Point2d ray = cv::Point2d(pixel) - center;
        const double length = std::hypot(ray.x, ray.y);
        if (length > 0.0) edges.push_back(edgeAt(pixel, ray / length, context));
    }
    return edges;
}

void Residuals::add(double distance) {
    ++count_;
    sum_ += distance;
    if (distance > tolerance_) return;
    ++inliers_;
    inlierSum_ += distance;
}

void Residuals::writeTo(Feature& feature, double minInliers) const {
    feature.contourPoints = count_;
    feature.inlierRatio = count_ > 0 ? static_cast<double>(inliers_) / count_ : 0.0;
    feature.meanResidual = count_ > 0 ? sum_ / count_ : 0.0;
    feature.inlierResidual = inliers_ > 0 ? inlierSum_ / inliers_ : 0.0;
    feature.weak = feature.inlierRatio < minInliers;
}

}  // namespace inspection
