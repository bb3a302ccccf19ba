// The inner loops of the search for parts. Every instruction set gives the same bits.
//
// Gradients are pairs (dx, dy) of 16-bit integers as in analysis/edges/gradient.h; pairs of an edge field
// (edge_field.h) are directions of gradients, kFieldUnit long on the crest of an edge.
#ifndef ORXFUNCTIONS_MATCHING_SEARCH_KERNELS_H
#define ORXFUNCTIONS_MATCHING_SEARCH_KERNELS_H

#include <cstddef>
#include <cstdint>

namespace orx::search_kernels {

constexpr int kFieldUnit = 256;
// Rows of a field are read in whole vectors: elements that can be read after each row.
constexpr std::size_t kRowPadding = 16;

// Places that sumRows looks at side by side.
constexpr std::size_t kBlockColumns = 64;
// A response is this at most, so that 8 bits hold the sum of kByteSum of them.
constexpr int kBestResponse = 16;
constexpr std::size_t kByteSum = 15;

// The window of places around a pose that windowSums looks at.
constexpr int kWindowRows = 7;
constexpr int kWindowColumns = 8;

// Points of a model, turned and scaled: where they lie against the pose, in 16-bit elements of the field, and
// their normals, kFieldUnit long: x in the low half, y in the high one.
struct PlacedPoints {
    const std::int32_t* offsets;
    const std::int32_t* normals;
    std::size_t count;
};

// What sumRows adds up.
struct ShiftedRows {
    const std::int32_t* offsets;
    std::size_t count;
    std::size_t first;        // so many first offsets tell rows that need no more,
    std::int32_t leastFirst;  // those whose sums are all less than this
};

struct Kernels {
    // A row of the field. Magnitudes are squared; those of the rows above and below have one readable element
    // before the row and one after it. Pixels whose squared magnitude is below `least` (above 0) are 0.
    void (*fieldRow)(const std::int16_t* gradient, const std::int32_t* above, const std::int32_t* centre,
                     const std::int32_t* below, std::size_t width, float least, std::int16_t* out);
    // How well the pixels of a row of a field answer a direction, and the opposite one: the field times the
    // normal (packed as in PlacedPoints), kBestResponse where they agree, 0 where they are across or against
    // one another. Rows of the field have kRowPadding readable elements to spare.
    void (*responseRow)(const std::int16_t* field, std::int32_t normal, std::size_t width,
                        std::uint8_t* along, std::uint8_t* against);
    // out[r * kBlockColumns + c] = sum over the offsets of responses[r * step + c + offset], in 16 bits; rows
    // of which no sum over the first offsets is large enough may be 0 instead. Returns the largest sum.
    std::int32_t (*sumRows)(const std::uint8_t* responses, std::ptrdiff_t step, std::size_t rows,
                            const ShiftedRows& shifts, std::int16_t* out);
    // Adds to the sums, kWindowRows of kWindowColumns, the products of the normals with the field; field is
    // the window's top-left pair, step between rows in 16-bit elements.
    void (*windowSums)(const std::int16_t* field, std::ptrdiff_t step, const PlacedPoints& points,
                       std::int32_t* sums);
    // The same of the products' magnitudes.
    void (*windowMagnitudes)(const std::int16_t* field, std::ptrdiff_t step, const PlacedPoints& points,
                             std::int32_t* sums);
    // The same of the products that are above 0.
    void (*windowPositives)(const std::int16_t* field, std::ptrdiff_t step, const PlacedPoints& points,
                            std::int32_t* sums);
};

extern const Kernels kAvx2;

const Kernels& chosen();

}  // namespace orx::search_kernels

#endif
