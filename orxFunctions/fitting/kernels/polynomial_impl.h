// The loop of kernels/polynomial.h, compiled once for each instruction set.
//
// Each power is the exact one rounded once, which is what pow() gives but for a rare last bit: a running
// product that carries its rounding error along as a second number. Running products alone would be faster
// and up to half a unit worse at each step.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_POLYNOMIAL_IMPL_H
#define ORXFUNCTIONS_FITTING_KERNELS_POLYNOMIAL_IMPL_H

#include <cstddef>

#include "orxFunctions/fitting/kernels/polynomial.h"
#include "orxFunctions/platform/simd/vectors.h"

namespace orx::polynomial_kernels::ORX_SIMD {

using namespace orx::ORX_SIMD;

#if defined(__AVX2__) && defined(__FMA__)

// A factor of exact products; here the fused operation needs nothing but the number.
struct Factor {
    explicit Factor(VecD a) : value(a) {}

    VecD value;
};

// p + error = a b exactly, where p is the rounded product.
inline VecD productError(const Factor& a, const Factor& b, VecD p) {
    return {_mm256_fmsub_pd(a.value.v, b.value.v, p.v)};
}

#else

// A factor of exact products: a double as the exact sum of two halves of 26 bits, whose products are exact.
struct Factor {
    explicit Factor(VecD a) {
        const VecD scaled = a * VecD::all(134217729.0);  // 2^27 + 1
        high = scaled - (scaled - a);
        low = a - high;
    }

