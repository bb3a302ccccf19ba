#include "orxFunctions/analysis/edge_kernels_body_internal.h"

namespace orx::edges {

const EdgeKernels kEdgeKernelsBaseline = ORX_SIMD::kEdgeKernels;

}  // namespace orx::edges
