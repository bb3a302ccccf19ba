// Loops over points that the circle and line estimators share, in vectors of the widest kind that the
// processor offers.
//
// Points are stored as x, y, x, y, ... in 32-bit integers (std::vector<cv::Point>). Each result has the bits
// of the plain loop that its comment describes; sums run in the order of the points.
#ifndef ORXFUNCTIONS_FITTING_FIT_KERNELS_INTERNAL_H
#define ORXFUNCTIONS_FITTING_FIT_KERNELS_INTERNAL_H

#include <cstddef>
#include <cstdint>

// The records here are plain aggregates without constructors: the linker must find nothing to share between
// the builds for two instruction sets.
namespace orx::fit_kernels {

// `count` points, x and y in turn.
struct PointSpan {
    const std::int32_t* xy;
    std::size_t count;
};

// Sums of powers of the coordinates, and the sum of the weights.
struct PowerSums {
    double w, x, y, xx, yy, xxx, yyy, xy, xyy, xxy;
};

struct Circle {
    double x, y, r;
};

// Squared distances q from the centre with low <= q < high.
struct Ring {
    double x, y;
    double low, high;
};

// Points with |k x - y + b| < limit.
struct Strip {
    double k, b;
    double limit;
};

// When counting may end early: with at least `enough` found, and no way left to find more than `best`.
struct Contest {
    std::size_t best;
    std::size_t enough;
};

// How a residual moves the circle and what it costs.
struct Loss {
    double c;
    bool huberInfluence;  // else Tukey's biweight
    bool huberLoss;       // else Tukey's biweight
};

struct GradientSums {
    double x, y, r, loss;
};

// Unweighted sums in any order: where the result is true no sum has been rounded, so the order has no
// influence.
using ExactPowerSums = bool (*)(PointSpan points, PowerSums& sums);
// Sums with one weight per point.
using WeightedPowerSums = PowerSums (*)(PointSpan points, const double* weights);
// residuals[i] = |distance of point i from the centre - r|; returns their sum.
using CircleResiduals = double (*)(PointSpan points, Circle circle, double* residuals);
// The number of points in the ring or strip; when ended early, some number not above contest.best.
using CountInRing = std::size_t (*)(PointSpan points, Ring ring, Contest contest);
using CountInStrip = std::size_t (*)(PointSpan points, Strip strip, Contest contest);
// Sums of the gradient and of the loss of the distances from a circle, not yet divided by the count.
using CircleGradient = GradientSums (*)(PointSpan points, Circle circle, Loss loss);

struct Kernels {
    ExactPowerSums exactPowerSums;
    WeightedPowerSums weightedPowerSums;
    CircleResiduals circleResiduals;
    CountInRing countInRing;
    CountInStrip countInStrip;
    CircleGradient circleGradient;
};

extern const Kernels kBaseline;
#if defined(ORX_HAS_AVX2_KERNELS)
extern const Kernels kAvx2;
#endif

// The set for this processor.
const Kernels& kernels();

}  // namespace orx::fit_kernels

#endif
