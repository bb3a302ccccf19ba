#include "orxFunctions/fitting/line_fit.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "orxFunctions/fitting/fit_parameters_internal.h"
#include "orxFunctions/fitting/geometry.h"
#include "orxFunctions/fitting/inlier_tests_internal.h"
#include "orxFunctions/fitting/point_columns_internal.h"
#include "orxFunctions/fitting/point_list.h"
#include "orxFunctions/fitting/reweighted_line_internal.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/platform/runtime_random_internal.h"

using orx::TLine;

namespace {

// Slope and intercept; a vertical direction gives a finite slope.
TLine slopeForm(const orx::DirectedLine& line) {
    TLine result;
    result.k = static_cast<double>(line.vy) / orx::avoidFloatZero(static_cast<double>(line.vx));
    result.b = static_cast<double>(line.y) - static_cast<double>(line.x) * result.k;
    return result;
}

// Two points drawn at different indices, or three on one line of which the first differs from the others; the
// second and the third may be the same, intended. False when ten draws fail.
bool drawSample(const std::vector<cv::Point>& points, int sampleSize, int seed,
                orx::platform::RuntimeRandom& random, cv::Point* sample) {
    constexpr int kAttempts = 10;
    random.seed(static_cast<unsigned>(seed));
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        std::size_t indices[3] = {};
        bool different = true;
        for (int i = 0; i < sampleSize; ++i) {
            indices[i] = static_cast<std::size_t>(random.draw()) % points.size();
            sample[i] = points[indices[i]];
            different = different && (i == 0 || indices[i] != indices[0]);
        }
        if (different && (sampleSize == 2 || orx::isCollinear(sample[0], sample[1], sample[2]))) return true;
    }
    return false;
}

}  // namespace

bool TLineFit::setPoints(std::vector<cv::Point> points) {
    points_ = std::move(points);
    return true;
}

TLineFit::~TLineFit() = default;

bool TLineFit_Ransac::setParams(std::vector<double> values) {
    if (!orx::takesParameters(values.size(), 4)) return false;
    targetAngle_ = values[0];
    inlierDistance_ = values[1];
    sampleSize_ = orx::truncated(values[2]);
    angleTolerance_ = values[3];
    return true;
}

void TLineFit_Ransac::setSearchLimits(int iterationCount, int setCap) {
    iterationCount_ = iterationCount;
    setCap_ = setCap;
}

bool TLineFit_Ransac::hasWantedAngle(const TLine& line) const {
    const double angle = orx::degrees(std::atan(line.k));
    double difference = std::abs(angle - targetAngle_);
    if (difference >= 90) difference = std::abs(180 - difference);
    return difference < angleTolerance_;
}

// Sets are counted, not stored: only the winner's points are wanted in the end.
std::vector<cv::Point> TLineFit_Ransac::largestConsensus() const {
    constexpr std::size_t kTooSmall = 3;
    const orx::PointColumns columns(points_);
    const orx::inlier_kernels::Kernels& kernels = orx::inlier_kernels::chosen();
    const double many = 0.8 * static_cast<double>(points_.size());
    std::size_t bestCount = kTooSmall;
    orx::inlier_kernels::LineTest best{};
    std::int64_t stored = 0;
    orx::platform::RuntimeRandom random;
    cv::Point sample[3];
    for (int remaining = iterationCount_; remaining >= 1;) {
        --remaining;
        if (!drawSample(points_, sampleSize_, remaining, random, sample)) continue;
        const TLine line = slopeForm(orx::fitLineL1(sample, static_cast<std::size_t>(sampleSize_)));
        if (!hasWantedAngle(line)) continue;
        const orx::inlier_kernels::LineTest test = orx::lineCloserThan(line.k, line.b, inlierDistance_);
        // A set that can't become the largest can't reach 0.8 of the points either: it need not be counted
        // out, unless it is not clear yet that it is large enough to be stored.
        std::size_t count = kernels.countOnLine(columns.span(), test, bestCount);
        if (count <= kTooSmall) count = kernels.countOnLine(columns.span(), test, kTooSmall);
        if (count > kTooSmall) ++stored;
        if (count > bestCount) {
            bestCount = count;
            best = test;
        }
        if (static_cast<double>(count) > many || stored > setCap_) break;
    }
    random.leaveToRuntime();
    if (bestCount == kTooSmall) return {};
    std::vector<int> indices(columns.span().size);
    indices.resize(kernels.listOnLine(columns.span(), best, indices.data()));
    std::vector<cv::Point> consensus;
    orx::getPointListFromIdxList(points_, indices, consensus);
    return consensus;
}

TLine TLineFit_Ransac::fit() {
    constexpr std::size_t kFewest = 4;
    if (sampleSize_ != 2 && sampleSize_ != 3) {
        orx::refuse(orx::rcOption, "fit", "samples of %d points; 2 and 3 are taken", sampleSize_);
        return {};
    }
    std::vector<cv::Point> consensus;
    if (points_.size() >= kFewest) consensus = largestConsensus();
    if (consensus.empty()) {
        orx::refuseConsensus(points_.size(), kFewest, iterationCount_);
        return {};
    }
    TLine line = slopeForm(orx::fitLineHuber(consensus.data(), consensus.size()));
    line.valid = hasWantedAngle(line);
    if (!line.valid)
        orx::refuse(orx::rcNoResult, "fit", "the line of slope %g leaves the angle %g by %g degrees or more",
                    line.k, targetAngle_, angleTolerance_);
    return line;
}

bool TLineFit_Robust::setParams(std::vector<double> values) {
    if (!orx::takesParameters(values.size(), 2)) return false;
    weightType_ = orx::truncated(values[0]);
    weightParameter_ = static_cast<float>(values[1]);
    return true;
}

TLine TLineFit_Robust::fit() {
    if (points_.empty()) {
        orx::refuse(orx::rcTooFew, "fit", "there are no points");
        return {};
    }
    TLine line =
        slopeForm(orx::fitLineByWeights(points_.data(), points_.size(), weightType_, weightParameter_));
    line.valid = true;
    return line;
}
