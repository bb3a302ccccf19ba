#include "support/synthetic_scene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>

namespace {

constexpr double kPi = 3.141592653589793;

// Area, centroid and direction of what is painted in a CV_32F picture of values 0 to 1.
struct Moments {
    double area = 0.0;
    cv::Point2d center;
    double angle = 0.0;  // of the longest extent, degrees in (-90, 90]
};

Moments momentsOf(const cv::Mat& image) {
    Moments result;
    for (int y = 0; y < image.rows; ++y)
        for (int x = 0; x < image.cols; ++x) {
            const double value = static_cast<double>(image.at<float>(y, x));
            result.area += value;
            result.center += value * cv::Point2d(x, y);
        }
    result.center /= result.area;
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    for (int y = 0; y < image.rows; ++y)
        for (int x = 0; x < image.cols; ++x) {
            const double value = static_cast<double>(image.at<float>(y, x));
            const cv::Point2d d = cv::Point2d(x, y) - result.center;
            xx += value * d.x * d.x;
            xy += value * d.x * d.y;
            yy += value * d.y * d.y;
        }
    result.angle = 0.5 * std::atan2(2.0 * xy, xx - yy) * 180.0 / kPi;
    return result;
}

// The centroid of a picture puts each pixel's covered part at the pixel's centre: a few thousandths are its
// own.
constexpr double kCentroidLimit = 0.005;

TEST(SyntheticScene, AreaAndCentroidOfADiskAreItsTruth) {
    for (const scenes::Disk& disk : {scenes::Disk{{20.0, 20.0}, 12.0}, scenes::Disk{{23.37, 19.81}, 14.62},
                                     scenes::Disk{{20.5, 20.5}, 0.3}, scenes::Disk{{18.25, 21.75}, 1.1}}) {
        cv::Mat image = cv::Mat::zeros(44, 48, CV_32F);
        scenes::paint(image, disk, 1.0);
        const Moments moments = momentsOf(image);
        EXPECT_NEAR(moments.area, kPi * disk.radius * disk.radius, 1e-4);
        EXPECT_NEAR(moments.center.x, disk.center.x, kCentroidLimit);
        EXPECT_NEAR(moments.center.y, disk.center.y, kCentroidLimit);
    }
}

TEST(SyntheticScene, AreaCentroidAndDirectionOfABarAreItsTruth) {
    for (const scenes::Bar& bar :
         {scenes::Bar{{24.0, 22.0}, 0.0, 30.0, 5.0}, scenes::Bar{{23.4, 21.7}, 31.5, 33.3, 6.4},
          scenes::Bar{{24.0, 22.1}, 90.0, 28.5, 0.4}, scenes::Bar{{23.9, 22.3}, 135.0, 30.1, 7.7}}) {
        cv::Mat image = cv::Mat::zeros(44, 48, CV_32F);
        scenes::paint(image, bar, 1.0);
        const Moments moments = momentsOf(image);
        EXPECT_NEAR(moments.area, bar.length * bar.width, 1e-4);
        EXPECT_NEAR(moments.center.x, bar.center.x, kCentroidLimit);
        EXPECT_NEAR(moments.center.y, bar.center.y, kCentroidLimit);
        EXPECT_NEAR(std::remainder(moments.angle - bar.angle, 180.0), 0.0, 0.01);
    }
}

TEST(SyntheticScene, CoverageOfSinglePixelsIsExact) {
    // A quarter of a large disk's bounding corner: the pixel square lies wholly in or out.
    const scenes::Disk disk{{10.0, 10.0}, 5.0};
    EXPECT_EQ(scenes::pixelCoverage(disk, 10, 10), 1.0);
    EXPECT_EQ(scenes::pixelCoverage(disk, 16, 10), 0.0);
    // A disk inside one pixel; half of one that is centred on the border of two.
    EXPECT_NEAR(scenes::pixelCoverage(scenes::Disk{{3.0, 4.0}, 0.4}, 3, 4), kPi * 0.16, 1e-12);
    EXPECT_NEAR(scenes::pixelCoverage(scenes::Disk{{3.5, 4.0}, 0.4}, 3, 4), kPi * 0.08, 1e-12);
    // A bar whose edge cuts the pixel at a quarter, and one turned by 45 degrees that covers one corner's
    // triangle.
    EXPECT_NEAR(scenes::pixelCoverage(scenes::Bar{{0.0, 0.0}, 0.0, 20.0, 6.5}, 2, 3), 0.75, 1e-12);
    EXPECT_NEAR(scenes::pixelCoverage(scenes::Bar{{0.0, 0.0}, 45.0, 20.0, std::sqrt(2.0)}, 1, 0), 0.5, 1e-12);
}

TEST(SyntheticScene, ShapesCutByTheBorderArePaintedAsFarAsTheyReach) {
    cv::Mat image = cv::Mat::zeros(20, 20, CV_32F);
    scenes::paint(image, scenes::Disk{{-0.5, 9.5}, 6.0}, 1.0);
    EXPECT_NEAR(momentsOf(image).area, 0.5 * kPi * 36.0, 1e-4);
    scenes::paint(image, scenes::Disk{{500.0, 500.0}, 6.0}, 1.0);
    EXPECT_NEAR(momentsOf(image).area, 0.5 * kPi * 36.0, 1e-4);
}

TEST(SyntheticScene, TheSeedAloneDecides) {
    scenes::SceneSettings settings;
    settings.seed = 5;
    const scenes::Scene first = scenes::renderScene(settings);
    const scenes::Scene again = scenes::renderScene(settings);
    EXPECT_EQ(cv::norm(first.image, again.image, cv::NORM_INF), 0.0);
    settings.seed = 6;
    const scenes::Scene other = scenes::renderScene(settings);
    EXPECT_GT(cv::norm(first.image, other.image, cv::NORM_INF), 0.0);
    EXPECT_NE(first.disks.front().center, other.disks.front().center);
}

TEST(SyntheticScene, PartsKeepApartAndOffTheBorder) {
    for (std::uint64_t seed = 0; seed < 8; ++seed) {
        scenes::SceneSettings settings;
        settings.seed = seed;
        settings.size = {500 + 37 * static_cast<int>(seed), 400};
        const scenes::Scene scene = scenes::renderScene(settings);
        ASSERT_FALSE(scene.disks.empty());
        ASSERT_FALSE(scene.bars.empty());
        struct Extent {
            cv::Point2d center;
            double reach;
        };
        std::vector<Extent> extents;
        for (const auto& disk : scene.disks) extents.push_back({disk.center, disk.radius});
        for (const auto& bar : scene.bars)
            extents.push_back({bar.center, 0.5 * std::hypot(bar.length, bar.width)});
        for (std::size_t i = 0; i < extents.size(); ++i) {
            const auto& [center, reach] = extents[i];
            EXPECT_GT(std::min(center.x, center.y) - reach, 1.0);
            EXPECT_LT(center.x + reach, settings.size.width - 2.0);
            EXPECT_LT(center.y + reach, settings.size.height - 2.0);
            for (std::size_t k = 0; k < i; ++k)
                EXPECT_GT(cv::norm(center - extents[k].center), reach + extents[k].reach + 2.0);
        }
    }
}

TEST(SyntheticScene, ExposureAddsTheStatedLightAndNoise) {
    const cv::Mat ideal(200, 300, CV_32F, cv::Scalar(120.0));
    const cv::Mat lit = scenes::expose(ideal, {0.5, 0.0, 0.0, 1});
    EXPECT_EQ(lit.at<uchar>(0, 0), 120);
    EXPECT_EQ(lit.at<uchar>(199, 299), 60);

    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(scenes::expose(ideal, {0.0, 0.0, 4.0, 1}), mean, deviation);
    EXPECT_NEAR(mean[0], 120.0, 0.1);
    EXPECT_NEAR(deviation[0], std::sqrt(16.0 + 1.0 / 12.0), 0.1);  // and that of rounding
}

}  // namespace
