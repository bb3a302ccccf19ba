#include "orxFunctions/camera/turning/kernels.h"
#include "orxFunctions/camera/turning/kernels_impl.h"

namespace orx::turning_kernels {

const Kernels kAvx2 = ORX_SIMD::kKernels;

}  // namespace orx::turning_kernels
