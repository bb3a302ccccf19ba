#include "orxFunctions/fitting/kernels/point_kernels_impl.h"
#include "orxFunctions/platform/simd/cpu.h"

namespace orx {

const PointKernels kBaselinePointKernels = ORX_SIMD::consensus::kKernels;

const PointKernels& pointKernels() {
#if defined(ORX_HAS_AVX2_KERNELS)
    if (platform::useAvx2()) return kAvx2PointKernels;
#endif
    return kBaselinePointKernels;
}

}  // namespace orx
