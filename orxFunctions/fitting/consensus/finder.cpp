#include "orxFunctions/fitting/consensus/finder.h"

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::consensus {

bool optionsFit(const TConsensusOptions& options) {
    const auto inRange = [](double value, double low, double high) { return value >= low && value <= high; };
    return options.tolerance > 0.0 && std::isfinite(options.tolerance) && options.confidence > 0.0 &&
           options.confidence < 1.0 && inRange(options.maxTrials, 1.0, 1e7) &&
           inRange(options.minSupport, 0.0, 1.0) && options.minPoints >= 0 &&
           inRange(options.minRadius, 0.0, options.maxRadius) && std::isfinite(options.minRadius) &&
           std::isfinite(options.angle) && inRange(options.angleTolerance, 0.0, 90.0);
}

std::size_t leastSupport(const TConsensusOptions& options, std::size_t count, int parameters) {
    const auto points = static_cast<std::size_t>(options.minPoints > 0 ? options.minPoints : 2 * parameters);
    // A share such as 0.1 is no binary fraction: 0.1 of 30 are 3.
    const double share = std::ceil(options.minSupport * static_cast<double>(count) * (1.0 - 1e-12));
    return std::max(points, static_cast<std::size_t>(share));
}

double extentOf(const distance_kernels::Columns& points) {
    constexpr std::size_t kSome = 256;  // evenly chosen
    const std::size_t count = std::min(points.count, kSome);
    double least[2] = {points.x[0], points.y[0]};
    double largest[2] = {points.x[0], points.y[0]};
    for (std::size_t i = 0; i < count; ++i) {
        const double at[2] = {points.x[i * points.count / count], points.y[i * points.count / count]};
        for (int axis = 0; axis < 2; ++axis) {
            least[axis] = std::min(least[axis], at[axis]);
            largest[axis] = std::max(largest[axis], at[axis]);
        }
    }
    return std::max(largest[0] - least[0], largest[1] - least[1]);
}

bool likelyByChance(std::size_t count, std::size_t used, std::size_t sample, double bandShare) {
    if (used <= sample) return true;
    if (!(bandShare > 0.0)) return false;  // noise-free
    const auto free = static_cast<double>(count - sample);
    const double share = static_cast<double>(used - sample) / free;
    if (!(share > bandShare)) return true;
    // H. Chernoff's bound for so many of the others in the band of one sample, as a logarithm.
    double one = share * std::log(share / bandShare);
    if (share < 1.0) one += (1.0 - share) * std::log((1.0 - share) / (1.0 - bandShare));
    double improbable = free * one;
    // What the bound leaves out: the largest term by J. Stirling's formula, the others as a geometric series.
    if (share < 1.0) {
        const double outside = free * (1.0 - share);
        const double ratio = outside * bandShare / ((free * share + 1.0) * (1.0 - bandShare));
        const double term = 0.5 * std::log(2.0 * kPi * free * share * (1.0 - share));
        improbable += std::max(0.0, term + std::log1p(-ratio));
    }
    double samples = 0.0;  // the logarithm of their number
    for (std::size_t k = 0; k < sample; ++k)
        samples += std::log(static_cast<double>(count - k) / static_cast<double>(k + 1));
    return improbable < samples;
}

std::vector<unsigned char> nearPoints(const distance_kernels::Columns& points,
                                      const std::vector<double>& distances, double tolerance) {
    const double reach = kNear * tolerance;
    std::vector<unsigned char> near(points.count);
    for (std::size_t i = 0; i < points.count; ++i) near[i] = std::abs(distances[i]) <= reach ? 1 : 0;
    // Points of large deviation have a say from farther away.
    for (std::size_t i = 0; points.weights != nullptr && i < points.count; ++i) {
        if (std::sqrt(points.weights[i]) * std::abs(distances[i]) <= reach) near[i] = 1;
    }
    return near;
}

}  // namespace orx::consensus
