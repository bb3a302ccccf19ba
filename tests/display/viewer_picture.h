// What orx_viewer shows.
#ifndef ORX_TESTS_DISPLAY_VIEWER_PICTURE_H
#define ORX_TESTS_DISPLAY_VIEWER_PICTURE_H

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

namespace test {

// Circles around the parts on the left, the selection on the right.
inline void expectBothBoxes(const cv::Mat& seen) {
    ASSERT_FALSE(seen.empty());
    const auto count = [&](const cv::Range& columns, const cv::Scalar& colour) {
        cv::Mat mask;
        cv::inRange(seen.colRange(columns), colour, colour, mask);
        return cv::countNonZero(mask);
    };
    const int middle = seen.cols / 2;
    EXPECT_GT(count({0, middle}, {90, 235, 110}), 500);
    EXPECT_GT(count({middle, seen.cols}, {0, 255, 0}), 300);
    EXPECT_EQ(count({0, middle}, {0, 255, 0}), 0);
}

}  // namespace test

#endif
