// The kernels for processors with AVX2; see orx_avx2_sources for what may be included here.
#include "orxFunctions/fitting/kernels/fit_kernels_impl.h"

namespace orx::fit_kernels {

const Kernels kAvx2 = ORX_SIMD::fits::kKernels;

}  // namespace orx::fit_kernels
