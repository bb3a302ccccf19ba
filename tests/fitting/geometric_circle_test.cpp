// Circles and arcs for measuring against their true geometry.
#include <gtest/gtest.h>

#include <limits>

#include "tests/fitting/fit_test_support.h"
#include "tests/fitting/geometric_scenes.h"

namespace {

using namespace geometric_scenes;
using orx::fitArcGeometric;
using orx::fitCircleGeometric;

const TrueCircle kTruth{{412.3, 287.8}, 100, 33};

// Errors of the radius, and of the center along the middle of the arc, which is the direction worst known.
struct CircleErrors {
    Errors center;
    Errors radius;
};

CircleErrors errorsOf(const TrueCircle& truth, const Scene& scene, const orx::TFitOptions& options,
                      int runs) {
    const cv::Matx33d bound = truth.bound(scene);
    const cv::Point2d axis = unit(truth.from + scene.extent / 2);
    const cv::Vec3d along(axis.x, axis.y, 0);
    const auto variance = [&](const cv::Matx33d& covariance) { return along.dot(covariance * along); };
    Random random(3);
    CircleErrors errors;
    for (int i = 0; i < runs; ++i) {
        const orx::TMeasuredCircle fit = fitCircleGeometric(truth.points(scene, random), options);
        EXPECT_EQ(fit.status, orx::fsOk) << "run " << i;
        if (!fit.valid()) continue;
        errors.center.add((fit.center - truth.center).dot(axis), variance(bound),
                          std::sqrt(variance(fit.covariance)), fit.degreesOfFreedom);
        errors.radius.add(fit.radius - truth.radius, bound(2, 2), fit.radiusDeviation, fit.degreesOfFreedom);
    }
    return errors;
}

void expectAtBound(const Errors& errors, double largestSpread, int runs) {
    EXPECT_LT(errors.spread(), largestSpread);
    EXPECT_GT(errors.spread(), 0.95);
    EXPECT_LT(std::abs(errors.bias()), 0.05 + 3 / std::sqrt(runs));
    EXPECT_NEAR(errors.within68(), 68.3, 4.0);
    EXPECT_NEAR(errors.within95(), 95.4, 2.0);
}

orx::TFitOptions withLoss(orx::TFitLoss loss) {
    orx::TFitOptions options;
    options.loss = loss;
    return options;
}

struct Row {
    Scene scene;
    orx::TFitLoss loss;
    double largestSpread;
    int runs;
};

void PrintTo(const Row& row, std::ostream* to) {
    *to << row.scene.extent << " degrees, " << row.scene.count << " points, noise " << row.scene.noise
        << ", outliers " << row.scene.outliers << ", loss " << row.loss;
}

class GeometricCircle : public testing::TestWithParam<Row> {};

TEST_P(GeometricCircle, ErrsNoMoreThanItMustAndSaysHowMuch) {
    const Row& row = GetParam();
    orx::TFitOptions options = withLoss(row.loss);
    options.noise = row.scene.independent ? orx::pnIndependent : orx::pnNormal;
    const CircleErrors errors = errorsOf(kTruth, row.scene, options, row.runs);
    {
        SCOPED_TRACE("center");
        expectAtBound(errors.center, row.largestSpread, row.runs);
    }
    SCOPED_TRACE("radius");
    expectAtBound(errors.radius, row.largestSpread, row.runs);
}

INSTANTIATE_TEST_SUITE_P(WithoutOutliers, GeometricCircle,
                         testing::Values(Row{{360, 20, 0.3}, orx::flLeastSquares, 1.05, 2000},
                                         Row{{360, 20, 5, 0, false}, orx::flLeastSquares, 1.08, 2000},
                                         Row{{90, 20, 0.3}, orx::flLeastSquares, 1.05, 2000},
                                         Row{{30, 100, 0.3, 0, false}, orx::flLeastSquares, 1.05, 2000},
                                         Row{{30, 500, 0.01}, orx::flLeastSquares, 1.05, 800},
                                         Row{{90, 50, 0.3}, orx::flHuber, 1.08, 1200},
                                         Row{{360, 30, 1}, orx::flCauchy, 1.08, 1200},
                                         Row{{30, 100, 0.1}, orx::flTukey, 1.08, 1200},
                                         Row{{360, 100, 0.3}, orx::flGemanMcClure, 1.08, 1200}));

INSTANTIATE_TEST_SUITE_P(WithFortyPercentOutliers, GeometricCircle,
                         testing::Values(Row{{360, 60, 0.3, 0.4}, orx::flTukey, 1.15, 800},
                                         Row{{360, 300, 1, 0.4}, orx::flHuber, 1.15, 600},
                                         Row{{90, 200, 0.3, 0.4}, orx::flCauchy, 1.15, 600},
                                         Row{{30, 200, 0.3, 0.4}, orx::flGemanMcClure, 1.15, 600},
                                         Row{{30, 2000, 0.3, 0.4}, orx::flTukey, 1.15, 200}));

// Few points on a short arc under much noise, where the biases of second order are largest.
TEST(GeometricCircleBias, IsTakenBackAsTheNoiseIs) {
    orx::TFitOptions options;
    for (const Scene& scene :
         {Scene{360, 12, 8}, Scene{90, 40, 3}, Scene{40, 200, 1}, Scene{90, 40, 3, 0, false}}) {
        SCOPED_TRACE(scene.extent);
        options.noise = scene.independent ? orx::pnIndependent : orx::pnNormal;
        const CircleErrors errors = errorsOf(kTruth, scene, options, 4000);
        EXPECT_LT(std::abs(errors.radius.bias()), 0.05 * errors.radius.spread());
        EXPECT_LT(std::abs(errors.center.bias()), 0.05 * errors.center.spread());
    }
    // Taken for noise across the outline alone, noise in x and y makes the circle larger by noise^2 / (2
    // radius).
    const Scene scene{360, 200, 8};
    options.noise = orx::pnNormal;
    const double bias = errorsOf(kTruth, scene, options, 1000).radius.bias();
    EXPECT_NEAR(bias * std::sqrt(kTruth.bound(scene)(2, 2)), 8.0 * 8.0 / 200, 0.06);
}

// Three points that hardly tell the tangent and one far away: what curvature is expected to add to the radius
// is 20 pixels, and a circle freed from it would miss them all.
TEST(GeometricCircleBias, IsNotTakenBackBeyondThePoints) {
    const std::vector<cv::Point2d> points{
        {-20, -20}, {816.523682, 1018.54797}, {817.256042, 1019.36676}, {819.32605, 1016.01147}};
    const orx::TMeasuredCircle circle = orx::fitCircleGeometric(points);
    ASSERT_TRUE(circle.valid());
    EXPECT_GT(circle.radiusDeviation, 20);
    for (const cv::Point2d& p : points) EXPECT_NEAR(circle.signedDistance(p), 0, 3 * circle.noise);
}

TEST(GeometricCircle, EdgeChainsCountTheNoiseThatNeighboursShare) {
    struct Chain {
        double extent, radius, spacing, sigma;
        orx::TFitLoss loss;
    };
    for (const Chain& chain :
         {Chain{360, 40, 1.1, 1, orx::flLeastSquares}, Chain{360, 25, 0.7, 2, orx::flLeastSquares},
          Chain{90, 100, 1, 1.5, orx::flLeastSquares}, Chain{40, 60, 1, 1, orx::flLeastSquares},
          Chain{360, 12, 0.1, 1, orx::flLeastSquares}, Chain{360, 60, 1, 1, orx::flHuber}}) {
        SCOPED_TRACE(testing::Message() << chain.extent << " degrees, radius " << chain.radius);
        const auto count = static_cast<int>(chain.radius * chain.extent * kPi / 180 / chain.spacing);
        orx::TFitOptions options = withLoss(chain.loss);
        options.noise = orx::pnEdgeChain;
        options.smoothing = chain.sigma;
        Random random(11);
        Errors errors;
        constexpr double kNoise = 0.05;
        for (int run = 0; run < 300; ++run) {
            const auto noise = smoothedNoise(count, chain.spacing, chain.sigma, chain.extent == 360, random);
            std::vector<cv::Point2d> points;
            for (int i = 0; i < count; ++i) {
                const double radius = chain.radius + kNoise * noise[static_cast<std::size_t>(i)];
                points.push_back(kTruth.center + radius * unit(chain.extent * i / count));
            }
            const orx::TMeasuredCircle fit = fitCircleGeometric(points, options);
            ASSERT_EQ(fit.status, orx::fsOk);
            errors.add(fit.radius - chain.radius, fit.covariance(2, 2), fit.radiusDeviation,
                       fit.degreesOfFreedom);
            // Points are worth as many as lay 2 sqrt(pi) sigma apart, the ends of an arc aside.
            const double worth = count * chain.spacing / (2 * std::sqrt(kPi) * chain.sigma);
            EXPECT_NEAR(fit.effectivePoints, worth,
                        (chain.loss == orx::flLeastSquares ? 0.12 : 0.25) * worth);
        }
        EXPECT_NEAR(errors.within68(), 68.3, 6);
        EXPECT_NEAR(errors.within95(), 95.4, 3);
    }
}

TEST(GeometricCircle, IsExactWithoutNoiseInLargeCoordinates) {
    Random random(1);
    for (const double arc : {360.0, 90.0, 20.0, 5.0}) {
        for (const auto loss : {orx::flLeastSquares, orx::flTukey}) {
            const TrueCircle truth{{6e5, -4e5}, 4e5, 77};
            const orx::TMeasuredArc fit =
                fitArcGeometric(truth.points({arc, 300, 0}, random), withLoss(loss));
            SCOPED_TRACE(testing::Message() << arc << " degrees, loss " << loss);
            ASSERT_EQ(fit.status, orx::fsOk);
            EXPECT_NEAR(fit.radius, truth.radius, 1e-12 * truth.radius);
            EXPECT_NEAR(fit.center.x, truth.center.x, 1e-12 * 1e6);
            EXPECT_NEAR(fit.center.y, truth.center.y, 1e-12 * 1e6);
            EXPECT_EQ(fit.usedPoints, 300);
        }
    }
}

// The least sum is where a plain sum of the gradient vanishes.
TEST(GeometricCircle, StandsWhereTheGradientOfTheLossVanishes) {
    Random random(8);
    for (const auto loss :
         {orx::flLeastSquares, orx::flHuber, orx::flCauchy, orx::flTukey, orx::flGemanMcClure}) {
        for (const int count : {4, 5, 6, 7, 40, 203}) {
            // So little noise that taking the biases back moves nothing that counts.
            const Scene scene{130, count, 1e-4, 0, false};
            const std::vector<cv::Point2d> points = kTruth.points(scene, random);
            orx::TFitOptions options = withLoss(loss);
            options.noise = orx::pnNormal;
            options.scale = 1.5e-4;
            options.tuning = 1.1;
            for (int i = 0; i < count; ++i) options.deviations.push_back(1 + i % 3);
            const orx::TMeasuredCircle fit = fitCircleGeometric(points, options);
            SCOPED_TRACE(testing::Message() << "loss " << loss << ", " << count << " points");
            ASSERT_EQ(fit.status, orx::fsOk);
            // The scale counts in deviations of an average point: of the mean weight.
            double weights = 0;
            for (const double deviation : options.deviations) weights += 1 / (deviation * deviation) / count;
            const double unitDeviation = 1 / std::sqrt(weights);
            cv::Vec3d gradient(0, 0, 0);
            for (int i = 0; i < count; ++i) {
                const auto at = static_cast<std::size_t>(i);
                if (fit.used[at] == 0) continue;
                const cv::Point2d arm = points[at] - fit.center;
                const double d = fit.signedDistance(points[at]);
                const double ratio = d / options.deviations[at] / options.scale / options.tuning;
                const double t = ratio * ratio;
                const double omegas[] = {1, std::min(1.0, 1 / std::sqrt(t)), 1 / (1 + t),
                                         std::pow(std::max(0.0, 1 - t), 2), std::pow(1 + t, -2)};
                const double weight = omegas[loss] * std::pow(unitDeviation / options.deviations[at], 2);
                gradient += weight * d * cv::Vec3d(arm.x, arm.y, cv::norm(arm)) / cv::norm(arm);
            }
            EXPECT_LT(cv::norm(gradient), 1e-4 * scene.noise * std::sqrt(count));
        }
    }
}

TEST(GeometricCircle, WeighsPointsByTheirDeviations) {
    Random random(21);
    Errors errors;
    constexpr int kCount = 60;
    orx::TFitOptions options;
    cv::Matx33d information = cv::Matx33d::zeros();
    for (int i = 0; i < kCount; ++i) {
        options.deviations.push_back(i % 2 == 0 ? 0.05 : 1.0);
        const cv::Point2d normal = unit(150.0 * i / kCount);
        const cv::Vec3d row(normal.x, normal.y, 1);
        information += row * row.t() * std::pow(options.deviations.back(), -2);
    }
    const cv::Matx33d bound = information.inv();
    options.deviations.push_back(0);
    options.noise = orx::pnNormal;
    for (int run = 0; run < 1500; ++run) {
        std::vector<cv::Point2d> points;
        for (int i = 0; i < kCount; ++i) {
            const double noise = random.normal(options.deviations[static_cast<std::size_t>(i)]);
            points.push_back(kTruth.center + (kTruth.radius + noise) * unit(150.0 * i / kCount));
        }
        points.emplace_back(1e5, 1e5);  // its deviation of 0 leaves it out
        options.absoluteDeviations = false;
        const orx::TMeasuredCircle fit = fitCircleGeometric(points, options);
        ASSERT_EQ(fit.usedPoints, kCount);
        ASSERT_EQ(fit.used.back(), 0);
        errors.add(fit.radius - kTruth.radius, bound(2, 2), fit.radiusDeviation, fit.degreesOfFreedom);
        if (run > 0) continue;
        options.absoluteDeviations = true;
        const orx::TMeasuredCircle absolute = fitCircleGeometric(points, options);
        EXPECT_NEAR(absolute.radiusDeviation, std::sqrt(bound(2, 2)), 5e-3 * std::sqrt(bound(2, 2)));
        EXPECT_TRUE(std::isinf(absolute.degreesOfFreedom));
    }
    expectAtBound(errors, 1.05, 1500);
}

TEST(GeometricCircle, SaysWhichPointsHadASay) {
    Random random(5);
    std::vector<cv::Point2d> points = kTruth.points({70, 400, 0.2}, random);
    const std::vector<std::size_t> strays = {3, 77, 311, 399};
    points[3] += cv::Point2d(40, -30);
    points[77] += cv::Point2d(0, 3);
    points[311] = points[311] * 1.5;
    // Right on the circle, but alone on its other side, where it weighs more than hundreds of others.
    points[399] = kTruth.center + (kTruth.radius + 0.9) * unit(kTruth.from + 215);
    const orx::TMeasuredArc fit = fitArcGeometric(points, withLoss(orx::flHuber));
    ASSERT_EQ(fit.status, orx::fsOk);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const bool stray = std::find(strays.begin(), strays.end(), i) != strays.end();
        EXPECT_EQ(fit.used[i], stray ? 0 : 1) << i;
    }
    EXPECT_EQ(fit.usedPoints, 396);
    EXPECT_NEAR(fit.noise, 0.2, 0.02);
    EXPECT_NEAR(fit.rms, 0.2, 0.02);
    EXPECT_LT(fit.peakToValley, 10 * 0.2);
    EXPECT_NEAR(fit.sweep, 69.6, 0.5);
}

