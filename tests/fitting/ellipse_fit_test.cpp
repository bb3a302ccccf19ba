#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <numeric>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

using Points = std::vector<cv::Point2f>;

constexpr double kPi = 3.141592653589793;
constexpr double kAny = 1e9;

struct TrueEllipse {
    double x;
    double y;
    double shorter;  // half axes
    double longer;
    double angle;  // degrees, of the shorter axis

    cv::Point2d at(double t) const {
        const double u = shorter * std::cos(t);
        const double v = longer * std::sin(t);
        const double c = std::cos(angle * kPi / 180);
        const double s = std::sin(angle * kPi / 180);
        return {x + u * c - v * s, y + u * s + v * c};
    }

    Points sample(int count, double from = 0, double to = 360, double noise = 0, unsigned seed = 1) const {
        std::mt19937 random(seed);
        std::normal_distribution<double> gauss(0, 1);
        Points points;
        for (int i = 0; i < count; ++i) {
            const cv::Point2d p = at((from + (to - from) * i / count) * kPi / 180);
            points.emplace_back(static_cast<float>(p.x + noise * gauss(random)),
                                static_cast<float>(p.y + noise * gauss(random)));
        }
        return points;
    }
};

orx::TEllipse fitAll(const Points& points, double threshold = 1, double ratio = 0.5) {
    return orxFit::fitEllipseNorm(points, threshold, ratio, 0, kAny, 0, kAny);
}

orx::TEllipse search(const Points& points, double threshold = 1, double iterations = 100,
                     double ratio = 0.5) {
    return orxFit::fitEllipseRansac(points, threshold, iterations, ratio, 0, kAny, 0, kAny);
}

// Every field, bit by bit where it is a number.
std::vector<double> fields(const orx::TEllipse& e) {
    std::vector<double> all;
    for (const float f :
         {e.x, e.y, e.width, e.height, e.angle, e.A, e.B, e.C, e.D, e.E, e.F, e.inlierRatio}) {
        all.push_back(static_cast<double>(f));
    }
    all.push_back(e.meanError);
    all.push_back(e.valid);
    return all;
}

// The difference of two directions of lines, degrees.
double turn(double a, double b) { return std::abs(std::remainder(a - b, 180)); }

void expectNear(const orx::TEllipse& e, const TrueEllipse& truth, double pixels, double degrees) {
    EXPECT_NEAR(static_cast<double>(e.x), truth.x, pixels);
    EXPECT_NEAR(static_cast<double>(e.y), truth.y, pixels);
    EXPECT_NEAR(static_cast<double>(e.width), 2 * truth.shorter, 2 * pixels);
    EXPECT_NEAR(static_cast<double>(e.height), 2 * truth.longer, 2 * pixels);
    EXPECT_LE(turn(static_cast<double>(e.angle), truth.angle), degrees);
}

// The error as it is defined, with lines through absolute coordinates as far as doubles carry them; the conic
// follows from the reported geometry.
double radialError(const orx::TEllipse& e, cv::Point2f p) {
    const auto angle = static_cast<double>(e.angle) * kPi / 180;
    const auto dx = static_cast<double>(p.x) - static_cast<double>(e.x);
    const auto dy = static_cast<double>(p.y) - static_cast<double>(e.y);
    const double u = (dx * std::cos(angle) + dy * std::sin(angle)) / static_cast<double>(e.width) * 2;
    const double v = (dy * std::cos(angle) - dx * std::sin(angle)) / static_cast<double>(e.height) * 2;
    const double distance = std::sqrt(dx * dx + dy * dy);
    return std::abs(distance / std::sqrt(u * u + v * v) - distance);
}

