// The search by random samples, for every shape alike.
//
// A Model, made of the points' units and the options, has: Shape, in columns; Measured, the public result;
// kSample, the points that make a shape; kParameters; kLeastPoints of the fit; kNoShape, the status where no
// sample makes one.
// - through(points, indices, shape, any): the shape through a sample. False where there is none (`any`
//   becomes true where there is), or where the options exclude it, whatever the noise of the sample.
// - support(points, shape, bar): by the kernels.
// - polish(points, share, tolerance, shape): moves it to those of the points near it, which are this share of
//   all. False where all would not tell it.
// - settle(points, start): moves shape and scale to the points, with Tukey's loss.
// - allowed(shape): within the limits of the options. accepts(shape, result): the same for a result, and told
//   well enough.
// - length(shape, side): of its outline within a square of this side, at most.
// - distances(points, shape, to): signed. inColumns(points, result): the shape of a result.
#ifndef ORXFUNCTIONS_FITTING_CONSENSUS_SEARCH_H
#define ORXFUNCTIONS_FITTING_CONSENSUS_SEARCH_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "orxFunctions/fitting/consensus/mixed_points.h"
#include "orxFunctions/fitting/consensus/seeded_numbers.h"
#include "orxFunctions/fitting/consensus_fit.h"
#include "orxFunctions/fitting/kernels/consensus.h"

namespace orx::consensus {

// How a new best is polished: steps with Tukey's loss that bends first so many tolerances away, then nearer.
struct PolishStage {
    double bend;
    int steps;
};
constexpr PolishStage kPolish[] = {{3.0, 1}, {1.5, 2}};

inline distance_kernels::Loss polishLoss(double bend) {
    return {distance_kernels::lkTukey, bend * bend, bend * bend};
}

// Trials after which a sample of `sample` supporting points alone has come with this probability.
inline double trialsFor(double share, int sample, double confidence) {
    const double good = std::pow(std::min(share, 1.0), sample);
    if (good >= confidence) return 1.0;
    return std::ceil(std::log1p(-confidence) / std::log1p(-good));
}

// Different ones of `count` indices, which must be as many at least.
template <std::size_t kSample>
std::array<std::size_t, kSample> drawSample(std::size_t count, SeededNumbers& numbers) {
    std::array<std::size_t, kSample> at{};
    for (std::size_t k = 0; k < kSample;) {
        at[k] = numbers.below(count);
        const bool fresh = std::find(at.begin(), at.begin() + k, at[k]) == at.begin() + k;
        if (fresh) ++k;
    }
    return at;
}

template <class Shape>
struct Finding {
    bool found = false;
    bool anyShape = false;  // some sample made one
    Shape shape{};
};

// The shape with the largest gain, if points within the tolerance are at least `leastShare` of all.
template <class Model>
Finding<typename Model::Shape> search(const MixedPoints& points, const Model& model,
                                      const TConsensusOptions& options, double tolerance, double leastShare,
                                      SeededNumbers& numbers) {
    // At one block in 10,000 a better shape is given up.
    constexpr double kDoubt = 2.0 * 9.2;
    // A random choice of the points may hold less of the shape by so much.
    constexpr double kSlack = 0.7;
    // Enough to polish a shape by.
    const auto polishers = static_cast<std::size_t>(std::max(200.0, 25.0 / leastShare));
    const auto span = points.span();
    const auto count = static_cast<double>(points.count());
    consensus_kernels::Bar bar{1.0 / (tolerance * tolerance), 0.0, kDoubt};
    const auto full = [&](const typename Model::Shape& shape, double best) {
        return model.support(span, shape, {bar.perTolerance2, best, kDoubt});
    };
    Finding<typename Model::Shape> finding;
    double within = 0.0;
    double trials =
        std::min<double>(options.maxTrials, trialsFor(leastShare, Model::kSample, options.confidence));
    for (double trial = 0.0; trial < trials; trial += 1.0) {
        const auto sample = drawSample<Model::kSample>(points.count(), numbers);
        typename Model::Shape shape{};
        if (!model.through(points.all(), sample.data(), shape, finding.anyShape)) continue;
        consensus_kernels::Support support = full(shape, bar.best);
        if (!(support.gain > bar.best)) continue;

        typename Model::Shape polished = shape;
        const distance_kernels::Columns some = points.some(polishers);
        const double share = static_cast<double>(some.count) / count;
        if (!model.polish(some, share, tolerance, polished)) continue;
        const consensus_kernels::Support better = full(polished, support.gain);
        if (better.gain > support.gain) {
            shape = polished;
            support = better;
        }
        if (!model.allowed(shape)) continue;
        finding.found = true;
        finding.shape = shape;
        within = support.within;
        bar.best = support.gain;
        trials = std::min(
            trials, trialsFor(std::max(within / count, leastShare), Model::kSample, options.confidence));
    }
    finding.found = finding.found && within >= leastShare * count * (points.choice() ? kSlack : 1.0);
    return finding;
}

}  // namespace orx::consensus

#endif
