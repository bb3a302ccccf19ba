// Finds a shape among outliers from nothing: by the least median of squares over samples, then by steps with
// Tukey's loss while the scale follows the inliers. For every shape alike.
//
// A Model has: Shape; kParameters; kSample, the points that make a shape; through(columns, indices, shape),
// false where they make none; within(span, shape, most), the number of its points nearer than `most`;
// distances(columns, shape, to), signed; settleStep(columns, loss, shape, sums, fall): one pass and one step,
// the sums before it and the fall of w d^2 expected of it, false where there is none.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_ROBUST_START_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_ROBUST_START_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/fitting/geometric/robust_loss.h"
#include "orxFunctions/fitting/kernels/distance.h"
#include "orxFunctions/fitting/kernels/inlier.h"

namespace orx::geometric {

using namespace distance_kernels;

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

// At most this many points, from everywhere, judge the samples: of 40 % outliers among all, chance makes half
// of them in three choices of 10,000. The scale is then told anew by all points (loosen).
constexpr std::size_t kJudges = 256;
static_assert(kJudges % inlier_kernels::kPointsPerStep == 0);

class Judges {
  public:
    explicit Judges(const Columns& points) : count_(std::min(points.count, kJudges)) {
        // One of each stretch, at random: outliers may come at regular steps.
        SampleNumbers numbers;
        const bool all = points.count <= kJudges;
        for (std::size_t i = 0; i < kJudges; ++i) {
            const bool filled = i < count_;
            // Mixed (the stride has no factor in common with their number), so that the first ones are
            // anywhere, too.
            const std::size_t mixed = i * 77 % kJudges;
            const std::size_t at = all ? i : (mixed * points.count + numbers.below(points.count)) / kJudges;
            x_[i] = filled ? points.x[at] : std::numeric_limits<double>::quiet_NaN();
            y_[i] = filled ? points.y[at] : std::numeric_limits<double>::quiet_NaN();
            weights_[i] = filled && points.weights != nullptr ? points.weights[at] : 1.0;
        }
    }
    std::size_t count() const { return count_; }
    Columns columns() const { return {x_, y_, weights_, count_}; }
    // The first `most` of them at the most, as the kernels of inliers want them.
    inlier_kernels::PointSpan first(std::size_t most) const {
        constexpr std::size_t kStep = inlier_kernels::kPointsPerStep;
        return {x_, y_, (std::min(most, count_) + kStep - 1) / kStep * kStep};
    }
    double rootWeight(std::size_t i) const { return std::sqrt(weights_[i]); }