// Against sorted angles.
TEST(GeometricArc, CoversTheSmallestArcThatHoldsAllPoints) {
    Random random(17);
    for (int run = 0; run < 400; ++run) {
        const int count = random.integer(6, run % 4 == 0 ? 3000 : 60);
        const double extent = random.uniform(20, 400);
        const double from = random.uniform(-180, 180);
        std::vector<cv::Point2d> points;
        std::vector<double> angles;
        for (int i = 0; i < count; ++i) {
            const double angle = from + random.uniform(0, std::min(extent, 360.0));
            points.push_back(kTruth.center + kTruth.radius * unit(angle));
            angles.push_back(std::remainder(angle, 360.0));
        }
        const orx::TMeasuredArc fit = fitArcGeometric(points);
        ASSERT_EQ(fit.status, orx::fsOk);
        std::sort(angles.begin(), angles.end());
        double gap = 0;
        double start = 0;
        for (std::size_t i = 0; i < angles.size(); ++i) {
            const double next = i + 1 < angles.size() ? angles[i + 1] : angles[0] + 360;
            if (next - angles[i] > gap) {
                gap = next - angles[i];
                start = next > 180 ? next - 360 : next;
            }
        }
        if (gap < 4) {
            EXPECT_EQ(fit.sweep, 360);
            EXPECT_EQ(fit.startAngle, 0);
            continue;
        }
        EXPECT_NEAR(fit.sweep, 360 - gap, 1e-6);
        EXPECT_NEAR(fit.startAngle, start, 1e-6);
        EXPECT_NEAR(cv::norm(fit.start - (kTruth.center + kTruth.radius * unit(start))), 0, 1e-5);
        EXPECT_NEAR(cv::norm(fit.end - (kTruth.center + kTruth.radius * unit(start - gap))), 0, 1e-5);
        EXPECT_NEAR(fit.length, kTruth.radius * (360 - gap) * kPi / 180, 1e-5);
    }
}

