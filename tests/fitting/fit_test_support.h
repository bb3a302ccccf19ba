// What the tests of the estimators share.
#ifndef TESTS_FITTING_FIT_TEST_SUPPORT_H
#define TESTS_FITTING_FIT_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <opencv2/core/utility.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/fit_scenes.h"

// Runs a test with the kernels for this processor and with the baseline.
class BothKernels : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override { cv::setUseOptimized(GetParam()); }
    void TearDown() override { cv::setUseOptimized(true); }
};

inline std::uint64_t bitsOf(double v) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &v, sizeof bits);
    return bits;
}

inline testing::AssertionResult sameValues(const std::vector<double>& a, const std::vector<double>& b) {
    for (std::size_t i = 0; i < a.size(); ++i) {
        // Any not-a-number equals any other.
        if (bitsOf(a[i]) != bitsOf(b[i]) && !(a[i] != a[i] && b[i] != b[i])) {
            return testing::AssertionFailure() << "value " << i << ": " << a[i] << " and " << b[i];
        }
    }
    return testing::AssertionSuccess();
}

inline testing::AssertionResult sameBits(const orx::TCircle& a, const orx::TCircle& b) {
    if (a.valid != b.valid || a.pointCount != b.pointCount)
        return testing::AssertionFailure() << "flag or count";
    return sameValues({a.x, a.y, a.r, a.inlierRatio, a.meanResidual},
                      {b.x, b.y, b.r, b.inlierRatio, b.meanResidual});
}

inline testing::AssertionResult sameBits(const orx::TLine& a, const orx::TLine& b) {
    if (a.valid != b.valid) return testing::AssertionFailure() << "flag";
    return sameValues({a.k, a.b}, {b.k, b.b});
}

// Lists that no shape fits: empty, too short, all equal, on one line, at the limits of 32 bits.
inline std::vector<std::vector<cv::Point>> degenerateLists() {
    constexpr int kLow = -2147483647 - 1;
    constexpr int kHigh = 2147483647;
    std::vector<cv::Point> collinear;
    for (int i = 0; i < 40; ++i) collinear.emplace_back(3 * i, 7 - 2 * i);
    return {{},
            {{5, 5}},
            {{5, 5}, {9, 2}},
            {{0, 0}, {4, 0}, {0, 4}},
            std::vector<cv::Point>(50, {7, 7}),
            collinear,
            {{kLow, kLow}, {kHigh, kLow}, {kLow, kHigh}, {kHigh, kHigh}, {kHigh, 0}, {0, kLow}}};
}

#endif
