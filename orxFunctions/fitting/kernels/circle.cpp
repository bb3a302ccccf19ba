#include "orxFunctions/fitting/kernels/circle.h"

#include "orxFunctions/fitting/kernels/circle_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::circle_kernels {

const Kernels& chosen() { return platform::chooseKernels(ORX_SIMD::kKernels, kAvx2); }

}  // namespace orx::circle_kernels