    VecD high;
    VecD low;
};

// p + error = a b exactly, where p is the rounded product.
inline VecD productError(const Factor& a, const Factor& b, VecD p) {
    return ((a.high * b.high - p) + a.high * b.low + a.low * b.high) + a.low * b.low;
}

#endif

// powers[e * kPowerBlock + i] = x[i]^e for i < count, e = 0 .. highest. No power of an x may overflow or lose
// bits to underflow, its error term included. Rows are written beyond `count`, up to the block's end at most.
inline void exactPowers(const double* x, std::size_t count, std::size_t highest, double* powers) {
    // So many chains side by side hide the latency of each.
    constexpr std::size_t kSide = 4;
    for (std::size_t i = 0; i < count; i += kSide * VecD::kLanes) {
        VecD base[kSide];
        VecD power[kSide];
        VecD rest[kSide];
        const auto store = [&](std::size_t k, std::size_t e, VecD value) {
            value.store(powers + e * kPowerBlock + i + k * VecD::kLanes);
        };
        for (std::size_t k = 0; k < kSide; ++k) {
            base[k] = VecD::load(x + i + k * VecD::kLanes);
            store(k, 0, VecD::all(1));
            if (highest == 0) continue;
            store(k, 1, base[k]);
            // The square, whose error is known at once.
            power[k] = base[k] * base[k];
            rest[k] = productError(Factor(base[k]), Factor(base[k]), power[k]);
            if (highest > 1) store(k, 2, power[k]);
        }
        for (std::size_t e = 3; e <= highest; ++e) {
            for (std::size_t k = 0; k < kSide; ++k) {
                const VecD product = power[k] * base[k];
                const VecD error =
                    productError(Factor(power[k]), Factor(base[k]), product) + rest[k] * base[k];
                power[k] = product + error;
                rest[k] = error - (power[k] - product);
                store(k, e, power[k]);
            }
        }
    }
}

// products[e][i] = powers[e][i] y[i] for e < rows.
inline void multiplyRows(const double* powers, const double* y, std::size_t rows, std::size_t count,
                         double* products) {
    for (std::size_t e = 0; e < rows; ++e) {
        for (std::size_t i = 0; i < count; i += VecD::kLanes) {
            const std::size_t at = e * kPowerBlock + i;
            (VecD::load(powers + at) * VecD::load(y + i)).store(products + at);
        }
    }
}

// sums[e] += terms[e][0] + terms[e][1] + ... one after the other, for Groups * kSumGroup values of e side by
// side: a vector holds several sums, and each waits for its own last addition only.
template <std::size_t Groups>
void addSideBySide(const double* terms, std::size_t count, double* sums) {
    constexpr std::size_t kVectors = Groups * kSumGroup / VecD::kLanes;
    VecD s[kVectors];
    for (std::size_t v = 0; v < kVectors; ++v) s[v] = VecD::load(sums + v * VecD::kLanes);
    const auto add = [&](std::size_t i, std::size_t filled) {
        VecD columns[kVectors][VecD::kLanes];
        for (std::size_t v = 0; v < kVectors; ++v) {
            loadTransposed(terms + v * VecD::kLanes * kPowerBlock + i, kPowerBlock, columns[v]);
        }
        for (std::size_t k = 0; k < filled; ++k) {
            for (std::size_t v = 0; v < kVectors; ++v) s[v] = s[v] + columns[v][k];
        }
    };
    std::size_t i = 0;
    for (; i + VecD::kLanes <= count; i += VecD::kLanes) add(i, VecD::kLanes);
    if (i < count) add(i, count - i);
    for (std::size_t v = 0; v < kVectors; ++v) s[v].store(sums + v * VecD::kLanes);
}

// The same for `rows` values of e, a multiple of kSumGroup.
inline void addInOrder(const double* terms, std::size_t rows, std::size_t count, double* sums) {
    std::size_t e = 0;
    for (; e + 3 * kSumGroup <= rows; e += 3 * kSumGroup) {
        addSideBySide<3>(terms + e * kPowerBlock, count, sums + e);
    }
    if (e + 2 * kSumGroup == rows) addSideBySide<2>(terms + e * kPowerBlock, count, sums + e);
    if (e + kSumGroup == rows) addSideBySide<1>(terms + e * kPowerBlock, count, sums + e);
}

// Takes a block's samples apart; those after the last become 0. True when every |x| is 0 or in [smallest,
// largest].
inline bool readSamples(const PowerBlock& block, const double* samples, std::size_t count, double* x,
                        double* y) {
    double padded[2 * kPowerBlock];
    if (count < kPowerBlock) {
        for (std::size_t i = 0; i < 2 * kPowerBlock; ++i) padded[i] = i < 2 * count ? samples[i] : 0;
        samples = padded;
    }
    const VecD zero = VecD::all(0);
    const VecD smallest = VecD::all(block.smallest);
    const VecD largest = VecD::all(block.largest);
    MaskD inside = zero <= zero;
    for (std::size_t i = 0; i < kPowerBlock; i += VecD::kLanes) {
        VecD vx;
        VecD vy;
        loadPairs(samples + 2 * i, vx, vy);
        vx.store(x + i);
        vy.store(y + i);
        const VecD size = abs(vx);
        inside = inside & (((smallest <= size) & (size <= largest)) | (size <= zero));
    }
    return inside.lanes() == (1U << VecD::kLanes) - 1;
}

inline bool addPowerBlock(const PowerBlock& block, const double* samples, std::size_t count, bool powersKnown,
                          double* terms, double* sums) {
    const std::size_t powerRows = 2 * block.order + 1;
    const std::size_t rows = powerRows + block.order + 1;
    double x[kPowerBlock];
    double y[kPowerBlock];
    const bool inRange = readSamples(block, samples, count, x, y);
    if (!powersKnown) {
        if (!inRange) return false;
        exactPowers(x, count, powerRows - 1, terms);
    }
    multiplyRows(terms, y, block.order + 1, count, terms + powerRows * kPowerBlock);
    addInOrder(terms, (rows + kSumGroup - 1) / kSumGroup * kSumGroup, count, sums);
    return true;
}

inline constexpr Kernels kKernels = {addPowerBlock};

}  // namespace orx::polynomial_kernels::ORX_SIMD

#endif
