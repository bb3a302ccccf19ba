#include "orxFunctions/analysis/edges/kernels.h"

#include "orxFunctions/analysis/edges/kernels_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::edge_kernels {

const Kernels& chosen() { return platform::chooseKernels(ORX_SIMD::kKernels, kAvx2); }

}  // namespace orx::edge_kernels
