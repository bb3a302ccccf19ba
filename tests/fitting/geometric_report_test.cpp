// What fits for measuring refuse, in which order and in which words; and how their uncertainty is turned into
// intervals.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/fitting/geometric_scenes.h"

namespace {

using namespace geometric_scenes;
using orx::fitCircleGeometric;
using orx::fitLineGeometric;
using Points = std::vector<cv::Point2d>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

Points circlePoints(int count = 40, double extent = 360, double noise = 0.1) {
    Random random(1);
    return TrueCircle{{300, 200}, 80, 10}.points({extent, count, noise}, random);
}

Points withPoint(Points points, cv::Point2d p) {
    points.push_back(p);
    return points;
}

struct Refused {
    const char* what;
    Points points;
    orx::TFitOptions options;
    orx::TFitStatus line;
    orx::TFitStatus circle;
};

std::vector<Refused> refused() {
    const auto with = [](auto change) {
        orx::TFitOptions options;
        change(options);
        return options;
    };
    using Options = orx::TFitOptions;
    const auto bad = [&](const char* what, auto change) {
        return Refused{what, circlePoints(), with(change), orx::fsBadOptions, orx::fsBadOptions};
    };
    const auto deviating = [&](const char* what, std::vector<double> deviations, orx::TFitStatus status) {
        return Refused{what, circlePoints(), with([&](Options& o) { o.deviations = deviations; }), status,
                       status};
    };
    std::vector<double> oneNegative(40, 1.0);
    oneNegative[7] = -1e-9;
    std::vector<double> oneNan(40, 1.0);
    oneNan[39] = kNan;
    std::vector<double> allButTwo(40, 0.0);
    allButTwo[3] = allButTwo[30] = 1;
    Points straight;
    for (int i = 0; i < 50; ++i) straight.emplace_back(1e5 + 3 * i, 2e5 - 7 * i);
    // Noise of alternate signs tells nothing of the curvature but how well it is known: to 0.7 and 2.5 of
    // itself.
    const auto arcOfSixDegrees = [](double noise) {
        Points points;
        for (int i = 0; i < 100; ++i)
            points.push_back((400 + (i % 2 == 0 ? noise : -noise)) * unit(0.06 * i));
        return points;
    };

    return {
        {"no points", {}, {}, orx::fsTooFewPoints, orx::fsTooFewPoints},
        {"two points", {{1, 2}, {3, 5}}, {}, orx::fsTooFewPoints, orx::fsTooFewPoints},
        {"three points", {{1, 2}, {3, 5}, {9, 1}}, {}, orx::fsOk, orx::fsTooFewPoints},
        {"one place", Points(50, {7, 7}), {}, orx::fsCoincident, orx::fsCoincident},
        {"two places", {{1, 1}, {1, 1}, {5, 1}, {5, 1}, {5, 1}}, {}, orx::fsOk, orx::fsCollinear},
        {"straight", straight, {}, orx::fsOk, orx::fsCollinear},
        {"straight within its noise", arcOfSixDegrees(4), {}, orx::fsOk, orx::fsCollinear},
        {"a short arc", arcOfSixDegrees(1.15), {}, orx::fsOk, orx::fsArcTooShort},
        {"not a number", withPoint(circlePoints(), {kNan, 0}), {}, orx::fsNotFinite, orx::fsNotFinite},
        {"infinite", withPoint(circlePoints(), {3, -kInfinity}), {}, orx::fsNotFinite, orx::fsNotFinite},
        {"both infinities",
         withPoint(withPoint(circlePoints(), {3, -kInfinity}), {3, kInfinity}),
         {},
         orx::fsNotFinite,
         orx::fsNotFinite},
        {"too large", withPoint(circlePoints(), {0, 2e9}), {}, orx::fsTooLarge, orx::fsTooLarge},
        {"a sum too large",
         {{1e308, 1}, {1e308, 2}, {1e308, 3}, {1, 5}},
         {},
         orx::fsTooLarge,
         orx::fsTooLarge},
        bad("no such loss", [](Options& o) { o.loss = static_cast<orx::TFitLoss>(5); }),
        bad("no such noise", [](Options& o) { o.noise = static_cast<orx::TPointNoise>(-1); }),
        bad("a small tuning", [](Options& o) { o.tuning = 0.09; }),
        bad("no tuning", [](Options& o) { o.tuning = kNan; }),
        bad("a negative scale", [](Options& o) { o.scale = -1; }),
        bad("an infinite scale", [](Options& o) { o.scale = kInfinity; }),
        bad("much smoothing",
            [](Options& o) {
                o.noise = orx::pnEdgeChain;
                o.smoothing = 51;
            }),
        bad("no steps", [](Options& o) { o.maxIterations = 0; }),
        bad("absolute nothing", [](Options& o) { o.absoluteDeviations = true; }),
        deviating("too few deviations", std::vector<double>(39, 1.0), orx::fsBadDeviations),
        deviating("a negative deviation", oneNegative, orx::fsBadDeviations),
        deviating("no deviation", oneNan, orx::fsBadDeviations),
        deviating("two points with a say", allButTwo, orx::fsTooFewPoints),
        // Several faults: the first in the order of the header counts.
        {"options before points", withPoint({}, {kNan, 0}), with([](Options& o) { o.maxIterations = -1; }),
         orx::fsBadOptions, orx::fsBadOptions},
        {"deviations before finite", withPoint({}, {kNan, 0}), with([](Options& o) { o.deviations = {-1}; }),
         orx::fsBadDeviations, orx::fsBadDeviations},
        {"finite before few", {{kNan, 0}}, {}, orx::fsNotFinite, orx::fsNotFinite},
        {"few before one place", {{1, 1}, {1, 1}}, {}, orx::fsTooFewPoints, orx::fsTooFewPoints},
    };
}

// Refused input leaves everything as it is initialised, robust or not.
TEST(GeometricReport, SaysWhyThereIsNoResult) {
    for (const Refused& r : refused()) {
        for (const auto loss : {orx::flLeastSquares, orx::flTukey}) {
            SCOPED_TRACE(testing::Message() << r.what << ", loss " << loss);
            orx::TFitOptions options = r.options;
            if (options.loss == orx::flLeastSquares) options.loss = loss;
            const orx::TMeasuredLine line = fitLineGeometric(r.points, options);
            EXPECT_EQ(line.status, r.line) << fitStatusText(line.status);
            EXPECT_EQ(line.points, static_cast<int>(r.points.size()));
            const orx::TMeasuredArc arc = fitArcGeometric(r.points, options);
            EXPECT_EQ(arc.status, r.circle) << fitStatusText(arc.status);
            EXPECT_FALSE(arc.valid());
            EXPECT_EQ(arc.points, static_cast<int>(r.points.size()));
            EXPECT_EQ(arc.usedPoints, 0);
            EXPECT_EQ(arc.radius, 0);
            EXPECT_EQ(arc.length, 0);
            EXPECT_TRUE(arc.used.empty());
        }
    }
}

TEST(GeometricReport, SaysThatStepsDidNotSettle) {
    orx::TFitOptions options;
    options.maxIterations = 1;
    EXPECT_EQ(fitCircleGeometric(circlePoints(12, 200, 8), options).status, orx::fsNotConverged);
}

TEST(GeometricReport, BearsMillionsOfPointsAndNoMoreThanTwenty) {
    const orx::TMeasuredCircle fit = fitCircleGeometric(circlePoints(1'000'000));
    EXPECT_NEAR(fit.radius, 80, 1e-3);
    EXPECT_EQ(fit.usedPoints, 1'000'000);
    EXPECT_EQ(fit.sweep, 360);
    EXPECT_EQ(fitLineGeometric(std::vector<cv::Point2f>(20'000'001)).status, orx::fsTooLarge);
}

// Points that lie exactly on the shape, several times each.
TEST(GeometricReport, BearsRepeatedPointsAndNoNoise) {
    for (int loss = orx::flLeastSquares; loss <= orx::flGemanMcClure; ++loss) {
        orx::TFitOptions options;
        options.loss = static_cast<orx::TFitLoss>(loss);
        Points points;
        for (int i = 0; i < 60; ++i) points.push_back(cv::Point2d(5, 7) + 10 * unit(90.0 * (i % 4)));
        points.emplace_back(12, 8);
        const orx::TMeasuredCircle fit = fitCircleGeometric(points, options);
        SCOPED_TRACE(loss);
        ASSERT_EQ(fit.status, orx::fsOk) << fitStatusText(fit.status);
        EXPECT_NEAR(fit.radius, 10, loss == orx::flLeastSquares ? 0.2 : 1e-9);
        EXPECT_EQ(fit.usedPoints, loss == orx::flLeastSquares ? 61 : 60);
    }
}

TEST(GeometricReport, WordsEachStatus) {
    for (int status = orx::fsOk; status <= orx::fsTooLarge; ++status) {
        EXPECT_STRNE(orx::fitStatusText(static_cast<orx::TFitStatus>(status)), "unknown status") << status;
    }
    EXPECT_STREQ(orx::fitStatusText(orx::fsOk), "ok");
    EXPECT_STREQ(orx::fitStatusText(orx::fsCollinear), "the points lie on a straight line");
    EXPECT_STREQ(orx::fitStatusText(static_cast<orx::TFitStatus>(99)), "unknown status");
}

// By the distribution's closed forms for one, five and even degrees of freedom.
TEST(GeometricReport, CoverageFactorsAreStudentsQuantiles) {
    EXPECT_NEAR(orx::coverageFactor(0.95, 1), std::tan(kPi / 2 * 0.95), 1e-11);
    EXPECT_NEAR(orx::coverageFactor(0.95, 2), 4.302652729749459, 1e-12);
    EXPECT_NEAR(orx::coverageFactor(0.99, 5), 4.032142983555212, 1e-12);
    EXPECT_NEAR(orx::coverageFactor(0.999, 10), 4.586893858702543, 1e-12);
    EXPECT_NEAR(orx::coverageFactor(0.5, 30), 0.6827556933212923, 1e-12);
    EXPECT_NEAR(orx::coverageFactor(0.95, 1000), 1.9623390808264625, 1e-11);
    EXPECT_NEAR(orx::coverageFactor(0.95, kInfinity), 1.959963984540054, 1e-12);
    EXPECT_NEAR(orx::coverageFactor(0.682689492137086, kInfinity), 1, 1e-12);
    EXPECT_NEAR(orx::coverageFactor(1e-6, 1), std::tan(kPi / 2 * 1e-6), 1e-15);
    EXPECT_NEAR(orx::coverageFactor(1 - 1e-6, 1), std::tan(kPi / 2 * (1 - 1e-6)), 1e-3);
    for (const double probability : {0.0, 1.0, -0.5, kNan}) {
        EXPECT_TRUE(std::isnan(orx::coverageFactor(probability, 5)));
    }
    for (const double degrees : {0.0, -1.0, kNan})
        EXPECT_TRUE(std::isnan(orx::coverageFactor(0.95, degrees)));
}

TEST(GeometricReport, StepsAreCounted) {
    for (const orx::TFitLoss loss : {orx::flLeastSquares, orx::flHuber, orx::flTukey}) {
        SCOPED_TRACE(loss);
        orx::TFitOptions options;
        options.loss = loss;
        EXPECT_GE(fitCircleGeometric(circlePoints(), options).iterations, 1);
        EXPECT_GE(orx::fitEllipseGeometric(circlePoints(), options).iterations, 1);
        EXPECT_GE(fitLineGeometric(circlePoints(40, 10), options).iterations, 1);
    }
}

}  // namespace
