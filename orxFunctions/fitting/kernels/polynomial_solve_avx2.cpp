// Compiled for AVX2: includes kernel headers only.
#include "orxFunctions/fitting/kernels/power_sums_impl.h"

namespace orx {

bool addPowerBlockAvx2(const PowerBlock& block, const double* samples, std::size_t count, bool powersKnown,
                       double* terms, double* sums);

bool addPowerBlockAvx2(const PowerBlock& block, const double* samples, std::size_t count, bool powersKnown,
                       double* terms, double* sums) {
    return ORX_SIMD::addPowerBlock(block, samples, count, powersKnown, terms, sums);
}

}  // namespace orx
