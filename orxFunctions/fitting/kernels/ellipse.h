// The inner loop of grading an ellipse: distances of points from it along the rays from its centre. Every
// instruction set gives the same bits.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_ELLIPSE_H
#define ORXFUNCTIONS_FITTING_KERNELS_ELLIPSE_H

#include <cstddef>

namespace orx::ellipse_kernels {

// An ellipse about its centre: a u^2 + b uv + c v^2 + g = 0 with u = x - x0, v = y - y0. About the centre,
// because the distance between the roots of a steep ray would drown in the rounding of absolute coordinates.
struct CentredConic {
    double x0;
    double y0;
    double a;
    double b;
    double c;
    double g;
};

// Points handled at a time; a multiple of every vector length.
constexpr std::size_t kGradingBlock = 64;

struct Kernels {
    // errors[i] = the distance along the ray from the centre between point i and the ellipse, for `count` <=
    // kGradingBlock points, x and y alternating. `errors` has room for a whole block.
    void (*radialErrors)(const CentredConic& conic, const float* xy, std::size_t count, double* errors);
};

extern const Kernels kAvx2;

const Kernels& chosen();

}  // namespace orx::ellipse_kernels

#endif
