// The loops of search/kernels.h, compiled once for each instruction set.
#ifndef ORXFUNCTIONS_MATCHING_SEARCH_KERNELS_IMPL_H
#define ORXFUNCTIONS_MATCHING_SEARCH_KERNELS_IMPL_H

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "orxFunctions/matching/search/kernels.h"
#include "orxFunctions/platform/simd/byte_vectors.h"
#include "orxFunctions/platform/simd/narrow_vectors.h"

namespace orx::search_kernels::ORX_SIMD {

using namespace orx::ORX_SIMD;

inline std::int32_t larger(std::int32_t a, std::int32_t b) { return a < b ? b : a; }

// Across an edge the magnitude is a Gaussian of the distance, near enough: compared with the largest of the
// neighbours it tells whether the crest is near, whatever the contrast. 1 on the crest, 0 a good pixel off.
inline float nearness(float magnitude, float largest) {
    const float share = 1.3F * (magnitude / largest) - 0.3F;
    return share < 0.0F ? 0.0F : share;
}

inline std::int16_t rounded(float value) {
    return static_cast<std::int16_t>(static_cast<std::int32_t>(value + (value < 0.0F ? -0.5F : 0.5F)));
}

// Compilers make vectors of these plain loops.
inline void fieldRow(const std::int16_t* gradient, const std::int32_t* above, const std::int32_t* centre,
                     const std::int32_t* below, std::size_t width, float least, std::int16_t* out) {
    constexpr std::size_t kChunk = 64;
    std::int32_t highest[kChunk + 2];
    float length[kChunk];
    for (std::size_t from = 0; from < width; from += kChunk) {
        const std::size_t count = width - from < kChunk ? width - from : kChunk;
        for (std::size_t i = 0; i < count + 2; ++i) {
            const std::int32_t outer = larger(*(above + from + i - 1), *(below + from + i - 1));
            highest[i] = larger(outer, *(centre + from + i - 1));
        }
        for (std::size_t i = 0; i < count; ++i) {
            const std::int32_t largest = larger(larger(highest[i], highest[i + 1]), highest[i + 2]);
            const auto magnitude = static_cast<float>(centre[from + i]);
            const float safe = magnitude < least ? least : magnitude;
            const float longest = static_cast<float>(largest) < safe ? safe : static_cast<float>(largest);
            const float unit = nearness(safe, longest) * static_cast<float>(kFieldUnit) / std::sqrt(safe);
            length[i] = magnitude < least ? 0.0F : unit;
        }
        for (std::size_t i = 0; i < count; ++i) {
            out[2 * (from + i)] = rounded(static_cast<float>(gradient[2 * (from + i)]) * length[i]);
            out[2 * (from + i) + 1] = rounded(static_cast<float>(gradient[2 * (from + i) + 1]) * length[i]);
        }
    }
}

inline void responseRow(const std::int16_t* field, std::int32_t normal, std::size_t width,
                        std::uint8_t* along, std::uint8_t* against) {
    constexpr std::size_t kChunk = 64;
    constexpr int kShift = 12;  // from kFieldUnit squared to kBestResponse
    std::int32_t products[kChunk];
    for (std::size_t from = 0; from < width; from += kChunk) {
        const std::size_t count = width - from < kChunk ? width - from : kChunk;
        for (std::size_t i = 0; i < count; i += VecI::kLanes) {
            pairProducts(VecI::loadPairs(field + 2 * (from + i)), VecI::all(normal)).store(products + i);
        }
        for (std::size_t i = 0; i < count; ++i) {
            const std::int32_t rounded = (larger(products[i], 0) + (1 << (kShift - 1))) >> kShift;
            along[from + i] = static_cast<std::uint8_t>(rounded);
        }
        for (std::size_t i = 0; i < count; ++i) {
            const std::int32_t rounded = (larger(-products[i], 0) + (1 << (kShift - 1))) >> kShift;
            against[from + i] = static_cast<std::uint8_t>(rounded);
        }
    }
}

// Sums of a row's block of columns, kept in registers.
struct BlockSums {
    static constexpr std::size_t kParts = kBlockColumns / VecB::kLanes;
    ByteSums parts[kParts];

