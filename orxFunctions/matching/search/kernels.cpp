#include "orxFunctions/matching/search/kernels.h"

#include "orxFunctions/matching/search/kernels_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::search_kernels {

const Kernels& chosen() { return platform::chooseKernels(ORX_SIMD::kKernels, kAvx2); }

}  // namespace orx::search_kernels
