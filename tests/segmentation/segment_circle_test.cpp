#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

using orx::TSegemetCircle;
using orx::TSegemetLine;
using Points = std::vector<cv::Point>;

constexpr double kPi = 3.141592653589793;

cv::Point onCircle(cv::Point2d center, double radius, double degrees) {
    return {cvRound(center.x + radius * std::cos(degrees * kPi / 180)),
            cvRound(center.y + radius * std::sin(degrees * kPi / 180))};
}

// The pixels of an arc, one for about each pixel of its length.
Points arc(cv::Point2d center, double radius, double from, double to) {
    Points points;
    const double step = (to > from ? 1 : -1) * 180 / (kPi * radius);
    for (double a = from; to > from ? a <= to : a >= to; a += step) {
        const cv::Point p = onCircle(center, radius, a);
        if (points.empty() || points.back() != p) points.push_back(p);
    }
    return points;
}

// A piece of an arc described as a chord.
TSegemetLine chordOf(const Points& points) {
    return {{points.front().x, points.front().y}, {points.back().x, points.back().y}, points};
}

TEST(TSegemetCircle, PassesThroughThreePoints) {
    const TSegemetCircle circle({130, 100}, {100, 130}, {70, 100});
    EXPECT_NEAR(circle.center.x, 100, 1e-9);
    EXPECT_NEAR(circle.center.y, 100, 1e-9);
    EXPECT_NEAR(circle.radius, 30, 1e-9);
    EXPECT_EQ(circle.startPoint, cv::Vec2i(130, 100));
    EXPECT_EQ(circle.endPoint, cv::Vec2i(70, 100));
    EXPECT_FALSE(circle.isCircle);
    // Integer division would move this centre: it lies at (0.5, 0.5).
    const TSegemetCircle half({0, 0}, {1, 0}, {0, 1});
    EXPECT_DOUBLE_EQ(half.center.x, 0.5);
    EXPECT_DOUBLE_EQ(half.center.y, 0.5);
}

TEST(TSegemetCircle, CollinearPointsAreMarked) {
    const TSegemetCircle circle({0, 0}, {5, 5}, {9, 9});
    EXPECT_EQ(circle.center, cv::Point2d(-1, -1));
    EXPECT_EQ(circle.radius, -1);
    EXPECT_EQ(circle.endPoint, cv::Vec2i(0, 0));
}

TEST(TSegemetCircle, PointAnglesRunClockwiseFromTheRight) {
    TSegemetCircle circle;
    circle.center = {100, 100};
    EXPECT_DOUBLE_EQ(circle.getPointAngle({150, 100}), 360);
    EXPECT_DOUBLE_EQ(circle.getPointAngle({150, 150}), 45);
    EXPECT_DOUBLE_EQ(circle.getPointAngle({100, 150}), 90);
    EXPECT_DOUBLE_EQ(circle.getPointAngle({50, 150}), 135);
    EXPECT_DOUBLE_EQ(circle.getPointAngle({50, 100}), 180);
    EXPECT_DOUBLE_EQ(circle.getPointAngle({50, 50}), 225);
    EXPECT_DOUBLE_EQ(circle.getPointAngle({100, 50}), 270);
    EXPECT_DOUBLE_EQ(circle.getPointAngle({150, 50}), 315);
}

TEST(TSegemetCircle, ArcAnglesPassTheMiddlePoint) {
    TSegemetCircle circle;
    circle.center = {1000, 1000};
    const auto at = [](double degrees) {
        const cv::Point p = onCircle({1000, 1000}, 900, degrees);
        return cv::Vec2i(p.x, p.y);
    };
    circle.getCircleAngle(at(350), at(10), at(20));
    EXPECT_NEAR(circle.startAngle, -10, 0.1);
    EXPECT_NEAR(circle.endAngle, 20, 0.1);
    circle.getCircleAngle(at(20), at(10), at(350));
    EXPECT_NEAR(circle.startAngle, -10, 0.1);
    EXPECT_NEAR(circle.endAngle, 20, 0.1);
    circle.getCircleAngle(at(10), at(180), at(350));
    EXPECT_NEAR(circle.startAngle, 10, 0.1);
    EXPECT_NEAR(circle.endAngle, 350, 0.1);
}

TEST(TSegemetCircle, ChordDirectionsHaveYUpwards) {
    TSegemetLine l1({0, 0}, {10, -10}, Points{});
    TSegemetLine l2({10, -10}, {-10, -10}, Points{});
    TSegemetCircle circle;
    circle.getAngle2(l1, l2);
    EXPECT_DOUBLE_EQ(circle.startAngle, 45);
    EXPECT_DOUBLE_EQ(circle.endAngle, 135);
}

