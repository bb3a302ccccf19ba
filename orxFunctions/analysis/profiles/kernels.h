// The inner loops of the grey profiles. Every instruction set gives the same bits.
#ifndef ORXFUNCTIONS_ANALYSIS_PROFILES_KERNELS_H
#define ORXFUNCTIONS_ANALYSIS_PROFILES_KERNELS_H

#include <cstddef>
#include <cstdint>

namespace orx::profile_kernels {

// Points (startX + stepX * (i - lead), startY + stepY * (i - lead)) for i from 0, in pixels. All that is read
// for one lies in the image: a pixel before it and two behind, in columns and rows.
struct PointRow {
    double startX;
    double startY;
    double stepX;
    double stepY;
    double lead;
};

struct Kernels {
    // sums[i] += the level at point i, by cubic convolution. `stride` of the rows of pixels, in pixels.
    void (*addBytes)(const std::uint8_t* pixels, std::ptrdiff_t stride, const PointRow& points,
                     std::size_t count, double* sums);
    void (*addWords)(const std::uint16_t* pixels, std::ptrdiff_t stride, const PointRow& points,
                     std::size_t count, double* sums);
};

extern const Kernels kAvx2;

const Kernels& chosen();

}  // namespace orx::profile_kernels

#endif
