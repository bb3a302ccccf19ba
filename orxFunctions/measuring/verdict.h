// Whether a measured value conforms to its tolerance, by the decision rule of ISO 14253-1: only what is
// proven passes or fails.
//
// The limits are drawn in by a guard band for a pass and pushed out by it for a fail; between the two the
// measurement is not good enough to tell, and the verdict is "undecided". The guard band is the one-sided
// coverage factor at the stated confidence (Student's t, coverageFactor of fitting/fit_report.h) times the
// standard uncertainty. Whatever the true value, a wrong verdict then has a probability of at most 1 -
// confidence: 5 % at 0.95, and that only for parts right at a limit.
#ifndef ORXFUNCTIONS_MEASURING_VERDICT_H
#define ORXFUNCTIONS_MEASURING_VERDICT_H

#include <limits>

#include "orxFunctions/api.h"

namespace orx {

// What a value may be, in its unit; both limits belong to it. Either may be infinite; with both there is
// nothing to judge. A plain value: its const members are reentrant.
struct TTolerance {
    double lower = -std::numeric_limits<double>::infinity();
    double upper = std::numeric_limits<double>::infinity();

    // A number each, or infinite to its own side, and lower <= upper.
    bool valid() const {
        constexpr double kInfinite = std::numeric_limits<double>::infinity();
        return lower <= upper && lower < kInfinite && upper > -kInfinite;
    }
    bool limited() const {
        return lower > -std::numeric_limits<double>::infinity() ||
               upper < std::numeric_limits<double>::infinity();
    }
};

enum TVerdict : int {
    vdPass = 0,         // conforms, at the stated confidence
    vdFail = 1,         // does not conform, at the stated confidence
    vdUndecided = 2,    // too near a limit for the uncertainty of the value
    vdNotMeasured = 3,  // there is no value, or no uncertainty of it: never a pass
    vdNoLimits = 4      // measured, but there is no tolerance to judge it by
};

// "pass", "fail", "undecided", "not measured" or "no limits"; "unknown verdict" for other values. Never null.
ORX_API const char* verdictText(TVerdict verdict);

struct TJudgement {
    TVerdict verdict = vdNotMeasured;
    // The probability that the true value lies within the tolerance, given the measured one and nothing else:
    // that share of a t-distribution about the value. Not-a-number where nothing is measured.
    double conformity = std::numeric_limits<double>::quiet_NaN();
    double guard = 0.0;  // width of the guard band within the limits, in the unit of the value
};

// `deviation` is the standard uncertainty of the value, 0 or more, `degreesOfFreedom` those of the deviation,
// above 0, infinite where it is known. A pass also asks for a conformity of at least `confidence`, which
// counts where the tolerance is hardly wider than the guard bands; the guard band outside is widened there,
// so that both limits together do not lead to more wrong fails than one.
//
// vdNotMeasured for a value, a deviation or degrees of freedom that are no such numbers (rcNotFinite,
// rcOption), for a tolerance that is not valid() and for a confidence outside of [0.5, 0.999999] (rcOption).
// Reentrant.
ORX_API TJudgement judge(double value, double deviation, double degreesOfFreedom, const TTolerance& tolerance,
                         double confidence = 0.95);

// The verdict of the whole from those of its parts: a fail beats not measured, which beats undecided, which
// beats a pass; parts without limits count only where there are no others. Begin with vdNoLimits. Reentrant.
ORX_API TVerdict worseVerdict(TVerdict a, TVerdict b);

}  // namespace orx

#endif
