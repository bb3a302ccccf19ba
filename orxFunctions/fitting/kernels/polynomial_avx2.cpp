#include "orxFunctions/fitting/kernels/polynomial.h"
#include "orxFunctions/fitting/kernels/polynomial_impl.h"

namespace orx::polynomial_kernels {

const Kernels kAvx2 = ORX_SIMD::kKernels;

}  // namespace orx::polynomial_kernels
