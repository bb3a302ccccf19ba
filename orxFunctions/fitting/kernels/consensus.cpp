#include "orxFunctions/fitting/kernels/consensus.h"

#include "orxFunctions/fitting/kernels/consensus_impl.h"
#include "orxFunctions/platform/simd/choose_kernels.h"

namespace orx::consensus_kernels {

const Kernels& chosen() { return platform::chooseKernels(ORX_SIMD::kKernels, kAvx2); }

}  // namespace orx::consensus_kernels
