#include "orxFunctions/matching/search/kernels.h"
#include "orxFunctions/matching/search/kernels_impl.h"

namespace orx::search_kernels {

const Kernels kAvx2 = ORX_SIMD::kKernels;

}  // namespace orx::search_kernels
