// The vectorised part of a polynomial's normal equations; compiled for each instruction set.
//
// Each power is the exact one rounded once, which is what pow() gives but for a rare last bit: a running
// product that carries its rounding error along as a second number. Running products alone would be faster
// and up to half a unit worse at each step.
#ifndef ORXFUNCTIONS_FITTING_POWER_SUMS_KERNEL_INTERNAL_H
#define ORXFUNCTIONS_FITTING_POWER_SUMS_KERNEL_INTERNAL_H

#include "orxFunctions/platform/simd_internal.h"

namespace orx {

// Samples handled at a time; a multiple of every vector length.
constexpr std::size_t kPowerBlock = 32;
// Sums are handled in groups of this size; a table of terms has so many more rows, all zero, as fill its
// last.
constexpr std::size_t kSumGroup = 4;

// A polynomial's order, and the smallest and largest |x| whose powers and their error terms stay normal.
struct PowerBlock {
    std::size_t order;
    double smallest;
    double largest;
};

}  // namespace orx

namespace orx::ORX_SIMD {

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
        VecD power[kSide];
        VecD rest[kSide];
        for (std::size_t k = 0; k < kSide; ++k) {
            double* const at = powers + i + k * VecD::kLanes;
            power[k] = VecD::load(x + i + k * VecD::kLanes);
            rest[k] = VecD::all(0);
            VecD::all(1).store(at);
            if (highest > 0) power[k].store(at + kPowerBlock);
        }
        for (std::size_t e = 2; e <= highest; ++e) {
            for (std::size_t k = 0; k < kSide; ++k) {
                const VecD base = VecD::load(x + i + k * VecD::kLanes);
                const VecD product = power[k] * base;
                const VecD error = productError(Factor(power[k]), Factor(base), product) + rest[k] * base;
                power[k] = product + error;
                rest[k] = error - (power[k] - product);
                power[k].store(powers + e * kPowerBlock + i + k * VecD::kLanes);
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

// sums[e] += terms[e][0] + terms[e][1] + ... one after the other, for Side values of e side by side, as each
// waits for its own last addition.
template <std::size_t Side>
void addSideBySide(const double* terms, std::size_t count, double* sums) {
    double s[Side];
    for (std::size_t e = 0; e < Side; ++e) s[e] = sums[e];
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t e = 0; e < Side; ++e) s[e] += terms[e * kPowerBlock + i];
    }
    for (std::size_t e = 0; e < Side; ++e) sums[e] = s[e];
}

// The same for `rows` values of e, a multiple of kSumGroup.
inline void addInOrder(const double* terms, std::size_t rows, std::size_t count, double* sums) {
    std::size_t e = 0;
    for (; e + 3 * kSumGroup <= rows; e += 3 * kSumGroup) {
        addSideBySide<3 * kSumGroup>(terms + e * kPowerBlock, count, sums + e);
    }
    if (e + 2 * kSumGroup == rows) addSideBySide<2 * kSumGroup>(terms + e * kPowerBlock, count, sums + e);
    if (e + kSumGroup == rows) addSideBySide<kSumGroup>(terms + e * kPowerBlock, count, sums + e);
}

// True when every |x| is 0 or in [smallest, largest].
inline bool inRange(const double* x, std::size_t count, double smallest, double largest) {
    unsigned outside = 0;
    for (std::size_t i = 0; i < count; i += VecD::kLanes) {
        const VecD size = abs(VecD::load(x + i));
        const MaskD inside =
            ((VecD::all(smallest) <= size) & (size <= VecD::all(largest))) | (size <= VecD::all(0));
        outside |= inside.lanes() ^ ((1U << VecD::kLanes) - 1);
    }
    return outside == 0;
}

// Adds a block of samples: sums[e] += x^e for e = 0 .. 2 order, then the sums of x^e y for e = 0 .. order.
// `terms` is a table of kPowerBlock columns with a row for each sum. False, with nothing added, when an x is
// out of range; with `powersKnown` the table begins with the powers of any x. x and y are readable for a
// whole block.
inline bool addPowerBlock(const PowerBlock& block, const double* x, const double* y, std::size_t count,
                          bool powersKnown, double* terms, double* sums) {
    const std::size_t powerRows = 2 * block.order + 1;
    const std::size_t rows = powerRows + block.order + 1;
    if (!powersKnown) {
        if (!inRange(x, count, block.smallest, block.largest)) return false;
        exactPowers(x, count, powerRows - 1, terms);
    }
    multiplyRows(terms, y, block.order + 1, count, terms + powerRows * kPowerBlock);
    addInOrder(terms, (rows + kSumGroup - 1) / kSumGroup * kSumGroup, count, sums);
    return true;
}

}  // namespace orx::ORX_SIMD

#endif
