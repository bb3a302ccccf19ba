#include <cmath>
#include <limits>

#include "tests/fitting/fit_reference.h"
#include "tests/fitting/fit_test_support.h"

namespace {

using fit_scenes::Random;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

template <class Fitter>
Fitter fitterOf(const std::vector<cv::Point>& points, const std::vector<double>& values) {
    Fitter fitter;
    fitter.setPoints(points);
    EXPECT_TRUE(fitter.setParams(values));
    return fitter;
}

// Circles near and far from the origin: beyond some tens of thousands of pixels sums of cubes get rounded.
std::vector<cv::Point> randomScene(Random& random) {
    const double extent = std::pow(10.0, random.integer(1, 5));
    const cv::Point3d circle(random.uniform(-extent, extent), random.uniform(-extent, extent),
                             random.uniform(3, 2 * extent));
    const fit_scenes::Disturbance disturbance{random.uniform(0, 5), random.uniform(0, 0.5), {640, 480}};
    return fit_scenes::circlePoints(circle, random.integer(1, 700), disturbance, random);
}

using CircleFit = BothKernels;
INSTANTIATE_TEST_SUITE_P(Kernels, CircleFit, testing::Bool());

TEST_P(CircleFit, RansacGivesTheBitsOfThePlainSearch) {
    Random random(1);
    for (int i = 0; i < 60; ++i) {
        const auto points = randomScene(random);
        const fit_reference::RansacCircle params{random.integer(0, 500), random.integer(-2, 50),
                                                 random.uniform(-0.1, 8), random.integer(0, 120),
                                                 random.integer(-1, 60)};
        auto fitter = fitterOf<TCircleFit_Ransac>(
            points, {double(params.maximumRadius), double(params.minimumRadius), params.distance,
                     double(params.iterations), double(params.cap)});
        EXPECT_TRUE(sameBits(fitter.fit(), fit_reference::fit(points, params))) << "scene " << i;
        const int next = std::rand();
        fit_reference::fit(points, params);
        if (points.size() >= 3 && params.iterations > 0) {
            EXPECT_EQ(next, std::rand()) << "draws of scene " << i;
        }
    }
}

TEST_P(CircleFit, RobustGivesTheBitsOfThePlainDescentAndKeepsItsHalvedStep) {
    Random random(2);
    int halved = 0;
    for (int i = 0; i < 60; ++i) {
        const auto points = randomScene(random);
        fit_reference::RobustCircle params{random.uniform(0.5, 30), random.uniform(0.1, 4), i % 6};
        const double step = params.lambda;
        auto fitter = fitterOf<TCircleFit_Robust>(points, {params.c, params.lambda, double(params.type)});
        for (int call = 0; call < 2; ++call) {
            EXPECT_TRUE(sameBits(fitter.fit(), fit_reference::fit(points, params))) << "scene " << i;
        }
        halved += params.lambda < step ? 1 : 0;
    }
    EXPECT_GT(halved, 5);
}

TEST_P(CircleFit, WeightedGivesTheBitsOfThePlainPasses) {
    Random random(3);
    for (int i = 0; i < 90; ++i) {
        const auto points = randomScene(random);
        const fit_reference::WeightedCircle params{
            i % 9 - 1, i % 2 == 0 ? 0.0F : static_cast<float>(random.uniform(-1, 20))};
        auto fitter = fitterOf<TCircleFit_WeightedLeastSquares>(
            points, {double(params.type), double(params.parameter)});
        EXPECT_TRUE(sameBits(fitter.fit(), fit_reference::fit(points, params))) << "scene " << i;
    }
}

TEST_P(CircleFit, AnythingIsAnsweredWithoutACrash) {
    const double odd[] = {0, -1, 3, 1e300, -1e300, kNan, kInfinity};
    for (const auto& points : degenerateLists()) {
        for (const double v : odd) {
            for (const double w : odd) {
                fitterOf<TCircleFit_Ransac>(points, {1e9, v, w, 20, v}).fit();
                fitterOf<TCircleFit_Ransac>(points, {v, w, 1, v < 100 ? v : 20, w}).fit();
                fitterOf<TCircleFit_Robust>(points, {v, w, v}).fit();
                fitterOf<TCircleFit_WeightedLeastSquares>(points, {v, w}).fit();
            }
        }
        EXPECT_EQ(fitterOf<TCircleFit_Ransac>(points, {100, 5, 1, -3, 10}).fit().valid, false);
    }
}

// Four points of the circle around (10, 20) with radius 5, which integers hit exactly.
const std::vector<cv::Point> kExact = {{15, 20}, {10, 25}, {5, 20}, {10, 15}, {13, 24}, {6, 17}};

TEST(CircleFitRansac, RadiusBoundsAreTruncatedAndExcluded) {
    const auto valid = [](double maximum, double minimum) {
        return fitterOf<TCircleFit_Ransac>(kExact, {maximum, minimum, 0.5, 50, 50}).fit().valid;
    };
    EXPECT_TRUE(valid(6, 4));
    EXPECT_FALSE(valid(5.9, 4));  // 5, which the radius is not below
    EXPECT_FALSE(valid(6, 5.9));
    EXPECT_TRUE(valid(6, 4.9));
    const orx::TCircle none = fitterOf<TCircleFit_Ransac>(kExact, {3, 1, 0.5, 50, 50}).fit();
    EXPECT_TRUE(sameBits(none, orx::TCircle{}));
}

TEST(CircleFitRansac, FarPointsWeighAFifthInTheMeanResidual) {
    auto points = kExact;
    points.insert(points.end(), {{10, 35}, {25, 20}});  // both 10 pixels outside
    const orx::TCircle circle = fitterOf<TCircleFit_Ransac>(points, {6, 4, 0.5, 200, 200}).fit();
    ASSERT_TRUE(circle.valid);
    EXPECT_NEAR(circle.x, 10, 1e-9);
    EXPECT_NEAR(circle.y, 20, 1e-9);
    EXPECT_NEAR(circle.r, 5, 1e-9);
    EXPECT_EQ(circle.inlierRatio, 0.75);
    EXPECT_NEAR(circle.meanResidual, 2 * 0.2 * 10 / 8, 1e-9);
    EXPECT_EQ(circle.pointCount, 0);
}

TEST(CircleFitRansac, IsRepeatableWhateverCameBefore) {
    Random random(4);
    const auto points = fit_scenes::circlePoints({200, 150, 80}, 300, {1.0, 0.4, {640, 480}}, random);
    auto fitter = fitterOf<TCircleFit_Ransac>(points, {200, 10, 2, 100, 1000});
    std::srand(1);
    const auto first = fitter.fit();
    std::srand(99);
    EXPECT_TRUE(sameBits(first, fitter.fit()));
}

TEST(CircleFitRobust, AFailedStepReturnsTheStartWithTheFlagFalse) {
    // A far point pulls the least-squares circle; a huge step then drives the radius below 0.
    auto points = kExact;
    points.emplace_back(12, 60);
    const orx::TCircle start = fit_reference::algebraic(points, {});
    const orx::TCircle circle = fitterOf<TCircleFit_Robust>(points, {3, 1e6, 4}).fit();
    EXPECT_TRUE(sameBits(circle, start));
    EXPECT_FALSE(circle.valid);
}

TEST(CircleFitRobust, LeavesOutliersThatLeastSquaresFollows) {
    Random random(5);
    const auto points = fit_scenes::circlePoints({300, 200, 90}, 500, {0.7, 0.1, {640, 480}}, random);
    const orx::TCircle least = fit_reference::algebraic(points, {});
    const orx::TCircle robust = fitterOf<TCircleFit_Robust>(points, {20, 1, 5}).fit();
    EXPECT_GT(std::abs(least.r - 90), 2.0);
    EXPECT_NEAR(robust.r, 90, 0.3);
    EXPECT_NEAR(robust.inlierRatio, 0.92, 0.03);
}

TEST(CircleFitWeighted, PointsOnACircleEndAtOnceWithRatioOne) {
    const orx::TCircle circle = fitterOf<TCircleFit_WeightedLeastSquares>(kExact, {4, 0.001}).fit();
    EXPECT_TRUE(circle.valid);
    EXPECT_NEAR(circle.r, 5, 1e-9);
    EXPECT_EQ(circle.inlierRatio, 1.0);
    EXPECT_NEAR(circle.meanResidual, 0, 1e-9);
}

TEST(CircleFit, TheWrongNumberOfValuesChangesNothing) {
    auto ransac = fitterOf<TCircleFit_Ransac>(kExact, {6, 4, 0.5, 50, 50});
    auto robust = fitterOf<TCircleFit_Robust>(kExact, {2, 1, 4});
    auto weighted = fitterOf<TCircleFit_WeightedLeastSquares>(kExact, {4, 1});
    TCircleFit* const fitters[] = {&ransac, &robust, &weighted};
    const std::size_t wanted[] = {5, 3, 2};
    for (std::size_t f = 0; f < 3; ++f) {
        const orx::TCircle before = fitters[f]->fit();
        for (std::size_t count = 0; count < 8; ++count) {
            if (count == wanted[f]) continue;
            EXPECT_FALSE(fitters[f]->setParams(std::vector<double>(count, 77.0)));
        }
        EXPECT_TRUE(sameBits(before, fitters[f]->fit()));
    }
}

}  // namespace
