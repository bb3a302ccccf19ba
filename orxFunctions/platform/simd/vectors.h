// Vectors of doubles and of 32-bit integers for kernels over points.
//
// A kernel is written once against this header, inside its family's `namespace ORX_SIMD`, and compiled once
// for each instruction set (see simd/choose_kernels.h). Everything here lives in a namespace named after the
// instruction set, so that two builds share no inline function: the linker would keep only one, and AVX2 code
// could run on a processor without it. Plain code may use these vectors, too, at the baseline's width.
//
// Each operation does per lane what the plain expression does, in IEEE double precision; no operation is
// fused or approximated, so that a vector kernel gives the same bits as a plain loop.
#ifndef ORXFUNCTIONS_PLATFORM_SIMD_VECTORS_H
#define ORXFUNCTIONS_PLATFORM_SIMD_VECTORS_H

// Visual C++ before 17.0 fuses a product and a sum under /fp:precise wherever /arch:AVX2 lets it.
#if defined(_MSC_VER) && !defined(__clang__)
#pragma fp_contract(off)
#endif

#include <cmath>
#include <cstddef>
#include <cstdint>

#if defined(__AVX2__)
#include <immintrin.h>
#define ORX_SIMD simd_avx2
#elif defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define ORX_SIMD simd_sse2
#else
#define ORX_SIMD simd_plain
#endif

namespace orx::ORX_SIMD {

#if defined(__AVX2__)

// The outcome of a comparison, lane by lane.
struct MaskD {
    __m256d bits;
    // Bit i is set when lane i is.
    unsigned lanes() const { return static_cast<unsigned>(_mm256_movemask_pd(bits)); }
};
inline MaskD operator&(MaskD a, MaskD b) { return {_mm256_and_pd(a.bits, b.bits)}; }
inline MaskD operator|(MaskD a, MaskD b) { return {_mm256_or_pd(a.bits, b.bits)}; }

struct VecD {
    static constexpr std::size_t kLanes = 4;
    __m256d v;

    static VecD all(double value) { return {_mm256_set1_pd(value)}; }
    static VecD load(const double* p) { return {_mm256_loadu_pd(p)}; }
    static VecD load(const std::int32_t* p) {
        return {_mm256_cvtepi32_pd(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
    }
    void store(double* p) const { _mm256_storeu_pd(p, v); }
};
inline VecD operator+(VecD a, VecD b) { return {_mm256_add_pd(a.v, b.v)}; }
inline VecD operator-(VecD a, VecD b) { return {_mm256_sub_pd(a.v, b.v)}; }
inline VecD operator*(VecD a, VecD b) { return {_mm256_mul_pd(a.v, b.v)}; }
inline VecD operator/(VecD a, VecD b) { return {_mm256_div_pd(a.v, b.v)}; }
inline VecD sqrt(VecD a) { return {_mm256_sqrt_pd(a.v)}; }
inline VecD abs(VecD a) { return {_mm256_andnot_pd(_mm256_set1_pd(-0.0), a.v)}; }
inline VecD min(VecD a, VecD b) { return {_mm256_min_pd(a.v, b.v)}; }
inline VecD max(VecD a, VecD b) { return {_mm256_max_pd(a.v, b.v)}; }
// As in C++ a comparison with not-a-number is false.
inline MaskD operator<(VecD a, VecD b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_LT_OQ)}; }
inline MaskD operator<=(VecD a, VecD b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_LE_OQ)}; }
// Lane by lane: mask ? a : b.
inline VecD select(MaskD mask, VecD a, VecD b) { return {_mm256_blendv_pd(b.v, a.v, mask.bits)}; }

// Counts the lanes that are set in the masks added to it.
class LaneCount {
  public:
    void add(MaskD mask) { sums_ = _mm256_sub_epi64(sums_, _mm256_castpd_si256(mask.bits)); }
    std::size_t total() const {
        const __m128i pair = _mm_add_epi64(_mm256_castsi256_si128(sums_), _mm256_extracti128_si256(sums_, 1));
        return static_cast<std::size_t>(_mm_cvtsi128_si64(pair) +
                                        _mm_cvtsi128_si64(_mm_unpackhi_epi64(pair, pair)));
    }

