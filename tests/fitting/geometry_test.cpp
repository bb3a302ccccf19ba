#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

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

// The turns as they are stated, on corners so far apart that products and differences wrap.
TEST(IsPointInRect, WrapsAsTheStatedTurns) {
    const auto turn = [](cv::Point a, cv::Point b, cv::Point p) {
        const auto wide = [](int value) { return static_cast<std::uint32_t>(value); };
        return static_cast<std::int32_t>((wide(b.x) - wide(a.x)) * (wide(p.y) - wide(a.y)) -
                                         (wide(b.y) - wide(a.y)) * (wide(p.x) - wide(a.x)));
    };
    std::mt19937 random(14);
    int inside = 0;
    for (int i = 0; i < 20000; ++i) {
        const int reach = i % 3 == 0 ? 3 : i % 3 == 1 ? 60000 : kHighest;
        std::uniform_int_distribution<int> at(-reach, reach);
        cv::Point p[5];
        for (cv::Point& point : p) point = {at(random), at(random)};
        int left = 0, right = 0;
        for (int k = 0; k < 4; ++k) {
            const std::int32_t t = turn(p[k], p[(k + 1) % 4], p[4]);
            left += t < 0;
            right += t > 0;
        }
        const bool expected = left == 4 || right == 4;
        EXPECT_EQ(orx::isPointInRect(p[4], p[0], p[1], p[2], p[3]), expected);
        inside += expected;
    }
    EXPECT_GT(inside, 1000);
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

// The order as it is stated: by the angle at the topmost point, equal ones as they come.
Points plainOrder(Points pts) {
    for (std::size_t i = 1; i < pts.size(); ++i) {
        if (pts[i].y < pts[0].y) std::swap(pts[0], pts[i]);
    }
    const cv::Point base = pts[0];
    const auto angleOf = [&](cv::Point p) {
        const double dx = p.x - base.x;
        const double dy = p.y - base.y;
        return p == base ? -1.0 : std::acos(dx / std::sqrt(dx * dx + dy * dy));
    };
    std::stable_sort(pts.begin() + 1, pts.end(),
                     [&](cv::Point a, cv::Point b) { return angleOf(a) > angleOf(b); });
    return pts;
}

// All around; on a small grid, with many ties and repeated bases; nearly all in one direction.
TEST(SortPolygonVertexs, LongListsAreOrderedAsShortOnes) {
    std::mt19937 random(13);
    for (const int count : {15, 16, 17, 63, 64, 65, 66, 400, 3000}) {
        Points round, grid, narrow;
        for (int i = 0; i < count; ++i) {
            const double angle = 2 * CV_PI * i / count;
            round.emplace_back(cvRound(1e6 * std::cos(angle)), cvRound(9e5 * std::sin(angle)));
            grid.emplace_back(static_cast<int>(random() % 9), static_cast<int>(random() % 5));
            narrow.emplace_back(static_cast<int>(random() % 100000000), static_cast<int>(random() % 7));
        }
        narrow.emplace_back(-5, 900);
        std::shuffle(round.begin(), round.end(), random);
        for (const Points& points : {round, grid, narrow}) {
            Points sorted = points;
            ASSERT_TRUE(orx::sortPolygonVertexs(sorted));
            EXPECT_EQ(sorted, plainOrder(points)) << count;
        }
    }
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

// The algebraic circle as it is stated: sums in the order of the points, products in 32-bit integers.
cv::Point3d plainCircle(const Points& points) {
    const auto wrapped = [](std::int64_t a, std::int64_t b) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
    };
    const auto middle = [](int low, int high) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(low) + static_cast<std::uint32_t>(high)) /
               2;
    };
    const auto [left, right] =
        std::minmax_element(points.begin(), points.end(), [](cv::Point a, cv::Point b) { return a.x < b.x; });
    const auto [top, bottom] =
        std::minmax_element(points.begin(), points.end(), [](cv::Point a, cv::Point b) { return a.y < b.y; });
    const std::int32_t ox = middle(left->x, right->x);
    const std::int32_t oy = middle(top->y, bottom->y);
    double sx = 0, sy = 0, sxx = 0, syy = 0, sxxx = 0, syyy = 0, sxy = 0, sxyy = 0, sxxy = 0;
    for (const cv::Point& p : points) {
        const auto x = static_cast<std::int32_t>(std::int64_t{p.x} - ox);
        const auto y = static_cast<std::int32_t>(std::int64_t{p.y} - oy);
        const std::int32_t xx = wrapped(x, x);
        const std::int32_t yy = wrapped(y, y);
        sx += x;
        sy += y;
        sxx += xx;
        syy += yy;
        sxxx += wrapped(xx, x);
        syyy += wrapped(yy, y);
        sxy += wrapped(x, y);
        sxyy += wrapped(x, yy);
        sxxy += wrapped(xx, y);
    }
    const auto n = static_cast<double>(points.size());
    const double C = n * sxx - sx * sx;
    const double D = n * sxy - sx * sy;
    const double E = n * sxxx + n * sxyy - (sxx + syy) * sx;
    const double G = n * syy - sy * sy;
    const double H = n * sxxy + n * syyy - (sxx + syy) * sy;
    const double a = (H * D - E * G) / (C * G - D * D);
    const double b = (H * C - E * D) / (D * D - G * C);
    const double c = -(a * sx + b * sy + sxx + syy) / n;
    return {ox - a / 2, oy - b / 2, std::sqrt(a * a + b * b - 4 * c) / 2};
}

Points scattered(std::size_t count, int extent, std::mt19937& random) {
    std::uniform_int_distribution<int> at(-extent, extent);
    Points points(count);
    for (cv::Point& p : points) p = {at(random), at(random)};
    return points;
}

// On each processor's way through the sums; centred coordinates above 1290 wrap in the third power.
TEST(FitCircle, HasTheBitsOfThePlainSums) {
    const auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
    std::mt19937 random(11);
    for (const bool optimized : {true, false}) {
        for (std::size_t count = 3; count < 60; ++count) {
            for (const int extent : {2, 500, 1400, 100000, kHighest}) {
                const Points points = scattered(count, extent, random);
                cv::Point3d circle;
                cv::setUseOptimized(optimized);
                EXPECT_TRUE(orx::fitCircle(points, circle));
                cv::setUseOptimized(true);
                const cv::Point3d expected = plainCircle(points);
                EXPECT_TRUE(same(circle.x, expected.x) && same(circle.y, expected.y) &&
                            same(circle.z, expected.z))
                    << count << " points up to " << extent << ": " << circle << ", " << expected;
            }
        }
    }
}

// Some 5 million points, nearly all with the same odd cube: its sum passes 2^53 and is rounded from there on.
TEST(FitCircle, AddsInOrderWhereSumsAreRounded) {
    Points points((std::size_t{1} << 22) + 700001, {-1289, -1289});
    for (std::size_t i = 0; i < points.size(); i += 50) points[i] = {1289, 1289};
    for (std::size_t i = 0; i < points.size(); i += 97) points[i] = {1288, -1289};
    cv::Point3d circle;
    EXPECT_TRUE(orx::fitCircle(points, circle));
    EXPECT_EQ(circle, plainCircle(points));
}

}  // namespace