TEST(FitEllipseNorm, CircleAwayFromTheOrigin) {
    Points points;
    for (int i = 0; i < 36; ++i) {
        points.emplace_back(static_cast<float>(100 + 50 * std::cos(i * kPi / 18)),
                            static_cast<float>(100 + 50 * std::sin(i * kPi / 18)));
    }
    const orx::TEllipse e = fitAll(points);
    EXPECT_NEAR(static_cast<double>(e.x), 100, 1e-5);
    EXPECT_NEAR(static_cast<double>(e.y), 100, 1e-5);
    EXPECT_NEAR(static_cast<double>(e.width), 100, 2e-5);
    EXPECT_NEAR(static_cast<double>(e.height), 100, 2e-5);
    EXPECT_EQ(e.F, 1.0F);
    EXPECT_NEAR(static_cast<double>(e.A), 1 / 17500.0, 1e-10);  // x^2 + y^2 - 200 x - 200 y + 17500
    EXPECT_NEAR(static_cast<double>(e.D), -200 / 17500.0, 1e-8);
    EXPECT_EQ(e.inlierRatio, 1.0F);
    EXPECT_EQ(e.valid, 1);
}

// The origin outside, inside and on the ellipse: F = 1 turns the conic's sign over.
class EllipseAt : public testing::TestWithParam<cv::Point2d> {};

TEST_P(EllipseAt, WidthLiesAlongTheAngleInAllOrientations) {
    for (int angle = 0; angle < 180; angle += 5) {
        SCOPED_TRACE(angle);
        const TrueEllipse truth{GetParam().x, GetParam().y, 40, 120, static_cast<double>(angle)};
        const double tolerance = 1e-4 + 1e-6 * cv::norm(GetParam());
        expectNear(fitAll(truth.sample(60)), truth, tolerance, 0.001 + 0.05 * tolerance);
        expectNear(search(truth.sample(60)), truth, 5 * tolerance, 0.01 + 0.5 * tolerance);
    }
}

INSTANTIATE_TEST_SUITE_P(Places, EllipseAt,
                         testing::Values(cv::Point2d(500, 400), cv::Point2d(3, -2), cv::Point2d(-300, 200),
                                         cv::Point2d(40, 0), cv::Point2d(10000, 20000),
                                         cv::Point2d(200000, 50)));

TEST(FitEllipseNorm, EllipseExactlyThroughTheOrigin) {
    const orx::TEllipse e = fitAll({{0, 0}, {60, 80}, {60, 0}, {0, 80}, {80, 40}, {-20, 40}});
    expectNear(e, {30, 40, 50, 50, 0}, 1e-4, 180);
    for (const double field : fields(e)) EXPECT_TRUE(std::isfinite(field));
}

TEST(FitEllipseNorm, ArcsAndNoise) {
    const TrueEllipse truth{640, 480, 100, 160, 35};
    expectNear(fitAll(truth.sample(200, 20, 110)), truth, 0.02, 0.05);
    expectNear(fitAll(truth.sample(400, 0, 360, 0.5)), truth, 0.15, 0.3);
    expectNear(fitAll(truth.sample(400, 0, 200, 0.1)), truth, 0.6, 0.6);
}

// The least-squares problem does not know about the frame or about how often each point comes.
TEST(FitEllipseNorm, FollowsShiftTurnScaleAndRepetition) {
    const Points points = TrueEllipse{300, 250, 60, 90, 20}.sample(100, 0, 300, 0.3);
    const orx::TEllipse e = fitAll(points);
    Points repeated;
    for (int i = 0; i < 7; ++i) repeated.insert(repeated.end(), points.begin(), points.end());
    Points shifted;
    Points turned;
    Points scaled;
    for (const cv::Point2f& p : points) {
        shifted.emplace_back(p.x + 1024, p.y - 512);
        turned.emplace_back(-p.y, p.x);
        scaled.emplace_back(p.x * 4, p.y * 4);
    }
    const TrueEllipse same{static_cast<double>(e.x), static_cast<double>(e.y),
                           static_cast<double>(e.width) / 2, static_cast<double>(e.height) / 2,
                           static_cast<double>(e.angle)};
    const TrueEllipse moved{same.x + 1024, same.y - 512, same.shorter, same.longer, same.angle};
    const TrueEllipse quarter{-same.y, same.x, same.shorter, same.longer, same.angle + 90};
    const TrueEllipse larger{4 * same.x, 4 * same.y, 4 * same.shorter, 4 * same.longer, same.angle};
    expectNear(fitAll(repeated), same, 1e-4, 1e-3);
    expectNear(fitAll(shifted), moved, 1e-3, 1e-3);
    expectNear(fitAll(turned), quarter, 1e-4, 1e-3);
    expectNear(fitAll(scaled), larger, 1e-3, 1e-3);
}

