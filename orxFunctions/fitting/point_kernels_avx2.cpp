#include "orxFunctions/fitting/point_kernels.inl"

namespace orx {

const PointKernels kAvx2PointKernels = ORX_SIMD::kKernels;

}  // namespace orx
