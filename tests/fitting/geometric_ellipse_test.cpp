// Ellipses for measuring against their true geometry.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>

#include "tests/fitting/ellipse_scenes.h"
#include "tests/fitting/fit_test_support.h"
#include "tests/fitting/geometric_scenes.h"

namespace {

using namespace geometric_scenes;
using orx::fitEllipseGeometric;
using orx::TMeasuredEllipse;

TrueEllipse ellipse(double minor, double from = 20) { return {{412.3, 287.8}, 100, minor, 33, from}; }

Vector5 parametersOf(const TMeasuredEllipse& fit) {
    return {fit.center.x, fit.center.y, fit.semiMajor, fit.semiMinor, fit.angle};
}

Vector5 deviationsOf(const TMeasuredEllipse& fit) {
    return {fit.xDeviation, fit.yDeviation, fit.semiMajorDeviation, fit.semiMinorDeviation,
            fit.angleDeviation};
}

using EllipseErrors = std::array<Errors, 5>;

EllipseErrors errorsOf(const TrueEllipse& truth, const Scene& scene, const orx::TFitOptions& options,
                       int runs) {
    const Matrix5 bound = truth.bound(scene);
    Random random(3);
    EllipseErrors errors;
    for (int i = 0; i < runs; ++i) {
        const TMeasuredEllipse fit = fitEllipseGeometric(truth.points(scene, random), options);
        EXPECT_EQ(fit.status, orx::fsOk) << "run " << i;
        if (!fit.valid()) continue;
        Vector5 error = parametersOf(fit) - truth.parameters();
        error[4] = std::remainder(error[4], 180);
        const Vector5 deviations = deviationsOf(fit);
        for (int p = 0; p < 5; ++p) {
            errors[static_cast<std::size_t>(p)].add(error[p], bound(p, p), deviations[p],
                                                    fit.degreesOfFreedom);
        }
    }
    return errors;
}

orx::TFitOptions withLoss(orx::TFitLoss loss) {
    orx::TFitOptions options;
    options.loss = loss;
    return options;
}

struct Row {
    TrueEllipse truth;
    Scene scene;
    orx::TFitLoss loss;
    double largestSpread;
    int runs;
};

void PrintTo(const Row& row, std::ostream* to) {
    *to << "100 by " << row.truth.minor << ", " << row.scene.extent << " degrees, " << row.scene.count
        << " points, noise " << row.scene.noise << ", outliers " << row.scene.outliers << ", loss "
        << row.loss;
}

class GeometricEllipse : public testing::TestWithParam<Row> {};

TEST_P(GeometricEllipse, ErrsNoMoreThanItMustAndSaysHowMuch) {
    const Row& row = GetParam();
    orx::TFitOptions options = withLoss(row.loss);
    options.noise = row.scene.independent ? orx::pnIndependent : orx::pnNormal;
    const EllipseErrors errors = errorsOf(row.truth, row.scene, options, row.runs);
    const double chance = 3 / std::sqrt(row.runs);
    for (std::size_t p = 0; p < errors.size(); ++p) {
        SCOPED_TRACE(testing::Message() << "parameter " << p);
        EXPECT_LT(errors[p].spread(), row.largestSpread + chance / 2);
        EXPECT_GT(errors[p].spread(), 0.97 - chance / 2);
        EXPECT_LT(std::abs(errors[p].bias()), 0.02 + chance);
        EXPECT_NEAR(errors[p].within68(), 68.3, 1 + 47 * chance);
        EXPECT_NEAR(errors[p].within95(), 95.4, 1 + 21 * chance);
    }
}

INSTANTIATE_TEST_SUITE_P(
    WithoutOutliers, GeometricEllipse,
    testing::Values(Row{ellipse(50), {360, 20, 0.3}, orx::flLeastSquares, 1.02, 2000},
                    Row{ellipse(20), {360, 40, 1}, orx::flLeastSquares, 1.02, 2000},
                    Row{ellipse(20), {360, 40, 1, 0, false}, orx::flLeastSquares, 1.02, 1000},
                    Row{ellipse(50), {180, 60, 0.3}, orx::flLeastSquares, 1.02, 1000},
                    Row{ellipse(50), {120, 100, 0.1}, orx::flLeastSquares, 1.02, 1000},
                    Row{ellipse(50), {360, 40, 0.3}, orx::flTukey, 1.06, 300}));

INSTANTIATE_TEST_SUITE_P(WithFortyPercentOutliers, GeometricEllipse,
                         testing::Values(Row{ellipse(50), {360, 60, 0.3, 0.4}, orx::flTukey, 1.1, 150},
                                         Row{ellipse(20), {360, 100, 0.5, 0.4}, orx::flCauchy, 1.1, 100},
                                         Row{ellipse(50), {200, 500, 0.3, 0.4}, orx::flHuber, 1.1, 100}));

// Much noise at the narrow tips, where the biases of second order are largest.
// Axes and direction of a short arc are hardly told: what noise adds to the axes' difference, taken back
// whole, would lead tens of the noise away from the points.
TEST(GeometricEllipseBias, IsNotTakenBackBeyondThePoints) {
    const TrueEllipse truth{{412.3, 287.8}, 200, 180, 33, 20};
    Random random(7);
    int valid = 0;
    for (int run = 0; run < 200; ++run) {
        const Scene scene{run % 2 == 0 ? 50.0 : 70.0, run % 2 == 0 ? 100 : 8, 0.1};
        const std::vector<cv::Point2d> points = truth.points(scene, random);
        const TMeasuredEllipse fit = fitEllipseGeometric(points);
        if (!fit.valid()) continue;
        ++valid;
        double squares = 0;
        for (const cv::Point2d& p : points) squares += std::pow(fit.signedDistance(p), 2);
        EXPECT_LT(std::sqrt(squares / static_cast<double>(points.size())), 1.2 * (fit.rms + fit.noise));
    }
    EXPECT_GT(valid, 150);
}

TEST(GeometricEllipseBias, IsTakenBackAsTheNoiseIs) {
    orx::TFitOptions options;
    const Scene scene{360, 30, 1.2};
    const TrueEllipse truth = ellipse(20, 0);
    const EllipseErrors errors = errorsOf(truth, scene, options, 4000);
    for (std::size_t p = 0; p < errors.size(); ++p) {
        EXPECT_LT(std::abs(errors[p].bias()), 0.05) << "parameter " << p;
    }
    // Taken for noise across the outline alone, noise in x and y makes the ellipse larger by what the
    // curvature at each point adds: the weighted mean of noise^2 curvature / 2.
    options.noise = orx::pnNormal;
    const EllipseErrors naive = errorsOf(truth, {360, 200, 1.2}, options, 400);
    const Matrix5 bound = truth.bound({360, 200, 1});
    Vector5 lift = Vector5::all(0);
    for (int i = 0; i < 200; ++i) {
        const double parameter = 360 * (i + 0.5) / 200;
        const cv::Point2d u = unit(parameter);
        const double curvature = 100 * 20 / std::pow(std::hypot(100 * u.y, 20 * u.x), 3);
        lift += 1.2 * 1.2 * curvature / 2 * truth.row(parameter);
    }
    const Vector5 bias = bound * lift;
    for (const int p : {2, 3}) {
        const double spread = 1.2 * std::sqrt(bound(p, p));
        EXPECT_NEAR(naive[static_cast<std::size_t>(p)].bias(), bias[p] / spread, 0.2) << "parameter " << p;
    }
    EXPECT_GT(bias[2] / (1.2 * std::sqrt(bound(2, 2))), 0.4);
}

// What circles tell: the mean of the axes, hardly a difference, no angle.
TEST(GeometricEllipse, SaysWhereEqualAxesTellNoAngle) {
    for (const double arc : {360.0, 150.0}) {
        SCOPED_TRACE(arc);
        Random random(4);
        const TrueEllipse truth{{412.3, 287.8}, 100, 100, 0, 10};
        const Scene scene{arc, 100, 0.5};
        constexpr int kRuns = 1000;
        int told = 0;
        Errors major;
        Errors minor;
        for (int run = 0; run < kRuns; ++run) {
            const TMeasuredEllipse fit = fitEllipseGeometric(truth.points(scene, random));
            ASSERT_EQ(fit.status, orx::fsOk);
            ASSERT_GE(fit.semiMajor, fit.semiMinor);
            major.add(fit.semiMajor - 100, 1, fit.semiMajorDeviation, fit.degreesOfFreedom);
            minor.add(fit.semiMinor - 100, 1, fit.semiMinorDeviation, fit.degreesOfFreedom);
            told += fit.angleTold ? 1 : 0;
            if (fit.angleTold) continue;
            EXPECT_NEAR(fit.angleDeviation, 180 / std::sqrt(12), 1e-9);
            EXPECT_EQ(fit.covariance(4, 2), 0);
            EXPECT_TRUE(fit.angle >= 0 && fit.angle < 180);
        }
        EXPECT_LT(told, 0.2 * kRuns);
        for (const Errors& errors : {major, minor}) {
            // An axis cannot be both the longer and the shorter: 66.3 and 93.2 % by theory.
            EXPECT_NEAR(errors.within68(), 67, 6);
            EXPECT_NEAR(errors.within95(), 94, 3);
        }
    }
    Random random(4);
    EXPECT_TRUE(fitEllipseGeometric(ellipse(98).points({360, 200, 0.3}, random)).angleTold);
}

TEST(GeometricEllipse, IsExactWithoutNoiseInLargeCoordinates) {
    Random random(1);
    for (const double arc : {360.0, 120.0, 40.0}) {
        for (const auto loss : {orx::flLeastSquares, orx::flTukey}) {
            SCOPED_TRACE(testing::Message() << arc << " degrees, loss " << loss);
            const TrueEllipse truth{{6e5, -4e5}, 4e5, 1e5, 122, 77};
            const TMeasuredEllipse fit =
                fitEllipseGeometric(truth.points({arc, 300, 0}, random), withLoss(loss));
            ASSERT_EQ(fit.status, orx::fsOk);
            // Shorter arcs magnify the coordinates' rounding.
            const double tolerance = (arc < 100 ? 1e-10 : 1e-12) * 1e6;
            const Vector5 error = parametersOf(fit) - truth.parameters();
            for (int p = 0; p < 4; ++p) EXPECT_NEAR(error[p], 0, tolerance) << "parameter " << p;
            EXPECT_NEAR(error[4], 0, (arc < 100 ? 1e-9 : 1e-11));
            EXPECT_EQ(fit.usedPoints, 300);
        }
    }
}

// The covariance then is what the deviations say, whatever distances remain.
TEST(GeometricEllipse, KnownDeviationsTellTheCovariance) {
    const TrueEllipse truth = ellipse(60);
    Random random(9);
    std::vector<cv::Point2d> points;
    orx::TFitOptions options;
    options.absoluteDeviations = true;
    options.noise = orx::pnNormal;
    Matrix5 information = Matrix5::zeros();
    for (int i = 0; i < 90; ++i) {
        const double parameter = 4.0 * i;
        const double deviation = i % 3 == 0 ? 0.4 : 0.1;
        points.push_back(truth.at(parameter) + random.normal(deviation) * truth.normal(parameter));
        options.deviations.push_back(deviation);
        const Vector5 row = truth.row(parameter);
        information += row * row.t() * (1 / (deviation * deviation));
    }
    points.push_back({1000, 1000});
    options.deviations.push_back(0);
    const TMeasuredEllipse fit = fitEllipseGeometric(points, options);
    ASSERT_EQ(fit.status, orx::fsOk);
    EXPECT_EQ(fit.usedPoints, 90);
    EXPECT_EQ(fit.used.back(), 0);
    EXPECT_TRUE(std::isinf(fit.degreesOfFreedom));
    const Matrix5 bound = information.inv();
    for (int p = 0; p < 5; ++p) {
        for (int q = 0; q < 5; ++q) {
            const double size = std::sqrt(bound(p, p) * bound(q, q));
            EXPECT_NEAR(fit.covariance(p, q), bound(p, q), 0.02 * size) << p << ", " << q;
        }
        EXPECT_NEAR(parametersOf(fit)[p], truth.parameters()[p], 4 * std::sqrt(bound(p, p)));
    }
}

TEST(GeometricEllipse, EdgeChainsCountTheNoiseThatNeighboursShare) {
    const TrueEllipse truth = ellipse(60, 0);
    // At equal steps along the outline.
    std::vector<double> parameters;
    for (double parameter = 0; parameter < 360;) {
        parameters.push_back(parameter);
        const cv::Point2d u = unit(parameter);
        parameter += 1.0 / std::hypot(100 * u.y, 60 * u.x) * 180 / kPi;
    }
    orx::TFitOptions options;
    options.noise = orx::pnEdgeChain;
    options.smoothing = 1.5;
    Random random(11);
    Errors minor;
    Errors angle;
    for (int run = 0; run < 200; ++run) {
        const auto noise = smoothedNoise(static_cast<int>(parameters.size()), 1, 1.5, true, random);
        std::vector<cv::Point2d> points;
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            points.push_back(truth.at(parameters[i]) + 0.05 * noise[i] * truth.normal(parameters[i]));
        }
        const TMeasuredEllipse fit = fitEllipseGeometric(points, options);
        ASSERT_EQ(fit.status, orx::fsOk);
        minor.add(fit.semiMinor - 60, fit.covariance(3, 3), fit.semiMinorDeviation, fit.degreesOfFreedom);
        angle.add(fit.angle - 33, fit.covariance(4, 4), fit.angleDeviation, fit.degreesOfFreedom);
    }
    for (const Errors& errors : {minor, angle}) {
        EXPECT_NEAR(errors.spread(), 1, 0.15);
        EXPECT_NEAR(errors.within95(), 95.4, 4);
    }
}

