#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/fit_scenes.h"

namespace {

using fit_scenes::kPi;
using fit_scenes::Random;
using orx::TMeasuredCircle;
using orx::TMeasuredLine;
using orx::TMeasuredPoint;
using orx::TMeasuredValue;

constexpr double kNoise = 0.1;

// Fits of noisy points on shapes that are known.
TMeasuredLine lineThrough(cv::Point2d from, cv::Point2d to, Random& random, double noise = kNoise) {
    std::vector<cv::Point2d> points;
    const int count = 40;
    for (int i = 0; i < count; ++i) {
        points.push_back(from + (to - from) * (i / (count - 1.0)) +
                         cv::Point2d(random.normal(noise), random.normal(noise)));
    }
    return orx::fitLineGeometric(points);
}

TMeasuredCircle circleAround(cv::Point2d center, double radius, double sweep, Random& random,
                             double noise = kNoise) {
    std::vector<cv::Point2d> points;
    const int count = 60;
    for (int i = 0; i < count; ++i) {
        const double angle = 1 + sweep * i / count;
        points.push_back(center + radius * cv::Point2d(std::cos(angle), std::sin(angle)) +
                         cv::Point2d(random.normal(noise), random.normal(noise)));
    }
    return orx::fitCircleGeometric(points);
}

// Two nearly parallel edges 2 degrees apart, a third across; two circles apart, one within the first.
struct Scene {
    TMeasuredLine left;
    TMeasuredLine right;
    TMeasuredLine across;
    TMeasuredCircle big;
    TMeasuredCircle small;
    TMeasuredCircle inner;

    explicit Scene(Random& random)
        : left(lineThrough({10, 0}, {10, 100}, random)),
          right(lineThrough({40, 120}, {40 + 100 * std::tan(2 * kPi / 180), 20}, random)),
          across(lineThrough({0, 50}, {100, 60}, random)),
          big(circleAround({50, 50}, 30, 4, random)),
          small(circleAround({95, 70}, 15, 5, random)),
          inner(circleAround({53, 46}, 12, 6, random)) {}
};

using Relation = std::function<TMeasuredValue(const Scene&)>;

struct NamedRelation {
    const char* name;
    double truth;
    Relation of;
};

TEST(Relations, StatedUncertaintiesAreTheTrueOnes) {
    const double tilt = 2 * kPi / 180;
    const double half = std::cos(tilt / 2);
    // Right of left by 30 + (120 - y) tan 2 degrees at y; seen across the line midway.
    const auto width = [&](double y) { return (30 + (120 - y) * std::tan(tilt)); };
    const double rise = std::atan2(10.0, 100.0);
    const NamedRelation relations[] = {
        {"points", std::hypot(45, 20), [](const Scene& s) { return orx::distance(s.big, s.small); }},
        {"point to line", 40, [](const Scene& s) { return orx::distance(orx::centerOf(s.big), s.left); }},
        {"gap apart", std::hypot(45, 20) - 45, [](const Scene& s) { return orx::gap(s.big, s.small); }},
        {"gap within", 30 - 12 - 5, [](const Scene& s) { return orx::gap(s.big, s.inner); }},
        {"gap within, turned", 30 - 12 - 5, [](const Scene& s) { return orx::gap(s.inner, s.big); }},
        {"angle", 2, [](const Scene& s) { return orx::angle(s.left, s.right); }},
        {"signed angle", 90 - rise * 180 / kPi,
         [](const Scene& s) { return orx::signedAngle(s.across, s.left); }},
        {"parallelism", 100 * std::tan(tilt),
         [](const Scene& s) { return orx::parallelism(s.right, s.left); }},
        {"perpendicularity", 100 * std::sin(rise),
         [](const Scene& s) { return orx::perpendicularity(s.left, s.across); }},
        {"concentricity", 10, [](const Scene& s) { return orx::concentricity(s.inner, s.big); }},
        {"middle", width(60) * half, [](const Scene& s) { return orx::distance(s.left, s.right).middle; }},
        {"least", width(100) * half, [](const Scene& s) { return orx::distance(s.right, s.left).least; }},
        {"largest", width(20) * half, [](const Scene& s) { return orx::distance(s.left, s.right).largest; }},
    };
    constexpr int kScenes = 1500;
    Random random(5);
    std::vector<Scene> scenes;
    for (int i = 0; i < kScenes; ++i) scenes.emplace_back(random);
    for (const NamedRelation& relation : relations) {
        SCOPED_TRACE(relation.name);
        double sum = 0;
        double squares = 0;
        double stated = 0;
        for (const Scene& scene : scenes) {
            const TMeasuredValue value = relation.of(scene);
            ASSERT_TRUE(value.valid());
            EXPECT_FALSE(value.folded);
            EXPECT_GT(value.degreesOfFreedom, 37.9);
            const double error = value.value - relation.truth;
            sum += error;
            squares += error * error;
            stated += value.deviation * value.deviation;
        }
        const double spread = std::sqrt(squares / kScenes);
        // The ends of the common stretch, where width is taken, move with the noise and with the section.
        const double allowed = 4 * spread / std::sqrt(kScenes) + 0.02 * (relation.truth < 40);
        EXPECT_NEAR(sum / kScenes, 0, allowed);
        EXPECT_NEAR(std::sqrt(stated / kScenes) / spread, 1, 0.08) << spread;
    }
}

using Point = std::function<TMeasuredPoint(const Scene&)>;

TEST(Relations, IntersectionsAreWhereTheCovarianceSays) {
    struct Named {
        const char* name;
        cv::Point2d truth;
        Point of;
    };
    // The line across meets the first circle where (x - 50)^2 + (x / 10)^2 = 900.
    const double root = std::sqrt(2500 - 1.01 * 1600);
    const double farX = (50 + root) / 1.01;
    // Circles of radius 30 around (50, 50) and 25 around (80, 50).
    const double x = (30 * 30 + 30 * 30 - 25 * 25) / 60.0;
    const Named named[] = {
        {"lines", {10, 51}, [](const Scene& s) { return orx::intersection(s.left, s.across); }},
        {"line and circle",
         {farX, 50 + farX / 10},
         [](const Scene& s) { return orx::intersections(s.across, s.big).points.back(); }},
        {"circles",
         {50 + x, 50 + std::sqrt(900 - x * x)},
         [](const Scene& s) { return orx::intersections(s.big, s.small).points.front(); }},
        {"on a line", {10, 50}, [](const Scene& s) {
             const TMeasuredPoint far = orx::pointOn(s.left, 50 - s.left.point.y);
             return far;
         }}};
    Random random(6);
    constexpr int kScenes = 1000;
    std::vector<Scene> scenes;
    for (int i = 0; i < kScenes; ++i) {
        scenes.emplace_back(random);
        scenes.back().small = circleAround({80, 50}, 25, 5, random);
    }
    for (const Named& one : named) {
        SCOPED_TRACE(one.name);
        double squares = 0;
        cv::Point2d sum;
        const bool onLine = std::string(one.name) == "on a line";
        for (const Scene& scene : scenes) {
            const TMeasuredPoint point = one.of(scene);
            ASSERT_TRUE(point.valid());
            const cv::Vec2d off(point.position.x - one.truth.x, point.position.y - one.truth.y);
            sum += cv::Point2d(off[0], off[1]);
            squares +=
                onLine ? off[0] * off[0] / point.covariance(0, 0) : off.dot(point.covariance.inv() * off) / 2;
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
