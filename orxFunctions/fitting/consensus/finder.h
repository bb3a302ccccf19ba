// Shapes of a point set one after another: the search, the fit of what supports its winner, and what is left.
#ifndef ORXFUNCTIONS_FITTING_CONSENSUS_FINDER_H
#define ORXFUNCTIONS_FITTING_CONSENSUS_FINDER_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "orxFunctions/fitting/consensus/mixed_points.h"
#include "orxFunctions/fitting/consensus/search.h"
#include "orxFunctions/fitting/consensus/seeded_numbers.h"
#include "orxFunctions/fitting/consensus_fit.h"
#include "orxFunctions/fitting/fit_refusal_internal.h"
#include "orxFunctions/fitting/geometric/fit_points.h"
#include "orxFunctions/fitting/geometric/measured_start.h"
#include "orxFunctions/fitting/geometric/robust_loss.h"
#include "orxFunctions/fitting/kernels/distance.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx::consensus {

bool optionsFit(const TConsensusOptions& options);

// The least number of points that a shape of so many parameters needs among `count`.
std::size_t leastSupport(const TConsensusOptions& options, std::size_t count, int parameters);

// The side of a square that holds the points, nearly.
double extentOf(const distance_kernels::Columns& points);

// Whether strewn points would support some shape as well: `used` of `count` in a band that covers this share
// of where they lie, the shape through any `sample` of them. After A. Desolneux, L. Moisan and J.-M. Morel,
// "Meaningful alignments", International Journal of Computer Vision 40 (2000).
bool likelyByChance(std::size_t count, std::size_t used, std::size_t sample, double bandShare);

// Beyond this distance in tolerances a point has no say in the fit: that of Tukey's loss where the noise is
// as large as the points within the tolerance allow it to be.
constexpr double kNear = 5.2;

// For each point 1 where it is near enough to have a say in the fit; `distances` without weights.
std::vector<unsigned char> nearPoints(const distance_kernels::Columns& points,
                                      const std::vector<double>& distances, double tolerance);

// The noise of the points within the tolerance, roughly; `distances(columns, to)` are those from their shape.
template <class Distances>
double noiseWithin(const distance_kernels::Columns& points, double tolerance, int parameters,
                   Distances distances) {
    // Evenly chosen, so many tell their median well enough.
    constexpr std::size_t kSome = 256;
    const std::size_t count = std::min(points.count, kSome);
    double x[kSome];
    double y[kSome];
    double d[kSome];
    const auto chosen = [&](std::size_t i) { return i * points.count / count; };
    for (std::size_t i = 0; i < count; ++i) {
        x[i] = points.x[chosen(i)];
        y[i] = points.y[chosen(i)];
    }
    distances(distance_kernels::Columns{x, y, nullptr, count}, d);
    std::size_t within = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (!(std::abs(d[i]) <= tolerance)) continue;
        d[within++] = d[i] * (points.weights == nullptr ? 1.0 : std::sqrt(points.weights[chosen(i)]));
    }
    if (within == 0) return tolerance / 3.0;
    return geometric::noiseOfMedian(geometric::medianDistance(d, within), within, parameters);
}

template <class Model>
class Finder {
  public:
    using Measured = typename Model::Measured;

    // `one`: next() is called once.
    template <class Point>
    Finder(const std::vector<Point>& given, const TConsensusOptions& options, bool one)
        : options_(options), numbers_(options.seed), one_(one) {
        options_.fit.loss = flTukey;
        options_.fit.tuning = 0.0;
        options_.fit.scale = 0.0;
        given_ = geometric::countOf(given.size());
        status_ = optionsFit(options) ? points_.take(given, options_.fit, Model::kLeastPoints) : fsBadOptions;
        if (status_ != fsOk) return;
        least_ = leastSupport(options, points_.size(), Model::kParameters);
        extent_ = extentOf(points_.columns());
    }

    // The best shape of the points that are left, which it takes with it; fsNoConsensus when there is none.
    Measured next() {
        Measured result;
        result.points = given_;
        result.status = status_;
        if (status_ != fsOk) return result;
        result.status = fsNoConsensus;
        // A straight edge in the way of a circle is taken away, and the search goes on; not for ever.
        constexpr int kMostInTheWay = 10;
        for (int round = 0; round <= kMostInTheWay && !exhausted_; ++round) {
            if (points_.size() < std::max(least_, Model::kLeastPoints)) break;
            const Model model(points_, options_);
            const double tolerance = options_.tolerance / points_.scale();
            const double share = static_cast<double>(least_) / static_cast<double>(points_.size());
            const MixedPoints mixed(points_.columns(), mostSearched(share), numbers_);
            const auto finding = search(mixed, model, options_, tolerance, share, numbers_);
            if (!finding.found) {
                if (!finding.anyShape && first_) result.status = Model::kNoShape;
                break;
            }
            const bool told = measure(model, finding.shape, tolerance, result);
            first_ = false;
            if (told) return result;
        }
        return result;
    }

