// What the consensus searches have in common: refusals, repeatability, and how points err.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <set>
#include <thread>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/fitting/consensus_scenes.h"
#include "tests/fitting/fit_test_support.h"

namespace {

using consensus_scenes::Points;
using consensus_scenes::Scene;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

Points circleAndLine(unsigned seed) {
    return Scene(seed)
        .circle({500, 600, 300}, 500, 0.5)
        .segment({0, 100}, {1000, 300}, 500, 0.5)
        .strewn(500)
        .points;
}

std::vector<double> valuesOf(const Points& points, const orx::TConsensusOptions& options) {
    std::vector<double> values;
    for (const orx::TMeasuredCircle& c : orx::findCircles(points, options)) {
        values.insert(values.end(), {c.center.x, c.center.y, c.radius, c.noise, c.radiusDeviation, c.sweep});
        values.insert(values.end(), c.used.begin(), c.used.end());
    }
    const orx::TMeasuredLine l = orx::findLine(points, options);
    values.insert(values.end(), {l.point.x, l.point.y, l.angle, l.noise, l.from, l.to, l.offsetDeviation});
    return values;
}

TEST(ConsensusSearch, EqualSeedsGiveEqualBitsOnAnyNumberOfThreads) {
    const Points points = circleAndLine(1);
    orx::TConsensusOptions options;
    options.seed = 12345678901234567U;
    const std::vector<double> alone = valuesOf(points, options);
    std::vector<std::vector<double>> together(4);
    std::vector<std::thread> threads;
    for (std::vector<double>& values : together) {
        threads.emplace_back([&] {
            std::rand();
            values = valuesOf(points, options);
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::vector<double>& values : together) {
        ASSERT_EQ(values.size(), alone.size());
        EXPECT_TRUE(sameValues(values, alone));
    }
}

TEST(ConsensusSearch, OtherSeedsTryOtherSamples) {
    const Points points = Scene(2).circle({500, 500, 300}, 500, 0.5).strewn(500).points;
    orx::TConsensusOptions options;
    options.maxTrials = 1;  // one sample in eight holds circle points alone
    int found = 0;
    for (options.seed = 0; options.seed < 200; ++options.seed)
        found += orx::findCircle(points, options).valid() ? 1 : 0;
    EXPECT_GE(found, 8);
    EXPECT_LE(found, 100);
}

TEST(ConsensusSearch, EachInstructionSetGivesTheSameBits) {
    for (unsigned seed = 0; seed < 5; ++seed) {
        const Points points = circleAndLine(seed);
        orx::TConsensusOptions options;
        options.seed = seed;
        const std::vector<double> fast = valuesOf(points, options);
        cv::setUseOptimized(false);
        const std::vector<double> plain = valuesOf(points, options);
        cv::setUseOptimized(true);
        ASSERT_EQ(fast.size(), plain.size());
        EXPECT_TRUE(sameValues(fast, plain));
    }
}

TEST(ConsensusSearch, RefusesWithTheReason) {
    const Points good = circleAndLine(3);
    const auto expect = [](orx::TFitStatus status, const Points& points,
                           const orx::TConsensusOptions& options) {
        const orx::TMeasuredCircle circle = orx::findCircle(points, options);
        EXPECT_EQ(circle.status, status);
        EXPECT_EQ(circle.points, static_cast<int>(points.size()));
        EXPECT_EQ(circle.radius, 0.0);
        EXPECT_TRUE(circle.used.empty());
        EXPECT_EQ(orx::findLine(points, options).status, status);
        EXPECT_TRUE(orx::findCircles(points, options).empty());
        EXPECT_TRUE(orx::findLines(points, options).empty());
    };
    using Options = orx::TConsensusOptions;
    const std::vector<void (*)(Options&)> bad = {[](Options& o) { o.tolerance = 0.0; },
                                                 [](Options& o) { o.tolerance = kNan; },
                                                 [](Options& o) { o.tolerance = kInfinity; },
                                                 [](Options& o) { o.confidence = 0.0; },
                                                 [](Options& o) { o.confidence = 1.0; },
                                                 [](Options& o) { o.confidence = kNan; },
                                                 [](Options& o) { o.maxTrials = 0; },
                                                 [](Options& o) { o.maxTrials = 10'000'001; },
                                                 [](Options& o) { o.minSupport = -0.1; },
                                                 [](Options& o) { o.minSupport = 1.1; },
                                                 [](Options& o) { o.minPoints = -1; },
                                                 [](Options& o) { o.minRadius = -1.0; },
                                                 [](Options& o) { o.minRadius = 2.0, o.maxRadius = 1.0; },
                                                 [](Options& o) { o.maxRadius = kNan; },
                                                 [](Options& o) { o.minRadius = kInfinity; },
                                                 [](Options& o) { o.angle = kInfinity; },
                                                 [](Options& o) { o.angleTolerance = -1.0; },
                                                 [](Options& o) { o.angleTolerance = 91.0; },
                                                 [](Options& o) { o.fit.maxIterations = 0; }};
    for (std::size_t i = 0; i < bad.size(); ++i) {
        SCOPED_TRACE(i);
        Options options;
        bad[i](options);
        expect(orx::fsBadOptions, good, options);
    }
    for (const double value : {kNan, kInfinity, -kInfinity}) {
        Points points = good;
        points[77].y = value;
        expect(orx::fsNotFinite, points, {});
    }
    Points far = good;
    far[5].x = 1e10;
    expect(orx::fsTooLarge, far, {});
    expect(orx::fsTooFewPoints, {}, {});
    expect(orx::fsTooFewPoints, {{1, 2}, {3, 4}}, {});
    expect(orx::fsCoincident, Points(50, {3, 4}), {});
    Options options;
    options.fit.deviations.assign(good.size() - 1, 1.0);
    expect(orx::fsBadDeviations, good, options);
    EXPECT_TRUE(orx::findCircles(good, {}, -1).empty());

    Points collinear;
    for (int i = 0; i < 50; ++i) collinear.emplace_back(3 * i, 2 * i);
    EXPECT_EQ(orx::findCircle(collinear).status, orx::fsCollinear);
    EXPECT_EQ(orx::findLine(collinear).status, orx::fsOk);
    // Two places only: a line, but no circle.
    Points twoPlaces(30, {1, 1});
    twoPlaces.resize(60, {5, 9});
    EXPECT_EQ(orx::findCircle(twoPlaces).status, orx::fsCollinear);
}

TEST(ConsensusSearch, DeviationsReachTheFit) {
    Scene scene(6);
    scene.circle({500, 500, 300}, 600, 0.4).strewn(300);
    orx::TConsensusOptions options;
    options.fit.deviations.assign(scene.points.size(), 0.4);
    options.fit.absoluteDeviations = true;
    const orx::TMeasuredCircle known = orx::findCircle(scene.points, options);
    ASSERT_EQ(known.status, orx::fsOk);
    EXPECT_TRUE(std::isinf(known.degreesOfFreedom));
    // Evenly round a circle the radius is known to noise / root n, a little less well under a robust loss.
    EXPECT_NEAR(known.radiusDeviation, 0.4 / std::sqrt(600), 0.08 * 0.4 / std::sqrt(600));

    // A deviation of 0 leaves a point out, in the search as in the fit.
    Scene two(7);
    two.circle({300, 500, 200}, 600, 0.4).circle({700, 500, 150}, 300, 0.4);
    options = {};
    for (const int shape : two.shapeOf) options.fit.deviations.push_back(shape == 0 ? 0.0 : 1.0);
    const orx::TMeasuredCircle small = orx::findCircle(two.points, options);
    ASSERT_EQ(small.status, orx::fsOk);
    EXPECT_NEAR(small.radius, 150, 0.2);
    for (std::size_t i = 0; i < two.shapeOf.size(); ++i) {
        EXPECT_LE(small.used[i], two.shapeOf[i]);
    }
}

TEST(ConsensusSearch, EdgeChainsCountAsCorrelated) {
    Points chain;
    fit_scenes::Random random(3);
    for (int i = 0; i < 1200; ++i) {
        const double angle = 2 * CV_PI * i / 1200;
        const double radius = 191 + random.normal(0.05);
        chain.emplace_back(300 + radius * std::cos(angle), 300 + radius * std::sin(angle));
    }
    orx::TConsensusOptions options;
    const double independent = orx::findCircle(chain, options).radiusDeviation;
    options.fit.noise = orx::pnEdgeChain;
    options.fit.smoothing = 1.0;
    const orx::TMeasuredCircle correlated = orx::findCircle(chain, options);
    // Points a pixel apart share sqrt(2 sqrt(pi) sigma) times as much.
    EXPECT_NEAR(correlated.radiusDeviation / independent, std::sqrt(2 * std::sqrt(CV_PI)), 0.1);
}

TEST(ConsensusSearch, SinglePrecisionGivesTheSame) {
    const Points points = circleAndLine(5);
    const std::vector<cv::Point2f> single(points.begin(), points.end());
    EXPECT_NEAR(orx::findCircle(single).radius, orx::findCircle(points).radius, 1e-4);
    EXPECT_NEAR(orx::findLine(single).offsetDeviation, orx::findLine(points).offsetDeviation, 1e-4);
    EXPECT_EQ(orx::findCircles(single).size(), orx::findCircles(points).size());
    EXPECT_EQ(orx::findLines(single).size(), orx::findLines(points).size());
}

// A random part of them is searched, all are fitted.
TEST(ConsensusSearch, ManyPointsAreAllUsed) {
    Scene scene(1);
    scene.circle({500, 500, 300}, 24'000, 0.5).strewn(16'000);
    const orx::TMeasuredCircle found = orx::findCircle(scene.points);
    ASSERT_EQ(found.status, orx::fsOk);
    EXPECT_NEAR(found.usedPoints, 24'000, 400);
    EXPECT_NEAR(found.radius, 300, 5 * 0.5 / std::sqrt(24'000));
}

}  // namespace
