#include "orxFunctions/fitting/kernels/inlier.h"

#include "orxFunctions/fitting/kernels/inlier_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::inlier_kernels {

const Kernels& chosen() { return platform::chooseKernels(ORX_SIMD::kKernels, kAvx2); }

}  // namespace orx::inlier_kernels
