// The loop of turning/kernels.h, compiled once for each instruction set.
#ifndef ORXFUNCTIONS_CAMERA_TURNING_KERNELS_IMPL_H
#define ORXFUNCTIONS_CAMERA_TURNING_KERNELS_IMPL_H

#include <cstddef>
#include <cstdint>

#include "orxFunctions/camera/turning/kernels.h"
#include "orxFunctions/platform/simd/byte_vectors.h"

namespace orx::turning_kernels::ORX_SIMD {

using namespace orx::ORX_SIMD;

inline void reverseBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    constexpr std::size_t kLanes = VecB::kLanes;
    if (count < kLanes) {
        for (std::size_t i = 0; i < count; ++i) to[i] = from[count - 1 - i];
        return;
    }
    std::size_t i = 0;
    for (; i + kLanes <= count; i += kLanes) reversed(VecB::load(from + count - kLanes - i)).store(to + i);
    // The last vector once more, ending with the row.
    reversed(VecB::load(from)).store(to + count - kLanes);
}

inline constexpr Kernels kKernels = {reverseBytes};

}  // namespace orx::turning_kernels::ORX_SIMD

#endif
