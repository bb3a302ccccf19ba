#include "inspection/measure/contour_edges.h"

namespace inspection {

orx::TEdgeProbe probeAt(cv::Point pixel, cv::Point2d outward, double curvature) {
    return {cv::Point2d(pixel) + 0.5 * outward, outward, curvature};
}

Edges edgesAt(const std::vector<orx::TEdgeProbe>& probes, const EdgeContext& context, double reach) {
    orx::TContourEdgeOptions options;
    options.reach = reach;
    options.polarity = context.brightObjects ? orx::epBrightToDark : orx::epDarkToBright;
    options.noise = context.noise;
    if (context.subPixel) return orx::edgesAcross(context.grey, probes, options);
    Edges edges(probes.size());
    for (std::size_t i = 0; i < probes.size(); ++i) edges[i].position = probes[i].point;
    return edges;
}

Edges edgesOfCircle(const std::vector<cv::Point>& pixels, const Circle& circle, const EdgeContext& context) {
    std::vector<orx::TEdgeProbe> probes;
    probes.reserve(pixels.size());
    for (const cv::Point& pixel : pixels) {
        const cv::Point2d ray = cv::Point2d(pixel) - circle.center;
        const double length = cv::norm(ray);
        if (length > 0.0) probes.push_back(probeAt(pixel, ray / length, 1.0 / circle.radius));
    }
    return edgesAt(probes, context, kRoundReach);
}

std::vector<cv::Point2d> placesOf(const Edges& edges) {
    std::vector<cv::Point2d> places;
    places.reserve(edges.size());
    for (const orx::TContourEdge& edge : edges) places.push_back(edge.position);
    return places;
}

orx::TFitOptions contourFit() {
    orx::TFitOptions options;
    options.noise = orx::pnEdgeChain;
    options.smoothing = orx::kContourEdgeSmoothing;
    return options;
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
