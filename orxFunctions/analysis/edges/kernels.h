// The inner loops of the edge detectors. Every instruction set gives the same bits.
//
// Gradients are pairs (dx, dy) of 16-bit integers, interleaved, 128 times the scale of the grey values.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGES_KERNELS_H
#define ORXFUNCTIONS_ANALYSIS_EDGES_KERNELS_H

#include <cstddef>
#include <cstdint>

namespace orx::edge_kernels {

// Rows are processed in whole vectors; gradient and magnitude rows have this many elements to spare.
constexpr std::size_t kRowPadding = 16;
// Points that the refinements take at once.
constexpr std::size_t kBlock = 128;

// One term of an antisymmetric 8-bit filter: coefficient * (after[i] - before[i]).
struct ByteTap {
    const std::uint8_t* after;
    const std::uint8_t* before;
    std::int16_t coefficient;
};

// The terms for dx and for dy, `count` each. The magnitudes of the first `split` coefficients sum to at most
// 128, and so do the others: each group is exact in 16 bits, and one saturating addition joins them.
struct ByteTaps {
    const ByteTap* horizontal;
    const ByteTap* vertical;
    std::size_t count;
    std::size_t split;
};

// One pair of taps of a Gaussian and of its derivative, in 1/16384: at distance 0 `after` and `before` are
// the same and the smoothing coefficient is half the centre's. Their number is even: taps are taken in twos.
struct GaussTap {
    std::int16_t smooth;
    std::int16_t derive;
};

// Column numbers of a row's edge pixels, strong ones above the high threshold.
struct SuppressedRow {
    std::int32_t* strong;
    std::int32_t* weak;
    std::size_t strongCount;
    std::size_t weakCount;
};

// Points to refine; `corner` points to the gradient above and to the left of each, with four pairs readable
// in each of three rows. Arrays hold kBlock values; those after `count` are scratch.
struct FacetBlock {
    const std::int16_t* corner[kBlock];
    std::ptrdiff_t step;  // of the gradient rows, in 16-bit elements
    std::size_t count;
    // In: the pixel. Out: the refined position.
    float x[kBlock];
    float y[kBlock];
    // The direction lies between the two; where they differ, atan2(normalX, normalY) decides.
    float direction[kBlock];
    float directionUpper[kBlock];
    float response[kBlock];
    double normalX[kBlock];
    double normalY[kBlock];
};

struct MetricBlock {
    const std::int16_t* corner[kBlock];
    std::ptrdiff_t step;
    std::size_t count;
    double inverseRamp;      // slope in grey levels a pixel of a magnitude of 1
    double deviationScale;   // noise of the second derivative of the brightness along the normal
    double normalX[kBlock];  // unit gradient
    double normalY[kBlock];
    double offset[kBlock];     // from the pixel's centre to the edge, along the normal
    double curvature[kBlock];  // -second derivative of the log magnitude along the normal: 1 / total sigma^2
    float direction[kBlock];   // of the normal, radians in [0, 2 pi]
    float contrast[kBlock];    // grey levels
    float deviation[kBlock];   // of the offset, from noise
};

struct Kernels {
    // out: `width` pairs.
    void (*gradientRow)(const ByteTaps& taps, std::size_t width, std::int16_t* out);
    // Column filters of a Gaussian gradient: rows[count - 1 + k] is k rows below, rows[count - 1 - k] above.
    // Both outputs are 128 times the grey values.
    void (*gaussColumns)(const GaussTap* taps, std::size_t count, const std::uint8_t* const* rows,
                         std::size_t width, std::int16_t* smooth, std::int16_t* derive);
    // Row filters of the same; element 0 of both inputs has count - 1 readable elements before it and as many
    // after element width - 1.
    void (*gaussRows)(const GaussTap* taps, std::size_t count, const std::int16_t* smooth,
                      const std::int16_t* derive, std::size_t width, std::int16_t* out);
    // dx^2 + dy^2 in 32 bits, with wrap-around; whole vectors.
    void (*magnitudeRow)(const std::int16_t* gradient, std::size_t width, std::int32_t* out);
    // Non-maximum suppression of a row whose magnitudes are `centre`; one readable element before each row.
    void (*suppressRow)(const std::int16_t* gradient, const std::int32_t* above, const std::int32_t* centre,
                        const std::int32_t* below, std::size_t width, std::int32_t low, std::int32_t high,
                        SuppressedRow& out);
    void (*refineFacets)(FacetBlock& block);
    void (*refineMetric)(MetricBlock& block);
};

extern const Kernels kAvx2;

const Kernels& chosen();

}  // namespace orx::edge_kernels

#endif
