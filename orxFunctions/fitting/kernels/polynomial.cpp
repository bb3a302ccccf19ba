#include "orxFunctions/fitting/kernels/polynomial.h"

#include "orxFunctions/fitting/kernels/polynomial_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::polynomial_kernels {

const Kernels& chosen() { return platform::chooseKernels(ORX_SIMD::kKernels, kAvx2); }

}  // namespace orx::polynomial_kernels
