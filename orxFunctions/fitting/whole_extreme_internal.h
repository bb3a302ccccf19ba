// Where among whole numbers a polynomial is largest or smallest.
#ifndef ORXFUNCTIONS_FITTING_WHOLE_EXTREME_INTERNAL_H
#define ORXFUNCTIONS_FITTING_WHOLE_EXTREME_INTERNAL_H

#include <cstddef>
#include <opencv2/core.hpp>

namespace orx {

// A second. A term is a coefficient times its power.
constexpr double kMostSearchedTerms = 2.5e8;

// The best of x = low, low + 1, ... high (low <= high) with its value as evaluatePolynomial computes it, to
// the last bit: what ExtremeSearch keeps of them all. Whole stretches are passed over that can't hold it, so
// that the cost hardly grows with the range where the polynomial's course is plain. False, and nothing found,
// when more than kMostSearchedTerms terms would have to be summed.
bool extremeOfWholeNumbers(const double* coefficients, std::size_t count, int low, int high, bool maximum,
                           cv::Point2d& best);

}  // namespace orx

#endif
