#include "orxFunctions/analysis/profiles/kernels.h"

#include "orxFunctions/analysis/profiles/kernels_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::profile_kernels {

const Kernels& chosen() { return platform::chooseKernels(ORX_SIMD::kKernels, kAvx2); }

}  // namespace orx::profile_kernels
