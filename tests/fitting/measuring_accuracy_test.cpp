// Holds the fits for measuring to what docs/accuracy-measuring.md shows. The bounds may be lowered, never
// raised.
#include <gtest/gtest.h>

#include <ostream>

#include "docs/tools/measuring_accuracy.h"

namespace {

using namespace measuring_accuracy;

// What fewer scenes than the page's may show at the most. Errors are told against the efficient estimate of
// the same scenes, so that some hundred tell the spread and the bias; the shares within the stated intervals
// need more.
struct Bounds {
    double spread;
    double bias;
    double chance;  // of the share within 68.3 %, in percent; half of it of that within 95.4 %
};

void expectWithin(const Result& result, const Bounds& bounds) {
    EXPECT_EQ(result.lost, 0);
    EXPECT_EQ(result.astray, 0);
    ASSERT_FALSE(result.parameters.empty());
    EXPECT_LE(result.spread(), bounds.spread);
    EXPECT_LE(result.bias(), bounds.bias);
    for (const Accuracy& a : result.parameters) {
        // What spreads less than the bound on the whole would be a fault of the scenes or of the bound.
        EXPECT_GE(a.spread, 0.97);
        EXPECT_NEAR(a.within68, 68.27, bounds.chance);
        EXPECT_NEAR(a.within95, 95.45, bounds.chance / 2);
    }
}

orx::TFitOptions withLoss(orx::TFitLoss loss) {
    orx::TFitOptions options;
    options.loss = loss;
    return options;
}

constexpr int kThreads = 2;

TEST(MeasuringAccuracy, CirclesAndArcsErrAsTheBoundHasIt) {
    const struct {
        double arc;
        int points;
        double noise;
        int scenes;
        Bounds bounds;
    } kRows[] = {
        {360, 20, 1, 2000, {1.002, 0.001, 4}},  {360, 2000, 0.1, 200, {1.001, 0.001, 11}},
        {90, 20, 1, 2000, {1.006, 0.003, 4}},   {90, 200, 0.01, 1000, {1.001, 0.001, 5}},
        {30, 20, 0.1, 2000, {1.003, 0.003, 4}}, {30, 200, 1, 1000, {1.02, 0.012, 5}},
        {30, 2000, 1, 200, {1.01, 0.03, 11}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(testing::Message()
                     << row.arc << " degrees, " << row.points << " points, noise " << row.noise);
        const auto fit = [](const auto& points) { return orx::fitCircleGeometric(points); };
        expectWithin(measure(circleTask(row.arc, row.points, row.noise), fit, 1, row.scenes, kThreads),
                     row.bounds);
    }
}

TEST(MeasuringAccuracy, LinesErrAsTheBoundHasIt) {
    const struct {
        int points;
        double noise;
        int scenes;
        Bounds bounds;
    } kRows[] = {{20, 1, 2000, {1.001, 0.002, 4}},
                 {200, 0.1, 1000, {1.001, 0.001, 5}},
                 {2000, 0.01, 200, {1.001, 0.001, 11}}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.points << " points, noise " << row.noise);
        const auto fit = [](const auto& points) { return orx::fitLineGeometric(points); };
        expectWithin(measure(lineTask(row.points, row.noise), fit, 2, row.scenes, kThreads), row.bounds);
    }
}

TEST(MeasuringAccuracy, EllipsesErrAsTheBoundHasIt) {
    const struct {
        double ratio;
        int points;
        double noise;
        int scenes;
        Bounds bounds;
    } kRows[] = {{1, 20, 1, 800, {1.004, 0.004, 6}},
                 {2, 20, 0.1, 800, {1.002, 0.002, 6}},
                 {2, 200, 1, 400, {1.006, 0.01, 8}},
                 {5, 20, 1, 800, {1.02, 0.025, 6}},
                 {5, 200, 0.1, 400, {1.003, 0.005, 8}}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(testing::Message()
                     << "1:" << row.ratio << ", " << row.points << " points, noise " << row.noise);
        const auto fit = [](const auto& points) { return orx::fitEllipseGeometric(points); };
        expectWithin(measure(ellipseTask(row.ratio, row.points, row.noise), fit, 10, row.scenes, kThreads),
                     row.bounds);
    }
}

// At the tips the outline turns by a third within the noise: the second order alone leaves 0.1.
TEST(MeasuringAccuracy, NarrowEllipsesAreHardlyLonger) {
    const auto fit = [](const auto& points) { return orx::fitEllipseGeometric(points); };
    const Result result = measure(ellipseTask(8, 2000, 0.5), fit, 14, 200, kThreads);
    EXPECT_EQ(result.lost, 0);
    EXPECT_LE(result.bias(), 0.08);
}

// Tukey's loss spreads 1.026 times the bound without outliers.
TEST(MeasuringAccuracy, FortyPercentOfOutliersCostLittle) {
    const auto circle = [](const auto& points) {
        return orx::fitCircleGeometric(points, withLoss(orx::flTukey));
    };
    const auto line = [](const auto& points) {
        return orx::fitLineGeometric(points, withLoss(orx::flTukey));
    };
    const Bounds kBounds{1.045, 0.03, 6};
    expectWithin(measure(circleTask(360, 200, 0.1, 0.4), circle, 3, 800, kThreads), kBounds);
    expectWithin(measure(circleTask(90, 200, 0.1, 0.4), circle, 4, 800, kThreads), kBounds);
    expectWithin(measure(circleTask(30, 2000, 0.1, 0.4), circle, 5, 200, kThreads), {1.06, 0.03, 11});
    expectWithin(measure(lineTask(200, 0.1, 0.4), line, 6, 800, kThreads), kBounds);
    // Twelve inliers: one outlier far along the circle turns it by more than their noise does.
    expectWithin(measure(circleTask(30, 20, 0.1, 0.4), circle, 11, 800, kThreads), {1.06, 0.03, 6});
    expectWithin(measure(lineTask(20, 0.1, 0.4), line, 12, 800, kThreads), {1.06, 0.03, 6});
    const auto ellipse = [](const auto& points) {
        return orx::fitEllipseGeometric(points, withLoss(orx::flTukey));
    };
    expectWithin(measure(ellipseTask(2, 20, 0.1, 0.4), ellipse, 13, 400, kThreads), {1.06, 0.04, 8});
}

TEST(MeasuringAccuracy, SearchesAmongFortyPercentOfOutliersEndAsWell) {
    orx::TConsensusOptions options;
    options.tolerance = 0.35;
    const auto circle = [&](const auto& points) { return orx::findCircle(points, options); };
    const auto line = [&](const auto& points) { return orx::findLine(points, options); };
    const Bounds kBounds{1.045, 0.03, 6};
    expectWithin(measure(circleTask(360, 200, 0.1, 0.4), circle, 3, 800, kThreads), kBounds);
    expectWithin(measure(circleTask(30, 200, 0.1, 0.4), circle, 9, 800, kThreads), kBounds);
    expectWithin(measure(lineTask(200, 0.1, 0.4), line, 6, 800, kThreads), kBounds);
    expectWithin(measure(circleTask(30, 20, 0.1, 0.4), circle, 11, 800, kThreads), {1.1, 0.03, 6});
    const auto ellipse = [&](const auto& points) { return orx::findEllipse(points, options); };
    EllipseTask half = ellipseTask(2, 2000, 0.1, 0.4);
    half.truth.from = 0;
    half.scene.extent = 180;
    expectWithin(measure(half, ellipse, 15, 200, kThreads), {1.09, 0.04, 11});
}

TEST(MeasuringAccuracy, IsTheSameOnAnyNumberOfThreads) {
    const auto fit = [](const auto& points) {
        return orx::fitCircleGeometric(points, withLoss(orx::flTukey));
    };
    const Result one = measure(circleTask(90, 60, 0.3, 0.2), fit, 7, 60, 1);
    const Result three = measure(circleTask(90, 60, 0.3, 0.2), fit, 7, 60, 3);
    EXPECT_EQ(one.spread(), three.spread());
    EXPECT_EQ(one.bias(), three.bias());
    EXPECT_NE(one.spread(), measure(circleTask(90, 60, 0.3, 0.2), fit, 8, 60, 3).spread());
}

}  // namespace
