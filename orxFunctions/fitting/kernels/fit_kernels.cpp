#include "orxFunctions/fitting/kernels/fit_kernels_impl.h"
#include "orxFunctions/platform/simd/cpu.h"

namespace orx::fit_kernels {

const Kernels kBaseline = ORX_SIMD::fits::kKernels;

const Kernels& kernels() {
#if defined(ORX_HAS_AVX2_KERNELS)
    if (platform::useAvx2()) return kAvx2;
#endif
    return kBaseline;
}

}  // namespace orx::fit_kernels
