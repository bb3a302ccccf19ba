// Lines for measuring against their true geometry.
#include <gtest/gtest.h>

#include "tests/fitting/fit_test_support.h"
#include "tests/fitting/geometric_scenes.h"

namespace {

using namespace geometric_scenes;
using orx::fitLineGeometric;

orx::TFitOptions withLoss(orx::TFitLoss loss) {
    orx::TFitOptions options;
    options.loss = loss;
    return options;
}

double angleBetween(double a, double b) { return std::remainder(a - b, 360.0); }

struct Row {
    double angle;
    Scene scene;
    orx::TFitLoss loss;
    double largestSpread;
    int runs;
};

void PrintTo(const Row& row, std::ostream* to) {
    *to << row.angle << " degrees, " << row.scene.count << " points, noise " << row.scene.noise
        << ", outliers " << row.scene.outliers << ", loss " << row.loss;
}

class GeometricLine : public testing::TestWithParam<Row> {};

TEST_P(GeometricLine, ErrsNoMoreThanItMustAndSaysHowMuch) {
    const Row& row = GetParam();
    const TrueLine truth{{320.4, 211.7}, row.angle};
    const cv::Vec2d bound = truth.bound(row.scene);
    orx::TFitOptions options = withLoss(row.loss);
    options.noise = row.scene.independent ? orx::pnIndependent : orx::pnNormal;
    Random random(3);
    Errors offset;
    Errors angle;
    for (int i = 0; i < row.runs; ++i) {
        const orx::TMeasuredLine fit = fitLineGeometric(truth.points(row.scene, random), options);
        ASSERT_EQ(fit.status, orx::fsOk) << "run " << i;
        // Outliers mix the order, so that the direction may be either.
        const double turn = std::remainder(fit.angle - row.angle, 180.0);
        const double along = (truth.middle - fit.point).dot(fit.direction);
        offset.add(fit.signedDistance(truth.middle), bound[0], fit.deviationAt(along), fit.degreesOfFreedom);
        angle.add(turn, bound[1], fit.angleDeviation, fit.degreesOfFreedom);
    }
    for (const Errors* errors : {&offset, &angle}) {
        SCOPED_TRACE(errors == &angle ? "angle" : "offset");
        EXPECT_LT(errors->spread(), row.largestSpread);
        EXPECT_GT(errors->spread(), 0.95);
        EXPECT_LT(std::abs(errors->bias()), 0.05 + 3 / std::sqrt(row.runs));
        EXPECT_NEAR(errors->within68(), 68.3, 4.0);
        EXPECT_NEAR(errors->within95(), 95.4, 2.0);
    }
}

INSTANTIATE_TEST_SUITE_P(WithoutOutliers, GeometricLine,
                         testing::Values(Row{0, {200, 20, 0.3}, orx::flLeastSquares, 1.05, 2000},
                                         Row{90, {100, 20, 1, 0, false}, orx::flLeastSquares, 1.05, 2000},
                                         Row{-37, {300, 200, 0.01}, orx::flLeastSquares, 1.05, 1200},
                                         Row{135, {200, 40, 0.3}, orx::flHuber, 1.08, 1200},
                                         Row{90, {200, 100, 0.3}, orx::flCauchy, 1.08, 1200},
                                         Row{11, {200, 100, 0.3}, orx::flTukey, 1.08, 1200},
                                         Row{60, {200, 40, 0.3}, orx::flGemanMcClure, 1.08, 1200}));

INSTANTIATE_TEST_SUITE_P(WithFortyPercentOutliers, GeometricLine,
                         testing::Values(Row{90, {200, 50, 0.3, 0.4}, orx::flTukey, 1.15, 1000},
                                         Row{30, {200, 300, 0.3, 0.4}, orx::flHuber, 1.15, 600},
                                         Row{120, {100, 300, 0.3, 0.4}, orx::flCauchy, 1.15, 600},
                                         Row{-80, {100, 1000, 0.3, 0.4}, orx::flGemanMcClure, 1.15, 400}));

TEST(GeometricLine, EdgeChainsCountTheNoiseThatNeighboursShare) {
    for (const double sigma : {0.7, 1.0, 3.0}) {
        SCOPED_TRACE(sigma);
        const TrueLine truth{{320.4, 211.7}, 57};
        constexpr int kCount = 90;
        orx::TFitOptions options;
        options.noise = orx::pnEdgeChain;
        options.smoothing = sigma;
        Random random(9);
        Errors angle;
        Errors offset;
        for (int run = 0; run < 600; ++run) {
            const auto noise = smoothedNoise(kCount, 1, sigma, false, random);
            std::vector<cv::Point2d> points;
            for (int i = 0; i < kCount; ++i) {
                points.push_back(truth.middle + (i - 44.5) * truth.direction() +
                                 0.05 * noise[static_cast<std::size_t>(i)] * truth.normal());
            }
            const orx::TMeasuredLine fit = fitLineGeometric(points, options);
            angle.add(fit.angle - truth.angle, 1, fit.angleDeviation, fit.degreesOfFreedom);
            offset.add(fit.signedDistance(truth.middle), 1, fit.offsetDeviation, fit.degreesOfFreedom);
        }
        for (const Errors* errors : {&offset, &angle}) {
            EXPECT_NEAR(errors->within68(), 68.3, 6);
            EXPECT_NEAR(errors->within95(), 95.4, 3);
        }
    }
}

TEST(GeometricLine, LeadsFromTheFirstPointsToTheLastAndTellsItsStretch) {
    for (const double angle : {0.0, 45.0, 90.0, 179.0, 180.0, -90.0, -135.0}) {
        for (const auto loss : {orx::flLeastSquares, orx::flTukey}) {
            SCOPED_TRACE(testing::Message() << angle << " degrees, loss " << loss);
            Random random(2);
            const TrueLine truth{{-3e5, 1e6}, angle};
            auto points = truth.points({90, 30, 0}, random);
            if (loss == orx::flTukey) points.push_back(points[15] + 20 * truth.normal());
            const orx::TMeasuredLine fit = fitLineGeometric(points, withLoss(loss));
            ASSERT_EQ(fit.status, orx::fsOk);
            EXPECT_NEAR(angleBetween(fit.angle, angle), 0, 1e-9);
            EXPECT_GT(fit.angle, -180);
            EXPECT_LE(fit.angle, 180);
            EXPECT_NEAR(cv::norm(fit.point - truth.middle), 0, 1e-8);
            EXPECT_NEAR(fit.from, -43.5, 1e-8);
            EXPECT_NEAR(fit.to, 43.5, 1e-8);
            EXPECT_NEAR(fit.signedDistance(truth.middle + 7 * truth.normal()), 7, 1e-8);
            EXPECT_EQ(fit.usedPoints, 30);
            EXPECT_EQ(fit.used.back(), loss == orx::flTukey ? 0 : 1);
        }
    }
}

TEST(GeometricLine, GivesTheSlopeFormOfAnyButAnInvalidLine) {
    const auto along = [](cv::Point2d step) {
        std::vector<cv::Point2d> points;
        for (int i = 0; i < 10; ++i) points.push_back(cv::Point2d(4, 6) + i * step);
        return fitLineGeometric(points).slopeForm();
    };
    EXPECT_TRUE(along({2, 1}).valid);
    EXPECT_NEAR(along({2, 1}).k, 0.5, 1e-12);
    EXPECT_NEAR(along({2, 1}).b, 4, 1e-12);
    EXPECT_TRUE(std::isinf(along({0, 1}).k) || std::abs(along({0, 1}).k) > 1e12);
    EXPECT_FALSE(along({0, 0}).valid);
}

// Two well-known points outweigh many others; the deviation away from the middle follows from both variances.
TEST(GeometricLine, WeighsPointsByTheirDeviations) {
    orx::TFitOptions options;
    options.absoluteDeviations = true;
    options.noise = orx::pnNormal;
    std::vector<cv::Point2d> points;
    for (int i = 0; i <= 10; ++i) {
        points.emplace_back(i, i % 2);
        options.deviations.push_back(1e4);
    }
    options.deviations[0] = options.deviations[10] = 0.01;
    const orx::TMeasuredLine fit = fitLineGeometric(points, options);
    ASSERT_EQ(fit.status, orx::fsOk);
    EXPECT_NEAR(fit.point.x, 5, 1e-6);
    EXPECT_NEAR(fit.point.y, 0, 1e-6);
    EXPECT_NEAR(fit.offsetDeviation, 0.01 / std::sqrt(2), 1e-6);
    EXPECT_NEAR(fit.angleDeviation, 0.01 * std::sqrt(2) / 10 * 180 / kPi, 1e-5);
    EXPECT_NEAR(fit.deviationAt(5), 0.01, 1e-6);
    EXPECT_NEAR(fit.deviationAt(-15), 0.01 * std::sqrt(0.5 + 4.5), 1e-6);
}

// A fit states its point where place and angle do not depend on each other; elsewhere they do.
TEST(TMeasuredLine, ItsPlaceElsewhereIsAsUncertainAsItsCovarianceSays) {
    orx::TMeasuredLine line;
    line.covariance = {0.04, 0.03, 0.03, 0.09};
    // By hand: a radian is 180 / pi degrees, so the lever of the angle is 2 there.
    EXPECT_NEAR(line.deviationAt(360 / kPi), std::sqrt(0.04 + 2 * 2 * 0.03 + 4 * 0.09), 1e-12);
    EXPECT_NEAR(line.deviationAt(-360 / kPi), std::sqrt(0.04 - 2 * 2 * 0.03 + 4 * 0.09), 1e-12);
}

TEST(GeometricLine, HasTheSameBitsWithEveryInstructionSet) {
    Random random(4);
    const TrueLine truth{{100, 50}, 20};
    for (const int count : {3, 4, 5, 6, 7, 62, 1031}) {
        for (int loss = orx::flLeastSquares; loss <= orx::flGemanMcClure; ++loss) {
            const auto points = truth.points({200, count, 0.3, count > 20 ? 0.2 : 0.0}, random);
            const orx::TFitOptions options = withLoss(static_cast<orx::TFitLoss>(loss));
            const orx::TMeasuredLine fast = fitLineGeometric(points, options);
            cv::setUseOptimized(false);
            const orx::TMeasuredLine plain = fitLineGeometric(points, options);
            cv::setUseOptimized(true);
            const auto values = [](const orx::TMeasuredLine& l) {
                return std::vector<double>{l.point.x, l.point.y, l.angle,        l.from,           l.to,
                                           l.noise,   l.rms,     l.peakToValley, l.offsetDeviation};
            };
            EXPECT_TRUE(sameValues(values(fast), values(plain))) << count << " points, loss " << loss;
        }
    }
}

}  // namespace