// The generalised eigenproblem as it is usually written: 6x6, by OpenCV.
TEST(FitEllipseNorm, AgreesWithTheFullEigenproblem) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        const TrueEllipse truth{10.0 + seed, 5.0, 30, 30 + 3.0 * seed, 9.0 * seed};
        const Points points = truth.sample(80, 0, 250, 0.8, seed);
        cv::Point2d mean(0, 0);
        for (const cv::Point2f& p : points) mean += cv::Point2d(p) / static_cast<double>(points.size());
        constexpr double kScale = 50;
        cv::Mat design(0, 6, CV_64F);
        for (const cv::Point2f& p : points) {
            const cv::Point2d q = (cv::Point2d(p) - mean) / kScale;
            const cv::Matx<double, 1, 6> row(q.x * q.x, q.x * q.y, q.y * q.y, q.x, q.y, 1);
            design.push_back(cv::Mat(row));
        }
        cv::Mat constraint = cv::Mat::zeros(6, 6, CV_64F);
        constraint.at<double>(0, 2) = constraint.at<double>(2, 0) = 2;
        constraint.at<double>(1, 1) = -1;
        const cv::Mat product = cv::Mat(design.t() * design).inv() * constraint;
        cv::Mat values;
        cv::Mat vectors;
        cv::eigenNonSymmetric(product, values, vectors);
        cv::Point at;
        cv::minMaxLoc(values, nullptr, nullptr, nullptr, &at);
        const cv::Mat v = vectors.row(at.y);
        const double a = v.at<double>(0);
        const double b = v.at<double>(1);
        const double c = v.at<double>(2);
        const double d = v.at<double>(3);
        const double e = v.at<double>(4);
        const double determinant = 4 * a * c - b * b;
        ASSERT_GT(determinant, 0);
        const orx::TEllipse ours = fitAll(points);
        EXPECT_NEAR(static_cast<double>(ours.x), mean.x + kScale * (b * e - 2 * c * d) / determinant, 1e-4);
        EXPECT_NEAR(static_cast<double>(ours.y), mean.y + kScale * (b * d - 2 * a * e) / determinant, 1e-4);
    }
}

TEST(FitEllipseNorm, AxisOutsideItsBandIsReportedUngraded) {
    const Points points = TrueEllipse{200, 200, 40, 60, 10}.sample(50);
    const auto within = [&](double minLow, double minHigh, double maxLow, double maxHigh) {
        return orxFit::fitEllipseNorm(points, 1, 0.5, minLow, minHigh, maxLow, maxHigh);
    };
    EXPECT_EQ(within(79, 81, 119, 121).valid, 1);
    for (const orx::TEllipse& e :
         {within(81, 99, 0, kAny), within(0, 79, 0, kAny), within(0, kAny, 121, kAny),
          within(0, kAny, 0, 119), within(std::nan(""), kAny, 0, kAny)}) {
        expectNear(e, {200, 200, 40, 60, 10}, 1e-3, 1e-2);
        EXPECT_EQ(e.F, 1.0F);
        EXPECT_EQ(e.valid, 0);
        EXPECT_EQ(e.inlierRatio, 0.0F);
        EXPECT_EQ(e.meanError, 0.0);
    }
}

// Near two parallel lines the square of the second axis is negative.
TEST(FitEllipseNorm, AnAxisThatIsNoNumberIsInNoBand) {
    const orx::TEllipse e = orxFit::fitEllipseNorm(
        {{-476, -516}, {20848, 20816}, {-8476, -8516}, {-8020, -8060}, {3404, 3364}, {780, 740}}, 1e6, 0.1, 0,
        kAny, 0, kAny);
    ASSERT_TRUE(std::isnan(e.width) || std::isnan(e.height));
    EXPECT_EQ(e.valid, 0);
    EXPECT_EQ(e.inlierRatio, 0.0F);
}