TEST(TSegemetCircle, TwoChordsOfOneArcBecomeACircle) {
    TSegemetLine l1 = chordOf(arc({300, 300}, 100, 0, 50));
    TSegemetLine l2 = chordOf(arc({300, 300}, 100, 50, 100));
    const TSegemetCircle circle(l1, l2, 300, 60, 3.5);
    ASSERT_TRUE(circle.isCircle);
    EXPECT_TRUE(l1.usedByCircle);
    EXPECT_TRUE(l2.usedByCircle);
    EXPECT_NEAR(circle.radius, 100, 0.5);
    EXPECT_NEAR(circle.center.x, 300, 0.5);
    EXPECT_NEAR(circle.center.y, 300, 0.5);
    EXPECT_LT(circle.fitError, 1.5);
    EXPECT_EQ(circle.points.size(), l1.points.size() + l2.points.size());
    EXPECT_EQ(circle.partMaxDist, std::max(l1.maxDist, l2.maxDist));
    EXPECT_NEAR(circle.startAngle, 0, 1);
    EXPECT_NEAR(circle.endAngle, 100, 1);
}

TEST(TSegemetCircle, ARejectedArcLeavesItsPartsUntouched) {
    TSegemetLine l1 = chordOf(arc({500, 500}, 400, 0, 20));
    TSegemetLine l2 = chordOf(arc({500, 500}, 400, 20, 40));
    const TSegemetCircle tooLarge(l1, l2, 300, 60, 3.5);
    EXPECT_FALSE(tooLarge.isCircle);
    EXPECT_NEAR(tooLarge.radius, 400, 8);
    EXPECT_FALSE(l1.usedByCircle);
    EXPECT_FALSE(l2.usedByCircle);

    TSegemetCircle part(l1, l2, 500, 60, 3.5);
    ASSERT_TRUE(part.isCircle);
    TSegemetLine corner = chordOf({{0, 0}, {1, 0}, {2, 0}, {300, 0}});
    const TSegemetCircle grown(part, corner, 500, 60, 3.5, false);
    EXPECT_FALSE(grown.isCircle);
    EXPECT_TRUE(part.isCircle);
    EXPECT_FALSE(corner.usedByCircle);
}

TEST(TSegemetCircle, BoundsAreReplacedOnlyByPositiveRadiiButAlwaysByTheErrorBound) {
    TSegemetLine l1 = chordOf(arc({300, 300}, 100, 0, 50));
    TSegemetLine l2 = chordOf(arc({300, 300}, 100, 50, 100));
    const TSegemetCircle circle(l1, l2, 0, -5, -1);
    EXPECT_EQ(circle.maxRadius, 300);
    EXPECT_EQ(circle.minRadius, 60);
    EXPECT_EQ(circle.errThreshold, -1);
    const TSegemetCircle replaced(l1, l2, 90, 20, 0);
    EXPECT_EQ(replaced.maxRadius, 90);
    EXPECT_EQ(replaced.minRadius, 20);
    EXPECT_EQ(replaced.errThreshold, 0);
}

// Points exactly on a circle of radius 65 about (0, 0) (16, 63, 25, 60, 33, 56, 39, 52 are legs of hypotenuse
// 65), so that its deviations are exact, with one more point that deviates by a known amount but hardly moves
// the fit.
Points exactCircle(int repetitions) {
    Points points;
    const int legs[][2] = {{16, 63}, {25, 60}, {33, 56}, {39, 52}};
    for (int r = 0; r < repetitions; ++r) {
        for (const auto& leg : legs) {
            for (const int sx : {-1, 1}) {
                for (const int sy : {-1, 1}) {
                    points.emplace_back(sx * leg[0], sy * leg[1]);
                    points.emplace_back(sx * leg[1], sy * leg[0]);
                }
            }
        }
    }
    return points;
}

