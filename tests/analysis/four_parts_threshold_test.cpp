#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/refusal_check.h"
#include "tests/support/thread_counts.h"

namespace {

cv::Mat otsu(const cv::Mat& img) {
    cv::Mat out;
    cv::threshold(img, out, 100, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
    return out;
}

bool equal(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && cv::norm(a, b, cv::NORM_INF) == 0;
}

// A bright rectangle on a dark ground, under light that differs between the quadrants of the rectangle, with
// some noise; inclusive corners.
cv::Mat litRectangle(cv::Point topLeft, cv::Point bottomRight) {
    cv::Mat img(60, 80, CV_8UC1, cv::Scalar(20));
    cv::rectangle(img, topLeft, bottomRight, cv::Scalar(180), cv::FILLED);
    std::mt19937 random(3);
    for (int y = 0; y < img.rows; ++y) {
        for (int x = 0; x < img.cols; ++x)
            img.at<uchar>(y, x) += static_cast<uchar>(static_cast<int>(random() % 20) + x / 2);
    }
    return img;
}

TEST(OtsuFourParts, EveryQuadrantHasItsOwnLevel) {
    cv::Mat img = litRectangle({20, 10}, {60, 40});  // centre (40, 25)
    cv::Mat expected = img.clone();
    for (const cv::Rect& part : {cv::Rect(0, 0, 40, 25), cv::Rect(40, 0, 40, 25), cv::Rect(0, 25, 40, 35),
                                 cv::Rect(40, 25, 40, 35)}) {
        otsu(img(part)).copyTo(expected(part));
    }
    cv::Mat dst;
    orx::OTSUfourPartsThreshold(img, dst, cv::MORPH_OPEN, 3);
    EXPECT_TRUE(equal(dst, expected));
    const cv::Mat constant = litRectangle({20, 10}, {60, 40});
    orx::OTSUfourPartsThreshold(constant, dst, cv::MORPH_OPEN, 3);
    EXPECT_TRUE(equal(dst, expected)) << "constant";
    orx::OTSUfourPartsThreshold(img, img, cv::MORPH_OPEN, 3);
    EXPECT_TRUE(equal(img, expected)) << "in place";
}

TEST(OtsuFourParts, TheObjectIsTheOneOfLargestAreaAfterMorphology) {
    cv::Mat img = litRectangle({30, 20}, {50, 40});  // centre (40, 30)
    cv::Mat speckled = img.clone();
    cv::line(speckled, {0, 5}, {79, 5}, cv::Scalar(230));  // long, but opened away
    cv::rectangle(speckled, {2, 50}, {10, 57}, cv::Scalar(230), cv::FILLED);
    cv::Mat dst;
    orx::OTSUfourPartsThreshold(speckled, dst, cv::MORPH_OPEN, 3);
    EXPECT_TRUE(equal(dst(cv::Rect(40, 30, 40, 30)), otsu(speckled(cv::Rect(40, 30, 40, 30)))));
    EXPECT_TRUE(equal(dst(cv::Rect(0, 0, 40, 30)), otsu(speckled(cv::Rect(0, 0, 40, 30)))));
}

TEST(OtsuFourParts, CentresAtTheBorderLeaveFewerQuadrants) {
    cv::Mat corner(30, 40, CV_8UC1, cv::Scalar(10));
    corner.at<uchar>(0, 0) = 200;
    cv::Mat uniform(30, 40, CV_8UC1, cv::Scalar(0));  // no contour
    cv::Mat pixel(1, 1, CV_8UC1, cv::Scalar(99));
    cv::Mat column = litRectangle({20, 10}, {60, 40}).col(40).clone();
    for (cv::Mat* img : {&corner, &uniform, &pixel}) {
        cv::Mat dst;
        orx::OTSUfourPartsThreshold(*img, dst, cv::MORPH_DILATE, 1);
        EXPECT_TRUE(equal(dst, otsu(*img)));
    }
    cv::Mat dst;
    orx::OTSUfourPartsThreshold(column, dst, cv::MORPH_CLOSE, 3);
    EXPECT_TRUE(equal(dst.rowRange(25, 60), otsu(column.rowRange(25, 60))));
}

TEST(OtsuFourParts, AKernelLargerThanTheImageTakesNoMemory) {
    cv::Mat img = litRectangle({20, 10}, {60, 40});
    for (const int operation : {cv::MORPH_ERODE, cv::MORPH_DILATE, cv::MORPH_GRADIENT, cv::MORPH_TOPHAT}) {
        cv::Mat large;
        cv::Mat huge;
        orx::OTSUfourPartsThreshold(img, large, operation, 200);
        orx::OTSUfourPartsThreshold(img, huge, operation, 2000000000);
        EXPECT_TRUE(equal(large, huge));
    }
}

// The quadrants meet where the largest contour of the image has its centre, as OpenCV's morphology has it.
cv::Mat byOpenCV(const cv::Mat& img, int operation, int size) {
    cv::Mat cleaned = otsu(img);
    cv::morphologyEx(cleaned, cleaned, operation, cv::getStructuringElement(cv::MORPH_RECT, {size, size}));
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(cleaned, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    const auto largest = std::max_element(contours.begin(), contours.end(), [](const auto& a, const auto& b) {
        return cv::contourArea(a) < cv::contourArea(b);
    });
    const cv::Point centre =
        largest == contours.end() ? cv::Point(0, 0) : orx::getContourCenterPt(*largest, 0);
    cv::Mat parts = img.clone();
    for (const cv::Range& row : {cv::Range(0, centre.y), cv::Range(centre.y, img.rows)}) {
        for (const cv::Range& col : {cv::Range(0, centre.x), cv::Range(centre.x, img.cols)}) {
            if (!row.empty() && !col.empty()) otsu(img(row, col)).copyTo(parts(row, col));
        }
    }
    return parts;
}

TEST(OtsuFourParts, WideSquaresActAsTheyDoInOpenCV) {
    cv::RNG random(11);
    for (int round = 0; round < 400; ++round) {
        cv::Mat img(random.uniform(1, 120), random.uniform(1, 120), CV_8UC1, cv::Scalar(20));
        for (int i = 0; i < 6; ++i) {
            const cv::Point corner(random.uniform(-20, img.cols), random.uniform(-20, img.rows));
            const cv::Size size(random.uniform(1, 90), random.uniform(1, 90));
            cv::rectangle(img, {corner, size}, cv::Scalar(i % 3 == 2 ? 20 : 200), cv::FILLED);
        }
        cv::Mat noise(img.size(), CV_8UC1);
        random.fill(noise, cv::RNG::UNIFORM, 0, 40);
        img += noise;
        const int operation = round % 8;
        const int size = random.uniform(30, 140);
        cv::Mat dst;
        orx::OTSUfourPartsThreshold(img, dst, operation, size);
        ASSERT_TRUE(equal(dst, byOpenCV(img, operation, size)))
            << "operation " << operation << ", square " << size << ", image " << img.size();
    }
}

// Squares and so much noise that each part has its own level; all but the last large enough to be cut into
// stripes.
std::vector<cv::Mat> noisySquares() {
    std::vector<cv::Mat> images;
    cv::RNG random(6);
    for (const cv::Size& size : {cv::Size(811, 679), cv::Size(1537, 401), cv::Size(66001, 9),
                                 cv::Size(1, 600001), cv::Size(90, 70)}) {
        cv::Mat img(size, CV_8UC1, cv::Scalar(20));
        for (int i = 0; i < 60; ++i) {
            const cv::Point corner(random.uniform(0, size.width), random.uniform(0, size.height));
            const int side = random.uniform(1, 90);
            cv::rectangle(img, {corner, cv::Size(side, side)}, cv::Scalar(100), cv::FILLED);
        }
        cv::Mat noise(size, CV_8UC1);
        random.fill(noise, cv::RNG::UNIFORM, 0, 120);
        images.push_back(img + noise);
    }
    return images;
}

TEST(OtsuFourParts, LargeImagesAreAsByOpenCVOnAnyNumberOfThreads) {
    int operation = 0;
    for (const cv::Mat& img : noisySquares()) {
        for (const int size : {1, 2, 5, 31}) {
            operation = (operation + 1) % 8;
            SCOPED_TRACE(testing::Message()
                         << "operation " << operation << ", square " << size << ", image " << img.size());
            EXPECT_TRUE(orx::test::madeAlike(byOpenCV(img, operation, size), [&] {
                cv::Mat dst;
                orx::OTSUfourPartsThreshold(img, dst, operation, size);
                return dst;
            }));
        }
    }
}

TEST(OtsuFourParts, LevelsAreThoseOfOpenCVForAnyHistogram) {
    cv::RNG random(12);
    for (int round = 0; round < 300; ++round) {
        cv::Mat img(random.uniform(1, 40), random.uniform(1, 40), CV_8UC1);
        // Up to seven levels, so that many splits are equally good; and all of them.
        const int levels = random.uniform(1, 8);
        for (int i = 0; i < static_cast<int>(img.total()); ++i)
            img.at<uchar>(i / img.cols, i % img.cols) =
                static_cast<uchar>(round % 3 == 0 ? random.uniform(0, 256) : random.uniform(0, levels) * 36);
        cv::Mat dst;
        orx::OTSUfourPartsThreshold(img, dst, cv::MORPH_OPEN, 3);
        ASSERT_TRUE(equal(dst, byOpenCV(img, cv::MORPH_OPEN, 3))) << round;
    }
}

TEST(OtsuFourParts, ALongImageTakesNoMemoryForASquare) {
    cv::Mat row(1, 200000, CV_8UC1, cv::Scalar(20));
    row.colRange(50000, 150001).setTo(200);
    cv::Mat dst;
    orx::OTSUfourPartsThreshold(row, dst, cv::MORPH_OPEN, 90001);  // a kernel of 8 GB
    EXPECT_TRUE(equal(dst, otsu(row)));
}

TEST(OtsuFourParts, RefusalsAreOpenCVsAndLeaveTheOutputAlone) {
    cv::Mat img = litRectangle({20, 10}, {60, 40});
    cv::Mat empty;
    cv::Mat colour(9, 9, CV_8UC3, cv::Scalar::all(7));
    cv::Mat dst(1, 1, CV_8UC1, cv::Scalar(42));
    EXPECT_THROW(orx::OTSUfourPartsThreshold(empty, dst, cv::MORPH_OPEN, 3), cv::Exception);
    EXPECT_THROW(orx::OTSUfourPartsThreshold(colour, dst, cv::MORPH_OPEN, 3), cv::Exception);
    EXPECT_THROW(orx::OTSUfourPartsThreshold(img, dst, 99, 3), cv::Exception);
    EXPECT_THROW(orx::OTSUfourPartsThreshold(img, dst, cv::MORPH_OPEN, 0), cv::Exception);
    const cv::Mat volume(std::vector<int>{4, 4, 4}, CV_8UC1, cv::Scalar(9));
    EXPECT_TRUE(orx::test::refusedWith(orx::rcImageDimensions, "OTSUfourPartsThreshold",
                                       [&] { orx::OTSUfourPartsThreshold(volume, dst, cv::MORPH_OPEN, 3); }));
    EXPECT_EQ(dst.at<uchar>(0, 0), 42);
}

}  // namespace