// Nowhere on the outline is nearer than the foot, and its distance is that along the normal.
TEST(TMeasuredEllipse, FindsTheNearestPointFromEverywhere) {
    for (const double minor : {100.0, 99.999, 60.0, 5.0, 0.01}) {
        TMeasuredEllipse e;
        e.center = {30, -20};
        e.semiMajor = 100;
        e.semiMinor = minor;
        e.angle = 25;
        const TrueEllipse truth{e.center, 100, minor, 25, 0};
        const double cusp = (100 * 100 - minor * minor) / 100;  // of the evolute
        std::vector<cv::Point2d> own{
            {0, 0},       {1e-200, 0},     {0, 1e-200},        {cusp, 0},       {cusp, 1e-12}, {cusp / 2, 0},
            {cusp, 0.1},  {cusp + 0.1, 0}, {0, minor / 2},     {0, 3 * minor},  {150, 0},      {100, 0},
            {-100, 1e-9}, {0, -minor},     {-40, minor * 0.9}, {1e6, -3 * 1e6}, {99, minor}};
        for (const cv::Point2d p : own) {
            SCOPED_TRACE(testing::Message() << minor << ": " << p.x << ", " << p.y);
            const cv::Point2d given = e.center + truth.turned(p);
            const cv::Point2d foot = e.nearest(given);
            const double distance = e.signedDistance(given);
            const double reach = 100 + cv::norm(p);
            ASSERT_NEAR(cv::norm(foot - given), std::abs(distance), 1e-11 * reach);
            const double level = std::hypot(p.x / 100, p.y / minor);
            if (std::abs(level - 1) > 1e-9) {
                EXPECT_EQ(distance > 0, level > 1);
            }
            double least = std::numeric_limits<double>::infinity();
            double off = std::numeric_limits<double>::infinity();
            for (int i = 0; i < 7200; ++i) {
                const cv::Point2d q = truth.at(i / 20.0);
                least = std::min(least, cv::norm(q - given));
                off = std::min(off, cv::norm(q - foot));
            }
            EXPECT_LT(std::abs(distance), least + 1e-11 * reach);
            EXPECT_GT(std::abs(distance), least - 0.05);
            EXPECT_LT(off, 0.05);
            const cv::Point2d arm = foot - e.center;
            const cv::Point2d axis = unit(25);
            EXPECT_NEAR(std::hypot(arm.dot(axis) / 100, arm.cross(axis) / minor), 1, 1e-9 * 100 / minor);
        }
        EXPECT_NEAR(cv::norm(e.at(70) - truth.at(70)), 0, 1e-12 * 100);
    }
    EXPECT_EQ(TMeasuredEllipse{}.signedDistance({3, 4}), 0);
}

