#include <cmath>
#include <limits>

#include "tests/fitting/fit_reference.h"
#include "tests/fitting/fit_test_support.h"

namespace {

using fit_scenes::Random;

orx::TLine ransac(const std::vector<cv::Point>& points, const fit_reference::RansacLine& params) {
    TLineFit_Ransac fitter;
    fitter.setPoints(points);
    fitter.setSearchLimits(params.iterations, params.cap);
    EXPECT_TRUE(
        fitter.setParams({params.angle, params.distance, double(params.sampleSize), params.tolerance}));
    return fitter.fit();
}

orx::TLine robust(const std::vector<cv::Point>& points, double type, double parameter) {
    TLineFit_Robust fitter;
    fitter.setPoints(points);
    EXPECT_TRUE(fitter.setParams({type, parameter}));
    return fitter.fit();
}

// Lines of any slope, exact or noisy, and clouds of points; few points and many.
std::vector<cv::Point> randomScene(Random& random) {
    const int count = random.integer(0, 2) == 0 ? random.integer(1, 12) : random.integer(4, 400);
    const double sigma = random.integer(0, 2) == 0 ? 0 : random.uniform(0, 3);
    const double slope =
        random.integer(0, 1) == 0 ? random.integer(-3, 3) : std::tan(random.uniform(-1.57, 1.57));
    const int width = 1 << random.integer(2, 12);
    return fit_scenes::linePoints(slope, random.integer(-300, 300), count,
                                  {sigma, random.uniform(0, 0.6), {width, width}}, random);
}

using LineFit = BothKernels;
INSTANTIATE_TEST_SUITE_P(Kernels, LineFit, testing::Bool());

TEST_P(LineFit, RansacGivesTheBitsOfThePlainSearch) {
    Random random(11);
    int valid = 0;
    for (int i = 0; i < 200; ++i) {
        const auto points = randomScene(random);
        const fit_reference::RansacLine params{random.uniform(-100, 200), random.uniform(-0.1, 6),
                                               random.integer(2, 3),      random.uniform(0, 95),
                                               random.integer(0, 150),    random.integer(-1, 40)};
        const orx::TLine line = ransac(points, params);
        EXPECT_TRUE(sameBits(line, fit_reference::fit(points, params))) << "scene " << i;
        valid += line.valid ? 1 : 0;
    }
    EXPECT_GT(valid, 50);
}

TEST_P(LineFit, AnythingIsAnsweredWithoutACrash) {
    const double odd[] = {0, -1, 2, 3, 1e300, -1e300, std::nan(""), std::numeric_limits<double>::infinity()};
    for (const auto& points : degenerateLists()) {
        for (const double v : odd) {
            for (const double w : odd) {
                TLineFit_Ransac fitter;
                fitter.setPoints(points);
                fitter.setSearchLimits(10, orx::getRandNum(-1, 5));
                fitter.setParams({v, w, 2, 1000});
                fitter.fit();
                fitter.setParams({0, 1, v, w});
                fitter.fit();
                EXPECT_EQ(robust(points, v, w).valid, !points.empty());
            }
        }
    }
}

// Our weights and OpenCV's are the same functions for these types, so the fits must be as well.
TEST(LineFitRobust, GivesTheBitsOfOpenCvWhereTheWeightsAreTheSame) {
    const struct {
        int ours, openCv;
    } kTypes[] = {{0, cv::DIST_L12}, {2, cv::DIST_FAIR}, {3, cv::DIST_WELSCH}, {4, cv::DIST_HUBER}};
    Random random(12);
    for (int i = 0; i < 300; ++i) {
        const auto points = randomScene(random);
        for (const auto& type : kTypes) {
            orx::TLine expected = fit_reference::openCvLine(points, type.openCv);
            expected.valid = true;
            EXPECT_TRUE(sameBits(robust(points, type.ours, 0), expected))
                << "scene " << i << " type " << type.ours;
        }
    }
}

// On the axis y = 0 the residuals are the rows: weights can be told by hand. Every start of up to ten points
// is the same.
TEST(LineFitRobust, WeighsEachResidualByTheTable) {
    const std::vector<cv::Point> points = {{-200, 0}, {-100, 0}, {0, 0}, {100, 0}, {200, 0}, {0, 60}};
    // Least squares lies at b = 10; the far point then loses its weight, all of it with the biweight.
    EXPECT_NEAR(robust(points, -1, 0).b, 10, 1e-5);
    EXPECT_NEAR(robust(points, 6, 3).b, 10, 1e-5);
    EXPECT_NEAR(robust(points, 5, 30).b, 0, 1e-3);
    // L1 settles at the median row. Huber: the five pull with b each, the far one with its constant.
    EXPECT_NEAR(robust(points, 1, 0).b, 0, 0.02);
    EXPECT_NEAR(robust(points, 4, 2.5).b, 2.5 / 5, 0.02);
    EXPECT_NEAR(robust(points, 4, -1).b, 1.345 / 5, 0.02);
}

TEST(LineFitRobust, VerticalPointsGetASteepFiniteSlope) {
    const orx::TLine line = robust({{50, 0}, {50, 10}, {50, 20}, {50, 30}}, 4, 0);
    EXPECT_TRUE(line.valid);
    EXPECT_NEAR(std::abs(line.k), 1e5, 1);
    EXPECT_NEAR((15 - line.b) / line.k, 50, 1e-3);
}

TEST(LineFitRansac, AnglesThatDifferBy180DegreesAreTheSame) {
    std::vector<cv::Point> points;  // at 175 degrees, as y runs
    for (int x = 0; x < 400; ++x) points.emplace_back(x, static_cast<int>(std::lround(300 - 0.0875 * x)));
    EXPECT_TRUE(ransac(points, {0, 1, 2, 10, 1000, 100}).valid);
    EXPECT_TRUE(ransac(points, {175, 1, 2, 3, 1000, 100}).valid);
    EXPECT_TRUE(ransac(points, {-5, 1, 2, 3, 1000, 100}).valid);
    EXPECT_TRUE(sameBits(ransac(points, {90, 1, 2, 60, 1000, 100}), orx::TLine{}));
    EXPECT_NEAR(ransac(points, {0, 1, 2, 10, 1000, 100}).k, -0.0875, 1e-3);
}

TEST(LineFitRansac, RefusesWhatItCannotSearch) {
    const std::vector<cv::Point> four = {{0, 0}, {1, 1}, {2, 2}, {3, 3}};
    EXPECT_TRUE(ransac(four, {45, 1, 2, 5, 1000, 100}).valid);
    EXPECT_TRUE(ransac(four, {45, 1, 3, 5, 1000, 100}).valid);
    EXPECT_FALSE(ransac({four.begin(), four.end() - 1}, {45, 1, 2, 5, 1000, 100}).valid);
    for (const int sampleSize : {1, 4, 0, -2}) {
        EXPECT_TRUE(sameBits(ransac(four, {45, 1, sampleSize, 5, 1000, 100}), orx::TLine{}));
    }
    TLineFit_Ransac unlimited;
    unlimited.setPoints(four);
    for (const std::size_t count : {0U, 3U, 5U})
        EXPECT_FALSE(unlimited.setParams(std::vector<double>(count, 2)));
    EXPECT_FALSE(unlimited.fit().valid);
}

}  // namespace
