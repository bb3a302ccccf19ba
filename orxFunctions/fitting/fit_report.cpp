#include "orxFunctions/fitting/fit_report.h"

#include <cmath>
#include <limits>

#include "orxFunctions/fitting/students_t_internal.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

// The logarithm of the gamma function for x above 0: Stirling's series, far enough out. (std::lgamma writes
// to a variable of the process on some systems.)
double logGamma(double x) {
    double shift = 0.0;
    while (x < 12.0) {
        shift -= std::log(x);
        x += 1.0;
    }
    const double i = 1.0 / x;
    const double i2 = i * i;
    const double series =
        i * (1.0 / 12 - i2 * (1.0 / 360 - i2 * (1.0 / 1260 - i2 * (1.0 / 1680 - i2 / 1188))));
    constexpr double kHalfLogTwoPi = 0.91893853320467274178;
    return shift + (x - 0.5) * std::log(x) - x + kHalfLogTwoPi + series;
}

// The continued fraction of the incomplete beta function, by Lentz's method.
double betaFraction(double a, double b, double x) {
    constexpr double kTiny = 1e-300;
    const auto away = [](double v) { return std::abs(v) < kTiny ? kTiny : v; };
    double c = 1.0;
    double d = 1.0 / away(1.0 - (a + b) * x / (a + 1.0));
    double result = d;
    for (int m = 1; m <= 500; ++m) {
        const double even = m * (b - m) * x / ((a + 2 * m - 1.0) * (a + 2 * m));
        d = 1.0 / away(1.0 + even * d);
        c = away(1.0 + even / c);
        result *= d * c;
        const double odd = -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1.0));
        d = 1.0 / away(1.0 + odd * d);
        c = away(1.0 + odd / c);
        const double factor = d * c;
        result *= factor;
        if (std::abs(factor - 1.0) < 1e-15) break;
    }
    return result;
}

// The regularised incomplete beta function I_x(a, b); `rest` is 1 - x, which x near 1 would lose.
double incompleteBeta(double a, double b, double x, double rest) {
    if (x <= 0.0) return 0.0;
    if (rest <= 0.0) return 1.0;
    const double front =
        std::exp(logGamma(a + b) - logGamma(a) - logGamma(b) + a * std::log(x) + b * std::log(rest));
    if (x < (a + 1.0) / (a + b + 2.0)) return front * betaFraction(a, b, x) / a;
    return 1.0 - front * betaFraction(b, a, rest) / b;
}

// From here on the normal distribution, to more than ten digits.
constexpr double kNormalFrom = 1e7;

// How that grows with t.
double density(double t, double degreesOfFreedom) {
    const double half = degreesOfFreedom / 2.0;
    if (degreesOfFreedom > kNormalFrom) return std::sqrt(2.0 / kPi) * std::exp(-t * t / 2.0);
    return 2.0 *
           std::exp(logGamma(half + 0.5) - logGamma(half) - (half + 0.5) * std::log1p(t * t / (2.0 * half))) /
           std::sqrt(2.0 * half * kPi);
}

}  // namespace

double probabilityWithin(double t, double degreesOfFreedom) {
    if (degreesOfFreedom > kNormalFrom) return std::erf(t / std::sqrt(2.0));
    const double sum = degreesOfFreedom + t * t;
    return incompleteBeta(0.5, degreesOfFreedom / 2.0, t * t / sum, degreesOfFreedom / sum);
}

const char* fitStatusText(TFitStatus status) {
    switch (status) {
        case fsOk:
            return "ok";
        case fsTooFewPoints:
            return "too few points";
        case fsNotFinite:
            return "a coordinate is not a finite number";
        case fsBadOptions:
            return "an option is out of its range";
        case fsBadDeviations:
            return "the deviations are not one finite number of 0 or more for each point";
        case fsCoincident:
            return "all points lie in one place";
        case fsCollinear:
            return "the points lie on a straight line";
        case fsArcTooShort:
            return "the arc is too short to tell its radius";
        case fsNotThatShape:
            return "the points do not follow an ellipse";
        case fsNotConverged:
            return "the fit did not settle";
        case fsNoConsensus:
            return "no shape has enough support";
        case fsTooLarge:
            return "too many points, or too large coordinates";
    }
    return "unknown status";
}

// Newton's steps, each held between what is known to be too little and too much.
double coverageFactor(double probability, double degreesOfFreedom) {
    if (!(probability > 0.0 && probability < 1.0) || !(degreesOfFreedom > 0.0)) {
        refuse(
            rcOption, "coverageFactor",
            "a probability of %g and %g degrees of freedom; 0 to 1, without the ends, and above 0 are taken",
            probability, degreesOfFreedom);
        return std::numeric_limits<double>::quiet_NaN();
    }
    double high = 1.0;
    while (probabilityWithin(high, degreesOfFreedom) < probability && high < 1e300) high *= 2.0;
    double low = high > 1.0 ? high / 2.0 : 0.0;
    double t = (low + high) / 2.0;
    for (int i = 0; i < 200 && high - low > 1e-15 * high; ++i) {
        const double missing = probability - probabilityWithin(t, degreesOfFreedom);
        (missing > 0.0 ? low : high) = t;
        const double step = missing / density(t, degreesOfFreedom);
        if (std::abs(step) <= 1e-15 * t) break;
        t = t + step > low && t + step < high ? t + step : (low + high) / 2.0;
    }
    return t;
}

}  // namespace orx