  private:
    __m256i sums_ = _mm256_setzero_si256();
};

// columns[k] = element k of each of kLanes rows, which begin `step` elements apart.
inline void loadTransposed(const double* rows, std::size_t step, VecD* columns) {
    const auto halves = [&](std::size_t column, std::size_t row) {
        return _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(rows + row * step + column)),
                                    _mm_loadu_pd(rows + (row + 2) * step + column), 1);
    };
    const __m256d low0 = halves(0, 0);
    const __m256d low1 = halves(0, 1);
    const __m256d high0 = halves(2, 0);
    const __m256d high1 = halves(2, 1);
    columns[0].v = _mm256_unpacklo_pd(low0, low1);
    columns[1].v = _mm256_unpackhi_pd(low0, low1);
    columns[2].v = _mm256_unpacklo_pd(high0, high1);
    columns[3].v = _mm256_unpackhi_pd(high0, high1);
}

// Reads kLanes points stored as x, y, x, y, ...
inline void loadPairs(const std::int32_t* xy, VecD& x, VecD& y) {
    const __m128 low = _mm_castsi128_ps(_mm_loadu_si128(reinterpret_cast<const __m128i*>(xy)));
    const __m128 high = _mm_castsi128_ps(_mm_loadu_si128(reinterpret_cast<const __m128i*>(xy + 4)));
    x.v = _mm256_cvtepi32_pd(_mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0))));
    y.v = _mm256_cvtepi32_pd(_mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))));
}
inline void loadPairs(const double* xy, VecD& x, VecD& y) {
    const __m256d low = _mm256_loadu_pd(xy);
    const __m256d high = _mm256_loadu_pd(xy + 4);
    const __m256d even = _mm256_permute2f128_pd(low, high, 0x20);
    const __m256d odd = _mm256_permute2f128_pd(low, high, 0x31);
    x.v = _mm256_unpacklo_pd(even, odd);
    y.v = _mm256_unpackhi_pd(even, odd);
}

#elif defined(__SSE2__) || defined(_M_X64)

struct MaskD {
    __m128d bits;
    unsigned lanes() const { return static_cast<unsigned>(_mm_movemask_pd(bits)); }
};
inline MaskD operator&(MaskD a, MaskD b) { return {_mm_and_pd(a.bits, b.bits)}; }
inline MaskD operator|(MaskD a, MaskD b) { return {_mm_or_pd(a.bits, b.bits)}; }

struct VecD {
    static constexpr std::size_t kLanes = 2;
    __m128d v;

    static VecD all(double value) { return {_mm_set1_pd(value)}; }
    static VecD load(const double* p) { return {_mm_loadu_pd(p)}; }
    static VecD load(const std::int32_t* p) {
        return {_mm_cvtepi32_pd(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)))};
    }
    void store(double* p) const { _mm_storeu_pd(p, v); }
};
inline VecD operator+(VecD a, VecD b) { return {_mm_add_pd(a.v, b.v)}; }
inline VecD operator-(VecD a, VecD b) { return {_mm_sub_pd(a.v, b.v)}; }
inline VecD operator*(VecD a, VecD b) { return {_mm_mul_pd(a.v, b.v)}; }
inline VecD operator/(VecD a, VecD b) { return {_mm_div_pd(a.v, b.v)}; }
inline VecD sqrt(VecD a) { return {_mm_sqrt_pd(a.v)}; }
inline VecD abs(VecD a) { return {_mm_andnot_pd(_mm_set1_pd(-0.0), a.v)}; }
inline VecD min(VecD a, VecD b) { return {_mm_min_pd(a.v, b.v)}; }
inline VecD max(VecD a, VecD b) { return {_mm_max_pd(a.v, b.v)}; }
inline MaskD operator<(VecD a, VecD b) { return {_mm_cmplt_pd(a.v, b.v)}; }
inline MaskD operator<=(VecD a, VecD b) { return {_mm_cmple_pd(a.v, b.v)}; }
inline VecD select(MaskD mask, VecD a, VecD b) {
    return {_mm_or_pd(_mm_and_pd(mask.bits, a.v), _mm_andnot_pd(mask.bits, b.v))};
}