TEST(GeometricEllipse, RefusesWhatIsNoneAndSaysWhy) {
    const auto statusOf = [](const std::vector<cv::Point2d>& points,
                             orx::TFitLoss loss = orx::flLeastSquares) {
        const TMeasuredEllipse fit = fitEllipseGeometric(points, withLoss(loss));
        EXPECT_EQ(fit.points, static_cast<int>(points.size()));
        if (!fit.valid()) {
            EXPECT_EQ(fit.semiMajor, 0);
            EXPECT_TRUE(fit.used.empty());
        }
        return fit.status;
    };
    const auto curve = [](int count, auto at) {
        std::vector<cv::Point2d> points;
        for (int i = 0; i < count; ++i) points.push_back(cv::Point2d(300, 200) + at(i));
        return points;
    };
    Random random(6);
    const auto noise = [&](double sigma) { return cv::Point2d(random.normal(sigma), random.normal(sigma)); };
    const auto every = {orx::flLeastSquares, orx::flHuber, orx::flTukey};
    const TrueEllipse truth = ellipse(50);
    for (const auto loss : every) {
        SCOPED_TRACE(testing::Message() << "loss " << loss);
        EXPECT_EQ(statusOf({}, loss), orx::fsTooFewPoints);
        EXPECT_EQ(statusOf(truth.points({360, 5, 0}, random), loss), orx::fsTooFewPoints);
        EXPECT_EQ(statusOf(curve(40, [&](int i) { return 50 * unit(72 * (i % 5)); }), loss),
                  orx::fsTooFewPoints);
        EXPECT_EQ(statusOf(curve(40, [&](int i) { return 50 * unit(111 * (i % 4)); }), loss),
                  orx::fsTooFewPoints);
        EXPECT_EQ(statusOf(curve(40, [](int) { return cv::Point2d(3, 4); }), loss), orx::fsCoincident);
        EXPECT_EQ(statusOf(curve(40, [](int i) { return cv::Point2d(3 * i, 2 * i); }), loss),
                  orx::fsCollinear);
        EXPECT_EQ(statusOf(curve(40, [](int i) { return cv::Point2d(0.1 * i, 0.7 * i); }), loss),
                  orx::fsCollinear);
        for (const double sigma : {0.0, 0.01}) {
            const auto parabola = [&](int i) {
                return cv::Point2d(i - 50, (i - 50) * (i - 50) / 30.0) + noise(sigma);
            };
            EXPECT_EQ(statusOf(curve(100, parabola), loss), orx::fsNotThatShape);
            const auto hyperbola = [&](int i) {
                const double t = -1.5 + 0.03 * i;
                return cv::Point2d(40 * std::cosh(t), 30 * std::sinh(t)) + noise(sigma);
            };
            EXPECT_EQ(statusOf(curve(100, hyperbola), loss), orx::fsNotThatShape);
        }
        for (auto bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
            std::vector<cv::Point2d> points = truth.points({360, 50, 0.1}, random);
            points[7].y = bad;
            EXPECT_EQ(statusOf(points, loss), orx::fsNotFinite);
        }
    }
    for (int run = 0; run < 20; ++run) {
        const auto line = curve(100, [&](int i) { return cv::Point2d(i, 0.5 * i) + noise(0.5); });
        EXPECT_TRUE(statusOf(line) == orx::fsCollinear || statusOf(line) == orx::fsArcTooShort);
        EXPECT_EQ(statusOf(truth.points({25, 100, 0.1}, random)), orx::fsArcTooShort);
        const auto area =
            curve(100, [&](int) { return cv::Point2d(random.uniform(0, 300), random.uniform(0, 300)); });
        EXPECT_NE(statusOf(area), orx::fsOk);
    }
    // A line stays one where its points are known unevenly well.
    orx::TFitOptions uneven;
    uneven.deviations.assign(40, 2.0);
    std::fill_n(uneven.deviations.begin(), 10, 0.1);
    const auto straight = curve(40, [](int i) { return cv::Point2d(3 * i, 2 * i); });
    EXPECT_EQ(fitEllipseGeometric(straight, uneven).status, orx::fsCollinear);
    orx::TFitOptions one;
    one.maxIterations = 1;
    EXPECT_EQ(fitEllipseGeometric(truth.points({360, 50, 1}, random), one).status, orx::fsNotConverged);
}

