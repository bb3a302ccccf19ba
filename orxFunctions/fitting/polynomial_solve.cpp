#include "orxFunctions/fitting/polynomial_solve_internal.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/kernels/polynomial.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

using polynomial_kernels::kPowerBlock;
using polynomial_kernels::kSumGroup;

// Sums of x^e and of x^e y over the samples, each x^e computed once a sample and added in sample order.
class PowerSums {
  public:
    PowerSums(const cv::Point2d* samples, std::size_t count, std::size_t order)
        : block_{order, order == 0 ? 0 : std::exp2(-400.0 / static_cast<double>(order)),
                 order == 0 ? HUGE_VAL : std::exp2(450.0 / static_cast<double>(order))},
          kernels_(polynomial_kernels::chosen()),
          terms_((3 * order + 2 + kSumGroup) * kPowerBlock),
          sums_(3 * order + 2 + kSumGroup) {
        // The rows after the last sum only fill its group.
        std::fill(terms_.data() + (3 * order + 2) * kPowerBlock, terms_.data() + terms_.size(), 0.0);
        std::fill(sums_.data(), sums_.data() + sums_.size(), 0.0);
        for (std::size_t start = 0; start < count; start += kPowerBlock) {
            addBlock(samples + start, std::min(kPowerBlock, count - start));
        }
    }

    double power(int e) const { return sums_[static_cast<std::size_t>(e)]; }
    double moment(int e) const { return sums_[2 * block_.order + 1 + static_cast<std::size_t>(e)]; }

  private:
    void addBlock(const cv::Point2d* samples, std::size_t count) {
        static_assert(sizeof(cv::Point2d) == 2 * sizeof(double), "kernels read samples as pairs of doubles");
        const double* const pairs = &samples->x;
        if (kernels_.addPowerBlock(block_, pairs, count, false, terms_.data(), sums_.data())) return;
        powersByPow(samples, count);
        kernels_.addPowerBlock(block_, pairs, count, true, terms_.data(), sums_.data());
    }

    void powersByPow(const cv::Point2d* samples, std::size_t count) {
        for (std::size_t e = 0; e <= 2 * block_.order; ++e) {
            for (std::size_t i = 0; i < kPowerBlock; ++i) {
                terms_[e * kPowerBlock + i] = i < count ? std::pow(samples[i].x, static_cast<double>(e)) : 0;
            }
        }
    }

    polynomial_kernels::PowerBlock block_;
    const polynomial_kernels::Kernels& kernels_;
    // On the stack up to order 4.
    cv::AutoBuffer<double, 18 * kPowerBlock> terms_;
    cv::AutoBuffer<double, 18> sums_;
};

}  // namespace

bool takesOrder(int order, const char* function) noexcept {
    if (order >= 0 && order <= kHighestOrder) return true;
    return refuse(rcOption, function, "the order is %d; 0 to %d are taken", order, kHighestOrder);
}

bool solvePolynomial(const cv::Point2d* samples, std::size_t count, int order, cv::Mat& coefficients) {
    // A fresh matrix: copies of a model share the old one.
    coefficients = cv::Mat();
    if (order < 0 || order > kHighestOrder) return false;
    const PowerSums sums(samples, count, static_cast<std::size_t>(order));
    const int m = order + 1;
    cv::AutoBuffer<double, 64> system(static_cast<std::size_t>(m) * static_cast<std::size_t>(m + 1));
    cv::Mat A(m, m, CV_64F, system.data());
    cv::Mat b(m, 1, CV_64F, system.data() + static_cast<std::ptrdiff_t>(m) * m);
    for (int i = 0; i < m; ++i) {
        for (int j = 0; j < m; ++j) A.at<double>(i, j) = sums.power(i + j);
        b.at<double>(i) = sums.moment(i);
    }
    // Zero first: a singular system of up to three unknowns leaves its destination as it was.
    coefficients.create(m, 1, CV_64F);
    coefficients.setTo(0);
    return cv::solve(A, b, coefficients, cv::DECOMP_LU);
}

}  // namespace orx
