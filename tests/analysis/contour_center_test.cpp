#include <gtest/gtest.h>

#include <climits>

#include "orxFunctions/orxfunctions.h"

namespace {

using Contour = std::vector<cv::Point>;

TEST(GetContourCenterPt, ModesChooseGravityRectangleOrCircle) {
    // An L of two bars, 30 x 10 and 10 x 20: gravity at ((15 x 300 + 5 x 200) / 500, (5 x 300 + 20 x 200) /
    // 500).
    const Contour shape = {{0, 0}, {30, 0}, {30, 10}, {10, 10}, {10, 30}, {0, 30}};
    for (const int mode : {0, 3, -1}) EXPECT_EQ(orx::getContourCenterPt(shape, mode), cv::Point(11, 11));
    EXPECT_EQ(orx::getContourCenterPt(shape, 1), cv::Point(15, 15));
    // A triangle with its right angle at the origin: the circle stands on the longest side.
    const Contour triangle = {{0, 0}, {0, 40}, {100, 0}};
    EXPECT_EQ(orx::getContourCenterPt(triangle, 0), cv::Point(33, 13));
    EXPECT_EQ(orx::getContourCenterPt(triangle, 1), cv::Point(50, 20));
    EXPECT_EQ(orx::getContourCenterPt({{0, 0}, {60, 0}, {30, 10}}, 2), cv::Point(30, 0));
}

TEST(GetContourCenterPt, ContoursWithoutAreaHaveACentre) {
    for (const int mode : {0, 1, 2}) {
        EXPECT_EQ(orx::getContourCenterPt({}, mode), cv::Point(-1, -1));
        EXPECT_EQ(orx::getContourCenterPt({{4, 9}}, mode), cv::Point(4, 9));
        EXPECT_EQ(orx::getContourCenterPt({{4, 9}, {10, 9}}, mode), cv::Point(7, 9));
    }
}

TEST(GetContourCenterPt, StaysInTheBoundingRectangle) {
    // Two loops of opposite turn and nearly equal area: the moments' quotient lies far away.
    const Contour crossed = {{0, 0}, {10, 10}, {10, 0}, {0, 11}};
    const Contour extreme = {{INT_MIN, INT_MIN}, {INT_MAX, INT_MIN}, {INT_MAX, INT_MAX}};
    for (const int mode : {0, 1, 2}) {
        EXPECT_TRUE(cv::Rect(0, 0, 11, 12).contains(orx::getContourCenterPt(crossed, mode)));
        orx::getContourCenterPt(extreme, mode);
    }
    EXPECT_EQ(orx::getContourCenterPt(extreme, 1), cv::Point(0, 0));
}

}  // namespace
