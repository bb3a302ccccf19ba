#include "orxFunctions/analysis/edge_kernels_body_internal.h"

namespace orx::edges {

const EdgeKernels kEdgeKernelsAvx2 = ORX_SIMD::kEdgeKernels;

}  // namespace orx::edges
