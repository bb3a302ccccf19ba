// Finds a shape among outliers from nothing: by the least median of squares over samples, then by steps with
// Tukey's loss while the scale follows the inliers. For every shape alike.
//
// A Model has: Shape; kParameters; kSample, the points that make a shape; through(columns, indices, shape),
// false where they make none; distances(columns, shape, to), signed, without weights; settleStep(columns,
// loss, shape, sums, fall): one pass and one step, the sums before it and the fall of w d^2 expected of it,
// false where there is none.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_ROBUST_START_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_ROBUST_START_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "orxFunctions/fitting/geometric/robust_loss.h"
#include "orxFunctions/fitting/kernels/geometric_kernels.h"

namespace orx::geometric {

// D. Lehmer's sequence with the multiplier of S. K. Park and K. W. Miller: good enough to choose points, and
// the same everywhere.
class SampleNumbers {
  public:
    std::size_t below(std::size_t count) {
        state_ = state_ * 48271 % 2147483647;
        return static_cast<std::size_t>((state_ * count) / 2147483647);
    }

  private:
    std::uint64_t state_ = 20011;
};

// At most this many points, evenly chosen, judge the samples.
constexpr std::size_t kJudges = 200;

// Columns of the judges, in arrays of the caller.
struct Judges {
    double x[kJudges];
    double y[kJudges];
    double rootWeights[kJudges];
    std::size_t count;

    explicit Judges(const Columns& points) : count(std::min(points.count, kJudges)) {
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t at = i * points.count / count;
            x[i] = points.x[at];
            y[i] = points.y[at];
            rootWeights[i] = points.weights == nullptr ? 1.0 : std::sqrt(points.weights[at]);
        }
    }
    Columns columns() const { return {x, y, nullptr, count}; }
};

// The smallest `most` allowed, so that a median below it is told without sorting.
inline bool halfWithin(const double* distances, std::size_t count, double most) {
    std::size_t within = 0;
    for (std::size_t i = 0; i < count; ++i) within += std::abs(distances[i]) < most ? 1 : 0;
    return within > count / 2;
}

template <class Model>
bool leastMedian(const Columns& points, typename Model::Shape& shape, double& scale) {
    // With 40 % outliers one sample in five holds none (three points), one in thirteen (five).
    constexpr int kSamples = Model::kSample <= 2 ? 100 : 250;
    const Judges judges(points);
    if (judges.count < Model::kSample) return false;
    SampleNumbers numbers;
    double distances[kJudges];
    double best = std::numeric_limits<double>::infinity();
    for (int k = 0; k < kSamples; ++k) {
        std::size_t at[Model::kSample];
        for (std::size_t& i : at) i = numbers.below(judges.count);
        typename Model::Shape candidate{};
        if (!Model::through(judges.columns(), at, candidate)) continue;
        Model::distances(judges.columns(), candidate, distances);
        for (std::size_t i = 0; i < judges.count; ++i) distances[i] *= judges.rootWeights[i];
        if (!halfWithin(distances, judges.count, best)) continue;
        shape = candidate;
        scale = noiseOfMedian(distances, judges.count, Model::kParameters);
        best = distances[judges.count / 2];
    }
    return std::isfinite(best);
}

template <class Model>
bool settleScale(const Columns& points, int maxIterations, double rounding, typename Model::Shape& shape,
                 double& scale, int& iterations) {
    const double floor = 8.0 * rounding;
    scale = std::max(scale, floor);
    // The median of mostly inliers is at most so far from the inliers' noise (2.05 times with 40 % outliers).
    const double least = scale / 3.0;
    const double most = scale * 1.5;
    for (iterations = 1; iterations <= maxIterations; ++iterations) {
        DistanceSums sums{};
        double fall = 0.0;
        if (!Model::settleStep(points, searchLoss(scale), shape, sums, fall)) return false;
        const double next =
            std::clamp(noiseOf(sums, Model::kParameters), std::max(least, floor), std::max(most, floor));
        const bool settled = std::abs(next - scale) < 1e-4 * scale && fall < 1e-4 * scale * scale;
        scale = next;
        if (settled) return true;
    }
    return true;
}

}  // namespace orx::geometric

#endif