    void add(const std::uint8_t* responses, const std::int32_t* offsets, std::size_t begin, std::size_t end) {
        for (std::size_t from = begin; from < end; from += kByteSum) {
            const std::size_t to = end - from < kByteSum ? end : from + kByteSum;
            VecB bytes[kParts];
            for (VecB& part : bytes) part = VecB::all(0);
            for (std::size_t i = from; i < to; ++i) {
                const std::uint8_t* row = responses + offsets[i];
                for (std::size_t k = 0; k < kParts; ++k) {
                    bytes[k] = bytes[k] + VecB::load(row + k * VecB::kLanes);
                }
            }
            for (std::size_t k = 0; k < kParts; ++k) parts[k].add(bytes[k]);
        }
    }

    // Returns the largest.
    std::int32_t store(std::int16_t* out) const {
        for (std::size_t k = 0; k < kParts; ++k) parts[k].store(out + k * VecB::kLanes);
        std::int16_t best = 0;
        for (std::size_t i = 0; i < kBlockColumns; ++i) best = best < out[i] ? out[i] : best;
        return best;
    }
};

inline std::int32_t sumRows(const std::uint8_t* responses, std::ptrdiff_t step, std::size_t rows,
                            const ShiftedRows& shifts, std::int16_t* out) {
    std::int32_t best = 0;
    for (std::size_t r = 0; r < rows; ++r, responses += step, out += kBlockColumns) {
        BlockSums sums;
        for (ByteSums& part : sums.parts) part = ByteSums::zero();
        sums.add(responses, shifts.offsets, 0, shifts.first);
        if (sums.store(out) < shifts.leastFirst) {
            for (std::size_t i = 0; i < kBlockColumns; ++i) out[i] = 0;
            continue;
        }
        sums.add(responses, shifts.offsets, shifts.first, shifts.count);
        best = larger(best, sums.store(out));
    }
    return best;
}

inline VecI magnitudeOf(VecI a) { return (a ^ shiftRightSigned<31>(a)) + shiftRightUnsigned<31>(a); }

struct Signed {
    static VecI of(VecI a) { return a; }
};
struct Magnitude {
    static VecI of(VecI a) { return magnitudeOf(a); }
};
// What is below 0 counts as 0.
struct Positive {
    static VecI of(VecI a) { return andNot(shiftRightSigned<31>(a), a); }
};

template <class Part>
void addWindows(const std::int16_t* field, std::ptrdiff_t step, const PlacedPoints& points,
                std::int32_t* sums) {
    constexpr std::size_t kParts = kWindowColumns / VecI::kLanes;
    VecI total[kWindowRows][kParts];
    for (std::size_t r = 0; r < kWindowRows; ++r) {
        for (std::size_t k = 0; k < kParts; ++k) {
            total[r][k] = VecI::load(sums + r * kWindowColumns + k * VecI::kLanes);
        }
    }
    for (std::size_t i = 0; i < points.count; ++i) {
        const VecI normal = VecI::all(points.normals[i]);
        const std::int16_t* row = field + points.offsets[i];
        for (std::size_t r = 0; r < kWindowRows; ++r) {
            for (std::size_t k = 0; k < kParts; ++k) {
                const VecI product = pairProducts(VecI::loadPairs(row + 2 * k * VecI::kLanes), normal);
                total[r][k] = total[r][k] + Part::of(product);
            }
            row += step;
        }
    }
    for (std::size_t r = 0; r < kWindowRows; ++r) {
        for (std::size_t k = 0; k < kParts; ++k) {
            total[r][k].store(sums + r * kWindowColumns + k * VecI::kLanes);
        }
    }
}

inline void windowSums(const std::int16_t* field, std::ptrdiff_t step, const PlacedPoints& points,
                       std::int32_t* sums) {
    addWindows<Signed>(field, step, points, sums);
}

inline void windowMagnitudes(const std::int16_t* field, std::ptrdiff_t step, const PlacedPoints& points,
                             std::int32_t* sums) {
    addWindows<Magnitude>(field, step, points, sums);
}

inline void windowPositives(const std::int16_t* field, std::ptrdiff_t step, const PlacedPoints& points,
                            std::int32_t* sums) {
    addWindows<Positive>(field, step, points, sums);
}

inline constexpr Kernels kKernels = {fieldRow,   responseRow,      sumRows,
                                     windowSums, windowMagnitudes, windowPositives};

}  // namespace orx::search_kernels::ORX_SIMD

#endif
