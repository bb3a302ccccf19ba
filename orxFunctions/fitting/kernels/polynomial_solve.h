// The least-squares solution behind TPolynomial and the segments of TSplineCurve.
#ifndef ORXFUNCTIONS_FITTING_POLYNOMIAL_SOLVE_INTERNAL_H
#define ORXFUNCTIONS_FITTING_POLYNOMIAL_SOLVE_INTERNAL_H

#include <cstddef>
#include <opencv2/core.hpp>

#include "orxFunctions/fitting/kernels/power_sums_impl.h"

namespace orx {

// Beyond this degree no system of powers can be solved in doubles, and its matrix would fill the memory.
constexpr int kHighestOrder = 1000;

// Writes the (order + 1) x 1 coefficients into a matrix of their own. False for a singular system, with all
// coefficients 0, and for an order outside 0 .. kHighestOrder, with an empty matrix.
bool solvePolynomial(const cv::Point2d* samples, std::size_t count, int order, cv::Mat& coefficients);

// The kernel of solvePolynomial for AVX2; called only where the processor has it.
bool addPowerBlockAvx2(const PowerBlock& block, const double* samples, std::size_t count, bool powersKnown,
                       double* terms, double* sums);

}  // namespace orx

#endif
