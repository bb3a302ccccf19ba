// How robust fits begin: scenes in which chance plays against the search, and outliers at regular steps.
#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <vector>

#include "docs/tools/measuring_accuracy.h"

namespace {

using namespace measuring_accuracy;

orx::TFitOptions tukey() {
    orx::TFitOptions options;
    options.loss = orx::flTukey;
    return options;
}

// How many bounds the worst of the parameters is off.
template <class Kind>
double worstError(const Kind& kind, const Told& told) {
    double worst = 0;
    for (int p = 0; p < kind.parameters(); ++p)
        worst = std::max(worst, std::abs(told.error[p]) / kind.boundDeviation()[p]);
    return worst;
}

template <class Kind, class Fit>
void expectFound(const Kind& kind, const std::vector<unsigned>& seeds, Fit fit) {
    for (const unsigned seed : seeds) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const auto found = fit(kind.make(random).points);
        ASSERT_EQ(found.status, orx::fsOk);
        EXPECT_LT(worstError(kind, kind.judge(found)), 5);
        EXPECT_LT(found.noise, 1.3 * kind.scene.noise);
    }
}

// Of 200 points evenly chosen from these, more than half were outliers.
TEST(RobustStart, BearsManyOutliersAmongThePointsThatJudge) {
    expectFound(circleTask(360, 2000, 0.01, 0.4), {584322828U, 2427605198U, 38759130U, 695134884U},
                [](const auto& points) { return orx::fitCircleGeometric(points, tukey()); });
}

// Ellipses through five points each are rougher than a scale near theirs would bear.
TEST(RobustStart, FindsTheNoiseBelowThatOfTheSamples) {
    expectFound(ellipseTask(5, 2000, 1, 0.4), {1483034545U, 2946305267U, 186056241U},
                [](const auto& points) { return orx::fitEllipseGeometric(points, tukey()); });
}

// Steps from a radius far too large led through zero.
TEST(RobustStart, FindsShortArcsFromAnyRadius) {
    expectFound(circleTask(30, 200, 1, 0.4), {2029141734U, 1497019195U, 2649392728U, 625212545U},
                [](const auto& points) { return orx::fitCircleGeometric(points, tukey()); });
    orx::TConsensusOptions options;
    options.tolerance = 3.5;
    const auto search = [&](const auto& points) { return orx::findCircle(points, options); };
    EXPECT_EQ(measure(circleTask(30, 200, 1, 0.4), search, 1, 300, 2).lost, 0);
}

TEST(RobustStart, BearsOutliersAtRegularSteps) {
    for (const std::size_t step : {5U, 10U}) {
        SCOPED_TRACE(testing::Message() << "every point of " << step);
        const CircleTask kind = circleTask(360, 2000, 0.1);
        Random random(7);
        std::vector<cv::Point2d> points = kind.make(random).points;
        // Two neighbours of five, or four of ten.
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (i % step < 2 * step / 5) points[i] = {random.uniform(200, 600), random.uniform(100, 500)};
        }
        const orx::TMeasuredCircle fit = orx::fitCircleGeometric(points, tukey());
        ASSERT_EQ(fit.status, orx::fsOk);
        EXPECT_LT(worstError(kind, kind.judge(fit)), 6);
        EXPECT_LT(fit.noise, 0.12);
    }
}

// Eleven points of twenty lie on one shape and nine on another: between the two, all are near.
TEST(RobustStart, ABareMajorityDecides) {
    std::vector<cv::Point2d> ofLine;
    std::vector<cv::Point2d> ofCircle;
    for (int i = 0; i < 20; ++i) {
        const bool isOfTheMany = i % 2 == 0 || i == 9;
        const double off = 0.01 * (i % 3 - 1);
        const double turn = 2 * CV_PI * i / 20;
        ofLine.emplace_back(5.0 * i, isOfTheMany ? off : 50 + off);
        ofCircle.push_back((isOfTheMany ? 100 + off : 150 + off) *
                           cv::Point2d(std::cos(turn), std::sin(turn)));
    }
    const orx::TMeasuredLine line = orx::fitLineGeometric(ofLine, tukey());
    ASSERT_EQ(line.status, orx::fsOk);
    EXPECT_NEAR(line.point.y, 0, 0.02);
    EXPECT_LT(line.noise, 0.1);
    const orx::TMeasuredCircle circle = orx::fitCircleGeometric(ofCircle, tukey());
    ASSERT_EQ(circle.status, orx::fsOk);
    EXPECT_NEAR(circle.radius, 100, 0.05);
    EXPECT_LT(circle.noise, 0.1);
}

// The angles of a circle go on behind 360 degrees: a point behind a gap has a neighbour before it.
TEST(RobustStart, NoPointIsLoneWhereTheAnglesBeginAnew) {
    for (const double seam : {0.0, 180.0}) {
        SCOPED_TRACE(seam);
        std::vector<cv::Point2d> points;
        const auto add = [&](double degrees) {
            const double turn = (seam + degrees) * CV_PI / 180;
            const double radius = 100 + 0.05 * std::cos(40 * turn);
            points.emplace_back(radius * std::cos(turn), radius * std::sin(turn));
        };
        add(1);
        for (int degrees = 41; degrees < 360; degrees += 6) add(degrees);
        for (int i = 0; i < 4; ++i) points.emplace_back(10.0 * i, 20.0 - 9 * i);  // outliers
        const orx::TMeasuredCircle circle = orx::fitCircleGeometric(points, tukey());
        ASSERT_EQ(circle.status, orx::fsOk);
        EXPECT_EQ(circle.used.front(), 1);
    }
}

// A lone point far along the outline is one of many outliers, or the best that there is.
TEST(RobustStart, TellsLonePointsFromOutliers) {
    const TrueCircle truth{{412.3, 287.8}, 100, 33};
    Random random(5);
    std::vector<cv::Point2d> points = truth.points({30, 20, 0.1}, random);
    for (const double angle : {150.0, 230.0, 310.0})
        points.push_back(truth.center + truth.radius * geometric_scenes::unit(angle));
    const orx::TMeasuredCircle all = orx::fitCircleGeometric(points, tukey());
    ASSERT_EQ(all.status, orx::fsOk);
    EXPECT_EQ(all.usedPoints, 23);
    EXPECT_GT(all.sweep, 250);
    // Outliers in numbers from which the three may well be.
    for (int i = 0; i < 10; ++i) points.emplace_back(random.uniform(250, 380), random.uniform(250, 380));
    const orx::TMeasuredCircle arc = orx::fitCircleGeometric(points, tukey());
    ASSERT_EQ(arc.status, orx::fsOk);
    EXPECT_LT(arc.sweep, 60);
}

}  // namespace
