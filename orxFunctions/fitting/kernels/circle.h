// Loops over points that the circle estimators share, in vectors of the widest kind that the processor
// offers. Most fits pass over their points a few times only, so these loops read the points as they are
// stored; searches that pass a thousand times use the columns of kernels/inlier.h.
//
// Points are stored as x, y, x, y, ... in 32-bit integers (std::vector<cv::Point>). Each result has the bits
// of the plain loop that its comment describes; sums run in the order of the points.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_CIRCLE_H
#define ORXFUNCTIONS_FITTING_KERNELS_CIRCLE_H

#include <cstddef>
#include <cstdint>

namespace orx::circle_kernels {

// `count` points, x and y in turn.
struct PixelSpan {
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

// How a residual moves the circle and what it costs.
struct Loss {
    double c;
    bool huberInfluence;  // else Tukey's biweight
    bool huberLoss;       // else Tukey's biweight
};

struct GradientSums {
    double x, y, r, loss;
};

struct Kernels {
    // Unweighted sums in any order: where the result is true no sum has been rounded, so the order has no
    // influence.
    bool (*exactPowerSums)(PixelSpan points, PowerSums& sums);
    // Sums with one weight per point.
    PowerSums (*weightedPowerSums)(PixelSpan points, const double* weights);
    // The sum of |distance of point i from the centre - r|, and each of them in residuals[i] unless that is
    // null.
    double (*circleResiduals)(PixelSpan points, Circle circle, double* residuals);
    // Sums of the gradient and of the loss of the distances from a circle, not yet divided by the count.
    GradientSums (*circleGradient)(PixelSpan points, Circle circle, Loss loss);
};

extern const Kernels kAvx2;

const Kernels& chosen();

}  // namespace orx::circle_kernels

#endif
