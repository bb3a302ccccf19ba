#include "orxFunctions/fitting/kernels/foot.h"

#include "orxFunctions/fitting/kernels/foot_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::foot_kernels {

const Kernels& chosen() { return platform::chooseKernels(ORX_SIMD::kKernels, kAvx2); }

}  // namespace orx::foot_kernels