  private:
    double x_[kJudges];
    double y_[kJudges];
    double weights_[kJudges];
    std::size_t count_;
};

// The shape through some sample from which a quorum of points is nearest; weights are left aside here.
template <class Model>
bool leastMedian(const Judges& judges, typename Model::Shape& shape, double& scale) {
    // With 40 % outliers one sample in five holds none (three points), one in thirteen (five).
    constexpr int kSamples = Model::kSample <= 2 ? 100 : 250;
    // Few points tell the good ones worse.
    constexpr std::size_t kFewPoints = 40;
    const int samples = Model::kSample > 3 && judges.count() <= kFewPoints ? 2 * kSamples : kSamples;
    // Most samples show on a few judges that they are worse; one in a hundred as good as the best is lost so.
    constexpr std::size_t kFew = 64;
    const std::size_t fewWithin = judges.count() > kFew ? 22 : 0;
    const std::size_t quorum = quorumOf(judges.count(), Model::kParameters);
    if (judges.count() < Model::kSample) return false;
    SampleNumbers numbers;
    double distances[kJudges];
    double best = std::numeric_limits<double>::infinity();
    for (int k = 0; k < samples; ++k) {
        std::size_t at[Model::kSample];
        for (std::size_t m = 0; m < Model::kSample;) {
            at[m] = numbers.below(judges.count());
            if (std::find(at, at + m, at[m]) == at + m) ++m;
        }
        typename Model::Shape candidate{};
        if (!Model::through(judges.columns(), at, candidate)) continue;
        if (best < std::numeric_limits<double>::infinity() &&
            (Model::within(judges.first(kFew), candidate, best) < fewWithin ||
             Model::within(judges.first(kJudges), candidate, best) < quorum)) {
            continue;
        }
        shape = candidate;
        Model::distances(judges.columns(), candidate, distances);
        best = quorumDistance(distances, judges.count(), Model::kParameters);
    }
    if (!(best < std::numeric_limits<double>::infinity())) return false;
    Model::distances(judges.columns(), shape, distances);
    for (std::size_t i = 0; i < judges.count(); ++i) distances[i] *= judges.rootWeight(i);
    scale = noiseOfQuorum(quorumDistance(distances, judges.count(), Model::kParameters), judges.count(),
                          Model::kParameters);
    return true;
}

// Steps while the scale follows the inliers between two limits (both equal: stays), until both have settled.
template <class Model>
bool settle(const Columns& points, int maxIterations, cv::Vec2d limits, typename Model::Shape& shape,
            double& scale, int& iterations) {
    // A scale too large or too small by a little still shows in the noise found by 0.19 of that, under
    // Gaussian noise: what is found is carried on, and a change by less than a hundredth is the last.
    constexpr double kCarry = 1.0 / (1.0 - 0.19);
    constexpr double kTold = 1e-2;
    for (int i = 0; i < maxIterations; ++i) {
        DistanceSums sums{};
        double fall = 0.0;
        ++iterations;
        if (!Model::settleStep(points, searchLoss(scale), shape, sums, fall)) return false;
        const double found = scale * std::pow(noiseOf(sums, Model::kParameters) / scale, kCarry);
        const double next = std::clamp(found, limits[0], limits[1]);
        const bool settled = std::abs(next - scale) < kTold * scale && fall < kTold * scale * scale;
        scale = next;
        if (settled) break;
    }
    return true;
}

// The median is at most so far from the inliers' noise (2.05 times with 40 % outliers).
inline cv::Vec2d scaleLimits(double scale, double rounding) {
    const double floor = 8.0 * rounding;
    return {std::max(scale / 3.0, floor), std::max(scale * 1.5, floor)};
}

// Where the lower limit holds the scale, the samples were rougher than the points: all of them tell it anew
// from the settled shape, until it comes to lie between its limits.
template <class Model>
void loosen(const Columns& points, int maxIterations, double rounding, double limit,
            typename Model::Shape& shape, double& scale, int& iterations) {
    constexpr int kMostRounds = 8;
    std::vector<double> distances;
    for (int round = 0; round < kMostRounds && !(scale > limit); ++round) {
        distances.resize(points.count);
        Model::distances(points, shape, distances.data());
        for (std::size_t i = 0; points.weights != nullptr && i < points.count; ++i)
            distances[i] *= std::sqrt(points.weights[i]);
        const double quorum = quorumDistance(distances.data(), points.count, Model::kParameters);
        const double told = noiseOfQuorum(quorum, points.count, Model::kParameters);
        const cv::Vec2d limits = scaleLimits(told, rounding);
        if (!(limits[0] < limit)) break;
        scale = std::clamp(scale, limits[0], limits[1]);
        const typename Model::Shape before = shape;
        if (!settle<Model>(points, maxIterations, limits, shape, scale, iterations)) {
            shape = before;
            scale = limit;
            return;
        }
        limit = limits[0];
    }
}

// Finds the shape that at least half of the points follow, and the noise of those; `scale` above 0 is known.
// Steps below `rounding` tell nothing. False where there is none.
template <class Model>
bool robustStart(const Columns& points, int maxIterations, double rounding, typename Model::Shape& shape,
                 double& scale, int& iterations) {
    const Judges judges(points);
    const double known = scale;
    iterations = 0;
    if (!leastMedian<Model>(judges, shape, scale)) return false;
    cv::Vec2d limits = scaleLimits(scale, rounding);
    if (known > 0.0) limits = cv::Vec2d::all(known);
    scale = std::clamp(scale, limits[0], limits[1]);
    if (points.count > kJudges) {
        const int steps = std::min(maxIterations, 10);
        if (!settle<Model>(judges.columns(), steps, limits, shape, scale, iterations)) return false;
    }
    if (!settle<Model>(points, maxIterations, limits, shape, scale, iterations)) return false;
    if (!(known > 0.0)) loosen<Model>(points, maxIterations, rounding, limits[0], shape, scale, iterations);
    return true;
}

}  // namespace orx::geometric

#endif
