#include "orxFunctions/fitting/line_fit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "orxFunctions/fitting/fit_kernels_internal.h"
#include "orxFunctions/fitting/fit_parameters_internal.h"
#include "orxFunctions/fitting/geometry.h"
#include "orxFunctions/fitting/monotone_bound_internal.h"
#include "orxFunctions/fitting/point_span_internal.h"
#include "orxFunctions/fitting/random_numbers.h"
#include "orxFunctions/fitting/reweighted_line_internal.h"

namespace fit_kernels = orx::fit_kernels;
using orx::TLine;

namespace {

constexpr double kPi = 3.141592653589793;

// Slope and intercept; a vertical direction gives a finite slope.
TLine slopeForm(const orx::DirectedLine& line) {
    TLine result;
    result.k = static_cast<double>(line.vy) / orx::avoidFloatZero(static_cast<double>(line.vx));
    result.b = static_cast<double>(line.y) - static_cast<double>(line.x) * result.k;
    return result;
}

// The points nearer to a line than `distance`, as a bound that needs no division: |k x - y + b| divided by
// `length` grows with its dividend.
fit_kernels::Strip stripAlong(const TLine& line, double distance) {
    const double length = std::sqrt(line.k * line.k + 1);
    const auto outside = [length, distance](double dividend) { return !(dividend / length < distance); };
    return {line.k, line.b, orx::firstReached(distance * length, outside)};
}

}  // namespace

bool TLineFit::setPoints(std::vector<cv::Point> points) {
    points_ = std::move(points);
    return true;
}

TLineFit::~TLineFit() = default;

bool TLineFit_Ransac::setParams(std::vector<double> values) {
    if (values.size() != 4) return false;
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

// Two points drawn at different indices, or three on one line of which the first differs from the others; the
// second and the third may be the same, intended. False when ten draws fail.
bool TLineFit_Ransac::drawSample(int seed, cv::Point* sample) const {
    constexpr int kAttempts = 10;
    const int last = static_cast<int>(points_.size()) - 1;
    std::srand(static_cast<unsigned>(seed));
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        int indices[3] = {};
        bool different = true;
        for (int i = 0; i < sampleSize_; ++i) {
            indices[i] = orx::getRandNum(0, last);
            sample[i] = points_[static_cast<std::size_t>(indices[i])];
            different = different && (i == 0 || indices[i] != indices[0]);
        }
        if (different && (sampleSize_ == 2 || orx::isCollinear(sample[0], sample[1], sample[2]))) return true;
    }
    return false;
}

bool TLineFit_Ransac::hasWantedAngle(const TLine& line) const {
    const double angle = std::atan(line.k) * 180 / kPi;
    double difference = std::abs(angle - targetAngle_);
    if (difference >= 90) difference = std::abs(180 - difference);
    return difference < angleTolerance_;
}

// The line with the largest consensus set, its flag true, or an invalid line. Sets are counted, not stored:
// only the winner's points are wanted in the end.
TLine TLineFit_Ransac::search() const {
    constexpr std::size_t kSmallestSet = 4;
    const double many = 0.8 * static_cast<double>(points_.size());
    TLine best;
    std::size_t bestCount = 0;
    std::int64_t stored = 0;
    cv::Point sample[3];
    for (int remaining = iterationCount_; remaining >= 1;) {
        --remaining;
        if (!drawSample(remaining, sample)) continue;
        const TLine line = slopeForm(orx::fitLineL1(sample, static_cast<std::size_t>(sampleSize_)));
        if (!hasWantedAngle(line)) continue;
        // A set that can't become the largest can't reach 0.8 of the points either: beyond the smallest size
        // it need not be counted out.
        const std::size_t count = fit_kernels::kernels().countInStrip(
            orx::spanOf(points_), stripAlong(line, inlierDistance_), {bestCount, kSmallestSet});
        if (count >= kSmallestSet) {
            ++stored;
            if (count > bestCount) {
                bestCount = count;
                best = line;
                best.valid = true;
            }
        }
        if (static_cast<double>(count) > many || stored > setCap_) break;
    }
    return best;
}

TLine TLineFit_Ransac::fit() {
    if (points_.size() <= 3 || (sampleSize_ != 2 && sampleSize_ != 3)) return {};
    const TLine best = search();
    if (!best.valid) return {};
    const double length = std::sqrt(best.k * best.k + 1);
    std::vector<cv::Point> consensus;
    std::copy_if(points_.begin(), points_.end(), std::back_inserter(consensus),
                 [this, &best, length](const cv::Point& p) {
                     return std::abs(best.k * p.x - p.y + best.b) / length < inlierDistance_;
                 });
    TLine line = slopeForm(orx::fitLineHuber(consensus.data(), consensus.size()));
    line.valid = hasWantedAngle(line);
    return line;
}

bool TLineFit_Robust::setParams(std::vector<double> values) {
    if (values.size() != 2) return false;
    weightType_ = orx::truncated(values[0]);
    weightParameter_ = static_cast<float>(values[1]);
    return true;
}

TLine TLineFit_Robust::fit() {
    if (points_.empty()) return {};
    TLine line =
        slopeForm(orx::fitLineByWeights(points_.data(), points_.size(), weightType_, weightParameter_));
    line.valid = true;
    return line;
}
