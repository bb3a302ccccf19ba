// The inner loop of a polynomial's normal equations: sums of powers over its samples. Every instruction set
// gives the same bits.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_POLYNOMIAL_H
#define ORXFUNCTIONS_FITTING_KERNELS_POLYNOMIAL_H

#include <cstddef>

namespace orx::polynomial_kernels {

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

struct Kernels {
    // Adds a block of samples, stored as x, y, x, y, ...: sums[e] += x^e for e = 0 .. 2 order, then the sums
    // of x^e y for e = 0 .. order. `terms` is a table of kPowerBlock columns with a row for each sum. False,
    // with nothing added, when an x is out of range; with `powersKnown` the table begins with the powers of
    // any x.
    bool (*addPowerBlock)(const PowerBlock& block, const double* samples, std::size_t count, bool powersKnown,
                          double* terms, double* sums);
};

extern const Kernels kAvx2;

const Kernels& chosen();

}  // namespace orx::polynomial_kernels

#endif
