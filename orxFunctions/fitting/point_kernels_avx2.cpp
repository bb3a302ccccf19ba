#include "orxFunctions/fitting/point_kernels_body_internal.h"

namespace orx {

const PointKernels kAvx2PointKernels = ORX_SIMD::consensus::kKernels;

}  // namespace orx
