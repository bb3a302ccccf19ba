#include "orxFunctions/fitting/kernels/distance.h"
#include "orxFunctions/fitting/kernels/distance_impl.h"

namespace orx::distance_kernels {

const Kernels kAvx2 = ORX_SIMD::kKernels;

}  // namespace orx::distance_kernels
