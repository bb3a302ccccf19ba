#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <set>
#include <utility>

#include "orxFunctions/orxfunctions.h"

namespace {

cv::Mat grey(int rows, int cols, std::initializer_list<int> values) {
    cv::Mat image(rows, cols, CV_8U);
    std::transform(values.begin(), values.end(), image.begin<uchar>(),
                   [](int v) { return static_cast<uchar>(v); });
    return image;
}

bool equal(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0;
}

TEST(CreateBackgroundImg, AlternatesFromTheTopLeftCell) {
    EXPECT_TRUE(
        equal(orx::createBackgroundImg(3, 2, 1, 1, 10, 200), grey(2, 3, {10, 200, 10, 200, 10, 200})));
    EXPECT_TRUE(equal(orx::createBackgroundImg(5, 3, 7, 2, 0, 255),
                      grey(3, 5, {0, 0, 255, 255, 0, 0, 0, 255, 255, 0, 255, 255, 0, 0, 255})));
    // Colours are cut to 8 bits, a negative size counts as a positive one.
    EXPECT_TRUE(equal(orx::createBackgroundImg(2, 1, 0, -1, 256 + 7, -1), grey(1, 2, {7, 255})));
}

TEST(CreateBackgroundImg, ColourOnRequest) {
    EXPECT_EQ(orx::createBackgroundImg(4, 4, 3, 1, 1, 2).at<cv::Vec3b>(0, 1), cv::Vec3b(2, 2, 2));
    EXPECT_EQ(orx::createBackgroundImg(4, 4, 4, 1, 1, 2).at<cv::Vec4b>(0, 0), cv::Vec4b(1, 1, 1, 255));
}

TEST(CalibrationImages, UnusableSizesGiveAnEmptyMatrix) {
    EXPECT_TRUE(orx::createBackgroundImg(4, 4, 1, 0, 1, 2).empty());
    for (const cv::Size size :
         {cv::Size(0, 5), cv::Size(5, 0), cv::Size(-1, -1), cv::Size(INT_MAX, INT_MAX)}) {
        EXPECT_TRUE(orx::createBackgroundImg(size.width, size.height, 3, 1, 1, 2).empty());
        EXPECT_TRUE(orx::createCalibrateImage(size, 1, 0).empty());
    }
}

// The pattern grown corner by corner with OpenCV's rectangles, then cut out and centred.
cv::Mat grownPattern(cv::Size size, int square, int margin) {
    cv::Mat canvas(size, CV_8U, cv::Scalar(255));
    std::vector<cv::Point> candidates = {{margin, margin}};
    std::set<std::pair<int, int>> met;
    int maxX = 0;
    int maxY = 0;
    while (!candidates.empty()) {
        const auto nearest = std::min_element(
            candidates.begin(), candidates.end(),
            [](cv::Point a, cv::Point b) { return std::hypot(a.x, a.y) < std::hypot(b.x, b.y); });
        const cv::Point p = *nearest;
        candidates.erase(nearest);
        const cv::Point far(p.x + square - 1, p.y + square - 1);
        if (far.x > size.width - margin || far.y > size.height - margin) continue;
        cv::rectangle(canvas, p, far, cv::Scalar(0), -1, cv::LINE_8);
        maxX = std::max(maxX, far.x);
        maxY = std::max(maxY, far.y);
        for (const cv::Point next : {cv::Point(p.x + 2 * square, p.y), cv::Point(p.x, p.y + 2 * square),
                                     cv::Point(p.x + square, p.y + square)}) {
            if (met.insert({next.x, next.y}).second) candidates.push_back(next);
        }
    }
    cv::Mat centred(size, CV_8U, cv::Scalar(255));
    const cv::Rect all({}, size);
    const cv::Point shift((size.width - maxX + margin) / 2 - margin,
                          (size.height - maxY + margin) / 2 - margin);
    const cv::Rect from =
        cv::Rect(cv::Point(margin, margin), cv::Point(maxX + 1, maxY + 1)) & all & (all - shift);
    if (maxX > 0 && maxY > 0 && !from.empty()) canvas(from).copyTo(centred(from + shift));
    return centred;
}

TEST(CreateCalibrateImage, EqualsThePatternGrownStepByStep) {
    for (const cv::Size size : {cv::Size(100, 80), cv::Size(61, 61), cv::Size(12, 90)}) {
        for (int square : {1, 2, 7, 10, 20, 37}) {
            for (int margin : {0, 1, 5, 10, -4}) {
                EXPECT_TRUE(equal(orx::createCalibrateImage(size, square, margin),
                                  grownPattern(size, square, margin)))
                    << size << " square " << square << " margin " << margin;
            }
        }
    }
}

TEST(CreateCalibrateImage, BordersAreEqual) {
    // 8 x 6 squares of 10 pixels: 80 x 60 in the middle of 103 x 82.
    const cv::Mat image = orx::createCalibrateImage({103, 82}, 10, 10);
    EXPECT_EQ(cv::boundingRect(255 - image), cv::Rect(12, 11, 80, 60));
    EXPECT_EQ(cv::countNonZero(image == 0), 24 * 100);
    EXPECT_EQ(image.at<uchar>(11, 12), 0);
    EXPECT_EQ(image.at<uchar>(11, 22), 255);
    EXPECT_EQ(image.at<uchar>(21, 22), 0);
}

TEST(CreateCalibrateImage, NoSquareThatDoesNotFit) {
    const cv::Mat white(50, 50, CV_8U, cv::Scalar(255));
    for (const auto& [square, margin] :
         {std::pair(42, 5), {0, 5}, {-3, 5}, {INT_MAX, 0}, {INT_MIN, 0}, {3, INT_MAX}}) {
        EXPECT_TRUE(equal(orx::createCalibrateImage({50, 50}, square, margin), white))
            << square << " " << margin;
    }
    EXPECT_EQ(cv::countNonZero(orx::createCalibrateImage({50, 50}, 41, 5) == 0), 41 * 41);
    EXPECT_EQ(orx::createCalibrateImage({50, 50}, INT_MAX, INT_MIN).size(), cv::Size(50, 50));
    EXPECT_EQ(orx::createCalibrateImage({50, 50}, 3, INT_MIN).size(), cv::Size(50, 50));
}

// A pattern of thousands of squares is drawn once each, not once for every way to reach it.
TEST(CreateCalibrateImage, FineAndLargePatternsAreFeasible) {
    const cv::Mat image = orx::createCalibrateImage({4000, 3000}, 1, 0);
    EXPECT_EQ(cv::countNonZero(image == 0), 6000000);
}

}  // namespace
