#include "orxFunctions/fitting/kernels/circle.h"
#include "orxFunctions/fitting/kernels/circle_impl.h"

namespace orx::circle_kernels {

const Kernels kAvx2 = ORX_SIMD::kKernels;

}  // namespace orx::circle_kernels
