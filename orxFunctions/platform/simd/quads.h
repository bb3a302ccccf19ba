// Four doubles side by side, of as many vectors as the instruction set needs for them: sums over quads have
// the same bits with each. The rules of simd/vectors.h hold here too.
#ifndef ORXFUNCTIONS_PLATFORM_SIMD_QUADS_H
#define ORXFUNCTIONS_PLATFORM_SIMD_QUADS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "orxFunctions/platform/simd/vectors.h"

namespace orx::ORX_SIMD {

constexpr std::size_t kQuad = 4;
constexpr std::size_t kQuadParts = kQuad / VecD::kLanes;

struct QuadMask {
    MaskD part[kQuadParts];
};

struct Quad {
    VecD part[kQuadParts];

    static Quad all(double value) {
        Quad result;
        for (VecD& p : result.part) p = VecD::all(value);
        return result;
    }
    static Quad load(const double* from) {
        Quad result;
        for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = VecD::load(from + i * VecD::kLanes);
        return result;
    }
    void store(double* to) const {
        for (std::size_t i = 0; i < kQuadParts; ++i) part[i].store(to + i * VecD::kLanes);
    }
};

template <class Operation>
inline Quad eachPart(const Quad& a, const Quad& b, Operation operation) {
    Quad result;
    for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = operation(a.part[i], b.part[i]);
    return result;
}
inline Quad operator+(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return p + q; });
}
inline Quad operator-(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return p - q; });
}
inline Quad operator*(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return p * q; });
}
inline Quad operator/(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return p / q; });
}
inline Quad min(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return min(p, q); });
}
inline Quad max(const Quad& a, const Quad& b) {
    return eachPart(a, b, [](VecD p, VecD q) { return max(p, q); });
}
inline Quad sqrt(const Quad& a) {
    Quad result;
    for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = sqrt(a.part[i]);
    return result;
}

template <class Operation>
inline QuadMask eachMask(const Quad& a, const Quad& b, Operation operation) {
    QuadMask result;
    for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = operation(a.part[i], b.part[i]);
    return result;
}
inline QuadMask operator<(const Quad& a, const Quad& b) {
    return eachMask(a, b, [](VecD p, VecD q) { return p < q; });
}
inline QuadMask operator<=(const Quad& a, const Quad& b) {
    return eachMask(a, b, [](VecD p, VecD q) { return p <= q; });
}
inline QuadMask operator&(const QuadMask& a, const QuadMask& b) {
    QuadMask result;
    for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = a.part[i] & b.part[i];
    return result;
}
inline Quad select(const QuadMask& mask, const Quad& a, const Quad& b) {
    Quad result;
    for (std::size_t i = 0; i < kQuadParts; ++i) result.part[i] = select(mask.part[i], a.part[i], b.part[i]);
    return result;
}

inline double sum(const Quad& a) {
    double lanes[kQuad];
    a.store(lanes);
    return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
}
inline double smallestOf(const Quad& a) {
    double lanes[kQuad];
    a.store(lanes);
    double smallest = lanes[0];
    for (const double lane : lanes) smallest = lane < smallest ? lane : smallest;
    return smallest;
}
inline double largestOf(const Quad& a) {
    double lanes[kQuad];
    a.store(lanes);
    double largest = lanes[0];
    for (const double lane : lanes) largest = largest < lane ? lane : largest;
    return largest;
}

// columns[k] = element k of each row.
inline void transpose(const Quad (&rows)[kQuad], Quad (&columns)[kQuad]) {
    double cells[kQuad * kQuad];
    for (std::size_t i = 0; i < kQuad; ++i) rows[i].store(cells + i * kQuad);
    for (std::size_t part = 0; part < kQuadParts; ++part) {
        for (std::size_t from = 0; from < kQuad; from += VecD::kLanes) {
            VecD some[VecD::kLanes];
            loadTransposed(cells + part * VecD::kLanes * kQuad + from, kQuad, some);
            for (std::size_t k = 0; k < VecD::kLanes; ++k) columns[from + k].part[part] = some[k];
        }
    }
}

#if defined(__SSE2__) || defined(_M_X64)

// From four 32-bit integers.
inline Quad quadOf(__m128i integers) {
#if defined(__AVX2__)
    return {{{_mm256_cvtepi32_pd(integers)}}};
#else
    return {{{_mm_cvtepi32_pd(integers)}, {_mm_cvtepi32_pd(_mm_unpackhi_epi64(integers, integers))}}};
#endif
}

inline __m128i fourBytes(const std::uint8_t* from) {
    std::int32_t bytes = 0;
    std::memcpy(&bytes, from, sizeof bytes);
    return _mm_cvtsi32_si128(bytes);
}

// columns[k] = element k of each of four rows of pixels, `stride` apart.
inline void loadColumns(const std::uint8_t* rows, std::ptrdiff_t stride, Quad (&columns)[kQuad]) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i upper = _mm_unpacklo_epi8(fourBytes(rows), fourBytes(rows + stride));
    const __m128i lower = _mm_unpacklo_epi8(fourBytes(rows + 2 * stride), fourBytes(rows + 3 * stride));
    const __m128i all = _mm_unpacklo_epi16(upper, lower);
    const __m128i left = _mm_unpacklo_epi8(all, zero);
    const __m128i right = _mm_unpackhi_epi8(all, zero);
    columns[0] = quadOf(_mm_unpacklo_epi16(left, zero));
    columns[1] = quadOf(_mm_unpackhi_epi16(left, zero));
    columns[2] = quadOf(_mm_unpacklo_epi16(right, zero));
    columns[3] = quadOf(_mm_unpackhi_epi16(right, zero));
}
inline void loadColumns(const std::uint16_t* rows, std::ptrdiff_t stride, Quad (&columns)[kQuad]) {
    const auto row = [&](std::ptrdiff_t i) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(rows + i * stride));
    };
    const __m128i zero = _mm_setzero_si128();
    const __m128i upper = _mm_unpacklo_epi16(row(0), row(1));
    const __m128i lower = _mm_unpacklo_epi16(row(2), row(3));
    const __m128i left = _mm_unpacklo_epi32(upper, lower);
    const __m128i right = _mm_unpackhi_epi32(upper, lower);
    columns[0] = quadOf(_mm_unpacklo_epi16(left, zero));
    columns[1] = quadOf(_mm_unpackhi_epi16(left, zero));
    columns[2] = quadOf(_mm_unpacklo_epi16(right, zero));
    columns[3] = quadOf(_mm_unpackhi_epi16(right, zero));
}

#else

template <class Pixel>
inline void loadColumns(const Pixel* rows, std::ptrdiff_t stride, Quad (&columns)[kQuad]) {
    for (std::size_t k = 0; k < kQuad; ++k) {
        double column[kQuad];
        for (std::size_t i = 0; i < kQuad; ++i)
            column[i] = static_cast<double>(
                rows[static_cast<std::ptrdiff_t>(i) * stride + static_cast<std::ptrdiff_t>(k)]);
        columns[k] = Quad::load(column);
    }
}

#endif

}  // namespace orx::ORX_SIMD

#endif