TEST(GeometricCircle, HasTheSameBitsWithEveryInstructionSet) {
    Random random(4);
    for (const int count : {4, 5, 6, 7, 8, 61, 1030}) {
        for (int loss = orx::flLeastSquares; loss <= orx::flGemanMcClure; ++loss) {
            const auto points = kTruth.points({200, count, 0.3, count > 20 ? 0.2 : 0.0}, random);
            orx::TFitOptions options = withLoss(static_cast<orx::TFitLoss>(loss));
            if (count == 61) options.deviations.assign(points.size(), 0.5);
            const orx::TMeasuredCircle fast = fitCircleGeometric(points, options);
            cv::setUseOptimized(false);
            const orx::TMeasuredCircle plain = fitCircleGeometric(points, options);
            cv::setUseOptimized(true);
            const auto values = [](const orx::TMeasuredCircle& c) {
                return std::vector<double>{
                    c.center.x,     c.center.y, c.radius,           c.noise,          c.rms,
                    c.peakToValley, c.sweep,    c.covariance(0, 1), c.radiusDeviation};
            };
            EXPECT_EQ(fast.status, plain.status);
            EXPECT_TRUE(sameValues(values(fast), values(plain))) << count << " points, loss " << loss;
        }
    }
}

TEST(GeometricCircle, TakesFloatsAsTheDoublesTheyAre) {
    Random random(4);
    const auto points = kTruth.points({200, 50, 0.3}, random);
    const std::vector<cv::Point2f> floats(points.begin(), points.end());
    const std::vector<cv::Point2d> same(floats.begin(), floats.end());
    EXPECT_EQ(fitCircleGeometric(floats).radius, fitCircleGeometric(same).radius);
    EXPECT_EQ(fitArcGeometric(floats).length, fitArcGeometric(same).length);
}

}  // namespace
