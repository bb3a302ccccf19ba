#include "orxFunctions/fitting/kernels/consensus.h"
#include "orxFunctions/fitting/kernels/consensus_impl.h"

namespace orx::consensus_kernels {

const Kernels kAvx2 = ORX_SIMD::kKernels;

}  // namespace orx::consensus_kernels
