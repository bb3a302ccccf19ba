#include "orxFunctions/analysis/edges/kernels_impl.h"

namespace orx::edges {

const EdgeKernels kEdgeKernelsBaseline = ORX_SIMD::kEdgeKernels;

}  // namespace orx::edges
