// Vectors of 16-bit and 32-bit integers for kernels over image rows, and the ways between them and the
// doubles of simd/vectors.h; the rules of that header hold here too. Integer arithmetic wraps around, per
// lane.
#ifndef ORXFUNCTIONS_PLATFORM_SIMD_NARROW_VECTORS_H
#define ORXFUNCTIONS_PLATFORM_SIMD_NARROW_VECTORS_H

#include "orxFunctions/platform/simd/vectors.h"

#if defined(_MSC_VER)
#include <intrin.h>
#endif

namespace orx::ORX_SIMD {

// The number of the lowest set bit; `bits` must not be 0.
inline unsigned lowestBit(unsigned bits) {
#if defined(_MSC_VER)
    unsigned long index = 0;
    _BitScanForward(&index, bits);
    return index;
#else
    return static_cast<unsigned>(__builtin_ctz(bits));
#endif
}

#if defined(__AVX2__)

struct VecS {
    static constexpr std::size_t kLanes = 16;
    __m256i v;

    static VecS all(std::int16_t value) { return {_mm256_set1_epi16(value)}; }
    static VecS load(const std::int16_t* p) {
        return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))};
    }
    static VecS loadBytes(const std::uint8_t* p) {
        return {_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
    }
    void store(std::int16_t* p) const { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
};
inline VecS operator+(VecS a, VecS b) { return {_mm256_add_epi16(a.v, b.v)}; }
inline VecS operator-(VecS a, VecS b) { return {_mm256_sub_epi16(a.v, b.v)}; }
inline VecS operator*(VecS a, VecS b) { return {_mm256_mullo_epi16(a.v, b.v)}; }
inline VecS addSaturated(VecS a, VecS b) { return {_mm256_adds_epi16(a.v, b.v)}; }

// a0 b0 a1 b1 ...
inline void storeInterleaved(VecS a, VecS b, std::int16_t* p) {
    const __m256i low = _mm256_unpacklo_epi16(a.v, b.v);
    const __m256i high = _mm256_unpackhi_epi16(a.v, b.v);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_permute2x128_si256(low, high, 0x20));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 16), _mm256_permute2x128_si256(low, high, 0x31));
}

struct VecI {
    static constexpr std::size_t kLanes = 8;
    __m256i v;

    static VecI all(std::int32_t value) { return {_mm256_set1_epi32(value)}; }
    static VecI load(const std::int32_t* p) {
        return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))};
    }
    // Each lane holds the 16-bit pair p[2i] (low half), p[2i + 1] (high half).
    static VecI loadPairs(const std::int16_t* p) {
        return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))};
    }
    void store(std::int32_t* p) const { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
    // For the outcome of a comparison: bit i is set when lane i is.
    unsigned lanes() const { return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(v))); }
};
inline VecI operator+(VecI a, VecI b) { return {_mm256_add_epi32(a.v, b.v)}; }
inline VecI operator-(VecI a, VecI b) { return {_mm256_sub_epi32(a.v, b.v)}; }
inline VecI operator*(VecI a, VecI b) { return {_mm256_mullo_epi32(a.v, b.v)}; }
inline VecI min(VecI a, VecI b) { return {_mm256_min_epi32(a.v, b.v)}; }
inline VecI max(VecI a, VecI b) { return {_mm256_max_epi32(a.v, b.v)}; }
inline VecI operator&(VecI a, VecI b) { return {_mm256_and_si256(a.v, b.v)}; }
inline VecI operator|(VecI a, VecI b) { return {_mm256_or_si256(a.v, b.v)}; }
inline VecI operator^(VecI a, VecI b) { return {_mm256_xor_si256(a.v, b.v)}; }
// ~a & b
inline VecI andNot(VecI a, VecI b) { return {_mm256_andnot_si256(a.v, b.v)}; }
inline VecI operator>(VecI a, VecI b) { return {_mm256_cmpgt_epi32(a.v, b.v)}; }
template <int Count>
VecI shiftLeft(VecI a) {
    return {_mm256_slli_epi32(a.v, Count)};
}
template <int Count>
VecI shiftRightUnsigned(VecI a) {
    return {_mm256_srli_epi32(a.v, Count)};
}
template <int Count>
VecI shiftRightSigned(VecI a) {
    return {_mm256_srai_epi32(a.v, Count)};
}
// Of the two signed 16-bit halves of each lane: the sum of the two products, and the magnitudes (32768 for
// -32768, to be read unsigned).
inline VecI pairProducts(VecI a, VecI b) { return {_mm256_madd_epi16(a.v, b.v)}; }
inline VecI pairMagnitudes(VecI a) {
    return {_mm256_max_epi16(a.v, _mm256_sub_epi16(_mm256_setzero_si256(), a.v))};
}
// The low 32 bits of the unsigned products of 16-bit values.
inline VecI multiply16(VecI a, VecI b) { return a * b; }

