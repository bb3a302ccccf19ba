// findEllipse on scenes whose ellipse is known.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "orxFunctions/orxfunctions.h"
#include "tests/fitting/consensus_scenes.h"

namespace {

using consensus_scenes::kStrewn;
using consensus_scenes::Scene;

struct Case {
    double semiMajor, semiMinor, outliers;
};

orx::TConsensusOptions seeded(unsigned seed) {
    orx::TConsensusOptions options;
    options.seed = seed;
    return options;
}

// About (500, 480), turned by 30 degrees.
void addEllipse(Scene& scene, double semiMajor, double semiMinor, int count, double noise,
                double sweep = 360) {
    const double cosine = std::sqrt(3.0) / 2;
    scene.affine({500, 480}, {semiMajor * cosine, semiMajor / 2}, {-semiMinor / 2, semiMinor * cosine}, count,
                 noise, sweep);
}

TEST(FindEllipse, FindsTheEllipseAmongManyOutliers) {
    for (const Case& c : {Case{300, 200, 0.3}, Case{300, 100, 0.6}, Case{300, 60, 0.4}}) {
        double squares = 0.0;
        int within95 = 0;
        constexpr int kScenes = 40;
        for (unsigned seed = 0; seed < kScenes; ++seed) {
            SCOPED_TRACE(std::to_string(c.semiMinor) + ", seed " + std::to_string(seed));
            const auto strewn = static_cast<int>(800 * c.outliers);
            Scene scene(seed);
            addEllipse(scene, c.semiMajor, c.semiMinor, 800 - strewn, 0.4);
            scene.strewn(strewn);
            const orx::TMeasuredEllipse found = orx::findEllipse(scene.points, seeded(seed));
            ASSERT_EQ(found.status, orx::fsOk);
            EXPECT_NEAR(found.angle, 30.0, 1.0);
            EXPECT_NEAR(found.noise, 0.4, 0.06);
            int strays = 0;
            for (std::size_t i = 0; i < found.used.size(); ++i) {
                strays += found.used[i] != 0 && scene.shapeOf[i] == kStrewn ? 1 : 0;
            }
            EXPECT_GE(found.usedPoints - strays, 0.97 * (800 - strewn));
            EXPECT_LE(strays, 0.03 * strewn);
            const double ratios[] = {(found.center.x - 500) / found.xDeviation,
                                     (found.center.y - 480) / found.yDeviation,
                                     (found.semiMajor - c.semiMajor) / found.semiMajorDeviation,
                                     (found.semiMinor - c.semiMinor) / found.semiMinorDeviation};
            for (const double ratio : ratios) {
                squares += ratio * ratio;
                within95 += std::abs(ratio) < orx::coverageFactor(0.954, found.degreesOfFreedom) ? 1 : 0;
            }
        }
        // 160 values: the spread is known to 6 %, the share to 1.7 %.
        EXPECT_NEAR(std::sqrt(squares / (4 * kScenes)), 1.0, 0.2);
        EXPECT_NEAR(within95 / (4.0 * kScenes), 0.954, 0.05);
    }
}

TEST(FindEllipse, StaysWithinTheHalfAxesAskedFor) {
    Scene scene(3);
    addEllipse(scene, 300, 150, 500, 0.4);
    addEllipse(scene, 120, 90, 300, 0.4);
    orx::TConsensusOptions options;
    EXPECT_NEAR(orx::findEllipse(scene.points, options).semiMajor, 300, 0.5);
    options.maxRadius = 200;
    EXPECT_NEAR(orx::findEllipse(scene.points, options).semiMajor, 120, 0.5);
    options.minRadius = 140;
    EXPECT_EQ(orx::findEllipse(scene.points, options).status, orx::fsNoConsensus);
}

TEST(FindEllipse, FindsHalfOfOneAndCircles) {
    Scene half(4);
    addEllipse(half, 300, 200, 500, 0.3, 180);
    half.strewn(200);
    const orx::TMeasuredEllipse found = orx::findEllipse(half.points);
    ASSERT_EQ(found.status, orx::fsOk);
    EXPECT_LT(std::abs(found.semiMajor - 300), 4 * found.semiMajorDeviation);
    EXPECT_LT(std::abs(found.semiMinor - 200), 4 * found.semiMinorDeviation);
    Scene round(5);
    round.circle({500, 500, 250}, 500, 0.3).strewn(200);
    const orx::TMeasuredEllipse circle = orx::findEllipse(round.points);
    ASSERT_EQ(circle.status, orx::fsOk);
    EXPECT_NEAR(circle.semiMajor, 250, 0.2);
    EXPECT_NEAR(circle.semiMinor, 250, 0.2);
}

// Twelve points of an ellipse, among eight: hardly more than chance, but more.
TEST(FindEllipse, FindsFewPointsOfOne) {
    int found = 0;
    constexpr int kScenes = 200;
    for (unsigned seed = 0; seed < kScenes; ++seed) {
        Scene scene(seed);
        addEllipse(scene, 300, 150, 12, 4);
        scene.strewn(8);
        orx::TConsensusOptions options;
        options.tolerance = 14;
        const orx::TMeasuredEllipse e = orx::findEllipse(scene.points, options);
        found += e.valid() && std::abs(e.semiMajor - 300) < 6 * e.semiMajorDeviation ? 1 : 0;
    }
    EXPECT_GE(found, 105);
}

TEST(FindEllipse, WhatIsNoneIsRefused) {
    orx::TConsensusOptions options;
    options.maxTrials = 2000;
    int found = 0;
    for (unsigned seed = 0; seed < 10; ++seed) {
        for (const int count : {12, 30, 100, 1000}) {
            options.seed = seed;
            found += orx::findEllipse(Scene(seed).strewn(count, 100).points, options).valid() ? 1 : 0;
        }
        Scene edge(seed);
        edge.segment({0, 50}, {1000, 350}, 600, 0.5);
        EXPECT_FALSE(orx::findEllipse(edge.points, options).valid());
    }
    EXPECT_LE(found, 1);
    EXPECT_EQ(orx::findEllipse(std::vector<cv::Point2f>{{1, 2}, {3, 4}, {5, 5}, {7, 1}, {2, 2}}).status,
              orx::fsTooFewPoints);
}

TEST(FindEllipse, EqualSeedsGiveEqualBits) {
    Scene scene(6);
    addEllipse(scene, 300, 150, 500, 0.4);
    scene.strewn(500);
    const auto valuesOf = [&](bool optimized) {
        cv::setUseOptimized(optimized);
        const orx::TMeasuredEllipse e = orx::findEllipse(scene.points, seeded(77));
        cv::setUseOptimized(true);
        return std::vector<double>{e.center.x,  e.center.y, e.semiMajor,
                                   e.semiMinor, e.angle,    e.semiMajorDeviation};
    };
    EXPECT_EQ(valuesOf(true), valuesOf(true));
    EXPECT_EQ(valuesOf(true), valuesOf(false));
}

}  // namespace
