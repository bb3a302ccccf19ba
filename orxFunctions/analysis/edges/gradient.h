// Gradients of a grey image in 16-bit integers, as the edge detectors need them.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGE_GRADIENT_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_EDGE_GRADIENT_INTERNAL_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/edges/kernels.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx::edges {

// The scale of integer gradients: the positive half of a derivative kernel sums to this.
constexpr int kGradientScale = 128;

// dx and dy of an image as interleaved pairs, inside a frame of one pixel that repeats the border and some
// readable elements after each row.
class GradientImage {
  public:
    GradientImage(int rows, int cols)
        : rows_(rows),
          cols_(cols),
          pairs_(rows + 2, cols + 2 + static_cast<int>(edge_kernels::kRowPadding), CV_16SC2) {}

    int rows() const { return rows_; }
    int cols() const { return cols_; }
    // The pair of column 0; rows from -1 to rows().
    std::int16_t* row(int r) { return pairs_.ptr<std::int16_t>(r + 1) + 2; }
    const std::int16_t* row(int r) const { return pairs_.ptr<std::int16_t>(r + 1) + 2; }
    // Between rows, in 16-bit elements.
    std::ptrdiff_t step() const { return static_cast<std::ptrdiff_t>(pairs_.step1()); }
    // Repeats the border of a filled row, and clears what lies after it.
    void frameRow(int r);
    // Repeats the first and the last row, once all rows are filled and framed.
    void frameRows();

  private:
    int rows_;
    int cols_;
    cv::Mat pairs_;
};

// The derivative-of-Gaussian kernel: elements 1..r after the centre, which is 0; those before it are the same
// negated. Single precision up to the rounding, half to even, to 16 bits.
std::vector<std::int16_t> derivativeKernel(double sigma);

// What cv::sepFilter2D gives for an 8-bit image, 16-bit output, the derivative kernel along rows (dx) and
// columns (dy), reflected without repeating the border pixel; equal in every pixel.
GradientImage derivativeGradient(const cv::Mat& smoothed, const std::vector<std::int16_t>& halfKernel);

// Gaussian gradient of an 8-bit image: smoothed with the same sigma in both directions, from 14-bit kernels
// three sigma long or a little more, without rounding the smoothed image to grey levels. The same border.
GradientImage gaussianGradient(const cv::Mat& gray, const std::vector<edge_kernels::GaussTap>& taps);
std::vector<edge_kernels::GaussTap> gaussianTaps(double sigma);

// Rows that a thread takes at a time, and how many such stripes there are.
constexpr int kStripeRows = 64;
constexpr int stripeCount(int rows) { return (rows + kStripeRows - 1) / kStripeRows; }

// Calls body(stripe, from, to) for stripes of rows, on several threads.
template <typename Body>
void forStripes(int rows, const Body& body) {
    platform::parallelFor(stripeCount(rows), [&](int stripe) {
        body(stripe, stripe * kStripeRows, std::min(rows, (stripe + 1) * kStripeRows));
    });
}

}  // namespace orx::edges

#endif