// Reads kLanes points stored as x, y, x, y, ...; their order in the lanes is another one, the same in both.
inline void loadPairsInAnyOrder(const std::int32_t* xy, VecI& x, VecI& y) {
    const __m256 low = _mm256_castsi256_ps(VecI::load(xy).v);
    const __m256 high = _mm256_castsi256_ps(VecI::load(xy + 8).v);
    x.v = _mm256_castps_si256(_mm256_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)));
    y.v = _mm256_castps_si256(_mm256_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1)));
}

// The sum of all lanes of the vectors added to it, in 64 bits.
class LaneSum {
  public:
    void add(VecI a) {
        low_ = _mm256_add_epi64(low_, _mm256_cvtepi32_epi64(_mm256_castsi256_si128(a.v)));
        high_ = _mm256_add_epi64(high_, _mm256_cvtepi32_epi64(_mm256_extracti128_si256(a.v, 1)));
    }
    std::int64_t total() const {
        std::int64_t lanes[4];
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(lanes), _mm256_add_epi64(low_, high_));
        return lanes[0] + lanes[1] + lanes[2] + lanes[3];
    }

  private:
    __m256i low_ = _mm256_setzero_si256();
    __m256i high_ = _mm256_setzero_si256();
};

// Sums in 32 bits for each lane of a VecS.
struct VecSums {
    __m256i low;
    __m256i high;

    static VecSums all(std::int32_t value) { return {_mm256_set1_epi32(value), _mm256_set1_epi32(value)}; }
    // += a * (low half of coefficients) + b * (high half)
    void add(VecS a, VecS b, VecI coefficients) {
        low = _mm256_add_epi32(low, _mm256_madd_epi16(_mm256_unpacklo_epi16(a.v, b.v), coefficients.v));
        high = _mm256_add_epi32(high, _mm256_madd_epi16(_mm256_unpackhi_epi16(a.v, b.v), coefficients.v));
    }
    template <int Shift>
    VecS narrow() const {
        return {_mm256_packs_epi32(_mm256_srai_epi32(low, Shift), _mm256_srai_epi32(high, Shift))};
    }
};

inline VecD loadFloats(const float* p) { return {_mm256_cvtps_pd(_mm_loadu_ps(p))}; }
inline void storeFloats(VecD a, float* p) { _mm_storeu_ps(p, _mm256_cvtpd_ps(a.v)); }

// a = mantissa * 2^exponent with the mantissa, which is returned, in [1, 2); for positive normal numbers.
inline VecD splitExponent(VecD a, VecD& exponent) {
    const __m256i bits = _mm256_castpd_si256(a.v);
    const __m256i magic = _mm256_set1_epi64x(0x4330000000000000);  // 2^52, whose low bits count ones
    const __m256d biased = _mm256_castsi256_pd(_mm256_or_si256(_mm256_srli_epi64(bits, 52), magic));
    exponent = {_mm256_sub_pd(biased, _mm256_set1_pd(4503599627370496.0 + 1023.0))};
    const __m256i fraction = _mm256_and_si256(bits, _mm256_set1_epi64x(0x000FFFFFFFFFFFFF));
    return {_mm256_castsi256_pd(_mm256_or_si256(fraction, _mm256_set1_epi64x(0x3FF0000000000000)))};
}

// The sums of squares of 3 x 3 pairs for kLanes points, row by row: corner[i] is the top-left pair of point
// i, rows are `step` elements apart, and a fourth pair of each row is read.
inline void loadSquares3x3(const std::int16_t* const* corner, std::ptrdiff_t step, VecD* squares) {
    for (int row = 0; row < 3; ++row) {
        __m128i point[4];
        for (int i = 0; i < 4; ++i) {
            const __m128i pairs = _mm_loadu_si128(reinterpret_cast<const __m128i*>(corner[i] + row * step));
            point[i] = _mm_madd_epi16(pairs, pairs);
        }
        const __m128i low01 = _mm_unpacklo_epi32(point[0], point[1]);
        const __m128i low23 = _mm_unpacklo_epi32(point[2], point[3]);
        const __m128i high01 = _mm_unpackhi_epi32(point[0], point[1]);
        const __m128i high23 = _mm_unpackhi_epi32(point[2], point[3]);
        // 2^31, the one sum that does not fit, reads as -2^31: its magnitude is right again.
        squares[3 * row] = abs(VecD{_mm256_cvtepi32_pd(_mm_unpacklo_epi64(low01, low23))});
        squares[3 * row + 1] = abs(VecD{_mm256_cvtepi32_pd(_mm_unpackhi_epi64(low01, low23))});
        squares[3 * row + 2] = abs(VecD{_mm256_cvtepi32_pd(_mm_unpacklo_epi64(high01, high23))});
    }
}

