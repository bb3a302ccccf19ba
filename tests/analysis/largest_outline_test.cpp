#include "orxFunctions/analysis/largest_outline_internal.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "tests/support/thread_counts.h"

namespace {

using Contour = std::vector<cv::Point>;

Contour largestOfAll(const cv::Mat& binary) {
    std::vector<Contour> contours;
    cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    Contour largest;
    for (const Contour& contour : contours) {
        if (largest.empty() || cv::contourArea(contour) > cv::contourArea(largest)) largest = contour;
    }
    return largest;
}

void expectThatOfAll(const cv::Mat& binary) {
    const auto same = [](const Contour& a, const Contour& b) { return a == b; };
    EXPECT_TRUE(orx::test::madeAlike(
        largestOfAll(binary), [&] { return orx::largestOutline(binary); }, same))
        << binary.size();
}

TEST(LargestOutline, IsTheFirstOneOfTheLargestArea) {
    cv::RNG random(4);
    for (int round = 0; round < 300; ++round) {
        // Now and then so large that it is cut into stripes; few sizes, so that many are the largest.
        const cv::Size size =
            round % 60 == 0 ? cv::Size(997, 701) : cv::Size(random.uniform(1, 90), random.uniform(1, 90));
        cv::Mat binary = cv::Mat::zeros(size, CV_8UC1);
        const int count = random.uniform(0, 60);
        for (int i = 0; i < count; ++i) {
            const cv::Point a(random.uniform(-5, size.width), random.uniform(-5, size.height));
            const int reach = random.uniform(1, 4) * (round % 60 == 0 ? 40 : 4);
            const int thickness = random.uniform(0, 2) == 0 ? cv::FILLED : 1;
            if (round % 3 == 0)
                cv::rectangle(binary, {a, cv::Size(reach, reach)}, random.uniform(0, 5), thickness);
            if (round % 3 == 1) cv::circle(binary, a, reach, 255, thickness);
            if (round % 3 == 2) cv::line(binary, a, a + cv::Point(reach, reach), 255);
        }
        expectThatOfAll(binary);
    }
}

TEST(LargestOutline, BoxesDoNotMislead) {
    cv::Mat dots = cv::Mat::zeros(300, 280, CV_8UC1);  // none encloses anything
    for (int y = 0; y < 16; y += 4) {
        for (int x = y / 2; x < dots.cols; x += 4) dots.at<uchar>(y, x) = 255;
    }
    expectThatOfAll(dots);
    // 32 boxes that are larger than that of the largest object, most of them of lines.
    cv::Mat lines = dots.clone();
    for (int x = 5; x < 250; x += 8) cv::line(lines, {x, 40}, {x + 20, 60}, cv::Scalar(255));
    cv::line(lines, {10, 100}, {30, 120}, cv::Scalar(255), 2);
    lines(cv::Rect(200, 200, 11, 12)).setTo(255);
    ASSERT_EQ(cv::boundingRect(largestOfAll(lines)), cv::Rect(200, 200, 11, 12));
    expectThatOfAll(lines);
    cv::Mat framed = lines.clone();
    cv::rectangle(framed, {0, 0, 280, 300}, cv::Scalar(255), 2);
    expectThatOfAll(framed);
    framed.colRange(138, 142).setTo(0);  // two halves, alike
    expectThatOfAll(framed);
}

}  // namespace