TEST(FitEllipseNorm, GradesAlongTheRaysFromTheCentre) {
    Points points = TrueEllipse{300, 200, 50, 80, 25}.sample(300, 0, 360, 1.5);
    const orx::TEllipse rough = fitAll(points, 1, 0.99);
    // Rays through the vertical, on both sides of it and of the outline, and the centre's neighbourhood.
    for (const double dx : {0.0, 1e-6, -1e-6, 3e-5, -3e-5}) {
        for (const double dy : {-95.0, -30.0, 20.0, 70.0}) {
            points.emplace_back(static_cast<float>(static_cast<double>(rough.x) + dx),
                                static_cast<float>(static_cast<double>(rough.y) + dy));
        }
    }
    const orx::TEllipse e = fitAll(points, 1, 0.99);
    double sum = 0;
    int inliers = 0;
    for (const cv::Point2f& p : points) {
        sum += radialError(e, p);
        inliers += radialError(e, p) < 1 ? 1 : 0;
    }
    const auto n = static_cast<double>(points.size());
    EXPECT_NEAR(e.meanError, sum / n, 1e-4);
    EXPECT_NEAR(static_cast<double>(e.inlierRatio), inliers / n, 1.5 / n);
    EXPECT_EQ(e.valid, 0);
    EXPECT_EQ(fitAll(points, 1, static_cast<double>(e.inlierRatio)).valid, 0) << "must exceed the ratio";
    EXPECT_EQ(fitAll(points, 1, static_cast<double>(e.inlierRatio) - 0.001).valid, 1);
}

TEST(FitEllipse, BaselineAndVectorKernelsGiveTheSameBits) {
    const Points points = TrueEllipse{300, 200, 50, 80, 25}.sample(333, 0, 360, 1.0);
    const auto fast = fields(fitAll(points));
    const auto fastSearch = fields(search(points));
    cv::setUseOptimized(false);
    const auto plain = fields(fitAll(points));
    const auto plainSearch = fields(search(points));
    cv::setUseOptimized(true);
    EXPECT_EQ(fast, plain);
    EXPECT_EQ(fastSearch, plainSearch);
}

struct Degenerate {
    std::string name;
    Points points;
};
void PrintTo(const Degenerate& degenerate, std::ostream* out) { *out << degenerate.name; }

Points onLine(float dx, float dy, float x0, float y0) {
    Points points;
    for (int i = 0; i < 40; ++i) {
        points.emplace_back(x0 + dx * static_cast<float>(i), y0 + dy * static_cast<float>(i));
    }
    return points;
}

Points withPoint(float x, float y) {
    Points points = TrueEllipse{200, 200, 40, 60, 10}.sample(50);
    points[17] = {x, y};
    return points;
}

class Unfittable : public testing::TestWithParam<Degenerate> {};

TEST_P(Unfittable, GivesTheZeroRecord) {
    const std::vector<double> zero(14, 0.0);
    EXPECT_EQ(fields(fitAll(GetParam().points)), zero);
    EXPECT_EQ(fields(search(GetParam().points)), zero);
}

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
INSTANTIATE_TEST_SUITE_P(
    Points, Unfittable,
    testing::Values(Degenerate{"none", {}}, Degenerate{"five", TrueEllipse{90, 90, 40, 60, 10}.sample(5)},
                    Degenerate{"equal", Points(20, {7.3F, 8.1F})}, Degenerate{"origin", Points(20, {0, 0})},
                    Degenerate{"row", onLine(1.1F, 0, 3, 5)}, Degenerate{"column", onLine(0, 0.7F, 3, 5)},
                    Degenerate{"slope", onLine(1.3F, 0.37F, 1003, -50)},
                    Degenerate{"steep", onLine(0.01F, 77, 3, 9)},
                    Degenerate{"fourPlaces",
                               {{0, 0}, {9, 1}, {8, 7}, {1, 6}, {0, 0}, {9, 1}, {8, 7}, {1, 6}}},
                    Degenerate{"nan", withPoint(kNan, 3)}, Degenerate{"infinite", withPoint(3, kInf)},
                    Degenerate{"opposite", withPoint(-kInf, kInf)}),
    [](const auto& tested) { return tested.param.name; });

TEST(FitEllipse, ExtremeCoordinatesStayFinite) {
    std::mt19937 random(3);
    for (const float size : {1e-38F, 1e-20F, 1e18F, 3e38F}) {
        std::uniform_real_distribution<float> coordinate(-size, size);
        for (int round = 0; round < 50; ++round) {
            Points points(8);
            for (cv::Point2f& p : points) p = {coordinate(random), coordinate(random)};
            const orx::TEllipse e = fitAll(points);
            EXPECT_TRUE(std::isfinite(e.x) && std::isfinite(e.y) && std::isfinite(e.A) && std::isfinite(e.E));
            search(points);
        }
    }
}

