// The loop of kernels/ellipse.h, compiled once for each instruction set.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_ELLIPSE_IMPL_H
#define ORXFUNCTIONS_FITTING_KERNELS_ELLIPSE_IMPL_H

#include <cstddef>

#include "orxFunctions/fitting/kernels/ellipse.h"
#include "orxFunctions/platform/simd/vectors.h"

namespace orx::ellipse_kernels::ORX_SIMD {

using namespace orx::ORX_SIMD;

inline void radialErrors(const CentredConic& conic, const float* xy, std::size_t count, double* errors) {
    double us[kGradingBlock];
    double vs[kGradingBlock];
    for (std::size_t i = 0; i < count; ++i) {
        us[i] = static_cast<double>(xy[2 * i]) - conic.x0;
        vs[i] = static_cast<double>(xy[2 * i + 1]) - conic.y0;
    }
    for (std::size_t i = count; i % VecD::kLanes != 0; ++i) us[i] = vs[i] = 0;
    const VecD zero = VecD::all(0);
    const VecD nearest = VecD::all(1e-5);
    const VecD a = VecD::all(conic.a);
    const VecD b = VecD::all(conic.b);
    const VecD c = VecD::all(conic.c);
    const VecD g = VecD::all(conic.g);
    for (std::size_t i = 0; i < count; i += VecD::kLanes) {
        const VecD u = VecD::load(us + i);
        const VecD v = VecD::load(vs + i);
        const VecD steep = select(u < zero, zero - nearest, nearest);
        const VecD k = v / select(abs(u) < nearest, steep, u);
        // The ray passes through the point, and beside the centre where it was kept from the vertical.
        const VecD m = v - k * u;
        const VecD qa = a + k * (b + c * k);
        const VecD qb = m * (b + VecD::all(2) * c * k);
        const VecD qc = c * m * m + g;
        const VecD root = sqrt(max(qb * qb - VecD::all(4) * qa * qc, zero));
        const VecD first = (root - qb) / (VecD::all(2) * qa);
        const VecD second = (zero - qb - root) / (VecD::all(2) * qa);
        const auto between = (min(u, zero) < first) & (first < max(u, zero));
        const VecD hitU = select(between, first, second);
        const VecD hitV = k * hitU + m;
        abs(sqrt(hitU * hitU + hitV * hitV) - sqrt(u * u + v * v)).store(errors + i);
    }
}

inline constexpr Kernels kKernels = {radialErrors};

}  // namespace orx::ellipse_kernels::ORX_SIMD

#endif
