// Vectors of unsigned bytes for kernels over image rows, and sums of them in 16 bits; the rules of
// simd/vectors.h hold here too. Arithmetic wraps around, per lane.
#ifndef ORXFUNCTIONS_PLATFORM_SIMD_BYTE_VECTORS_H
#define ORXFUNCTIONS_PLATFORM_SIMD_BYTE_VECTORS_H

#include "orxFunctions/platform/simd/vectors.h"

namespace orx::ORX_SIMD {

#if defined(__AVX2__)

struct VecB {
    static constexpr std::size_t kLanes = 32;
    __m256i v;

    static VecB all(std::uint8_t value) { return {_mm256_set1_epi8(static_cast<char>(value))}; }
    static VecB load(const std::uint8_t* p) {
        return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))};
    }
    void store(std::uint8_t* p) const { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
};
inline VecB operator+(VecB a, VecB b) { return {_mm256_add_epi8(a.v, b.v)}; }
inline VecB operator&(VecB a, VecB b) { return {_mm256_and_si256(a.v, b.v)}; }
inline VecB operator|(VecB a, VecB b) { return {_mm256_or_si256(a.v, b.v)}; }
inline VecB max(VecB a, VecB b) { return {_mm256_max_epu8(a.v, b.v)}; }
// All bits of a lane where it is 0, none elsewhere.
inline VecB isZero(VecB a) { return {_mm256_cmpeq_epi8(a.v, _mm256_setzero_si256())}; }
// ~a & b
inline VecB andNot(VecB a, VecB b) { return {_mm256_andnot_si256(a.v, b.v)}; }

// The last lane first.
inline VecB reversed(VecB a) {
    const __m256i order =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
    return {_mm256_permute4x64_epi64(_mm256_shuffle_epi8(a.v, order), _MM_SHUFFLE(1, 0, 3, 2))};
}

// Sums in 16 bits for each lane of a VecB.
struct ByteSums {
    __m256i low;
    __m256i high;

    static ByteSums zero() { return {_mm256_setzero_si256(), _mm256_setzero_si256()}; }
    void add(VecB a) {
        low = _mm256_add_epi16(low, _mm256_unpacklo_epi8(a.v, _mm256_setzero_si256()));
        high = _mm256_add_epi16(high, _mm256_unpackhi_epi8(a.v, _mm256_setzero_si256()));
    }
    void store(std::int16_t* p) const {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_permute2x128_si256(low, high, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 16), _mm256_permute2x128_si256(low, high, 0x31));
    }
};

#elif defined(__SSE2__) || defined(_M_X64)

struct VecB {
    static constexpr std::size_t kLanes = 16;
    __m128i v;

    static VecB all(std::uint8_t value) { return {_mm_set1_epi8(static_cast<char>(value))}; }
    static VecB load(const std::uint8_t* p) { return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))}; }
    void store(std::uint8_t* p) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
};
inline VecB operator+(VecB a, VecB b) { return {_mm_add_epi8(a.v, b.v)}; }
inline VecB operator&(VecB a, VecB b) { return {_mm_and_si128(a.v, b.v)}; }
inline VecB operator|(VecB a, VecB b) { return {_mm_or_si128(a.v, b.v)}; }
inline VecB max(VecB a, VecB b) { return {_mm_max_epu8(a.v, b.v)}; }
inline VecB isZero(VecB a) { return {_mm_cmpeq_epi8(a.v, _mm_setzero_si128())}; }
inline VecB andNot(VecB a, VecB b) { return {_mm_andnot_si128(a.v, b.v)}; }
inline VecB reversed(VecB a) {
    const __m128i swapped = _mm_or_si128(_mm_slli_epi16(a.v, 8), _mm_srli_epi16(a.v, 8));
    const __m128i low = _mm_shufflelo_epi16(swapped, _MM_SHUFFLE(0, 1, 2, 3));
    const __m128i both = _mm_shufflehi_epi16(low, _MM_SHUFFLE(0, 1, 2, 3));
    return {_mm_shuffle_epi32(both, _MM_SHUFFLE(1, 0, 3, 2))};
}

struct ByteSums {
    __m128i low;
    __m128i high;

    static ByteSums zero() { return {_mm_setzero_si128(), _mm_setzero_si128()}; }
    void add(VecB a) {
        low = _mm_add_epi16(low, _mm_unpacklo_epi8(a.v, _mm_setzero_si128()));
        high = _mm_add_epi16(high, _mm_unpackhi_epi8(a.v, _mm_setzero_si128()));
    }
    void store(std::int16_t* p) const {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), low);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 8), high);
    }
};

#else

struct VecB {
    static constexpr std::size_t kLanes = 1;
    std::uint8_t v;

    static VecB all(std::uint8_t value) { return {value}; }
    static VecB load(const std::uint8_t* p) { return {*p}; }
    void store(std::uint8_t* p) const { *p = v; }
};
inline VecB operator+(VecB a, VecB b) { return {static_cast<std::uint8_t>(a.v + b.v)}; }
inline VecB operator&(VecB a, VecB b) { return {static_cast<std::uint8_t>(a.v & b.v)}; }
inline VecB operator|(VecB a, VecB b) { return {static_cast<std::uint8_t>(a.v | b.v)}; }
inline VecB max(VecB a, VecB b) { return a.v < b.v ? b : a; }
inline VecB isZero(VecB a) { return {static_cast<std::uint8_t>(a.v == 0 ? 255 : 0)}; }
inline VecB andNot(VecB a, VecB b) { return {static_cast<std::uint8_t>(~a.v & b.v)}; }
inline VecB reversed(VecB a) { return a; }

struct ByteSums {
    std::int16_t sum;

    static ByteSums zero() { return {0}; }
    void add(VecB a) { sum = static_cast<std::int16_t>(sum + a.v); }
    void store(std::int16_t* p) const { *p = sum; }
};

#endif

}  // namespace orx::ORX_SIMD

#endif
