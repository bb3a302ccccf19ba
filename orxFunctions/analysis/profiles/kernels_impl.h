// The loops of profiles/kernels.h, compiled once for each instruction set.
#ifndef ORXFUNCTIONS_ANALYSIS_PROFILES_KERNELS_IMPL_H
#define ORXFUNCTIONS_ANALYSIS_PROFILES_KERNELS_IMPL_H

#include "orxFunctions/analysis/profiles/kernels.h"
#include "orxFunctions/platform/simd/quads.h"

namespace orx::profile_kernels::ORX_SIMD {

using namespace orx::ORX_SIMD;

constexpr std::size_t kChunk = 32;  // a multiple of kQuad

// Some points: the pixel before each of them, and the shares of the four pixels around it that lie side by
// side (analysis/caliper_profile.cpp), on top of each other.
struct Chunk {
    std::int32_t column[kChunk];
    std::int32_t row[kChunk];
    double fraction[kChunk];
    double across[4][kChunk];
    double down[4][kChunk];
};

// Keys' cubic. Compilers make vectors of these plain loops.
inline void weigh(const double* fraction, double (&weights)[4][kChunk]) {
    for (std::size_t i = 0; i < kChunk; ++i) {
        const double t = fraction[i];
        weights[0][i] = t * (-0.5 + t * (1 - 0.5 * t));
        weights[1][i] = 1 + t * t * (-2.5 + 1.5 * t);
        weights[2][i] = t * (0.5 + t * (2 - 1.5 * t));
        weights[3][i] = t * t * (-0.5 + 0.5 * t);
    }
}

inline void split(double start, double step, const double* places, std::int32_t* whole, double* fraction) {
    for (std::size_t i = 0; i < kChunk; ++i) {
        const double at = start + step * places[i];
        whole[i] = static_cast<std::int32_t>(at);
        fraction[i] = at - whole[i];
    }
}

// Of `count` points from `first` on; after them the last one again.
inline void prepare(const PointRow& points, std::size_t first, std::size_t count, Chunk& chunk) {
    double places[kChunk];
    for (std::size_t i = 0; i < kChunk; ++i) {
        const std::size_t k = first + (i < count ? i : count - 1);
        places[i] = static_cast<double>(static_cast<std::int32_t>(k)) - points.lead;
    }
    split(points.startX, points.stepX, places, chunk.column, chunk.fraction);
    weigh(chunk.fraction, chunk.across);
    split(points.startY, points.stepY, places, chunk.row, chunk.fraction);
    weigh(chunk.fraction, chunk.down);
}

template <class Pixel>
inline void addLevels(const Pixel* pixels, std::ptrdiff_t stride, const PointRow& points, std::size_t count,
                      double* sums) {
    Chunk chunk;
    for (std::size_t from = 0; from < count; from += kChunk) {
        const std::size_t some = count - from < kChunk ? count - from : kChunk;
        prepare(points, from, some, chunk);
        for (std::size_t i = 0; i < some; i += kQuad) {
            Quad rows[kQuad];  // of each of four points, the levels of its four rows
            for (std::size_t k = 0; k < kQuad; ++k) {
                const std::size_t point = i + k;
                Quad columns[kQuad];
                loadColumns(pixels + (chunk.row[point] - 1) * stride + chunk.column[point] - 1, stride,
                            columns);
                rows[k] = Quad::all(chunk.across[0][point]) * columns[0] +
                          Quad::all(chunk.across[1][point]) * columns[1] +
                          Quad::all(chunk.across[2][point]) * columns[2] +
                          Quad::all(chunk.across[3][point]) * columns[3];
            }
            Quad levels[kQuad];
            transpose(rows, levels);
            const Quad level =
                Quad::load(chunk.down[0] + i) * levels[0] + Quad::load(chunk.down[1] + i) * levels[1] +
                Quad::load(chunk.down[2] + i) * levels[2] + Quad::load(chunk.down[3] + i) * levels[3];
            if (i + kQuad <= some) {
                (Quad::load(sums + from + i) + level).store(sums + from + i);
            } else {
                double last[kQuad];
                level.store(last);
                for (std::size_t k = 0; i + k < some; ++k) sums[from + i + k] += last[k];
            }
        }
    }
}

inline void addBytes(const std::uint8_t* pixels, std::ptrdiff_t stride, const PointRow& points,
                     std::size_t count, double* sums) {
    addLevels(pixels, stride, points, count, sums);
}

inline void addWords(const std::uint16_t* pixels, std::ptrdiff_t stride, const PointRow& points,
                     std::size_t count, double* sums) {
    addLevels(pixels, stride, points, count, sums);
}

inline constexpr Kernels kKernels = {addBytes, addWords};

}  // namespace orx::profile_kernels::ORX_SIMD

#endif
