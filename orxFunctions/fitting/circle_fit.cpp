#include "orxFunctions/fitting/circle_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "orxFunctions/fitting/circle_blocks_internal.h"
#include "orxFunctions/fitting/fit_kernels_internal.h"
#include "orxFunctions/fitting/fit_parameters_internal.h"
#include "orxFunctions/fitting/fit_weights_internal.h"
#include "orxFunctions/fitting/geometry.h"
#include "orxFunctions/fitting/point_span_internal.h"

namespace blocks = orx::circle_blocks;
namespace fit_kernels = orx::fit_kernels;
using orx::TCircle;

bool TCircleFit::setPoints(std::vector<cv::Point> points) {
    points_ = std::move(points);
    return true;
}

TCircleFit::~TCircleFit() = default;

// A circle through three of the points, and how many lie near it.
struct TCircleFit_Ransac::Candidate {
    TCircle circle;
    std::size_t count = 0;
};

bool TCircleFit_Ransac::setParams(std::vector<double> values) {
    if (values.size() != 5) return false;
    maximumRadius_ = orx::truncated(values[0]);
    minimumRadius_ = orx::truncated(values[1]);
    inlierDistance_ = values[2];
    iterationCount_ = orx::truncated(values[3]);
    setCap_ = orx::truncated(values[4]);
    return true;
}

// Sets are counted, not stored: only the winner's points are wanted in the end.
TCircleFit_Ransac::Candidate TCircleFit_Ransac::search() const {
    Candidate best;
    if (points_.size() < 3) return best;  // every sample would fail
    const double many = 0.8 * static_cast<double>(points_.size());
    std::array<cv::Point, 3> sample;
    std::int64_t stored = 0;
    for (int remaining = iterationCount_; remaining >= 1;) {
        --remaining;
        if (!blocks::sampleThree(points_, remaining, sample)) continue;
        cv::Point3d through;
        orx::threePoints2circle(sample[0], sample[1], sample[2], through);
        if (!(minimumRadius_ < through.z && through.z < maximumRadius_)) continue;
        Candidate candidate;
        candidate.circle.x = through.x;
        candidate.circle.y = through.y;
        candidate.circle.r = through.z;
        // A set that can't become the largest can't reach 0.8 of the points either: it need not be counted
        // out.
        candidate.count = fit_kernels::kernels().countInRing(
            orx::spanOf(points_), blocks::ringAround(candidate.circle, inlierDistance_), {best.count, 0});
        ++stored;
        if (candidate.count > best.count) best = candidate;
        if (static_cast<double>(candidate.count) > many || stored > setCap_) break;
    }
    return best;
}

TCircle TCircleFit_Ransac::fit() {
    const Candidate best = search();
    if (best.count < 3) return {};
    const auto near = [this, &best](const cv::Point& p) {
        const double dx = best.circle.x - p.x;
        const double dy = best.circle.y - p.y;
        return std::abs(std::sqrt(dx * dx + dy * dy) - best.circle.r) < inlierDistance_;
    };
    std::vector<cv::Point> consensus;
    consensus.reserve(best.count);
    std::copy_if(points_.begin(), points_.end(), std::back_inserter(consensus), near);

    TCircle circle = blocks::algebraicCircle(consensus);
    blocks::residualList(points_, circle, residuals_);
    std::vector<double> weights(residuals_.size());
    std::transform(residuals_.begin(), residuals_.end(), weights.begin(),
                   [this](double residual) { return residual <= inlierDistance_ ? 1.0 : 0.2; });
    circle.inlierRatio = blocks::inlierRatio(residuals_, inlierDistance_);
    circle.meanResidual = blocks::weightedMeanResidual(residuals_, weights);
    circle.valid = true;
    return circle;
}

bool TCircleFit_Robust::setParams(std::vector<double> values) {
    if (values.size() != 3) return false;
    lossConstant_ = values[0];
    stepSize_ = values[1];
    lossType_ = orx::truncated(values[2]);
    return true;
}