#elif defined(__SSE2__) || defined(_M_X64)

struct VecS {
    static constexpr std::size_t kLanes = 8;
    __m128i v;

    static VecS all(std::int16_t value) { return {_mm_set1_epi16(value)}; }
    static VecS load(const std::int16_t* p) { return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))}; }
    static VecS loadBytes(const std::uint8_t* p) {
        return {_mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128())};
    }
    void store(std::int16_t* p) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
};
inline VecS operator+(VecS a, VecS b) { return {_mm_add_epi16(a.v, b.v)}; }
inline VecS operator-(VecS a, VecS b) { return {_mm_sub_epi16(a.v, b.v)}; }
inline VecS operator*(VecS a, VecS b) { return {_mm_mullo_epi16(a.v, b.v)}; }
inline VecS addSaturated(VecS a, VecS b) { return {_mm_adds_epi16(a.v, b.v)}; }

inline void storeInterleaved(VecS a, VecS b, std::int16_t* p) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_unpacklo_epi16(a.v, b.v));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 8), _mm_unpackhi_epi16(a.v, b.v));
}

struct VecI {
    static constexpr std::size_t kLanes = 4;
    __m128i v;

    static VecI all(std::int32_t value) { return {_mm_set1_epi32(value)}; }
    static VecI load(const std::int32_t* p) { return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))}; }
    static VecI loadPairs(const std::int16_t* p) {
        return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))};
    }
    void store(std::int32_t* p) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
    unsigned lanes() const { return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(v))); }
};
inline VecI operator+(VecI a, VecI b) { return {_mm_add_epi32(a.v, b.v)}; }
inline VecI operator-(VecI a, VecI b) { return {_mm_sub_epi32(a.v, b.v)}; }
inline VecI operator*(VecI a, VecI b) {
    const __m128i even = _mm_mul_epu32(a.v, b.v);
    const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(a.v, 32), _mm_srli_epi64(b.v, 32));
    return {_mm_unpacklo_epi32(_mm_shuffle_epi32(even, _MM_SHUFFLE(2, 0, 2, 0)),
                               _mm_shuffle_epi32(odd, _MM_SHUFFLE(2, 0, 2, 0)))};
}
inline VecI operator&(VecI a, VecI b) { return {_mm_and_si128(a.v, b.v)}; }
inline VecI operator|(VecI a, VecI b) { return {_mm_or_si128(a.v, b.v)}; }
inline VecI operator^(VecI a, VecI b) { return {_mm_xor_si128(a.v, b.v)}; }
inline VecI andNot(VecI a, VecI b) { return {_mm_andnot_si128(a.v, b.v)}; }
inline VecI operator>(VecI a, VecI b) { return {_mm_cmpgt_epi32(a.v, b.v)}; }
inline VecI min(VecI a, VecI b) { return ((a > b) & b) | andNot(a > b, a); }
inline VecI max(VecI a, VecI b) { return ((a > b) & a) | andNot(a > b, b); }
template <int Count>
VecI shiftLeft(VecI a) {
    return {_mm_slli_epi32(a.v, Count)};
}
template <int Count>
VecI shiftRightUnsigned(VecI a) {
    return {_mm_srli_epi32(a.v, Count)};
}
template <int Count>
VecI shiftRightSigned(VecI a) {
    return {_mm_srai_epi32(a.v, Count)};
}
inline VecI pairProducts(VecI a, VecI b) { return {_mm_madd_epi16(a.v, b.v)}; }
inline VecI pairMagnitudes(VecI a) { return {_mm_max_epi16(a.v, _mm_sub_epi16(_mm_setzero_si128(), a.v))}; }
inline VecI multiply16(VecI a, VecI b) {
    return {_mm_or_si128(_mm_mullo_epi16(a.v, b.v), _mm_slli_epi32(_mm_mulhi_epu16(a.v, b.v), 16))};
}

