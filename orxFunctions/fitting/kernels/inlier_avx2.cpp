#include "orxFunctions/fitting/kernels/inlier.h"
#include "orxFunctions/fitting/kernels/inlier_impl.h"

namespace orx::inlier_kernels {

const Kernels kAvx2 = ORX_SIMD::kKernels;

}  // namespace orx::inlier_kernels