TCircle TCircleFit_Robust::fit() {
    constexpr int kBudget = 1000;
    constexpr double kNoLoss = 9223372036854775808.0;
    constexpr double kSmallestChange = 0.001;
    const TCircle start = blocks::algebraicCircle(points_);
    // The influence asks for type 4, the loss for type 0: intended.
    const fit_kernels::Loss loss{lossConstant_, lossType_ == 4, lossType_ == 0};
    const auto count = static_cast<double>(points_.size());
    fit_kernels::Circle at{start.x, start.y, start.r};
    fit_kernels::GradientSums step{};
    double previousLoss = kNoLoss;
    for (budget_ = kBudget; budget_ > 0;) {
        --budget_;
        at.x -= stepSize_ * step.x;
        at.y -= stepSize_ * step.y;
        at.r -= stepSize_ * step.r;
        if (at.r <= 0) return start;
        const fit_kernels::GradientSums sums =
            fit_kernels::kernels().circleGradient(orx::spanOf(points_), at, loss);
        const double meanLoss = sums.loss / count;
        if (meanLoss > previousLoss) {
            // The halved step stays for later calls, and the move is not undone: intended.
            stepSize_ /= 2;
            step = {};
            previousLoss = kNoLoss;
            continue;
        }
        step = {sums.x / count, sums.y / count, sums.r / count, 0};
        if (std::abs(meanLoss - previousLoss) < kSmallestChange) break;
        previousLoss = meanLoss;
    }
    TCircle circle;
    circle.x = at.x;
    circle.y = at.y;
    circle.r = at.r;
    std::vector<double> residuals;
    circle.meanResidual = blocks::residualList(points_, circle, residuals) / count;
    circle.inlierRatio = blocks::inlierRatio(residuals, lossConstant_);
    circle.valid = true;
    return circle;
}

bool TCircleFit_WeightedLeastSquares::setParams(std::vector<double> values) {
    if (values.size() != 2) return false;
    weightType_ = orx::truncated(values[0]);
    weightParameter_ = static_cast<float>(values[1]);
    return true;
}

// The best circle of the passes after the first circle, whose residuals come in; the best one's go out.
TCircle TCircleFit_WeightedLeastSquares::reweightedCircle(TCircle circle, double mean,
                                                          std::vector<double>& residuals) const {
    constexpr int kPasses = 30;
    constexpr double kGood = 1.0;
    constexpr double kUnset = 99999.0;
    if (orx::weighsAllAlike(weightType_)) return circle;  // every pass would find the first circle again
    const orx::WeightFunction<double> weigh(weightType_, weightParameter_);
    const auto count = static_cast<double>(points_.size());
    std::vector<double> weights(points_.size());
    std::vector<double> newest = residuals;
    for (int pass = 0; pass < kPasses; ++pass) {
        // The second test compares with a fixed value and hardly ever ends the passes: intended.
        if (mean < kGood || std::abs(mean - kUnset) < 0.001) break;
        weigh(newest.data(), newest.size(), weights.data());
        const TCircle candidate = blocks::algebraicCircle(points_, weights);
        const double candidateMean = blocks::residualList(points_, candidate, newest) / count;
        // A worse circle is not kept, but the next pass weighs by its residuals: intended.
        if (candidateMean < mean) {
            circle = candidate;
            mean = candidateMean;
            residuals = newest;
        }
    }
    return circle;
}

TCircle TCircleFit_WeightedLeastSquares::fit() {
    constexpr double kGoodAtOnce = 2.0;
    TCircle circle = blocks::algebraicCircle(points_);
    std::vector<double> residuals;
    const double mean =
        blocks::residualList(points_, circle, residuals) / static_cast<double>(points_.size());
    if (mean < kGoodAtOnce) {
        circle.inlierRatio = 1.0;
        circle.meanResidual = mean;
        circle.valid = true;
        return circle;
    }
    circle = reweightedCircle(circle, mean, residuals);
    std::vector<double> weights(residuals.size());
    orx::WeightFunction<double>(weightType_, weightParameter_)(residuals.data(), residuals.size(),
                                                               weights.data());
    circle.inlierRatio = blocks::inlierRatio(residuals, static_cast<double>(weightParameter_));
    circle.meanResidual = blocks::weightedMeanResidual(residuals, weights);
    circle.valid = true;
    return circle;
}
