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

// The bin of a direction: 0 about the x axis, 4 about the y axis.
inline std::int32_t binOf(std::int32_t x, std::int32_t y) {
    const std::int32_t ax = x < 0 ? -x : x;
    const std::int32_t ay = y < 0 ? -y : y;
    // Tangents of 11.25, 33.75, 56.25 and 78.75 degrees in 1/256.
    const std::int32_t quarter = (256 * ay > 51 * ax ? 1 : 0) + (256 * ay > 171 * ax ? 1 : 0) +
                                 (256 * ay > 383 * ax ? 1 : 0) + (256 * ay > 1287 * ax ? 1 : 0);
    const std::int32_t half = x < 0 ? 8 - quarter : quarter;
    return (y < 0 ? 16 - half : half) & 15;
}

inline void binRow(const std::int16_t* field, std::size_t width, std::uint8_t* low, std::uint8_t* high) {
    constexpr std::int32_t kNear = kFieldUnit * kFieldUnit / 4;
    for (std::size_t i = 0; i < width; ++i) {
        const std::int32_t x = field[2 * i];
        const std::int32_t y = field[2 * i + 1];
        const std::int32_t bit = x * x + y * y < kNear ? 0 : 1 << binOf(x, y);
        low[i] = static_cast<std::uint8_t>(bit & 255);
        high[i] = static_cast<std::uint8_t>(bit >> 8);
    }
}

inline VecB aroundColumn(const std::uint8_t* row) {
    return VecB::load(row - 1) | VecB::load(row) | VecB::load(row + 1);
}

inline void spreadRow(const std::uint8_t* above, const std::uint8_t* centre, const std::uint8_t* below,
                      std::size_t width, std::uint8_t* out) {
    for (std::size_t i = 0; i < width; i += VecB::kLanes) {
        (aroundColumn(above + i) | aroundColumn(centre + i) | aroundColumn(below + i)).store(out + i);
    }
}

inline void responseRow(const std::uint8_t* low, const std::uint8_t* high, const ResponseRanks& ranks,
                        std::size_t width, std::uint8_t* out) {
    for (std::size_t i = 0; i < width; i += VecB::kLanes) {
        const VecB lowBits = VecB::load(low + i);
        const VecB highBits = VecB::load(high + i);
        VecB best = VecB::all(0);
        for (std::size_t k = 0; k < kRanks; ++k) {
            const VecB hit = (lowBits & VecB::all(ranks.low[k])) | (highBits & VecB::all(ranks.high[k]));
            best = max(best, andNot(isZero(hit), VecB::all(ranks.value[k])));
        }
        best.store(out + i);
    }
}

// Sums of a row's block of columns, kept in registers.
inline void sumRow(const std::uint8_t* responses, const std::int32_t* offsets, std::size_t count,
                   std::int16_t* out) {
    constexpr std::size_t kParts = kBlockColumns / VecB::kLanes;
    ByteSums sums[kParts];
    for (ByteSums& sum : sums) sum = ByteSums::zero();
    for (std::size_t from = 0; from < count; from += kByteSum) {
        const std::size_t to = count - from < kByteSum ? count : from + kByteSum;
        VecB bytes[kParts];
        for (VecB& part : bytes) part = VecB::all(0);
        for (std::size_t i = from; i < to; ++i) {
            const std::uint8_t* row = responses + offsets[i];
            for (std::size_t k = 0; k < kParts; ++k) {
                bytes[k] = bytes[k] + VecB::load(row + k * VecB::kLanes);
            }
        }
        for (std::size_t k = 0; k < kParts; ++k) sums[k].add(bytes[k]);
    }
    for (std::size_t k = 0; k < kParts; ++k) sums[k].store(out + k * VecB::kLanes);
}

inline std::int32_t sumRows(const std::uint8_t* responses, std::ptrdiff_t step, std::size_t rows,
                            const std::int32_t* offsets, std::size_t count, std::int16_t* out) {
    for (std::size_t r = 0; r < rows; ++r) {
        sumRow(responses + static_cast<std::ptrdiff_t>(r) * step, offsets, count, out + r * kBlockColumns);
    }
    std::int16_t best = 0;
    for (std::size_t i = 0; i < rows * kBlockColumns; ++i) best = best < out[i] ? out[i] : best;
    return best;
}

inline VecI magnitudeOf(VecI a) { return (a ^ shiftRightSigned<31>(a)) + shiftRightUnsigned<31>(a); }

template <bool Magnitudes>
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
                total[r][k] = total[r][k] + (Magnitudes ? magnitudeOf(product) : product);
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
    addWindows<false>(field, step, points, sums);
}

inline void windowMagnitudes(const std::int16_t* field, std::ptrdiff_t step, const PlacedPoints& points,
                             std::int32_t* sums) {
    addWindows<true>(field, step, points, sums);
}

inline constexpr Kernels kKernels = {fieldRow, binRow,     spreadRow,       responseRow,
                                     sumRows,  windowSums, windowMagnitudes};

}  // namespace orx::search_kernels::ORX_SIMD

#endif
