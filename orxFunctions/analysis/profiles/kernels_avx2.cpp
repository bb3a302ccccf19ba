#include "orxFunctions/analysis/profiles/kernels.h"
#include "orxFunctions/analysis/profiles/kernels_impl.h"

namespace orx::profile_kernels {

const Kernels kAvx2 = ORX_SIMD::kKernels;

}  // namespace orx::profile_kernels
