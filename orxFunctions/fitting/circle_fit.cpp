#include "orxFunctions/fitting/circle_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "orxFunctions/fitting/circle_algebra_internal.h"
#include "orxFunctions/fitting/fit_parameters_internal.h"
#include "orxFunctions/fitting/fit_weights_internal.h"
#include "orxFunctions/fitting/geometry.h"
#include "orxFunctions/fitting/inlier_tests_internal.h"
#include "orxFunctions/fitting/kernels/circle.h"
#include "orxFunctions/fitting/pixel_span_internal.h"
#include "orxFunctions/fitting/point_columns_internal.h"
#include "orxFunctions/fitting/point_list.h"

namespace blocks = orx::circle_blocks;
namespace circle_kernels = orx::circle_kernels;
using orx::TCircle;

bool TCircleFit::setPoints(std::vector<cv::Point> points) {
    points_ = std::move(points);
    return true;
}

TCircleFit::~TCircleFit() = default;

bool TCircleFit_Ransac::setParams(std::vector<double> values) {
    if (!orx::takesParameters(values.size(), 5)) return false;
    maximumRadius_ = orx::truncated(values[0]);
    minimumRadius_ = orx::truncated(values[1]);
    inlierDistance_ = values[2];
    iterationCount_ = orx::truncated(values[3]);
    setCap_ = orx::truncated(values[4]);
    return true;
}

// Sets are counted, not stored: only the winner's points are wanted in the end.
std::vector<cv::Point> TCircleFit_Ransac::largestConsensus() const {
    if (points_.size() < 3) return {};  // every sample would fail
    const orx::PointColumns columns(points_);
    const orx::inlier_kernels::Kernels& kernels = orx::inlier_kernels::chosen();
    const double many = 0.8 * static_cast<double>(points_.size());
    std::size_t bestCount = 0;
    orx::inlier_kernels::CircleTest best{};
    std::int64_t stored = 0;
    orx::platform::RuntimeRandom random;
    std::array<cv::Point, 3> sample;
    for (int remaining = iterationCount_; remaining >= 1;) {
        --remaining;
        if (!blocks::sampleThree(points_, remaining, random, sample)) continue;
        cv::Point3d circle;
        orx::threePoints2circle(sample[0], sample[1], sample[2], circle);
        if (!(minimumRadius_ < circle.z && circle.z < maximumRadius_)) continue;
        const orx::inlier_kernels::CircleTest test =
            orx::circleCloserThan(circle.x, circle.y, circle.z, inlierDistance_);
        // A set that can't become the largest can't reach 0.8 of the points either: it need not be counted
        // out.
        const std::size_t count = kernels.countOnCircle(columns.span(), test, bestCount);
        ++stored;
        if (count > bestCount) {
            bestCount = count;
            best = test;
        }
        if (static_cast<double>(count) > many || stored > setCap_) break;
    }
    random.leaveToRuntime();
    if (bestCount == 0) return {};
    std::vector<int> indices(columns.span().size);
    indices.resize(kernels.listOnCircle(columns.span(), best, indices.data()));
    std::vector<cv::Point> consensus;
    orx::getPointListFromIdxList(points_, indices, consensus);
    return consensus;
}

TCircle TCircleFit_Ransac::fit() {
    const std::vector<cv::Point> consensus = largestConsensus();
    constexpr std::size_t kFewest = 3;
    if (consensus.size() < kFewest) {
        orx::refuseConsensus(points_.size(), kFewest, iterationCount_);
        return {};
    }
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
    if (!orx::takesParameters(values.size(), 3)) return false;
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
    const circle_kernels::Loss loss{lossConstant_, lossType_ == 4, lossType_ == 0};
    const auto count = static_cast<double>(points_.size());
    circle_kernels::Circle at{start.x, start.y, start.r};
    circle_kernels::GradientSums step{};
    double previousLoss = kNoLoss;
    for (budget_ = kBudget; budget_ > 0;) {
        --budget_;
        at.x -= stepSize_ * step.x;
        at.y -= stepSize_ * step.y;
        at.r -= stepSize_ * step.r;
        if (at.r <= 0) {
            orx::refuse(orx::rcNoResult, "fit", "a step of size %g led to a radius of %g", stepSize_, at.r);
            return start;
        }
        const circle_kernels::GradientSums sums =
            circle_kernels::chosen().circleGradient(orx::spanOf(points_), at, loss);
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
    if (!orx::takesParameters(values.size(), 2)) return false;
    weightType_ = orx::truncated(values[0]);
    weightParameter_ = static_cast<float>(values[1]);
    return true;
}

// The best circle of the passes that follow the first circle, whose mean residual is given.
TCircle TCircleFit_WeightedLeastSquares::reweightedCircle(TCircle circle, double mean) const {
    constexpr int kPasses = 30;
    constexpr double kGood = 1.0;
    constexpr double kUnset = 99999.0;
    if (orx::weighsAllAlike(weightType_)) return circle;  // every pass would find the first circle again
    const orx::WeightFunction<double> weigh(weightType_, weightParameter_);
    const auto count = static_cast<double>(points_.size());
    std::vector<double> weights(points_.size());
    std::vector<double> newest;
    blocks::residualList(points_, circle, newest);
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
        }
    }
    return circle;
}

TCircle TCircleFit_WeightedLeastSquares::fit() {
    constexpr double kGoodAtOnce = 2.0;
    TCircle circle = blocks::algebraicCircle(points_);
    const double mean = blocks::residualSum(points_, circle) / static_cast<double>(points_.size());
    if (mean < kGoodAtOnce) {
        circle.inlierRatio = 1.0;
        circle.meanResidual = mean;
        circle.valid = true;
        return circle;
    }
    circle = reweightedCircle(circle, mean);
    std::vector<double> residuals;
    blocks::residualList(points_, circle, residuals);
    std::vector<double> weights(residuals.size());
    orx::WeightFunction<double>(weightType_, weightParameter_)(residuals.data(), residuals.size(),
                                                               weights.data());
    circle.inlierRatio = blocks::inlierRatio(residuals, static_cast<double>(weightParameter_));
    circle.meanResidual = blocks::weightedMeanResidual(residuals, weights);
    circle.valid = true;
    return circle;
}
