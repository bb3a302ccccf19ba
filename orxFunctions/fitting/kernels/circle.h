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

// The extents of points.
struct Extents {
    std::int32_t lowX, lowY, highX, highY;
};

struct Circle {
    double x, y, r;
};

// The points whose squared distance from the centre lies in [nearest, farthest].
struct Ring {
    double x, y, nearest, farthest;
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

// 2^22 times 2^31 is 2^53, up to which doubles hold every integer.
constexpr std::size_t kMostWrapped = 4194304;

struct Kernels {
    // Unweighted sums in any order: where the result is true no sum has been rounded, so the order has no
    // influence.
    bool (*exactPowerSums)(PixelSpan points, PowerSums& sums);
    // Sums with one weight per point.
    PowerSums (*weightedPowerSums)(PixelSpan points, const double* weights);
    // Of at least one point.
    Extents (*extents)(PixelSpan points);
    // Unweighted sums of points about an offset. Differences and products are 32-bit integers that wrap, so
    // no sum is rounded in lists of up to kMostWrapped points.
    PowerSums (*wrappedPowerSums)(PixelSpan points, std::int32_t offsetX, std::int32_t offsetY);
    // Moves the points of the ring to the front, in their order; returns how many there are.
    std::size_t (*keepInRing)(std::int32_t* xy, std::size_t count, Ring ring);
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
