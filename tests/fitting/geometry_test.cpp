#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "orxFunctions/orxfunctions.h"

namespace {

using Points = std::vector<cv::Point>;

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

TEST(AngleFrom2Points, EqualColumnsComeBeforeEqualRows) {
    for (const auto type : {orx::ANGLE_ABS, orx::ANGLE_0_180, orx::ANGLE_SIGNED}) {
        EXPECT_EQ(orx::angleFrom2Points({5, 3}, {5, 9}, type), 90.0);
        EXPECT_EQ(orx::angleFrom2Points({5, 5}, {5, 5}, type), 90.0);
        EXPECT_EQ(orx::angleFrom2Points({1, 4}, {7, 4}, type), 0.0);
    }
}

TEST(AngleFrom2Points, TypeNamesTheRange) {
    struct Case {
        cv::Point to;
        double absolute, upTo180, withSign;
    };
    // 36.8698976... is the angle of the triangle 3-4-5 at its longer leg.
    constexpr double kAcute = 36.86989764584402;
    for (const Case& c :
         {Case{{1, 1}, 45, 45, 45}, Case{{1, -1}, 45, 135, -45}, Case{{-4, 3}, kAcute, 180 - kAcute, -kAcute},
          Case{{-4, -3}, kAcute, kAcute, kAcute}}) {
        SCOPED_TRACE(c.to);
        EXPECT_NEAR(orx::angleFrom2Points({0, 0}, c.to, orx::ANGLE_ABS), c.absolute, 1e-12);
        EXPECT_NEAR(orx::angleFrom2Points({0, 0}, c.to, orx::ANGLE_0_180), c.upTo180, 1e-12);
        EXPECT_NEAR(orx::angleFrom2Points({0, 0}, c.to, orx::ANGLE_SIGNED), c.withSign, 1e-12);
    }
    EXPECT_NEAR(orx::angleFrom2Points({kLowest, kLowest}, {kHighest, kHighest}, orx::ANGLE_ABS), 45, 1e-12);
}

TEST(AngleToX, GoesOnceAround) {
    constexpr double kAcute = 36.86989764584402;
    const std::pair<cv::Point, double> cases[] = {
        {{4, 0}, 0},    {{4, 3}, kAcute},         {{0, 3}, 90},   {{-4, 3}, 180 - kAcute},
        {{-4, 0}, 180}, {{-4, -3}, 180 + kAcute}, {{0, -3}, 270}, {{4, -3}, 360 - kAcute},
        {{0, 0}, 0}};
    for (const auto& [vector, angle] : cases) {
        EXPECT_NEAR(orx::angleToX({10, 20}, cv::Point(10, 20) + vector), angle, 1e-12) << vector;
    }
}

TEST(AvoidFloatZero, KeepsTheSign) {
    EXPECT_EQ(orx::avoidFloatZero(0.0), 1e-5);
    EXPECT_EQ(orx::avoidFloatZero(-1e-6), -1e-5);
    EXPECT_EQ(orx::avoidFloatZero(9.99e-6), 1e-5);
    EXPECT_EQ(orx::avoidFloatZero(2e-5), 2e-5);
    EXPECT_EQ(orx::avoidFloatZero(-3.0), -3.0);
}

TEST(IsCollinear, IsExactAndWraps) {
    EXPECT_TRUE(orx::isCollinear({0, 0}, {1000, 999}, {2000, 1998}));
    EXPECT_FALSE(orx::isCollinear({0, 0}, {1000, 999}, {2000, 1999}));
    EXPECT_TRUE(orx::isCollinear({4, 4}, {4, 4}, {9, 1}));
    // 65536 * 65536 is 0 in 32 bits, as is 0 * 5.
    EXPECT_TRUE(orx::isCollinear({0, 0}, {0, 65536}, {65536, 5}));
    EXPECT_FALSE(orx::isCollinear({0, 0}, {0, 65535}, {65536, 5}));
}

TEST(PointDistance2Line, IsTheDistanceToTheInfiniteLine) {
    EXPECT_EQ(orx::pointDistance2Line({9, 100}, {4, 0}, {4, 7}), 5.0);
    EXPECT_EQ(orx::pointDistance2Line({9, 100}, {4, 7}, {5, 7}), 93.0);
    EXPECT_EQ(orx::pointDistance2Line({9, 100}, {4, 7}, {4, 7}), 5.0);
    EXPECT_NEAR(orx::pointDistance2Line({0, 5}, {0, 0}, {4, 3}), 4.0, 1e-12);
    EXPECT_NEAR(orx::pointDistance2Line({400, 300}, {0, 0}, {4, 3}), 0.0, 1e-10);
    EXPECT_NEAR(orx::pointDistance2Line({-30, 40}, {8, 6}, {-4, -3}), 50.0, 1e-10);
    EXPECT_EQ(orx::pointDistance2Line({kHighest, 0}, {kLowest, 0}, {kLowest, 1}), 4294967295.0);
}

TEST(IsPointInRect, IsStrictForBothWindings) {
    const cv::Point corners[] = {{0, 0}, {10, 2}, {12, 11}, {-1, 9}};
    const auto inside = [&](cv::Point p) {
        const bool forward = orx::isPointInRect(p, corners[0], corners[1], corners[2], corners[3]);
        const bool backward = orx::isPointInRect(p, corners[3], corners[2], corners[1], corners[0]);
        EXPECT_EQ(forward, backward) << p;
        return forward;
    };
    EXPECT_TRUE(inside({5, 5}));
    EXPECT_TRUE(inside({1, 1}));
    EXPECT_FALSE(inside({5, 1})) << "on an edge";
    EXPECT_FALSE(inside({13, 5}));
    EXPECT_FALSE(inside({5, -1}));
    for (const cv::Point& corner : corners) EXPECT_FALSE(inside(corner));
}

TEST(SortPolygonVertexs, StartsAtTheTopAndRunsFromLeftToRight) {
    // Around the base (4, 0): directions 135, 117, 90, 63 and 0 degrees.
    const Points sorted = {{4, 0}, {0, 4}, {2, 4}, {4, 4}, {6, 4}, {9, 0}};
    Points points = {{6, 4}, {4, 0}, {4, 4}, {9, 0}, {0, 4}, {2, 4}};
    ASSERT_TRUE(orx::sortPolygonVertexs(points));
    EXPECT_EQ(points, sorted);
}

TEST(SortPolygonVertexs, EarlierPointsWinTies) {
    // Two points at the top and two in the same direction.
    Points points = {{5, 9}, {3, 1}, {8, 1}, {3, 6}, {3, 4}};
    ASSERT_TRUE(orx::sortPolygonVertexs(points));
    EXPECT_EQ(points, (Points{{3, 1}, {3, 6}, {3, 4}, {5, 9}, {8, 1}}));

    Points empty;
    EXPECT_FALSE(orx::sortPolygonVertexs(empty));
    Points same(4, {7, 7});
    EXPECT_TRUE(orx::sortPolygonVertexs(same));
    EXPECT_EQ(same, Points(4, {7, 7}));
}

TEST(CalcPolygonArea, TakesTheVerticesInAnyOrder) {
    Points square = {{0, 0}, {0, 1}, {1, 0}, {1, 1}};
    do {
        EXPECT_EQ(orx::calcPolygonArea(square), 1.0);
    } while (std::next_permutation(square.begin(), square.end(), [](cv::Point a, cv::Point b) {
        return a.x != b.x ? a.x < b.x : a.y < b.y;
    }));
    EXPECT_EQ(orx::calcPolygonArea({{10, 10}, {14, 10}, {10, 13}}), 6.0);
    EXPECT_EQ(orx::calcPolygonArea({{10, 10}, {14, 10}, {10, 13}, {10, 10}}), 6.0) << "a vertex twice";
    EXPECT_EQ(orx::calcPolygonArea({{10, 10}, {14, 10}}), 0.0);
    // The cross terms are 0, 65536 * 65536 (0 in 32 bits) and 0.
    EXPECT_EQ(orx::calcPolygonArea({{0, 0}, {65536, 0}, {0, 65536}}), 0.0);
}

}  // namespace
