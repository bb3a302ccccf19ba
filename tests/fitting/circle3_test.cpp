// Circles through three points and the algebraic least-squares circle.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>

#include "orxFunctions/orxfunctions.h"
#include "tests/fitting/ransac_reference.h"

namespace {

using Points = std::vector<cv::Point>;

void expectNear(const cv::Point3d& circle, const cv::Point3d& truth, double tolerance) {
    EXPECT_NEAR(circle.x, truth.x, tolerance);
    EXPECT_NEAR(circle.y, truth.y, tolerance);
    EXPECT_NEAR(circle.z, truth.z, tolerance);
}

TEST(ThreePoints2circle, BothFormsGiveTheCircumscribedCircle) {
    // (x - 60)^2 + (y + 20)^2 = 65^2 through three of its pixels
    const cv::Point p1(60 + 16, -20 + 63), p2(60 - 33, -20 - 56), p3(60 + 52, -20 + 39);
    cv::Point3d circle;
    EXPECT_TRUE(orx::threePoints2circle(p1, p2, p3, circle));
    EXPECT_EQ(circle, cv::Point3d(60, -20, 65));
    EXPECT_TRUE(orx::threePoints2circle2(p1, p2, p3, circle));
    expectNear(circle, {60, -20, 65}, 1e-12);
}

TEST(ThreePoints2circle, OnlyTheSecondFormRefusesCollinearPoints) {
    cv::Point3d circle(1, 2, 3);
    EXPECT_FALSE(orx::threePoints2circle2({0, 0}, {5, 5}, {9, 9}, circle));
    EXPECT_EQ(circle, cv::Point3d(1, 2, 3));
    for (const Points& line :
         {Points{{0, 0}, {5, 5}, {9, 9}}, Points{{3, 1}, {3, 2}, {3, 9}}, Points(3, {4, 4})}) {
        EXPECT_TRUE(orx::threePoints2circle(line[0], line[1], line[2], circle));
        EXPECT_FALSE(std::isfinite(circle.x) && std::isfinite(circle.y));
        EXPECT_FALSE(std::isfinite(circle.z));
    }
}

// Centre (2600, 2100), radius 900, at 0, 90 and 180 degrees. In the integers, A = 3500^2 - 2600^2 - 3000^2 +
// 2100^2 = 900000, B = 3500^2 - 1700^2 = 9360000. For x: (2100 - 2100) A - (2100 - 3000) B = 8424000000,
// which is 4129032704 modulo 2^32 and so -165934592, over 2 (-900 * 2100 - 900 * 2100 + 1800 * 3000) =
// 3240000. For y: 1800 A - 900 B = -6804000000, which is -2509032704 + 2^32 = 1785934592 after one more turn,
// over 2 (0 * 900 + 1800 * (2100 - 3000)) = -3240000.
TEST(ThreePoints2circle, IntegerFormWrapsInLargeImages) {
    cv::Point3d circle;
    ASSERT_TRUE(orx::threePoints2circle({3500, 2100}, {2600, 3000}, {1700, 2100}, circle));
    const double x = -165934592.0 / 3240000.0;
    const double y = 1785934592.0 / -3240000.0;
    EXPECT_EQ(circle.x, x);
    EXPECT_EQ(circle.y, y);
    EXPECT_DOUBLE_EQ(circle.z, std::sqrt((y - 2100) * (y - 2100) + (x - 3500) * (x - 3500)));

    ASSERT_TRUE(orx::threePoints2circle2({3500, 2100}, {2600, 3000}, {1700, 2100}, circle));
    expectNear(circle, {2600, 2100, 900}, 1e-9);
}

TEST(ThreePoints2circle, IntegerFormEqualsReductionFrom64Bits) {
    std::mt19937 generator(11);
    for (const int extent : {30, 3000, 70000, 2000000000}) {
        std::uniform_int_distribution<int> coordinate(-extent, extent);
        const auto point = [&] { return cv::Point(coordinate(generator), coordinate(generator)); };
        for (int i = 0; i < 500; ++i) {
            const cv::Point p1 = point(), p2 = point(), p3 = point();
            const cv::Point3d expected = reference::integerCircle(p1, p2, p3);
            cv::Point3d circle;
            ASSERT_TRUE(orx::threePoints2circle(p1, p2, p3, circle));
            if (!std::isfinite(expected.z)) {
                EXPECT_FALSE(std::isfinite(circle.z));
            } else {
                ASSERT_EQ(circle, expected) << p1 << p2 << p3;
            }
        }
    }
}

TEST(FitCircle, ThreePointsGiveTheCircumscribedCircle) {
    cv::Point3d circle;
    ASSERT_TRUE(orx::fitCircle({{76, 43}, {27, -76}, {112, 19}}, circle));
    expectNear(circle, {60, -20, 65}, 1e-9);
}

TEST(FitCircle, RefusesFewerThanThreePoints) {
    cv::Point3d circle(1, 2, 3);
    EXPECT_FALSE(orx::fitCircle({{0, 0}, {5, 5}}, circle));
    EXPECT_EQ(circle, cv::Point3d(1, 2, 3));
}

TEST(FitCircle, CollinearPointsAreNotANumber) {
    cv::Point3d circle(1, 2, 3);
    EXPECT_TRUE(orx::fitCircle({{0, 0}, {5, 5}, {10, 10}}, circle));
    EXPECT_TRUE(std::isnan(circle.z));
}

TEST(FitCircle, IsUnbiasedOnAFullCircleOfPixels) {
    const cv::Point3d truth(812.3, 645.8, 433.6);
    Points points;
    for (int i = 0; i < 720; ++i) {
        const double angle = i * CV_PI / 360;
        points.emplace_back(cvRound(truth.x + truth.z * std::cos(angle)),
                            cvRound(truth.y + truth.z * std::sin(angle)));
    }
    cv::Point3d circle;
    ASSERT_TRUE(orx::fitCircle(points, circle));
    expectNear(circle, truth, 0.05);
}

// About their middle the points are (-1500, -1500), (1500, -1500), (-1500, 1500). 1500^3 is 3375000000, which
// wraps to -919967296, so each of Sxxx, Syyy, Sxyy and Sxxy is 919967296; C = G = 18e6, D = -9e6, and E = H =
// 6 * 919967296 + 13.5e6 * 1500 = 25769803776. Then a = b = -H / 9e6, 3 c = 3000 a - 13.5e6.
TEST(FitCircle, ProductsWrapIn32Bits) {
    const double h = 25769803776.0 / 9e6;
    cv::Point3d circle;
    ASSERT_TRUE(orx::fitCircle({{0, 0}, {3000, 0}, {0, 3000}}, circle));
    expectNear(circle, {1500 + h / 2, 1500 + h / 2, std::sqrt(2 * h * h + 4 * (3000 * h + 13.5e6) / 3) / 2},
               1e-8);
}

}  // namespace
