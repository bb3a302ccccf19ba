#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/edge_scene.h"
#include "tests/support/fit_scenes.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<cv::Mat> noPictures() {
    const int sizes[] = {3, 3, 3};
    return {cv::Mat(), cv::Mat(4, 4, CV_32FC1, cv::Scalar(1)), cv::Mat(4, 4, CV_16SC1, cv::Scalar(1)),
            cv::Mat(4, 4, CV_8UC(5)), cv::Mat(3, sizes, CV_8UC1, cv::Scalar(1))};
}

// 60 left of column 20, 160 from there on.
cv::Mat step() {
    cv::Mat img(30, 50, CV_8UC1, cv::Scalar(60));
    img.colRange(20, 50) = 160;
    return img;
}

TEST(AutoCanny, ThresholdsFollowTheirRule) {
    orx::TCannyThresholds thresholds = orx::getCannyThresholds(step());
    EXPECT_TRUE(thresholds.valid);
    EXPECT_NEAR(thresholds.low, 0.67 * 160, 1e-9);
    EXPECT_NEAR(thresholds.high, 1.33 * 160, 1e-9);
    orx::TAutoCannyOptions otsu;
    otsu.method = orx::cmOtsu;
    otsu.lowRatio = 0.25;
    // Magnitudes are 0 or 4 x 100. All levels from 0 to 399 divide them equally well; the lowest counts.
    thresholds = orx::getCannyThresholds(step(), otsu);
    EXPECT_TRUE(thresholds.valid);
    EXPECT_EQ(thresholds.high, 0);
    // A weaker edge of 20 beside it, magnitude 80: the division lies between 80 and 400.
    cv::Mat two = step();
    two.colRange(35, 50) = 180;
    thresholds = orx::getCannyThresholds(two, otsu);
    EXPECT_EQ(thresholds.high, 80);
    EXPECT_EQ(thresholds.low, 20);
}

TEST(AutoCanny, FindsTheEdgesOfADiskOnly) {
    const cv::Point2d centre(50, 48);
    const cv::Mat img = edge_scene::sharpDisk({100, 100}, centre, 30, {60, 170, 1.0, 3.0});
    for (const orx::TCannyMethod method : {orx::cmMedian, orx::cmOtsu}) {
        orx::TAutoCannyOptions options;
        options.method = method;
        const cv::Mat edges = orx::autoCanny(img, options);
        ASSERT_EQ(edges.type(), CV_8UC1);
        std::vector<cv::Point> points;
        cv::findNonZero(edges, points);
        EXPECT_GT(points.size(), 160U);
        for (const cv::Point p : points) {
            EXPECT_NEAR(cv::norm(cv::Point2d(p) - centre), 30, 2);
        }
        cv::Mat deep;
        img.convertTo(deep, CV_16U, 257);
        EXPECT_EQ(cv::norm(orx::autoCanny(deep, options), edges, cv::NORM_L1), 0);
        EXPECT_EQ(cv::norm(orx::autoCanny(orx::toBGR(img), options), edges, cv::NORM_L1), 0);
    }
}

TEST(AutoCanny, ADarkFieldIsDividedByItsGradient) {
    cv::Mat img = cv::Mat::zeros(40, 40, CV_8UC1);
    img(cv::Rect(10, 10, 12, 12)) = 200;
    img.at<uchar>(30, 30) = 3;  // would be an edge with thresholds of 0
    const cv::Mat edges = orx::autoCanny(img);
    EXPECT_EQ(cv::countNonZero(edges(cv::Rect(26, 26, 10, 10))), 0);
    EXPECT_GT(cv::countNonZero(edges), 30);
}

TEST(AutoCanny, DegenerateImagesHaveNoEdgesAndRefusedOnesNoImage) {
    for (const orx::TCannyMethod method : {orx::cmMedian, orx::cmOtsu}) {
        for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 9), cv::Size(7, 5)}) {
            const cv::Mat edges = orx::autoCanny(cv::Mat(size, CV_16UC1, cv::Scalar(900)), {method});
            ASSERT_EQ(edges.size(), size);
            EXPECT_EQ(cv::countNonZero(edges), 0);
        }
    }
    for (const cv::Mat& refused : noPictures()) {
        EXPECT_TRUE(orx::autoCanny(refused).empty());
        EXPECT_FALSE(orx::getCannyThresholds(refused).valid);
    }
    for (const orx::TAutoCannyOptions& bad :
         std::vector<orx::TAutoCannyOptions>{{orx::TCannyMethod(2)},
                                             {orx::cmMedian, kNan},
                                             {orx::cmOtsu, 0.3, 1.5},
                                             {orx::cmOtsu, 0.3, 0.5, -1},
                                             {orx::cmOtsu, 0.3, 0.5, 0, 17}}) {
        EXPECT_TRUE(orx::autoCanny(step(), bad).empty());
    }
}

using Measure = double (*)(const cv::Mat&);
const std::vector<Measure> kMeasures = {AutoFocus::calcGrayDifference, AutoFocus::calcBrenner,
                                        AutoFocus::calcTenengrad, AutoFocus::calcLaplacianVariance};