inline void loadPairsInAnyOrder(const std::int32_t* xy, VecI& x, VecI& y) {
    const __m128 low = _mm_castsi128_ps(VecI::load(xy).v);
    const __m128 high = _mm_castsi128_ps(VecI::load(xy + 4).v);
    x.v = _mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)));
    y.v = _mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1)));
}

class LaneSum {
  public:
    void add(VecI a) {
        const __m128i signs = _mm_srai_epi32(a.v, 31);
        low_ = _mm_add_epi64(low_, _mm_unpacklo_epi32(a.v, signs));
        high_ = _mm_add_epi64(high_, _mm_unpackhi_epi32(a.v, signs));
    }
    std::int64_t total() const {
        std::int64_t lanes[2];
        _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), _mm_add_epi64(low_, high_));
        return lanes[0] + lanes[1];
    }

  private:
    __m128i low_ = _mm_setzero_si128();
    __m128i high_ = _mm_setzero_si128();
};

struct VecSums {
    __m128i low;
    __m128i high;

    static VecSums all(std::int32_t value) { return {_mm_set1_epi32(value), _mm_set1_epi32(value)}; }
    void add(VecS a, VecS b, VecI coefficients) {
        low = _mm_add_epi32(low, _mm_madd_epi16(_mm_unpacklo_epi16(a.v, b.v), coefficients.v));
        high = _mm_add_epi32(high, _mm_madd_epi16(_mm_unpackhi_epi16(a.v, b.v), coefficients.v));
    }
    template <int Shift>
    VecS narrow() const {
        return {_mm_packs_epi32(_mm_srai_epi32(low, Shift), _mm_srai_epi32(high, Shift))};
    }
};

inline VecD loadFloats(const float* p) {
    return {_mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))))};
}
inline void storeFloats(VecD a, float* p) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_castps_si128(_mm_cvtpd_ps(a.v)));
}

inline VecD splitExponent(VecD a, VecD& exponent) {
    const __m128i bits = _mm_castpd_si128(a.v);
    const __m128i magic = _mm_set1_epi64x(0x4330000000000000);
    const __m128d biased = _mm_castsi128_pd(_mm_or_si128(_mm_srli_epi64(bits, 52), magic));
    exponent = {_mm_sub_pd(biased, _mm_set1_pd(4503599627370496.0 + 1023.0))};
    const __m128i fraction = _mm_and_si128(bits, _mm_set1_epi64x(0x000FFFFFFFFFFFFF));
    return {_mm_castsi128_pd(_mm_or_si128(fraction, _mm_set1_epi64x(0x3FF0000000000000)))};
}

inline void loadSquares3x3(const std::int16_t* const* corner, std::ptrdiff_t step, VecD* squares) {
    for (int row = 0; row < 3; ++row) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(corner[0] + row * step));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(corner[1] + row * step));
        const __m128i low = _mm_unpacklo_epi32(_mm_madd_epi16(a, a), _mm_madd_epi16(b, b));
        const __m128i high = _mm_unpackhi_epi32(_mm_madd_epi16(a, a), _mm_madd_epi16(b, b));
        squares[3 * row] = abs(VecD{_mm_cvtepi32_pd(low)});
        squares[3 * row + 1] = abs(VecD{_mm_cvtepi32_pd(_mm_shuffle_epi32(low, _MM_SHUFFLE(3, 2, 3, 2)))});
        squares[3 * row + 2] = abs(VecD{_mm_cvtepi32_pd(high)});
    }
}

#else

inline std::int16_t saturated(std::int32_t value) {
    return static_cast<std::int16_t>(value < -32768 ? -32768 : value > 32767 ? 32767 : value);
}

struct VecS {
    static constexpr std::size_t kLanes = 1;
    std::int16_t v;

    static VecS all(std::int16_t value) { return {value}; }
    static VecS load(const std::int16_t* p) { return {*p}; }
    static VecS loadBytes(const std::uint8_t* p) { return {*p}; }
    void store(std::int16_t* p) const { *p = v; }
};
inline VecS operator+(VecS a, VecS b) { return {static_cast<std::int16_t>(a.v + b.v)}; }
inline VecS operator-(VecS a, VecS b) { return {static_cast<std::int16_t>(a.v - b.v)}; }
inline VecS operator*(VecS a, VecS b) { return {static_cast<std::int16_t>(a.v * b.v)}; }
inline VecS addSaturated(VecS a, VecS b) { return {saturated(a.v + b.v)}; }

inline void storeInterleaved(VecS a, VecS b, std::int16_t* p) {
    p[0] = a.v;
    p[1] = b.v;
}

