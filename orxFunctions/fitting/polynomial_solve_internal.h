// The least-squares solution behind TPolynomial and the segments of TSplineCurve.
#ifndef ORXFUNCTIONS_FITTING_POLYNOMIAL_SOLVE_INTERNAL_H
#define ORXFUNCTIONS_FITTING_POLYNOMIAL_SOLVE_INTERNAL_H

#include <cstddef>
#include <opencv2/core.hpp>

namespace orx {

// Beyond this degree no system of powers can be solved in doubles, and its matrix would fill the memory.
constexpr int kHighestOrder = 1000;

// Writes the (order + 1) x 1 coefficients into a matrix of their own. False for a singular system, with all
// coefficients 0, and for an order outside 0 .. kHighestOrder, with an empty matrix.
bool solvePolynomial(const cv::Point2d* samples, std::size_t count, int order, cv::Mat& coefficients);

}  // namespace orx

#endif
