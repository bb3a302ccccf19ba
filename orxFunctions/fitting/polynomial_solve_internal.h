// The least-squares solution behind TPolynomial and the segments of TSplineCurve.
#ifndef ORXFUNCTIONS_FITTING_POLYNOMIAL_SOLVE_INTERNAL_H
#define ORXFUNCTIONS_FITTING_POLYNOMIAL_SOLVE_INTERNAL_H

#include <cstddef>
#include <opencv2/core.hpp>

namespace orx {

// Far beyond what a system of powers tells in doubles; its solution takes order^3 steps.
constexpr int kHighestOrder = 200;

// 0 .. kHighestOrder; otherwise keeps the refusal.
bool takesOrder(int order, const char* function) noexcept;

// Writes the (order + 1) x 1 coefficients into a matrix of their own. False for a singular system, with all
// coefficients 0, and for an order outside 0 .. kHighestOrder, with an empty matrix.
bool solvePolynomial(const cv::Point2d* samples, std::size_t count, int order, cv::Mat& coefficients);

}  // namespace orx

#endif
