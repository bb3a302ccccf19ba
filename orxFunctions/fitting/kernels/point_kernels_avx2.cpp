#include "orxFunctions/fitting/kernels/point_kernels_impl.h"

namespace orx {

const PointKernels kAvx2PointKernels = ORX_SIMD::consensus::kKernels;

}  // namespace orx