Points withOutliers(double noise, int outliers) {
    Points points = TrueEllipse{320, 240, 70, 110, 60}.sample(200, 0, 360, noise);
    std::mt19937 random(5);
    std::uniform_real_distribution<float> coordinate(0, 640);
    for (int i = 0; i < outliers; ++i) points.emplace_back(coordinate(random), coordinate(random));
    return points;
}

TEST(FitEllipseRansac, FindsTheEllipseAmongOutliersAgainAndAgain) {
    const Points points = withOutliers(0.1, 60);
    const orx::TEllipse e = search(points);
    expectNear(e, {320, 240, 70, 110, 60}, 1, 1);
    EXPECT_EQ(e.valid, 1);
    EXPECT_GT(e.inlierRatio, 0.7F);
    std::srand(99);
    EXPECT_EQ(fields(search(points)), fields(e));
    EXPECT_EQ(search(points, 1, 100, 0.9).valid, 0) << "more than the inliers can reach";
}

// All trials, each fitted and graded, from the public fit of six points.
TEST(FitEllipseRansac, IsTheBestOfAllTrialsFittedAndGraded) {
    for (const int iterations : {1, 5, 60}) {
        SCOPED_TRACE(iterations);
        const Points input = withOutliers(0.6, 40);
        Points points = input;
        cv::Point2d mean(0, 0);
        for (const cv::Point2f& p : points) mean += cv::Point2d(p);
        mean /= static_cast<double>(points.size());
        std::sort(points.begin(), points.end(), [&](const cv::Point2f& l, const cv::Point2f& r) {
            return std::atan2(static_cast<double>(l.y) - mean.y, static_cast<double>(l.x) - mean.x) <
                   std::atan2(static_cast<double>(r.y) - mean.y, static_cast<double>(r.x) - mean.x);
        });
        const int n = static_cast<int>(points.size());
        double best = 9999999;
        orx::TEllipse expected;
        for (int counter = iterations - 1; counter >= 0; --counter) {
            const int start = orx::getSrandNum(0, n / 6, counter);
            Points sample;
            for (int i = 0; i < 6; ++i) {
                sample.push_back(points[static_cast<std::size_t>(std::min(start + i * (n / 6), n - 1))]);
            }
            const orx::TEllipse trial = fitAll(sample);
            double sum = 0;
            int inliers = 0;
            for (const cv::Point2f& p : points) {
                sum += radialError(trial, p);
                inliers += radialError(trial, p) < 1 ? 1 : 0;
            }
            if (inliers > 0.2 * n && sum / n < best) {
                best = sum / n;
                expected = trial;
            }
        }
        const orx::TEllipse e = search(input, 1, iterations, 0.2);
        if (best == 9999999) {
            EXPECT_EQ(fields(e), std::vector<double>(14, 0.0));
            EXPECT_EQ(iterations, 1) << "longer searches find one";
            continue;
        }
        EXPECT_EQ(e.x, expected.x);
        EXPECT_EQ(e.angle, expected.angle);
        EXPECT_NEAR(e.meanError, best, 1e-3);
        EXPECT_EQ(e.valid, 1);
    }
}

TEST(FitEllipseRansac, AnyIterationCountEnds) {
    const Points points = withOutliers(2, 100);
    for (const double none : {0.0, -3.0, std::nan("")}) EXPECT_EQ(search(points, 1, none, 0).valid, 0);
    EXPECT_EQ(search(points, 1, 0.5, 0).valid, 1) << "a fraction of a trial is one";
    const auto all = fields(search(points, 3, 1e300, 0));
    EXPECT_EQ(fields(search(points, 3, std::numeric_limits<double>::infinity(), 0)), all);
    EXPECT_EQ(all.back(), 1);
    for (const double odd : {std::nan(""), -1.0}) EXPECT_EQ(search(points, odd, 100, 0).valid, 0);
    EXPECT_EQ(search(points, 3, 100, std::nan("")).valid, 0);
}

}  // namespace
