#include "orxFunctions/fitting/geometric/robust_loss.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orx::geometric {
namespace {

Loss bentAt(LossKind kind, double tuning, double scale) {
    const double bend2 = tuning * scale * tuning * scale;
    return {kind, bend2, kind == lkTukey ? bend2 : std::numeric_limits<double>::infinity()};
}

}  // namespace

double defaultTuning(TFitLoss loss) {
    switch (loss) {
        case flHuber:
            return 1.345;
        case flCauchy:
            return 2.385;
        case flTukey:
            return 4.685;
        case flGemanMcClure:
            return 3.787;
        case flLeastSquares:
            break;
    }
    return 0.0;
}

Loss leastSquares() {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    return {lkLeastSquares, kInfinite, kInfinite};
}

Loss lossAt(const TFitOptions& options, double scale) {
    if (options.loss == flLeastSquares) return leastSquares();
    const double tuning = options.tuning > 0.0 ? options.tuning : defaultTuning(options.loss);
    return bentAt(static_cast<LossKind>(options.loss), tuning, scale);
}

double outlierReach2(double scale) {
    constexpr double kReach = 5.0;
    return kReach * scale * kReach * scale;
}

Loss searchLoss(double scale) { return bentAt(lkTukey, defaultTuning(flTukey), scale); }

double omega(const Loss& loss, double q) {
    const double t = q / loss.bend2;
    switch (loss.kind) {
        case lkHuber:
            return t <= 1.0 ? 1.0 : 1.0 / std::sqrt(t);
        case lkCauchy:
            return 1.0 / (1.0 + t);
        case lkTukey:
            return t < 1.0 ? (1.0 - t) * (1.0 - t) : 0.0;
        case lkGemanMcClure:
            return 1.0 / ((1.0 + t) * (1.0 + t));
        case lkLeastSquares:
            break;
    }
    return 1.0;
}

double noiseOf(const DistanceSums& sums, int parameters) {
    // Of the standard normal distribution: the mean of omega(u) u^2 over that of omega(u), and the latter.
    constexpr double kSquare = 0.8280730033893832;
    constexpr double kWeight = 0.9151076239875536;
    const double inliers = sums.omega / kWeight;
    const double correction = inliers / std::max(1.0, inliers - parameters);
    return std::sqrt(sums.dd / (sums.omega * kSquare) * correction);
}

double medianDistance(double* distances, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) distances[i] = std::abs(distances[i]);
    double* middle = distances + count / 2;
    std::nth_element(distances, middle, distances + count);
    return *middle;
}

double noiseOfMedian(double median, std::size_t count, int parameters) {
    // P. J. Rousseeuw and A. M. Leroy's correction for few points.
    const double spare = std::max(1.0, static_cast<double>(count) - parameters);
    return 1.4826 * (1.0 + 5.0 / spare) * median;
}

// P. J. Rousseeuw and A. M. Leroy, "Robust Regression and Outlier Detection" (1987), section 3.4, have half
// of parameters + 1 for it; lines and circles are content with one. Of few points no more than 60 %, since
// the others may all be outliers, but always twice as many as parameters.
std::size_t quorumOf(std::size_t count, int parameters) {
    const int more = parameters > 3 ? (parameters + 1) / 2 : 1;
    const std::size_t sixty = std::max((3 * count + 4) / 5, static_cast<std::size_t>(2 * parameters));
    return std::min({count, count / 2 + static_cast<std::size_t>(more), std::max(sixty, count / 2 + 1)});
}

double quorumDistance(double* distances, std::size_t count, int parameters) {
    for (std::size_t i = 0; i < count; ++i) distances[i] = std::abs(distances[i]);
    double* last = distances + quorumOf(count, parameters) - 1;
    std::nth_element(distances, last, distances + count);
    return *last;
}

double noiseOfQuorum(double distance, std::size_t count, int parameters) {
    const auto n = static_cast<double>(count);
    const double share = (static_cast<double>(quorumOf(count, parameters)) - 0.5) / n;
    const double correction = 1.0 + 5.0 / std::max(1.0, n - parameters);
    return correction * distance / coverageFactor(share, std::numeric_limits<double>::infinity());
}

double toldScale(const FitPoints& points, const TFitOptions& options) {
    if (options.scale == 0.0 && !options.absoluteDeviations) return 0.0;
    const double inDeviations = options.scale > 0.0 ? options.scale : 1.0;
    return inDeviations * points.unitDeviation() / points.scale();
}

}  // namespace orx::geometric
