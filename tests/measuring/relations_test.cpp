#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "docs/tools/form_accuracy.h"
#include "orxFunctions/orxfunctions.h"
#include "tests/measuring/relation_scenes.h"

namespace {

using namespace relation_scenes;

constexpr int kScenes = 1500;

TEST(Relations, StatedUncertaintiesAreTheTrueOnes) {
    for (const double noise : {0.02, 0.3}) {
        const std::vector<Scene> scenes = scenesOf(kScenes, noise, 5);
        for (const ValueRelation& relation : valueRelations()) {
            SCOPED_TRACE(testing::Message() << relation.name << ", noise " << noise);
            const form_accuracy::Errors errors = form_accuracy::measureRelation(relation, scenes);
            ASSERT_EQ(errors.count(), kScenes);
            // The ends of the common stretch, where width is taken, move with the noise.
            EXPECT_NEAR(errors.bias(), 0, 4 * errors.spread() / std::sqrt(kScenes) + 0.01 * noise);
            EXPECT_NEAR(errors.stated() / errors.rms(), 1, 0.07);
            EXPECT_GT(relation.of(scenes.front()).degreesOfFreedom, 37.9);
        }
        for (const PointRelation& relation : pointRelations()) {
            SCOPED_TRACE(testing::Message() << relation.name << ", noise " << noise);
            const form_accuracy::Errors errors = form_accuracy::measureRelation(relation, scenes);
            ASSERT_EQ(errors.count(), kScenes);
            EXPECT_NEAR(errors.stated() / errors.rms(), 1, 0.07);
        }
    }
}

TEST(Relations, IntersectionsAreWhereTheCovarianceSays) {
    const std::vector<Scene> scenes = scenesOf(kScenes, kNoise, 6);
    for (const PointRelation& relation : pointRelations()) {
        SCOPED_TRACE(relation.name);
        double squares = 0;
        cv::Point2d sum;
        const bool onLine = std::string(relation.name) == "on a line";
        for (const Scene& scene : scenes) {
            const TMeasuredPoint point = relation.of(scene);
            ASSERT_TRUE(point.valid());
            const cv::Point2d off = point.position - relation.truth;
            sum += off;
            const cv::Vec2d v(off.x, off.y);
            squares +=
                onLine ? off.x * off.x / point.covariance(0, 0) : v.dot(point.covariance.inv() * v) / 2;
        }
        EXPECT_LT(cv::norm(sum) / kScenes, 0.01);
        EXPECT_NEAR(std::sqrt(squares / kScenes), 1, 0.08);
    }
}

// Root mean square error and mean stated deviation of a distance whose truth is known.
void expectHonest(double truth, const std::function<TMeasuredValue(Random&)>& measure, double most) {
    Random random(9);
    double squares = 0;
    double stated = 0;
    int folded = 0;
    constexpr int kTrials = 1000;
    for (int i = 0; i < kTrials; ++i) {
        const TMeasuredValue value = measure(random);
        ASSERT_TRUE(value.valid());
        squares += std::pow(value.value - truth, 2);
        stated += value.deviation * value.deviation;
        folded += value.folded ? 1 : 0;
    }
    const double ratio = std::sqrt(stated / squares);
    EXPECT_GT(ratio, 0.93);
    EXPECT_LT(ratio, most);
    EXPECT_GT(folded, truth == 0 ? 0.98 * kTrials : 0);
}

TEST(Relations, NearTheEndOfTheirRangeTheyStayHonest) {
    for (const double apart : {0.0, 0.02, 0.05}) {
        SCOPED_TRACE(apart);
        const auto centers = [&](Random& random) {
            const TMeasuredCircle a = circleAround({50, 50}, 20, 2 * kPi, random);
            return orx::distance(a, circleAround({50 + apart, 50}, 30, 2 * kPi, random));
        };
        expectHonest(apart, centers, 1.6);
        const auto pointAndLine = [&](Random& random) {
            const TMeasuredCircle a = circleAround({50 + apart, 50}, 20, 2 * kPi, random);
            return orx::distance(orx::centerOf(a), lineThrough({50, 0}, {50, 100}, random));
        };
        expectHonest(apart, pointAndLine, 1.7);
        const auto angles = [&](Random& random) {
            const TMeasuredLine a = lineThrough({0, 0}, {100, 0}, random);
            return orx::angle(a, lineThrough({0, 9}, {100, 9 + 100 * std::tan(apart * kPi / 180)}, random));
        };
        expectHonest(apart, angles, 1.7);
    }
    Random random(1);
    const TMeasuredLine level = lineThrough({0, 0}, {100, 0}, random);
    EXPECT_TRUE(orx::angle(level, lineThrough({5, 0}, {5, 90}, random)).folded);
    // Parallel edges: which end is the nearer one is not told.
    const orx::TLineDistance between = orx::distance(level, lineThrough({100, 20}, {0, 20}, random));
    EXPECT_FALSE(between.middle.folded);
    EXPECT_TRUE(between.least.folded && between.largest.folded);
    EXPECT_NEAR(between.middle.value, 20, 0.1);
    // Edges that cross.
    const orx::TLineDistance crossed = orx::distance(level, lineThrough({0, -5}, {100, 5}, random));
    EXPECT_EQ(crossed.least.value, 0);
    EXPECT_NEAR(crossed.largest.value, 5, 0.2);
}

TEST(Relations, KnownCovariancesGiveWhatIsWorkedOutByHand) {
    const TMeasuredPoint a{orx::rsOk, {0, 0}, {0.04, 0.01, 0.01, 0.09}, 10};
    const TMeasuredPoint b{orx::rsOk, {3, 4}, {0.01, 0, 0, 0.01}, 5};
    const TMeasuredValue length = orx::distance(a, b);
    EXPECT_NEAR(length.value, 5, 1e-12);
    // Along (0.6, 0.8): 0.36 * 0.04 + 0.96 * 0.01 + 0.64 * 0.09 = 0.0816, and 0.01.
    EXPECT_NEAR(length.deviation, std::sqrt(0.0916), 1e-12);
    EXPECT_NEAR(length.degreesOfFreedom, 0.0916 * 0.0916 / (0.0816 * 0.0816 / 10 + 0.01 * 0.01 / 5), 1e-9);
    const double infinite = std::numeric_limits<double>::infinity();
    TMeasuredPoint known = a;
    known.degreesOfFreedom = infinite;
    EXPECT_EQ(orx::distance(known, known).degreesOfFreedom, infinite);
}

TEST(Relations, WhatIsRefusedSaysWhy) {
    using namespace orx;
    Random random(2);
    const TMeasuredLine level = lineThrough({0, 0}, {100, 0}, random);
    const TMeasuredLine same = lineThrough({0, 10}, {100, 10}, random);
    const TMeasuredLine upright = lineThrough({300, 0}, {300, 100}, random);
    const TMeasuredLine beyond = lineThrough({200, 5}, {300, 5}, random);
    const TMeasuredCircle circle = circleAround({50, 50}, 30, 6, random);
    const TMeasuredCircle touching = circleAround({110, 50}, 30, 6, random);
    const TMeasuredCircle far = circleAround({200, 50}, 30, 6, random);
    EXPECT_EQ(intersection(level, same).status, rsParallel);
    EXPECT_EQ(intersection(level, level).status, rsParallel);
    EXPECT_EQ(distance(level, upright).middle.status, rsNotParallel);
    EXPECT_EQ(distance(level, beyond).least.status, rsNoCommonStretch);
    EXPECT_EQ(intersections(level, circle).status, rsApart);
    EXPECT_EQ(intersections(lineThrough({0, 80}, {99, 80}, random), circle).status, rsTouching);
    EXPECT_EQ(intersections(circle, touching).status, rsTouching);
    EXPECT_EQ(intersections(circle, far).status, rsApart);
    EXPECT_EQ(intersections(circle, circleAround({50, 50}, 10, 6, random)).status, rsApart);
    EXPECT_EQ(intersections(circle, circle).status, rsTouching);
    EXPECT_TRUE(intersections(circle, far).points.empty());
    EXPECT_STREQ(relationStatusText(rsApart), "the shapes do not meet");
    EXPECT_STREQ(relationStatusText(TRelationStatus(99)), "unknown status");

    const TMeasuredLine noLine;
    const TMeasuredCircle noCircle;
    for (const TMeasuredValue& value :
         {distance(circle, noCircle), gap(noCircle, circle), angle(noLine, level), signedAngle(level, noLine),
          parallelism(noLine, level), perpendicularity(level, noLine), concentricity(noCircle, circle),
          distance(centerOf(circle), noLine), distance(centerOf(noCircle), pointOn(level, 3)),
          distance(level, noLine).middle}) {
        EXPECT_EQ(value.status, rsNoShape);
        EXPECT_EQ(value.value, 0);
    }
    EXPECT_EQ(intersection(level, noLine).status, rsNoShape);
    EXPECT_EQ(intersections(level, noCircle).status, rsNoShape);
}

}  // namespace
