// The library's estimators as the inspection program uses them, on shapes of known truth.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "inspection/measure/fit_estimators.h"
#include "inspection/measure/measurement.h"
#include "support/synthetic_scene.h"

namespace {

using inspection::CircleEstimator;
using inspection::EllipseEstimator;
using inspection::Feature;
using inspection::LineEstimator;
using inspection::Settings;
using inspection::Shape;

constexpr double kDegree = 3.141592653589793 / 180.0;

std::vector<Feature> measureAll(const cv::Mat& ideal, const Settings& settings) {
    const cv::Mat grey = scenes::expose(ideal, {0.0, 0.8, 1.0, 3});
    std::string problem;
    const auto prepared = inspection::prepare(grey, settings, problem);
    EXPECT_TRUE(prepared) << problem;
    return prepared ? inspection::measure(grey, *prepared, settings) : std::vector<Feature>();
}

struct TrueEllipse {
    cv::Point2d center;
    double longer;  // half axes
    double shorter;
    double angle;  // degrees
};

// Coverage by 16 x 16 samples in each pixel.
void paint(cv::Mat& image, const TrueEllipse& ellipse, double level) {
    constexpr int kSamples = 16;
    const double cosine = std::cos(ellipse.angle * kDegree);
    const double sine = std::sin(ellipse.angle * kDegree);
    for (int y = 0; y < image.rows; ++y)
        for (int x = 0; x < image.cols; ++x) {
            int inside = 0;
            for (int k = 0; k < kSamples * kSamples; ++k) {
                const int column = k % kSamples;
                const int row = k / kSamples;
                const double dx = x - 0.5 + (column + 0.5) / kSamples - ellipse.center.x;
                const double dy = y - 0.5 + (row + 0.5) / kSamples - ellipse.center.y;
                const double u = (cosine * dx + sine * dy) / ellipse.longer;
                const double v = (cosine * dy - sine * dx) / ellipse.shorter;
                inside += u * u + v * v <= 1.0 ? 1 : 0;
            }
            const double covered = inside / static_cast<double>(kSamples * kSamples);
            const double before = static_cast<double>(image.at<float>(y, x));
            image.at<float>(y, x) = static_cast<float>(before + covered * (level - before));
        }
}

double angleBetween(double a, double b) { return std::abs(std::fmod(a - b + 90.0 + 360.0, 180.0) - 90.0); }

TEST(EllipseEstimators, AxesAndAngleAreThoseOfTheDrawnEllipse) {
    for (const double angle : {0.0, 33.0, 90.0, 151.0}) {
        const TrueEllipse truth{{100.3, 99.6}, 70.4, 45.2, angle};
        cv::Mat ideal(200, 200, CV_32F, cv::Scalar(40.0));
        paint(ideal, truth, 180.0);
        for (const auto estimator : {EllipseEstimator::kNorm, EllipseEstimator::kRansac}) {
            SCOPED_TRACE(std::string(inspection::nameOf(estimator)) + " at " + std::to_string(angle));
            Settings settings;
            settings.ellipse = estimator;
            const auto features = measureAll(ideal, settings);
            ASSERT_EQ(features.size(), 1U);
            const Feature& found = features[0];
            const inspection::Deviations& u = found.deviations;
            EXPECT_EQ(found.shape, Shape::kEllipse);
            EXPECT_NEAR(found.center.x, truth.center.x, std::min(0.03, 4.0 * u.x));
            EXPECT_NEAR(found.center.y, truth.center.y, std::min(0.03, 4.0 * u.y));
            EXPECT_NEAR(found.length, 2.0 * truth.longer, std::min(0.06, 4.0 * u.length));
            EXPECT_NEAR(found.width, 2.0 * truth.shorter, std::min(0.06, 4.0 * u.width));
            const double radius = std::sqrt(truth.longer * truth.shorter);
            EXPECT_NEAR(found.radius, radius, std::min(0.03, 4.0 * u.radius));
            EXPECT_LT(angleBetween(found.angle, angle), std::min(0.1, 4.0 * u.angle));
            EXPECT_GT(found.inlierRatio, 0.99);
            EXPECT_LT(found.meanResidual, 0.15);
        }
    }
}

TEST(EllipseEstimators, OnlyTheRandomSearchWithstandsABite) {
    const TrueEllipse truth{{120.0, 100.0}, 80.0, 55.0, 0.0};
    cv::Mat ideal(200, 240, CV_32F, cv::Scalar(40.0));
    paint(ideal, truth, 180.0);
    scenes::paint(ideal, scenes::Disk{{120.0, 50.0}, 25.0}, 40.0);
    Settings settings;
    settings.ellipse = EllipseEstimator::kRansac;
    const auto ransac = measureAll(ideal, settings);
    settings.ellipse = EllipseEstimator::kNorm;
    const auto norm = measureAll(ideal, settings);
    ASSERT_EQ(ransac.size(), 1U);
    ASSERT_EQ(norm.size(), 1U);
    // Where the bite begins its edge comes near the ellipse's.
    EXPECT_NEAR(ransac[0].width, 110.0, 0.3);
    EXPECT_LT(ransac[0].deviations.width, 0.1);
    EXPECT_LT(norm[0].width, 107.0);
    EXPECT_GT(norm[0].deviations.width, 0.5);
    EXPECT_GT(ransac[0].inlierRatio, norm[0].inlierRatio);
}

TEST(CircleEstimators, ABittenDiskIsFoundToAFractionOfAPixel) {
    const scenes::Disk disk{{100.2, 99.7}, 50.0};
    cv::Mat ideal(200, 200, CV_32F, cv::Scalar(40.0));
    scenes::paint(ideal, disk, 180.0);
    scenes::paint(ideal, scenes::Disk{{150.0, 99.7}, 18.0}, 40.0);
    for (const auto estimator :
         {CircleEstimator::kRansac, CircleEstimator::kRobust, CircleEstimator::kWeighted}) {
        SCOPED_TRACE(inspection::nameOf(estimator));
        Settings settings;
        settings.circle = estimator;
        const auto features = measureAll(ideal, settings);
        ASSERT_EQ(features.size(), 1U);
        // Whole pixels, and the bite draws the two that start from all points a little.
        const double within = estimator == CircleEstimator::kRansac ? 0.3 : 2.0;
        EXPECT_NEAR(features[0].center.x, disk.center.x, within);
        EXPECT_NEAR(features[0].center.y, disk.center.y, within);
        EXPECT_NEAR(features[0].radius, disk.radius, within);
        EXPECT_GT(features[0].inlierRatio, 0.75);
        EXPECT_LT(features[0].inlierRatio, 0.95);
        EXPECT_LT(features[0].inlierResidual, features[0].meanResidual);
    }
}

TEST(LineEstimators, BothSidesOfABarGiveItsAxisAndWidth) {
    for (const double angle : {0.0, 27.0, 90.0, 141.0}) {
        const scenes::Bar bar{{150.3, 149.8}, angle, 180.0, 40.0};
        cv::Mat ideal(300, 300, CV_32F, cv::Scalar(40.0));
        scenes::paint(ideal, bar, 180.0);
        for (const auto estimator : {LineEstimator::kRansac, LineEstimator::kRobust}) {
            SCOPED_TRACE(std::string(inspection::nameOf(estimator)) + " at " + std::to_string(angle));
            Settings settings;
            settings.line = estimator;
            const auto features = measureAll(ideal, settings);
            ASSERT_EQ(features.size(), 1U);
            EXPECT_EQ(features[0].shape, Shape::kLine);
            EXPECT_LT(angleBetween(features[0].angle, angle), 0.3);
            EXPECT_LT(cv::norm(features[0].center - bar.center), 0.7);
            EXPECT_NEAR(features[0].width, bar.width, 0.8);
            EXPECT_NEAR(features[0].length, bar.length, 3.0);
            EXPECT_GT(features[0].inlierRatio, 0.8);
        }
    }
}

TEST(Estimators, OddContoursAreLeftOutOrMeasuredButHarmless) {
    // A stroke of one pixel, a corner, and specks: what has no circle or ellipse is left out.
    cv::Mat grey(60, 80, CV_8U, cv::Scalar(10));
    grey(cv::Rect(5, 5, 60, 1)).setTo(200);
    grey(cv::Rect(5, 20, 1, 30)).setTo(200);
    grey(cv::Rect(5, 50, 20, 1)).setTo(200);
    grey(cv::Rect(40, 30, 4, 4)).setTo(200);
    for (const auto circle : {CircleEstimator::kRansac, CircleEstimator::kRobust, CircleEstimator::kWeighted})
        for (const auto line : {LineEstimator::kRansac, LineEstimator::kRobust})
            for (const auto ellipse :
                 {EllipseEstimator::kNone, EllipseEstimator::kNorm, EllipseEstimator::kRansac})
                for (const auto shape : {inspection::ShapeChoice::kAuto, inspection::ShapeChoice::kCircle,
                                         inspection::ShapeChoice::kLine}) {
                    Settings settings;
                    settings.smooth = 0.0;
                    settings.minArea = 0.0;
                    settings.circle = circle;
                    settings.line = line;
                    settings.ellipse = ellipse;
                    settings.shape = shape;
                    std::string problem;
                    const auto prepared = inspection::prepare(grey, settings, problem);
                    ASSERT_TRUE(prepared) << problem;
                    for (const Feature& feature : inspection::measure(grey, *prepared, settings)) {
                        EXPECT_TRUE(std::isfinite(feature.center.x) && std::isfinite(feature.center.y));
                        EXPECT_TRUE(std::isfinite(feature.radius) && std::isfinite(feature.width));
                        EXPECT_GE(feature.inlierRatio, 0.0);
                        EXPECT_LE(feature.inlierRatio, 1.0);
                    }
                }
}

}  // namespace
