#include "orxFunctions/fitting/kernels/ellipse.h"
#include "orxFunctions/fitting/kernels/ellipse_impl.h"

namespace orx::ellipse_kernels {

const Kernels kAvx2 = ORX_SIMD::kKernels;

}  // namespace orx::ellipse_kernels
