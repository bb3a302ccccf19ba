// What the polynomial and the spline curve share: evaluation, sampling of a range, the search for an extreme.
#ifndef ORXFUNCTIONS_FITTING_CURVE_SAMPLING_INTERNAL_H
#define ORXFUNCTIONS_FITTING_CURVE_SAMPLING_INTERNAL_H

#include <cmath>
#include <cstddef>
#include <opencv2/core.hpp>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {

// A longer list would fill the memory.
constexpr double kMostListedSamples = 1e7;
// What is evaluated at one go: a few seconds. A term is a coefficient times its power.
constexpr double kMostTerms = 1e9;

// coefficients[0] + coefficients[1] x + coefficients[2] x^2 + ..., summed in this order.
inline double evaluatePolynomial(const double* coefficients, std::size_t count, double x) {
    double sum = 0;
    double power = 1;
    for (std::size_t i = 0; i < count; ++i) {
        sum += coefficients[i] * power;
        power *= x;
    }
    return sum;
}

// How many samples low, low + step, ... lie in [low, high], about; 0 when there are none or too many.
inline std::size_t sampleCount(double low, double high, double step, double most) {
    if (!(low <= high) || !(step > 0)) return 0;
    const double steps = (high - low) / step;
    return steps < most ? static_cast<std::size_t>(steps) + 1 : 0;
}

// Whether that many samples of so many terms each may be listed. Keeps the refusal.
inline bool takesList(double low, double high, double step, double termsEach, const char* function) {
    if (!(low <= high)) return refuse(rcNotFinite, function, "no x lies from %g to %g", low, high);
    if (sampleCount(low, high, step, kMostListedSamples) == 0)
        return refuse(rcTooMany, function, "from %g to %g in steps of %g; fewer than %g steps are taken", low,
                      high, step, kMostListedSamples);
    const double terms = ((high - low) / step + 1) * termsEach;
    if (terms <= kMostTerms) return true;
    return refuse(rcTooMany, function, "%g terms to sum up; at most %g are taken", terms, kMostTerms);
}

constexpr std::size_t kSamplesAtOnce = 64;

// Some of the x = low, low + step, ... (a running sum) up to a last one, and how they go on.
struct SampleRun {
    std::size_t count;
    double next;
    bool isLast;
};

// Writes up to kSamplesAtOnce of them from `first`, which must not exceed `high`, on. The last run ends
// beyond `high`, or where the step has become too small to change x.
SampleRun sampleRun(double first, double high, double step, double* x);

// Calls visit(x, count) for lists of up to kSamplesAtOnce of x = low, low + step, ... (a running sum) while
// x <= high; not at all when that would be more than `most`. Ends early where the step has become too small
// to change x.
template <class Visit>
void forEachSamples(double low, double high, double step, double most, Visit visit) {
    if (sampleCount(low, high, step, most) == 0) return;
    double x[kSamplesAtOnce];
    SampleRun run = {0, low, false};
    while (!run.isLast) {
        run = sampleRun(run.next, high, step, x);
        visit(static_cast<const double*>(x), run.count);
    }
}

// The same, one x at a time.
template <class Visit>
void forEachSample(double low, double high, double step, double most, Visit visit) {
    forEachSamples(low, high, step, most, [&](const double* x, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) visit(x[i]);
    });
}

// Keeps the sample that would come first when all were ordered by y, descending for the maximum and ascending
// for the minimum, the earlier first among equals and those whose y is not a number last.
class ExtremeSearch {
  public:
    explicit ExtremeSearch(bool maximum) : maximum_(maximum) {}

    void offer(double x, double y) {
        if (!any_ || isBetter(y)) best_ = {x, y};
        any_ = true;
    }

    // (0, 0) when nothing was offered.
    cv::Point2d best() const { return best_; }

  private:
    bool isBetter(double y) const {
        if (std::isnan(best_.y)) return !std::isnan(y);
        return maximum_ ? y > best_.y : y < best_.y;
    }

    bool maximum_;
    bool any_ = false;
    cv::Point2d best_{0, 0};
};

}  // namespace orx

#endif