TEST(AutoFocus, MeasuresAreThoseOfAHandCount) {
    // Rows 10 20 40 and 10 30 40.
    const cv::Mat img = (cv::Mat_<uchar>(2, 3) << 10, 20, 40, 10, 30, 40);
    EXPECT_DOUBLE_EQ(AutoFocus::calcGrayDifference(img), (10 + 20 + 20 + 10 + 0 + 10 + 0) / 6.0);
    EXPECT_DOUBLE_EQ(AutoFocus::calcBrenner(img), (30 * 30 + 30 * 30) / 6.0);
    // A step of 100 between two columns of 30 rows: two columns of gradient 400, of Laplacian 100 and -100.
    EXPECT_DOUBLE_EQ(AutoFocus::calcGrayDifference(step()), 100.0 * 30 / 1500);
    EXPECT_DOUBLE_EQ(AutoFocus::calcBrenner(step()), 2 * 100.0 * 100 * 30 / 1500);
    EXPECT_DOUBLE_EQ(AutoFocus::calcTenengrad(step()), 2 * 400.0 * 400 * 30 / 1500);
    EXPECT_NEAR(AutoFocus::calcLaplacianVariance(step()), 2 * 100.0 * 100 * 30 / 1500, 1e-9);
}

TEST(AutoFocus, DepthColourAndSurroundingsMakeNoDifference) {
    fit_scenes::Random random(4);
    cv::Mat img(40, 50, CV_8UC1);
    for (auto pixel = img.begin<uchar>(); pixel != img.end<uchar>(); ++pixel) {
        *pixel = static_cast<uchar>(random.integer(0, 255));
    }
    cv::Mat deep;
    img.convertTo(deep, CV_16U, 257);
    const cv::Rect part(7, 9, 20, 13);
    for (const Measure measure : kMeasures) {
        const double expected = measure(img(part).clone());
        EXPECT_GT(expected, 10);
        EXPECT_DOUBLE_EQ(measure(img(part)), expected);
        EXPECT_NEAR(measure(deep(part)) / expected, 1, 1e-6);
        EXPECT_DOUBLE_EQ(measure(orx::toBGR(img)(part)), expected);
    }
}

TEST(AutoFocus, RowsGiveToTheLastBitWhatDerivativePicturesGive) {
    cv::RNG random(8);
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 9), cv::Size(9, 1), cv::Size(2, 2),
                                cv::Size(511, 3), cv::Size(513, 40), cv::Size(1025, 17), cv::Size(1500, 1)}) {
        for (const bool extreme : {false, true}) {
            cv::Mat around(size + cv::Size(2, 2), CV_8UC1);
            random.fill(around, cv::RNG::UNIFORM, 0, 256);
            if (extreme) cv::threshold(around, around, 127, 255, cv::THRESH_BINARY);
            const cv::Mat img = around(cv::Rect({1, 1}, size));
            const cv::Mat alone = img.clone();
            cv::Mat dx;
            cv::Mat dy;
            cv::Mat laplacian;
            cv::Sobel(alone, dx, CV_16S, 1, 0, 3, 1, 0, cv::BORDER_REPLICATE);
            cv::Sobel(alone, dy, CV_16S, 0, 1, 3, 1, 0, cv::BORDER_REPLICATE);
            cv::Laplacian(alone, laplacian, CV_16S, 1, 1, 0, cv::BORDER_REPLICATE);
            cv::Scalar mean;
            cv::Scalar deviation;
            cv::meanStdDev(laplacian, mean, deviation);
            EXPECT_EQ(AutoFocus::calcTenengrad(img),
                      (cv::norm(dx, cv::NORM_L2SQR) + cv::norm(dy, cv::NORM_L2SQR)) / size.area())
                << size;
            EXPECT_EQ(AutoFocus::calcLaplacianVariance(img), deviation[0] * deviation[0]) << size;
        }
    }
}

TEST(AutoFocus, DropsWithEveryBlur) {
    const cv::Mat img = edge_scene::draw({80, 80}, {40, 210, 0.8, 2}, [](double x, double y) {
        return 4 * std::sin(x / 3) + 4 * std::cos(y / 4);
    });
    for (const Measure measure : kMeasures) {
        double sharper = measure(img);
        for (const double sigma : {1.0, 2.0, 3.0}) {
            cv::Mat blurred;
            cv::GaussianBlur(img, blurred, {}, sigma);
            EXPECT_LT(measure(blurred), sharper);
            sharper = measure(blurred);
        }
    }
}

TEST(AutoFocus, FlatImagesMeasureZeroAndRefusedOnesMinusOne) {
    for (const Measure measure : kMeasures) {
        for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 9), cv::Size(2, 2), cv::Size(9, 1)}) {
            EXPECT_EQ(measure(cv::Mat(size, CV_8UC1, cv::Scalar(77))), 0);
            EXPECT_EQ(measure(cv::Mat(size, CV_16UC4, cv::Scalar::all(777))), 0);
        }
        for (const cv::Mat& refused : noPictures()) EXPECT_EQ(measure(refused), -1.0);
    }
}

}  // namespace
