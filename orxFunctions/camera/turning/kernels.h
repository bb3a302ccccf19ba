// The inner loop of turning images (see platform/simd/choose_kernels.h).
#ifndef ORXFUNCTIONS_CAMERA_TURNING_KERNELS_H
#define ORXFUNCTIONS_CAMERA_TURNING_KERNELS_H

#include <cstddef>
#include <cstdint>

namespace orx::turning_kernels {

struct Kernels {
    // to[i] = from[count - 1 - i] for i < count; the two share no bytes.
    void (*reverseBytes)(const std::uint8_t* from, std::size_t count, std::uint8_t* to);
};

extern const Kernels kAvx2;

const Kernels& chosen();

}  // namespace orx::turning_kernels

#endif