TEST(TSegemetCircle, AcceptanceTurnsExactlyAtTheFitError) {
    Points first = exactCircle(200);
    first.emplace_back(0, 69);
    const Points second = exactCircle(1);
    TSegemetLine l1({0, 65}, {65, 0}, first);
    TSegemetLine l2({65, 0}, {0, -65}, second);
    const auto tryLines = [&](double errorBound) {
        TSegemetLine a = l1;
        TSegemetLine b = l2;
        return TSegemetCircle(a, b, 300, 60, errorBound);
    };
    const double error = tryLines(100).fitError;
    ASSERT_GT(error, 3.9);
    ASSERT_LT(error, 4.0);
    const double above = std::nextafter(error, 10.0);

    // Two lines: the error bound is exclusive; the parts' deviation is inclusive, below 4.0.
    l1.maxDist = 0;
    l2.maxDist = 0;
    EXPECT_FALSE(tryLines(error).isCircle);
    EXPECT_TRUE(tryLines(above).isCircle);
    l1.maxDist = error;
    EXPECT_TRUE(tryLines(0).isCircle);
    l1.maxDist = std::nextafter(error, 0.0);
    EXPECT_FALSE(tryLines(0).isCircle);

    // An arc and a line: the error bound is inclusive.
    const auto tryArc = [&](double errorBound) {
        TSegemetCircle c;
        c.points = first;
        c.isCircle = true;
        TSegemetLine l = l2;
        l.maxDist = 0;
        return TSegemetCircle(c, l, 300, 60, errorBound, false);
    };
    ASSERT_EQ(tryArc(100).fitError, error);
    EXPECT_TRUE(tryArc(error).isCircle);
    EXPECT_FALSE(tryArc(std::nextafter(error, 0.0)).isCircle);

    // The radius bounds are exclusive.
    const double radius = tryLines(100).radius;
    TSegemetLine a = l1;
    TSegemetLine b = l2;
    EXPECT_FALSE(TSegemetCircle(a, b, radius, 60, 100).isCircle);
    EXPECT_FALSE(TSegemetCircle(a, b, 300, radius, 100).isCircle);
    EXPECT_TRUE(
        TSegemetCircle(a, b, std::nextafter(radius, 99.0), std::nextafter(radius, 0.0), 100).isCircle);
}

TEST(TSegemetCircle, AnArcAndALineTolerateMoreThanTwoLines) {
    // A deviation between 4.0 and 4.5 that the parts had already.
    Points first = exactCircle(400);
    first.emplace_back(45, 53);  // distance sqrt(4834) = 69.53
    const Points second = exactCircle(1);
    TSegemetLine l1({0, 65}, {65, 0}, first);
    TSegemetLine l2({65, 0}, {0, -65}, second);
    l1.maxDist = 5;
    const TSegemetCircle fromLines(l1, l2, 300, 60, 0);
    ASSERT_GT(fromLines.fitError, 4.0);
    ASSERT_LT(fromLines.fitError, 4.55);
    EXPECT_FALSE(fromLines.isCircle);

    TSegemetCircle c;
    c.points = first;
    c.partMaxDist = 5;
    const TSegemetCircle fromArc(c, l2, 300, 60, 0, false);
    EXPECT_EQ(fromArc.isCircle, fromArc.fitError <= 4.5);
}

TEST(TSegemetCircle, ReversedPutsTheLineInFrontButNotItsDeviation) {
    TSegemetLine l1 = chordOf(arc({300, 300}, 100, 50, 100));
    TSegemetLine l2 = chordOf(arc({300, 300}, 100, 100, 150));
    TSegemetLine front = chordOf(arc({300, 300}, 100, 0, 50));
    TSegemetCircle part(l1, l2, 300, 60, 3.5);
    ASSERT_TRUE(part.isCircle);
    TSegemetCircle grown(part, front, 300, 60, 3.5, true);
    ASSERT_TRUE(grown.isCircle);
    EXPECT_FALSE(part.isCircle) << "absorbed";
    EXPECT_TRUE(front.usedByCircle);
    EXPECT_EQ(grown.firstPoints, front.points);
    EXPECT_EQ(grown.secondPoints, part.points);
    EXPECT_EQ(grown.firstMaxDist, part.fitError);
    EXPECT_EQ(grown.secondMaxDist, front.maxDist);
    EXPECT_NEAR(grown.startAngle, 0, 1);
    EXPECT_NEAR(grown.endAngle, 150, 1);
}

