#include "orxFunctions/analysis/edges/kernels_impl.h"

namespace orx::edges {

const EdgeKernels kEdgeKernelsAvx2 = ORX_SIMD::kEdgeKernels;

}  // namespace orx::edges