struct VecI {
    static constexpr std::size_t kLanes = 1;
    std::uint32_t v;

    static VecI all(std::int32_t value) { return {static_cast<std::uint32_t>(value)}; }
    static VecI load(const std::int32_t* p) { return all(*p); }
    static VecI loadPairs(const std::int16_t* p) {
        return {static_cast<std::uint16_t>(p[0]) |
                (static_cast<std::uint32_t>(static_cast<std::uint16_t>(p[1])) << 16)};
    }
    void store(std::int32_t* p) const { *p = static_cast<std::int32_t>(v); }
    unsigned lanes() const { return v >> 31; }
    std::int32_t low() const { return static_cast<std::int16_t>(v & 0xFFFFU); }
    std::int32_t high() const { return static_cast<std::int16_t>(v >> 16); }
};
inline VecI operator+(VecI a, VecI b) { return {a.v + b.v}; }
inline VecI operator-(VecI a, VecI b) { return {a.v - b.v}; }
inline VecI operator*(VecI a, VecI b) { return {a.v * b.v}; }
inline VecI operator&(VecI a, VecI b) { return {a.v & b.v}; }
inline VecI operator|(VecI a, VecI b) { return {a.v | b.v}; }
inline VecI operator^(VecI a, VecI b) { return {a.v ^ b.v}; }
inline VecI andNot(VecI a, VecI b) { return {~a.v & b.v}; }
inline VecI operator>(VecI a, VecI b) {
    return VecI::all(static_cast<std::int32_t>(a.v) > static_cast<std::int32_t>(b.v) ? -1 : 0);
}
inline VecI min(VecI a, VecI b) { return (a > b).v != 0 ? b : a; }
inline VecI max(VecI a, VecI b) { return (a > b).v != 0 ? a : b; }
template <int Count>
VecI shiftLeft(VecI a) {
    return {a.v << Count};
}
template <int Count>
VecI shiftRightUnsigned(VecI a) {
    return {a.v >> Count};
}
template <int Count>
VecI shiftRightSigned(VecI a) {
    return VecI::all(static_cast<std::int32_t>(a.v) >> Count);
}
inline VecI pairProducts(VecI a, VecI b) {
    return {static_cast<std::uint32_t>(a.low() * b.low()) + static_cast<std::uint32_t>(a.high() * b.high())};
}
inline VecI pairMagnitudes(VecI a) {
    const std::int32_t low = a.low() < 0 ? -a.low() : a.low();
    const std::int32_t high = a.high() < 0 ? -a.high() : a.high();
    return {static_cast<std::uint32_t>(low) | (static_cast<std::uint32_t>(high) << 16)};
}
inline VecI multiply16(VecI a, VecI b) { return a * b; }

inline void loadPairsInAnyOrder(const std::int32_t* xy, VecI& x, VecI& y) {
    x = VecI::load(xy);
    y = VecI::load(xy + 1);
}

class LaneSum {
  public:
    void add(VecI a) { total_ += static_cast<std::int32_t>(a.v); }
    std::int64_t total() const { return total_; }

  private:
    std::int64_t total_ = 0;
};

struct VecSums {
    std::int32_t sum;

    static VecSums all(std::int32_t value) { return {value}; }
    void add(VecS a, VecS b, VecI coefficients) {
        sum += a.v * coefficients.low() + b.v * coefficients.high();
    }
    template <int Shift>
    VecS narrow() const {
        return {saturated(sum >> Shift)};
    }
};

inline VecD loadFloats(const float* p) { return {static_cast<double>(*p)}; }
inline void storeFloats(VecD a, float* p) { *p = static_cast<float>(a.v); }

inline VecD splitExponent(VecD a, VecD& exponent) {
    int power = 0;
    const double half = std::frexp(a.v, &power);
    exponent = {static_cast<double>(power - 1)};
    return {half * 2};
}

inline void loadSquares3x3(const std::int16_t* const* corner, std::ptrdiff_t step, VecD* squares) {
    for (int i = 0; i < 9; ++i) {
        const std::int16_t* pair = corner[0] + i / 3 * step + i % 3 * 2;
        const double dx = pair[0];
        const double dy = pair[1];
        squares[i] = {dx * dx + dy * dy};
    }
}

#endif

// The pair (low, high) in every lane.
inline VecI allPairs(std::int16_t low, std::int16_t high) {
    return VecI::all(
        static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(low)) |
                                  (static_cast<std::uint32_t>(static_cast<std::uint16_t>(high)) << 16)));
}

}  // namespace orx::ORX_SIMD

#endif
