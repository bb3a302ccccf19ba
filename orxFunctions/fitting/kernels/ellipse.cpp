#include "orxFunctions/fitting/kernels/ellipse.h"

#include "orxFunctions/fitting/kernels/ellipse_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::ellipse_kernels {

const Kernels& chosen() { return platform::chooseKernels(ORX_SIMD::kKernels, kAvx2); }

}  // namespace orx::ellipse_kernels