TEST(TSegemetCircle, TwoArcsMergeWithoutAnErrorTest) {
    TSegemetCircle c1;
    c1.points = arc({300, 300}, 100, 0, 90);
    c1.fitError = 0.5;
    c1.partMaxDist = 1.5;
    c1.isCircle = true;
    TSegemetCircle c2;
    c2.points = arc({308, 300}, 100, 95, 180);
    c2.fitError = 0.7;
    c2.partMaxDist = 2.5;
    c2.isCircle = true;
    const TSegemetCircle merged(c1, c2, 300, 60, 0.0, true);
    EXPECT_TRUE(merged.isCircle);
    EXPECT_GT(merged.fitError, 0.0);
    EXPECT_FALSE(c1.isCircle);
    EXPECT_FALSE(c2.isCircle);
    EXPECT_EQ(merged.firstMaxDist, 0.5);
    EXPECT_EQ(merged.secondMaxDist, 0.7);
    EXPECT_EQ(merged.partMaxDist, 2.5);
}

TEST(TSegemetCircle, ASingleLineIsJudgedByItsOwnDeviation) {
    TSegemetLine bent = chordOf(arc({300, 300}, 100, 10, 60));
    const TSegemetCircle circle(bent);
    EXPECT_TRUE(circle.isCircle) << "a chord's points deviate more from it than from their arc";
    EXPECT_TRUE(bent.usedByCircle);
    EXPECT_NEAR(circle.startAngle, 10, 1);
    EXPECT_NEAR(circle.endAngle, 60, 1);
    TSegemetLine straight = chordOf({{0, 0}, {1, 0}, {2, 0}, {3, 0}});
    EXPECT_FALSE(TSegemetCircle(straight).isCircle);
    EXPECT_FALSE(straight.usedByCircle);
}

TEST(TSegemetCircle, PartsWithoutPointsAreNeverRead) {
    TSegemetLine empty;
    TSegemetCircle none;
    const TSegemetCircle fromLines(empty, empty, 300, 60, 3.5);
    EXPECT_FALSE(fromLines.isCircle);
    EXPECT_FALSE(TSegemetCircle(none, none, 300, 60, 3.5, false).isCircle);
    EXPECT_FALSE(TSegemetCircle(none, empty, 300, 60, 3.5, true).isCircle);
    EXPECT_TRUE(TSegemetCircle(empty).points.empty());

    TSegemetCircle arcPart;
    arcPart.points = arc({300, 300}, 100, 0, 90);
    arcPart.isCircle = true;
    const TSegemetCircle grown(arcPart, empty, 300, 60, 3.5, false);
    EXPECT_TRUE(grown.isCircle);
    EXPECT_EQ(grown.startAngle, 0.0) << "no last point: the angles stay as they were";
    EXPECT_EQ(grown.endAngle, 0.0);
}

TEST(TSegemetCircle, AnArcMayGrowFromItself) {
    TSegemetLine l1 = chordOf(arc({300, 300}, 100, 0, 50));
    TSegemetLine l2 = chordOf(arc({300, 300}, 100, 50, 100));
    TSegemetLine next = chordOf(arc({300, 300}, 100, 100, 150));
    TSegemetCircle part(l1, l2, 300, 60, 3.5);
    TSegemetCircle grown = part;
    grown.generateCircleWithTurkey(grown, next, false);
    EXPECT_EQ(grown.points, TSegemetCircle(part, next, 300, 60, 3.5, false).points);
}

TEST(TSegemetCircle, DeviationsAreMeasuredFromTheOutline) {
    TSegemetCircle circle;
    circle.center = {10, 10};
    circle.radius = 5;
    EXPECT_DOUBLE_EQ(circle.point2CircleDist({10, 10}), 5);
    EXPECT_DOUBLE_EQ(circle.point2CircleDist({17, 10}), 2);
    EXPECT_DOUBLE_EQ(circle.point2CircleDistacne({{15, 10}, {17, 10}, {10, 6}}), 2);
    EXPECT_EQ(circle.point2CircleDistacne({}), 0);
}

TEST(TSegemetCircle, ThreePointConstructionFromTwoLinesComparesWithTheSmallerDeviation) {
    TSegemetLine l1 = chordOf(arc({300, 300}, 100, 0, 50));
    TSegemetLine l2 = chordOf(arc({300, 300}, 100, 50, 100));
    TSegemetCircle circle;
    circle.generateCircle(l1, l2);
    EXPECT_TRUE(circle.isCircle);
    EXPECT_EQ(circle.partMaxDist, std::min(l1.maxDist, l2.maxDist));
    EXPECT_TRUE(l1.usedByCircle);
    l1.usedByCircle = false;
    l1.maxDist = 0;
    TSegemetCircle strict;
    strict.generateCircle(l1, l2);
    EXPECT_FALSE(strict.isCircle);
    EXPECT_FALSE(l1.usedByCircle);
}

}  // namespace
