#include "orxFunctions/analysis/edges/aliasing.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::edges {
namespace {

// Squared blur beyond which a ripple moves no edge by more than a thousandth of a pixel.
constexpr double kBlurred = 0.5;
// The sine of the largest angle to an axis.
constexpr double kSlanted = 0.35;

// The facet's slope and curvature along the normal that come of a ripple -amplitude cos(k d) sampled at 3 x 3
// pixels, the middle one at d = -offset. c and s are the larger and the smaller part of the normal.
struct Ripple {
    double slope;
    double bend;
};

Ripple rippleOf(double amplitude, double k, double c, double s, double offset) {
    const double odd = -amplitude * std::sin(k * offset);
    const double even = amplitude * std::cos(k * offset);
    const double cosC = std::cos(k * c);
    const double cosS = std::cos(k * s);
    const double sinC = std::sin(k * c);
    const double sinS = std::sin(k * s);
    const double meanC = (1 + 2 * cosC) / 3;
    const double meanS = (1 + 2 * cosS) / 3;
    const double curvatureC = 2 * (1 - cosC) * meanS;
    const double curvatureS = 2 * (1 - cosS) * meanC;
    return {odd * (c * sinC * meanS + s * sinS * meanC),
            -even * (c * c * curvatureC + 2 * c * s * sinC * sinS + s * s * curvatureS)};
}

}  // namespace

AliasingCorrection::AliasingCorrection(double sigma)
    : variance_(sigma * sigma), sharpest_(1 / (variance_ + kBlurred)) {}

bool AliasingCorrection::matters(cv::Point2d normal, double bend) const {
    constexpr double kSmoothed = 2;  // squared sigma beyond which the gradient's filter leaves no ripple
    return bend > sharpest_ && variance_ < kSmoothed &&
           std::min(std::abs(normal.x), std::abs(normal.y)) < kSlanted;
}

double AliasingCorrection::corrected(cv::Point2d normal, double offset, double bend) const {
    const double c = std::max(std::abs(normal.x), std::abs(normal.y));
    const double s = std::min(std::abs(normal.x), std::abs(normal.y));
    const double slope = offset * bend;
    double bestOffset = offset;
    double bestBend = bend;
    // The ripple follows from the blur and the place that it disturbs.
    for (int i = 0; i < 2; ++i) {
        const double share = std::min(variance_ * bestBend, 1.0);  // sigma^2 / T^2
        const double amplitude =
            2 * (1 / share - 1) * std::exp(-2 * kPi * kPi * variance_ * (1 - c * c * share));
        const Ripple ripple = rippleOf(amplitude, 2 * kPi * c * share, c, s, bestOffset);
        bestBend = bend - ripple.bend;
        bestOffset = (slope - ripple.slope) / bestBend;
    }
    return bestOffset;
}

}  // namespace orx::edges
