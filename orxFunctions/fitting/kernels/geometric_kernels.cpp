#include "orxFunctions/fitting/kernels/geometric_kernels_impl.h"
#include "orxFunctions/platform/simd/cpu.h"

namespace orx::geometric {

const GeometricKernels kBaselineGeometricKernels = ORX_SIMD::geometric_fits::kKernels;

const GeometricKernels& geometricKernels() {
#if defined(ORX_HAS_AVX2_KERNELS)
    if (platform::useAvx2()) return kAvx2GeometricKernels;
#endif
    return kBaselineGeometricKernels;
}

}  // namespace orx::geometric
