#include "orxFunctions/fitting/kernels/distance.h"

#include "orxFunctions/fitting/kernels/distance_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::distance_kernels {

const Kernels& chosen() { return platform::chooseKernels(ORX_SIMD::kKernels, kAvx2); }

}  // namespace orx::distance_kernels
