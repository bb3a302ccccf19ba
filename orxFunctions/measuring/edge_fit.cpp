#include "orxFunctions/measuring/edge_fit.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/analysis/edges/chain_smoothing.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx {
namespace {

bool knowsNoise(const ORXEdge::TMetricContour& edge) {
    return edge.deviation.size() == edge.points.size() &&
           std::all_of(edge.deviation.begin(), edge.deviation.end(),
                       [](float d) { return d > 0.0F && std::isfinite(d); });
}

// The finder's deviations, each the root mean square of those around it: a single one errs with its point
// (by a fifth at a blur of 1.5 and a twentieth of the contrast as noise), and as weights such errors would
// move the shape and hide from its uncertainty.
std::vector<double> smoothDeviations(const ORXEdge::TMetricContour& edge) {
    constexpr std::size_t kReach = 30;
    const std::size_t count = edge.deviation.size();
    std::vector<double> sums = {0.0};
    for (std::size_t i = 0; i < count; ++i) {
        const double d = edge.deviation[i];
        sums.push_back(sums.back() + d * d);
    }
    std::vector<double> deviations(count);
    for (std::size_t i = 0; i < count; ++i) {
        double sum = 0.0;
        std::size_t points = 2 * kReach + 1;
        if (edge.closed && points < count) {
            const std::size_t from = (i + count - kReach) % count;
            const std::size_t to = from + points;
            sum = to <= count ? sums[to] - sums[from] : sums[count] - sums[from] + sums[to - count];
        } else {
            const std::size_t from = edge.closed ? 0 : i - std::min(i, kReach);
            const std::size_t to = edge.closed ? count : std::min(count, i + kReach + 1);
            points = to - from;
            sum = sums[to] - sums[from];
        }
        deviations[i] = std::sqrt(sum / static_cast<double>(points));
    }
    return deviations;
}

template <class Fit>
auto fitEdge(const ORXEdge::TMetricContour& edge, double sigma, const TFitOptions& options, Fit fit) {
    return fit(edge.points, edgeFitOptions(edge, sigma, options));
}

// An edge that runs into itself goes all round, also where its points stand farther apart than those that a
// fit of points takes for a whole circle.
template <class Shape>
void closeUp(const ORXEdge::TMetricContour& edge, Shape& shape) {
    if (!edge.closed || !shape.valid() || shape.usedPoints < shape.points) return;
    shape.startAngle = 0.0;
    shape.sweep = 360.0;
}

template <class Fit>
auto fitCalipers(const std::vector<TContrastEdge>& edges, TFitOptions options, Fit fit) {
    std::vector<cv::Point2d> points;
    points.reserve(edges.size());
    for (const TContrastEdge& edge : edges) points.push_back(edge.position);
    options.noise = pnNormal;
    return fit(points, options);
}

constexpr auto kLine = [](const auto& points, const TFitOptions& options) {
    return fitLineGeometric(points, options);
};
constexpr auto kCircle = [](const auto& points, const TFitOptions& options) {
    return fitCircleGeometric(points, options);
};
constexpr auto kEllipse = [](const auto& points, const TFitOptions& options) {
    return fitEllipseGeometric(points, options);
};
constexpr auto kArc = [](const auto& points, const TFitOptions& options) {
    return fitArcGeometric(points, options);
};

}  // namespace

double chainSmoothing(double sigma) { return edges::chainSmoothing(sigma); }

TFitOptions edgeFitOptions(const ORXEdge::TMetricContour& edge, double sigma, const TFitOptions& options) {
    TFitOptions result = options;
    result.noise = pnEdgeChain;
    result.smoothing = sigma >= 0.5 && sigma <= 20.0 ? chainSmoothing(sigma) : 0.0;
    if (result.deviations.empty() && knowsNoise(edge)) {
        result.deviations = smoothDeviations(edge);
    }
    return result;
}

TMeasuredLine fitLineGeometric(const ORXEdge::TMetricContour& edge, double sigma,
                               const TFitOptions& options) {
    return fitEdge(edge, sigma, options, kLine);
}

TMeasuredCircle fitCircleGeometric(const ORXEdge::TMetricContour& edge, double sigma,
                                   const TFitOptions& options) {
    TMeasuredCircle circle = fitEdge(edge, sigma, options, kCircle);
    closeUp(edge, circle);
    return circle;
}

TMeasuredArc fitArcGeometric(const ORXEdge::TMetricContour& edge, double sigma, const TFitOptions& options) {
    TMeasuredArc arc = fitEdge(edge, sigma, options, kArc);
    closeUp(edge, arc);
    if (arc.valid() && arc.sweep == 360.0) {
        arc.start = arc.end = arc.at(arc.startAngle);
        arc.middle = arc.at(arc.startAngle + 180.0);
        arc.length = 2.0 * kPi * arc.radius;
    }
    return arc;
}

TMeasuredEllipse fitEllipseGeometric(const ORXEdge::TMetricContour& edge, double sigma,
                                     const TFitOptions& options) {
    TMeasuredEllipse ellipse = fitEdge(edge, sigma, options, kEllipse);
    closeUp(edge, ellipse);
    return ellipse;
}

TMeasuredLine fitLineGeometric(const std::vector<TContrastEdge>& edges, const TFitOptions& options) {
    return fitCalipers(edges, options, kLine);
}

TMeasuredCircle fitCircleGeometric(const std::vector<TContrastEdge>& edges, const TFitOptions& options) {
    return fitCalipers(edges, options, kCircle);
}

TMeasuredArc fitArcGeometric(const std::vector<TContrastEdge>& edges, const TFitOptions& options) {
    return fitCalipers(edges, options, kArc);
}

TMeasuredEllipse fitEllipseGeometric(const std::vector<TContrastEdge>& edges, const TFitOptions& options) {
    return fitCalipers(edges, options, kEllipse);
}

}  // namespace orx
