#include "orxFunctions/measuring/verdict.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/fitting/students_t_internal.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr double kLeastConfidence = 0.5;
constexpr double kMostConfidence = 0.999999;

// Beyond there is nothing, also for one degree of freedom.
constexpr double kFarOut = 1e100;

// The probability of more than t; infinite ones are borne.
double upperTail(double t, double degreesOfFreedom) {
    if (std::abs(t) > kFarOut) return t > 0.0 ? 0.0 : 1.0;
    const double tail = (1.0 - probabilityWithin(std::abs(t), degreesOfFreedom)) / 2.0;
    return t >= 0.0 ? tail : 1.0 - tail;
}

double oneSidedFactor(double confidence, double degreesOfFreedom) {
    return confidence > kLeastConfidence ? coverageFactor(2.0 * confidence - 1.0, degreesOfFreedom) : 0.0;
}

// The factor of the guard band outside of two limits that lie `width` deviations apart: a true value at one
// of them may be measured beyond either.
double outerFactor(double inner, double width, double confidence, double degreesOfFreedom) {
    const double risk = 1.0 - confidence;
    const auto wrong = [&](double k) {
        return upperTail(k, degreesOfFreedom) + upperTail(k + width, degreesOfFreedom);
    };
    if (wrong(inner) <= risk * (1.0 + 1e-6)) return inner;
    double low = inner;
    double high = oneSidedFactor(1.0 - risk / 2.0, degreesOfFreedom);
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2.0;
        (wrong(middle) > risk ? low : high) = middle;
    }
    return high;
}

double conformityOf(double value, double deviation, double degreesOfFreedom, const TTolerance& tolerance) {
    if (deviation == 0.0) return value >= tolerance.lower && value <= tolerance.upper ? 1.0 : 0.0;
    const double below = (value - tolerance.lower) / deviation;
    const double above = (tolerance.upper - value) / deviation;
    // Of two tails that are both above a half the difference would lose the digits: take it on one side.
    if (below < 0.0) return upperTail(-below, degreesOfFreedom) - upperTail(above, degreesOfFreedom);
    if (above < 0.0) return upperTail(-above, degreesOfFreedom) - upperTail(below, degreesOfFreedom);
    return 1.0 - upperTail(below, degreesOfFreedom) - upperTail(above, degreesOfFreedom);
}

bool isMeasured(double value, double deviation, double degreesOfFreedom) {
    if (!std::isfinite(value) || !std::isfinite(deviation) || std::isnan(degreesOfFreedom))
        return refuse(rcNotFinite, "judge", "%g with a deviation of %g of %g degrees of freedom", value,
                      deviation, degreesOfFreedom);
    return (deviation >= 0.0 && degreesOfFreedom > 0.0) ||
           refuse(rcOption, "judge",
                  "a deviation of %g of %g degrees of freedom; 0 or more of more than 0 is taken", deviation,
                  degreesOfFreedom);
}

bool canJudge(const TTolerance& tolerance, double confidence) {
    if (!tolerance.valid())
        return refuse(rcOption, "judge", "limits of %g to %g are none", tolerance.lower, tolerance.upper);
    return takesOptions("judge", {{"confidence", confidence, kLeastConfidence, kMostConfidence}});
}

}  // namespace

const char* verdictText(TVerdict verdict) {
    switch (verdict) {
        case vdPass:
            return "pass";
        case vdFail:
            return "fail";
        case vdUndecided:
            return "undecided";
        case vdNotMeasured:
            return "not measured";
        case vdNoLimits:
            return "no limits";
    }
    return "unknown verdict";
}

TJudgement judge(double value, double deviation, double degreesOfFreedom, const TTolerance& tolerance,
                 double confidence) {
    TJudgement judgement;
    if (!isMeasured(value, deviation, degreesOfFreedom) || !canJudge(tolerance, confidence)) return judgement;
    judgement.conformity = std::clamp(conformityOf(value, deviation, degreesOfFreedom, tolerance), 0.0, 1.0);
    if (!tolerance.limited()) {
        judgement.verdict = vdNoLimits;
        return judgement;
    }
    const double factor = oneSidedFactor(confidence, degreesOfFreedom);
    judgement.guard = factor * deviation;
    const double width = deviation > 0.0 ? (tolerance.upper - tolerance.lower) / deviation
                                         : std::numeric_limits<double>::infinity();
    const double outer = outerFactor(factor, width, confidence, degreesOfFreedom) * deviation;
    const bool inside =
        value >= tolerance.lower + judgement.guard && value <= tolerance.upper - judgement.guard;
    // Rounding must not take a value off the border of its guard band.
    const bool conforms = judgement.conformity >= confidence - 1e-9;
    if (inside && conforms) {
        judgement.verdict = vdPass;
    } else if (value < tolerance.lower - outer || value > tolerance.upper + outer) {
        judgement.verdict = vdFail;
    } else {
        judgement.verdict = vdUndecided;
    }
    return judgement;
}

TVerdict worseVerdict(TVerdict a, TVerdict b) {
    constexpr std::array<TVerdict, 5> kWorstFirst{vdFail, vdNotMeasured, vdUndecided, vdPass, vdNoLimits};
    const auto placeOf = [&](TVerdict verdict) {
        return std::find(kWorstFirst.begin(), kWorstFirst.end(), verdict);
    };
    return placeOf(a) < placeOf(b) ? a : b;
}

}  // namespace orx
