// The kernels for processors with AVX2; see orx_avx2_sources for what may be included here.
#include "orxFunctions/fitting/kernels/geometric_kernels_impl.h"

namespace orx::geometric {

const GeometricKernels kAvx2GeometricKernels = ORX_SIMD::geometric_fits::kKernels;

}  // namespace orx::geometric