// Ten good points, half of which one ellipse through five others always meets.
TEST(GeometricEllipse, FewGoodPointsAreNotTakenForOutliers) {
    Random random(2);
    const TrueEllipse truth = ellipse(50);
    double squares = 0;
    constexpr int kRuns = 100;
    for (int run = 0; run < kRuns; ++run) {
        const TMeasuredEllipse fit =
            fitEllipseGeometric(truth.points({360, 12, 0.3}, random), withLoss(orx::flTukey));
        ASSERT_EQ(fit.status, orx::fsOk);
        squares += std::pow(fit.semiMajor - 100, 2);
    }
    EXPECT_LT(std::sqrt(squares / kRuns), 1.6 * std::sqrt(truth.bound({360, 12, 0.3})(2, 2)));
}

TEST(GeometricEllipse, PlaceTurnTypeAndInstructionSetChangeNothing) {
    Random random(12);
    const std::vector<cv::Point2d> points = ellipse(50).points({250, 203, 0.3}, random);
    const TMeasuredEllipse fit = fitEllipseGeometric(points);
    ASSERT_EQ(fit.status, orx::fsOk);
    // As (x, y) -> (y, x) + (1000, -500).
    std::vector<cv::Point2d> mirrored;
    std::vector<cv::Point2f> floats;
    for (const cv::Point2d& p : points) {
        mirrored.emplace_back(p.y + 1000, p.x - 500);
        floats.emplace_back(p);
    }
    const TMeasuredEllipse other = fitEllipseGeometric(mirrored);
    ASSERT_EQ(other.status, orx::fsOk);
    EXPECT_NEAR(other.center.x, fit.center.y + 1000, 1e-7);
    EXPECT_NEAR(other.center.y, fit.center.x - 500, 1e-7);
    EXPECT_NEAR(other.semiMajor, fit.semiMajor, 1e-7);
    EXPECT_NEAR(other.angle, 90 - fit.angle, 1e-7);
    EXPECT_NEAR(other.angleDeviation, fit.angleDeviation, 1e-8);
    EXPECT_NEAR(other.xDeviation, fit.yDeviation, 1e-8);
    EXPECT_NEAR(fitEllipseGeometric(floats).semiMinor, fit.semiMinor, 1e-4);
    cv::setUseOptimized(false);
    const TMeasuredEllipse baseline = fitEllipseGeometric(points);
    cv::setUseOptimized(true);
    EXPECT_EQ(parametersOf(baseline), parametersOf(fit));
    EXPECT_EQ(baseline.covariance, fit.covariance);
}

}  // namespace
