#include "inspection/measure/consensus.h"

#include <algorithm>

namespace inspection {
namespace {

constexpr double kSmallestRadius = 3.0;
// Two neighbours among the sampled pixels give a coarse angle, hence the wide limit.
constexpr double kParallelWithin = 6.0;

std::vector<cv::Point2d> toDouble(const std::vector<cv::Point>& points) {
    return {points.begin(), points.end()};
}

orx::TConsensusOptions optionsFrom(const Settings& settings) {
    orx::TConsensusOptions options;
    options.tolerance = settings.tolerance;
    options.maxTrials = settings.trials;
    options.seed = settings.seed;
    return options;
}

orx::TConsensusOptions roundOptions(double largestRadius, const Settings& settings) {
    orx::TConsensusOptions options = optionsFrom(settings);
    options.minRadius = kSmallestRadius;
    options.maxRadius = std::max(kSmallestRadius, largestRadius);
    return options;
}

orx::TFitOptions robustFit() {
    orx::TFitOptions options;
    options.loss = orx::flTukey;
    return options;
}

// Along the main axis, and as far out as leaves the outermost points within the tolerance.
orx::TMeasuredLine outermostLine(const std::vector<cv::Point2d>& points, double tolerance) {
    orx::TMeasuredLine line = orx::fitLineGeometric(points);
    double most = 0.0;
    for (const cv::Point2d& p : points) most = std::max(most, line.signedDistance(p));
    line.point += std::max(0.0, most - tolerance) * line.normal();
    return line;
}

}  // namespace

orx::TMeasuredCircle searchCircle(const std::vector<cv::Point>& points, double largestRadius,
                                  const Settings& settings) {
    const std::vector<cv::Point2d> centres = toDouble(points);
    const auto found = orx::findCircle(centres, roundOptions(largestRadius, settings));
    if (found.valid()) return found;
    // What no circle follows well has one still, for the report to call weak.
    const auto robust = orx::fitCircleGeometric(centres, robustFit());
    return robust.valid() ? robust : orx::fitCircleGeometric(centres);
}

orx::TMeasuredEllipse searchEllipse(const std::vector<cv::Point>& points, double largestAxis,
                                    const Settings& settings) {
    const std::vector<cv::Point2d> centres = toDouble(points);
    const auto found = orx::findEllipse(centres, roundOptions(largestAxis, settings));
    return found.valid() ? found : orx::fitEllipseGeometric(centres, robustFit());
}

LineConsensus searchLine(const std::vector<cv::Point>& points, const orx::TMeasuredLine* parallelTo,
                         const Settings& settings) {
    orx::TConsensusOptions options = optionsFrom(settings);
    if (parallelTo != nullptr) {
        options.angle = parallelTo->angle;
        options.angleTolerance = kParallelWithin;
    }
    LineConsensus result;
    const std::vector<cv::Point2d> centres = toDouble(points);
    result.line = orx::findLine(centres, options);
    if (!result.line.valid() && parallelTo == nullptr)
        result.line = outermostLine(centres, settings.tolerance);
    if (!result.line.valid()) return result;
    for (const cv::Point& p : points) {
        const bool supports = std::abs(result.line.signedDistance(p)) <= settings.tolerance;
        (supports ? result.inliers : result.others).push_back(p);
    }
    return result;
}

}  // namespace inspection
