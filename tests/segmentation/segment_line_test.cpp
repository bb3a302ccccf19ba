#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

using orx::TSegemetLine;
using Points = std::vector<cv::Point>;

Points row(int from, int to, int y) {
    Points points;
    for (int x = from; x <= to; ++x) points.emplace_back(x, y);
    return points;
}

TEST(TSegemetLine, ChordsHaveUnitNormals) {
    TSegemetLine line;
    line.generateLine({3, 4}, {3, 90});
    EXPECT_EQ(cv::Vec3d(line.chordA, line.chordB, line.chordC), cv::Vec3d(1, 0, -3));
    line.generateLine({7, 7}, {7, 7});
    EXPECT_EQ(cv::Vec3d(line.chordA, line.chordB, line.chordC), cv::Vec3d(1, 0, -7));
    line.generateLine({0, 0}, {3, 4});
    EXPECT_DOUBLE_EQ(line.chordA, 0.8);
    EXPECT_DOUBLE_EQ(line.chordB, -0.6);
    EXPECT_DOUBLE_EQ(line.chordC, 0.0);
}

TEST(TSegemetLine, AHorizontalRowIsFittedExactlyAndDirectedFromStartToEnd) {
    for (const bool forward : {true, false}) {
        Points points = row(0, 20, 5);
        if (!forward) std::reverse(points.begin(), points.end());
        const cv::Vec2i start(points.front().x, points.front().y);
        const cv::Vec2i end(points.back().x, points.back().y);
        const TSegemetLine line(start, end, points);
        EXPECT_EQ(line.points, points);
        EXPECT_EQ(line.fitPoints, points);
        EXPECT_EQ(line.maxDist, 0.0);
        EXPECT_EQ(line.fitStartPoint, points.front());
        EXPECT_EQ(line.fitEndPoint, points.back());
        EXPECT_NEAR(line.fitA, 0.0, 1e-6);
        EXPECT_NEAR(line.fitB, forward ? -1.0 : 1.0, 1e-6) << "the direction (vx, vy) gives a = vy, b = -vx";
        EXPECT_NEAR(line.fitC / -line.fitB, 5.0, 1e-5);
        EXPECT_FALSE(line.usedByCircle);
    }
}

TEST(TSegemetLine, AVerticalColumnIsFitted) {
    Points points;
    for (int y = 40; y >= 0; --y) points.emplace_back(9, y);
    const TSegemetLine line({9, 40}, {9, 0}, points);
    EXPECT_NEAR(std::abs(line.fitA), 1.0, 1e-6);
    EXPECT_NEAR(line.fitC / -line.fitA, 9.0, 1e-5);
}

TEST(TSegemetLine, OnlyPointsNearTheRobustLineAreInliers) {
    Points points = row(0, 60, 10);
    points[30].y = 13;  // farther than three pixels from the fit, which leans a little towards it
    points[31].y = 12;
    const TSegemetLine line({0, 10}, {60, 10}, points);
    EXPECT_EQ(line.maxDist, 3.0);
    EXPECT_LT(TSegemetLine::point2LineDist({0, 10}, line.fitA, line.fitB, line.fitC), 0.1);
    EXPECT_EQ(line.fitPoints.size(),
              line.points.size() -
                  (TSegemetLine::point2LineDist({30, 13}, line.fitA, line.fitB, line.fitC) < 3.0 ? 0 : 1));
    points[30].y = 20;
    const TSegemetLine outlier({0, 10}, {60, 10}, points);
    EXPECT_EQ(outlier.fitPoints.size(), points.size() - 1);
}

TEST(TSegemetLine, FewPointsLeaveTheFitAlone) {
    const TSegemetLine two({0, 0}, {5, 5}, Points{{0, 0}, {5, 5}});
    EXPECT_EQ(two.fitA, 0.0);
    EXPECT_EQ(two.fitB, 0.0);
    EXPECT_TRUE(two.fitPoints.empty());
    EXPECT_EQ(two.fitEndPoint, cv::Point(0, 0));
    const TSegemetLine none(Points{});
    EXPECT_TRUE(none.points.empty());
    EXPECT_EQ(none.startPoint, cv::Vec2i(0, 0));
}

TEST(TSegemetLine, PointsAloneGiveNoChord) {
    const Points points = row(3, 30, 8);
    const TSegemetLine line(points);
    EXPECT_EQ(line.startPoint, cv::Vec2i(3, 8));
    EXPECT_EQ(line.endPoint, cv::Vec2i(30, 8));
    EXPECT_EQ(cv::Vec3d(line.chordA, line.chordB, line.chordC), cv::Vec3d(0, 0, 0));
    EXPECT_EQ(line.fitPoints, points);
}

TEST(TSegemetLine, TheFootOfAPerpendicularLiesOnTheLine) {
    // 3x - 4y + 10 = 0; from (6, -3) the foot is (6, -3) - (40 / 25) * (3, -4) = (1.2, 3.4).
    const cv::Point2d foot = TSegemetLine::findCrossPoint({6, -3}, 3, -4, 10);
    EXPECT_NEAR(foot.x, 1.2, 1e-12);
    EXPECT_NEAR(foot.y, 3.4, 1e-12);
    EXPECT_DOUBLE_EQ(TSegemetLine::point2LineDist({6, -3}, 3, -4, 10), 8.0);
    EXPECT_DOUBLE_EQ(TSegemetLine::point2LineDistAbs({6, 7}, 3, -4, 10), 0.0);
}

TEST(TSegemetLine, TheFitEqualsOpenCVsHuberLineToTheLastBit) {
    std::mt19937 random(3);
    const auto noise = [&](unsigned span) {
        return static_cast<int>(random() % (2 * span + 1)) - static_cast<int>(span);
    };
    for (int round = 0; round < 150; ++round) {
        const int count = 3 + static_cast<int>(random() % (round % 2 == 0 ? 12 : 300));
        const unsigned spread = static_cast<unsigned>(round % 7);
        const double slope = noise(30) / 10.0;
        // The last is so far away that single precision rounds the coordinates, and sums of their squares.
        const int far = round % 5 == 0 ? 100000 : round % 5 == 1 ? 1 << 29 : 100;
        Points points;
        for (int i = 0; i < count; ++i) points.emplace_back(far + i, cvRound(slope * i) + noise(spread));
        if (round % 3 == 0) std::reverse(points.begin(), points.end());
        const TSegemetLine line(points);
        cv::Vec4f expected;
        cv::fitLine(points, expected, cv::DIST_HUBER, 0, 0.01, 0.01);
        const float along = static_cast<float>(line.endPoint[0] - line.startPoint[0]) * expected[0] +
                            static_cast<float>(line.endPoint[1] - line.startPoint[1]) * expected[1];
        const float sign = along < 0 ? -1.0F : 1.0F;
        const float vx = sign * expected[0];
        const float vy = sign * expected[1];
        ASSERT_NE(vx, 0.0F);
        ASSERT_EQ(line.fitA, vy) << round;
        ASSERT_EQ(line.fitB, -vx) << round;
        ASSERT_EQ(line.fitC, expected[3] * vx - expected[2] * vy) << round;
    }
}

}  // namespace
