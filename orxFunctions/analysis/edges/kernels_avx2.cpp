#include "orxFunctions/analysis/edges/kernels.h"
#include "orxFunctions/analysis/edges/kernels_impl.h"

namespace orx::edge_kernels {

const Kernels kAvx2 = ORX_SIMD::kKernels;

}  // namespace orx::edge_kernels
