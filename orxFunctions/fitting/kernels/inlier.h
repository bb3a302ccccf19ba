// Inner loops over points that decide which of them lie on a line or a circle.
//
// Every instruction set gives the same results, bit by bit those of the plain expressions. What a loop
// compares with is prepared outside it, once per line or circle, by the functions of inlier_tests_internal.h.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_INLIER_H
#define ORXFUNCTIONS_FITTING_KERNELS_INLIER_H

#include <cstddef>
#include <cstdint>

namespace orx::inlier_kernels {

// Columns are padded to a multiple of this with not-a-number, which is no inlier of anything: no loop needs a
// tail.
constexpr std::size_t kPointsPerStep = 8;

struct PointSpan {
    const double* x;
    const double* y;
    std::size_t size;  // with the padding
};

// An inlier's residual |(a x + b y) + c| is at most `inside`; an outlier's is above `outside`. Between the
// two the distance from the foot of the perpendicular decides. Tests without foot points have inside ==
// outside.
struct LineTest {
    double a;
    double b;
    double c;
    double inside;
    double outside;
    double across;     // slope of the perpendiculars
    double intercept;  // of the line
    double turn;       // slope of the line - across
    double threshold;  // largest distance of an inlier
};

// An inlier's squared distance from the centre lies in [nearest, farthest].
struct CircleTest {
    double x;
    double y;
    double nearest;
    double farthest;
};

struct Kernels {
    // The number of inliers when it is above `floor`; otherwise any number up to `floor`, found sooner.
    std::size_t (*countOnLine)(const PointSpan& points, const LineTest& test, std::size_t floor);
    std::size_t (*countOnCircle)(const PointSpan& points, const CircleTest& test, std::size_t floor);

    // Writes the ascending indices of the inliers, of which there may be points.size, and returns their
    // number.
    std::size_t (*listOnLine)(const PointSpan& points, const LineTest& test, std::int32_t* indices);
    std::size_t (*listOnCircle)(const PointSpan& points, const CircleTest& test, std::int32_t* indices);
};

extern const Kernels kAvx2;

// Ask once per search, not per line.
const Kernels& chosen();

}  // namespace orx::inlier_kernels

#endif