class LaneCount {
  public:
    void add(MaskD mask) { sums_ = _mm_sub_epi64(sums_, _mm_castpd_si128(mask.bits)); }
    std::size_t total() const {
        return static_cast<std::size_t>(_mm_cvtsi128_si64(sums_) +
                                        _mm_cvtsi128_si64(_mm_unpackhi_epi64(sums_, sums_)));
    }

  private:
    __m128i sums_ = _mm_setzero_si128();
};

inline void loadTransposed(const double* rows, std::size_t step, VecD* columns) {
    const __m128d first = _mm_loadu_pd(rows);
    const __m128d second = _mm_loadu_pd(rows + step);
    columns[0].v = _mm_unpacklo_pd(first, second);
    columns[1].v = _mm_unpackhi_pd(first, second);
}

inline void loadPairs(const std::int32_t* xy, VecD& x, VecD& y) {
    const __m128i pairs = _mm_loadu_si128(reinterpret_cast<const __m128i*>(xy));
    x.v = _mm_cvtepi32_pd(_mm_shuffle_epi32(pairs, _MM_SHUFFLE(3, 1, 2, 0)));
    y.v = _mm_cvtepi32_pd(_mm_shuffle_epi32(pairs, _MM_SHUFFLE(2, 0, 3, 1)));
}
inline void loadPairs(const double* xy, VecD& x, VecD& y) {
    const __m128d first = _mm_loadu_pd(xy);
    const __m128d second = _mm_loadu_pd(xy + 2);
    x.v = _mm_unpacklo_pd(first, second);
    y.v = _mm_unpackhi_pd(first, second);
}

#else

struct MaskD {
    bool bits;
    unsigned lanes() const { return bits ? 1U : 0U; }
};
inline MaskD operator&(MaskD a, MaskD b) { return {a.bits && b.bits}; }
inline MaskD operator|(MaskD a, MaskD b) { return {a.bits || b.bits}; }

struct VecD {
    static constexpr std::size_t kLanes = 1;
    double v;

    static VecD all(double value) { return {value}; }
    static VecD load(const double* p) { return {*p}; }
    static VecD load(const std::int32_t* p) { return {static_cast<double>(*p)}; }
    void store(double* p) const { *p = v; }
};
inline VecD operator+(VecD a, VecD b) { return {a.v + b.v}; }
inline VecD operator-(VecD a, VecD b) { return {a.v - b.v}; }
inline VecD operator*(VecD a, VecD b) { return {a.v * b.v}; }
inline VecD operator/(VecD a, VecD b) { return {a.v / b.v}; }
inline VecD sqrt(VecD a) { return {std::sqrt(a.v)}; }
inline VecD abs(VecD a) { return {std::fabs(a.v)}; }
inline VecD min(VecD a, VecD b) { return a.v < b.v ? a : b; }
inline VecD max(VecD a, VecD b) { return b.v < a.v ? a : b; }
inline MaskD operator<(VecD a, VecD b) { return {a.v < b.v}; }
inline MaskD operator<=(VecD a, VecD b) { return {a.v <= b.v}; }
inline VecD select(MaskD mask, VecD a, VecD b) { return mask.bits ? a : b; }

class LaneCount {
  public:
    void add(MaskD mask) { total_ += mask.lanes(); }
    std::size_t total() const { return total_; }

  private:
    std::size_t total_ = 0;
};

inline void loadTransposed(const double* rows, std::size_t /*step*/, VecD* columns) { columns[0].v = *rows; }

inline void loadPairs(const std::int32_t* xy, VecD& x, VecD& y) {
    x.v = static_cast<double>(xy[0]);
    y.v = static_cast<double>(xy[1]);
}
inline void loadPairs(const double* xy, VecD& x, VecD& y) {
    x.v = xy[0];
    y.v = xy[1];
}

#endif

}  // namespace orx::ORX_SIMD

#endif
