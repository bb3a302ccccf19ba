#include "orxFunctions/camera/turning/kernels.h"

#include "orxFunctions/camera/turning/kernels_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::turning_kernels {

const Kernels& chosen() { return platform::chooseKernels(ORX_SIMD::kKernels, kAvx2); }

}  // namespace orx::turning_kernels
