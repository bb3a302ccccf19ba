#include "orxFunctions/fitting/kernels/foot.h"
#include "orxFunctions/fitting/kernels/foot_impl.h"

namespace orx::foot_kernels {

const Kernels kAvx2 = ORX_SIMD::kKernels;

}  // namespace orx::foot_kernels