  private:
    // More points would only cost time: at least two hundred of these support the shape sought.
    static std::size_t mostSearched(double share) {
        return static_cast<std::size_t>(std::max(10'000.0, 200.0 / share));
    }

    // Fits, and takes away what is near the shape, so that its stragglers make no second one. True where
    // there is a result; otherwise result.status may tell why not.
    bool measure(const Model& model, const typename Model::Shape& shape, double tolerance, Measured& result) {
        const distance_kernels::Columns columns = points_.columns();
        std::vector<double> distances(columns.count);
        model.distances(columns, shape, distances.data());
        geometric::FitPoints supporting = points_.only(nearPoints(columns, distances, tolerance));
        geometric::Start<typename Model::Shape> start{shape, 0.0};
        start.scale = noiseWithin(supporting.columns(), tolerance, Model::kParameters,
                                  [&](const auto& some, double* to) { model.distances(some, shape, to); });
        start.scale = std::max(start.scale, 8.0 * points_.rounding());
        // Noise that the tolerance cuts off looks smaller than it is.
        constexpr double kCutOff = 0.35;
        if (start.scale > kCutOff * tolerance) model.settle(supporting, start);
        Measured fit;
        fit.points = given_;
        measureFrom(start, options_.fit, supporting, fit);

        double reach = tolerance;
        if (fit.valid()) {
            const typename Model::Shape fitted = Model::inColumns(points_, fit);
            reach = geometric::defaultTuning(flTukey) * fit.noise / points_.scale();
            const double band = 2.0 * reach * Model::length(fitted, extent_);
            exhausted_ = !supported(static_cast<std::size_t>(fit.usedPoints), band / (extent_ * extent_));
            if (exhausted_ || !model.accepts(fitted, fit)) fit.status = fsNoConsensus;
            if (fit.valid() && one_) return take(std::move(fit), result);
            model.distances(columns, fitted, distances.data());
        }
        takeAway(distances, std::max(reach, tolerance), fit.used);
        if (fit.valid()) return take(std::move(fit), result);
        if (result.status == fsNoConsensus) result.status = fit.status;
        return false;
    }

    // Where the best shape is not, the others are not.
    bool supported(std::size_t used, double bandShare) const {
        return used >= least_ && !likelyByChance(points_.size(), used, Model::kSample, bandShare);
    }

    static bool take(Measured&& fit, Measured& result) {
        result = std::move(fit);
        return true;
    }

    void takeAway(const std::vector<double>& distances, double reach,
                  const std::vector<unsigned char>& used) {
        std::vector<unsigned char> left(points_.size());
        for (std::size_t i = 0; i < left.size(); ++i) {
            const bool supports = !used.empty() && used[points_.given(i)] != 0;
            left[i] = !supports && std::abs(distances[i]) > reach ? 1 : 0;
        }
        points_ = points_.only(left);
    }

    TConsensusOptions options_;
    SeededNumbers numbers_;
    geometric::FitPoints points_;  // that are left
    TFitStatus status_ = fsOk;
    std::size_t least_ = 0;
    double extent_ = 0.0;  // of the points given, in columns
    int given_ = 0;
    bool one_;
    bool exhausted_ = false;
    bool first_ = true;
};

// The best of them; `function` keeps the refusal.
template <class Model, class Point>
typename Model::Measured bestShape(const std::vector<Point>& points, const TConsensusOptions& options,
                                   const char* function) {
    typename Model::Measured best = Finder<Model>(points, options, true).next();
    isFitted(best.status, function);
    return best;
}

// All of them, the one with the most points first; `most` 0 for no limit. Where there is none, `function`
// keeps the refusal.
template <class Model, class Point>
std::vector<typename Model::Measured> allShapes(const std::vector<Point>& points,
                                                const TConsensusOptions& options, int most,
                                                const char* function) {
    std::vector<typename Model::Measured> all;
    if (most < 0) {
        refuse(rcOption, function, "at most %d shapes; 0 (no limit) and more are taken", most);
        return all;
    }
    Finder<Model> finder(points, options, false);
    while (most == 0 || all.size() < static_cast<std::size_t>(most)) {
        all.push_back(finder.next());
        if (all.back().valid()) continue;
        if (all.size() == 1) isFitted(all.back().status, function);
        all.pop_back();
        break;
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const auto& a, const auto& b) { return a.usedPoints > b.usedPoints; });
    return all;
}

}  // namespace orx::consensus

#endif
