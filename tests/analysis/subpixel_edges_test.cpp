#include <gtest/gtest.h>

#include <cstring>
#include <opencv2/imgproc.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/edge_reference.h"
#include "tests/support/edge_scene.h"
#include "tests/support/refusal_check.h"
#include "tests/support/thread_counts.h"

namespace {

using orx::test::refusedWith;
using ORXEdge::TContour;

template <typename T>
bool sameBits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

bool same(const std::vector<TContour>& a, const std::vector<TContour>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!sameBits(a[i].points, b[i].points) || !sameBits(a[i].direction, b[i].direction) ||
            !sameBits(a[i].response, b[i].response)) {
            return false;
        }
    }
    return true;
}

std::size_t pointCount(const std::vector<TContour>& contours) {
    std::size_t count = 0;
    for (const TContour& contour : contours) count += contour.points.size();
    return count;
}

enum class Kind { kNoise, kBlobs, kTexture, kBinary, kScene };

cv::Mat picture(Kind kind, cv::Size size, int seed) {
    cv::RNG random(static_cast<std::uint64_t>(seed) * 7919 + 17);
    cv::Mat image(size, CV_8U);
    random.fill(image, cv::RNG::UNIFORM, 0, 256);
    if (kind == Kind::kBinary) cv::threshold(image, image, 127, 255, cv::THRESH_BINARY);
    if (kind == Kind::kBlobs) {
        cv::GaussianBlur(image, image, cv::Size(), 3);
        cv::normalize(image, image, 0, 255, cv::NORM_MINMAX);
    }
    if (kind == Kind::kTexture) {
        cv::Mat fine;
        cv::GaussianBlur(image, fine, cv::Size(), 1.2);
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                const double wave =
                    60 * std::sin(0.21 * x + 0.13 * y) + 40 * std::sin(0.05 * x * x / size.width - 0.3 * y);
                image.at<uchar>(y, x) = cv::saturate_cast<uchar>(fine.at<uchar>(y, x) + wave);
            }
        }
    }
    if (kind == Kind::kScene) {
        image.setTo(60);
        for (int i = 0; i < 12; ++i) {
            const cv::Point centre(random.uniform(0, size.width), random.uniform(0, size.height));
            cv::circle(image, centre, random.uniform(3, 30), random.uniform(0, 256), cv::FILLED, cv::LINE_AA);
            cv::line(image, centre, {random.uniform(0, size.width), random.uniform(0, size.height)},
                     random.uniform(0, 256), 2, cv::LINE_AA);
        }
    }
    return image;
}

struct EdgeRun {
    const char* name;
    Kind kind;
    cv::Size size;
    int low;
    int high;
    double alpha;
};
std::ostream& operator<<(std::ostream& out, const EdgeRun& run) { return out << run.name; }

class EdgesSubPixReference : public testing::TestWithParam<EdgeRun> {};

// Bit for bit, on several pictures of each kind, with the kernels of both instruction sets.
TEST_P(EdgesSubPixReference, GivesWhatThePlainLoopsGive) {
    const EdgeRun& run = GetParam();
    for (int seed = 0; seed < 6; ++seed) {
        cv::Mat gray = picture(run.kind, run.size, seed);
        std::vector<cv::Vec4i> expectedHierarchy;
        const int mode = seed % 4;  // external, list, two levels, tree
        const auto expected =
            edge_reference::edgesSubPix(gray, expectedHierarchy, mode, run.low, run.high, run.alpha);
        for (const bool optimized : {true, false}) {
            cv::setUseOptimized(optimized);
            std::vector<TContour> found;
            std::vector<cv::Vec4i> hierarchy;
            EXPECT_TRUE(ORXEdge::EdgesSubPix(gray, found, hierarchy, mode, run.low, run.high, run.alpha));
            EXPECT_TRUE(same(found, expected))
                << "seed " << seed << ", optimized " << optimized << ": " << pointCount(found) << " and "
                << pointCount(expected) << " points";
            EXPECT_EQ(hierarchy, expectedHierarchy);
        }
        cv::setUseOptimized(true);
    }
}

INSTANTIATE_TEST_SUITE_P(
    , EdgesSubPixReference,
    testing::Values(EdgeRun{"scene", Kind::kScene, {317, 201}, 12, 36, 1.0},
                    EdgeRun{"blobs", Kind::kBlobs, {263, 190}, 3, 9, 1.0},
                    EdgeRun{"texture", Kind::kTexture, {301, 222}, 5, 12, 1.4},
                    EdgeRun{"noise", Kind::kNoise, {129, 97}, 0, 0, 1.0},
                    EdgeRun{"noiseBarelySmoothed", Kind::kNoise, {130, 80}, 20, 60, 0.2},
                    EdgeRun{"binaryWithoutSmoothing", Kind::kBinary, {200, 70}, 0, 1, 0.17},
                    EdgeRun{"emptyKernel", Kind::kScene, {60, 50}, 0, 0, 0.1},
                    EdgeRun{"kernelWithTies", Kind::kScene, {160, 120}, 6, 18, 0.5},
                    EdgeRun{"wideKernel", Kind::kScene, {150, 140}, 2, 5, 6.3},
                    EdgeRun{"kernelSumBeyond128", Kind::kBinary, {400, 90}, 0, 1, 37.0},
                    EdgeRun{"kernelOfZeros", Kind::kBinary, {40, 30}, 0, 0, 400.0},
                    EdgeRun{"automatic", Kind::kScene, {317, 201}, 99, -1, 1.0},
                    EdgeRun{"automaticOnTooFewPixels", Kind::kNoise, {9, 4}, 0, -7, 1.0},
                    EdgeRun{"lowAboveHigh", Kind::kScene, {211, 133}, 40, 10, 1.0},
                    EdgeRun{"negativeLow", Kind::kScene, {211, 133}, -15, 30, 1.0},
                    EdgeRun{"hugeThresholds", Kind::kScene, {80, 60}, 512, 20000000, 1.0},
                    EdgeRun{"hugeHighAlone", Kind::kScene, {80, 60}, 5, 20000000, 1.0},
                    EdgeRun{"onePixel", Kind::kNoise, {1, 1}, 0, 0, 1.0},
                    EdgeRun{"row", Kind::kNoise, {57, 1}, 0, 0, 1.0},
                    EdgeRun{"column", Kind::kNoise, {1, 40}, 0, 0, 0.8},
                    EdgeRun{"twoByTwo", Kind::kBinary, {2, 2}, 0, 0, 1.0},
                    EdgeRun{"narrow", Kind::kNoise, {3, 100}, 0, 0, 2.0},
                    EdgeRun{"sevenColumns", Kind::kNoise, {7, 66}, 0, 4, 0.6},
                    EdgeRun{"seventeenColumns", Kind::kNoise, {17, 65}, 0, 4, 0.6}),
    [](const testing::TestParamInfo<EdgeRun>& run) { return std::string(run.param.name); });

// One outline of low contrast runs up and down, over rows that several threads share; strong it is at one
// end.
TEST(EdgesSubPix, AWeakOutlineIsFollowedFromItsStrongEndAcrossAllStripes) {
    cv::Mat img(400, 640, CV_8UC1, cv::Scalar(100));
    for (int x = 20; x + 12 < img.cols; x += 24) img(cv::Rect(x, 30 + x % 7, 12, 300)).setTo(112);
    img(cv::Rect(20, 340, 600, 40)).setTo(112);
    for (int x = 20; x + 12 < img.cols; x += 24) img(cv::Rect(x, 320, 12, 30)).setTo(112);
    cv::Mat strong = img.clone();
    for (int y = 36; y < 179; ++y) strong(cv::Rect(20, y, 12, 1)).setTo(290 - y);  // down to 112
    const auto found = [](const cv::Mat& gray, int high) {
        std::vector<ORXEdge::TContour> contours;
        EXPECT_TRUE(ORXEdge::EdgesSubPix(gray, contours, 4, high, 1.0));
        std::size_t points = 0;
        for (const ORXEdge::TContour& contour : contours) points += contour.points.size();
        return points;
    };
    for (const int threads : {1, 2, 5}) {
        const orx::test::ThreadCount count(threads);
        EXPECT_EQ(found(img, 40), 0U);
        EXPECT_GT(found(strong, 40), 15000U);
        EXPECT_EQ(found(strong, 40), found(strong, 4));
    }
}

TEST(EdgesSubPix, DoesNotDependOnTheNumberOfThreads) {
    cv::Mat gray = picture(Kind::kScene, {640, 480}, 3);
    const int threads = cv::getNumThreads();
    std::vector<TContour> alone;
    cv::setNumThreads(1);
    EXPECT_TRUE(ORXEdge::EdgesSubPix(gray, alone, 5, 12, 1.0));
    EXPECT_GT(pointCount(alone), 1000U);
    for (const int count : {2, 3, 8}) {
        cv::setNumThreads(count);
        std::vector<TContour> together;
        EXPECT_TRUE(ORXEdge::EdgesSubPix(gray, together, 5, 12, 1.0));
        EXPECT_TRUE(same(alone, together)) << count;
    }
    cv::setNumThreads(threads);
}

TEST(EdgesSubPix, TakesAViewIntoALargerImage) {
    const cv::Mat large = picture(Kind::kScene, {300, 200}, 5);
    cv::Mat view = large(cv::Rect(31, 17, 201, 143));
    std::vector<TContour> found;
    EXPECT_TRUE(ORXEdge::EdgesSubPix(view, found, 8, 20, 1.0));
    EXPECT_TRUE(same(found, edge_reference::edgesSubPix(view, cv::noArray(), cv::RETR_LIST, 8, 20, 1.0)));
}

TEST(EdgesSubPix, RefusesOtherTypesAndLeavesOutputsAlone) {
    for (const int type : {CV_8UC3, CV_16UC1, CV_8SC1, CV_32FC1, CV_8UC2}) {
        cv::Mat image(20, 20, type, cv::Scalar::all(3));
        std::vector<TContour> contours(2);
        std::vector<std::vector<cv::Point2f>> points(3);
        cv::Mat hierarchy(1, 7, CV_32SC4);
        EXPECT_FALSE(ORXEdge::EdgesSubPix(image, contours, hierarchy, cv::RETR_LIST, 1, 2, 1.0));
        EXPECT_FALSE(ORXEdge::EdgesSubPix(image, contours, 1, 2, 1.0));
        EXPECT_FALSE(ORXEdge::EdgesSubPix(image, points, 1, 2, 1.0));
        EXPECT_EQ(contours.size(), 2U);
        EXPECT_EQ(points.size(), 3U);
        EXPECT_EQ(hierarchy.cols, 7);
    }
}

TEST(EdgesSubPix, PassesOnTheExceptionsOfTheImageLibrary) {
    cv::Mat image(20, 20, CV_8U, cv::Scalar(3));
    cv::Mat empty;
    std::vector<TContour> contours(2);
    EXPECT_THROW(ORXEdge::EdgesSubPix(image, contours, 1, 2, 0.0), cv::Exception);
    EXPECT_THROW(ORXEdge::EdgesSubPix(image, contours, 1, 2, -1.0), cv::Exception);
    EXPECT_THROW(ORXEdge::EdgesSubPix(image, contours, 1, 2, std::nan("")), cv::Exception);
    EXPECT_THROW(ORXEdge::EdgesSubPix(empty, contours, 1, 2, 1.0), cv::Exception);
    EXPECT_THROW(ORXEdge::EdgesSubPix(image, contours, cv::noArray(), 99, 1, 2, 1.0), cv::Exception);
    EXPECT_EQ(contours.size(), 2U);
}

TEST(EdgesSubPix, RefusesMoreThanTwoDimensions) {
    for (const std::vector<int>& sizes : {std::vector<int>{1, 1, 1}, {20, 20, 20}, {2, 3, 4, 5}}) {
        cv::Mat volume(sizes, CV_8U, cv::Scalar(3));
        std::vector<TContour> contours(2);
        EXPECT_TRUE(refusedWith(orx::rcImageDimensions, "EdgesSubPix",
                                [&] { EXPECT_FALSE(ORXEdge::EdgesSubPix(volume, contours, 1, 2, 1.0)); }));
        EXPECT_EQ(contours.size(), 2U);
        const cv::Mat gradient(sizes, CV_16S, cv::Scalar(300));
        EXPECT_TRUE(refusedWith(orx::rcImageDimensions, "calcEdgeThresVal",
                                [&] { EXPECT_EQ(ORXEdge::calcEdgeThresVal(gradient, gradient), -1.0); }));
    }
}

TEST(EdgesSubPix, AlphaIsBoundedAndAskedForOfASinglePixelToo) {
    cv::Mat noise = picture(Kind::kNoise, {20, 20}, 1);
    std::vector<TContour> contours(2);
    for (const double alpha : {1000.5, 1e7, 3e9, HUGE_VAL}) {
        EXPECT_TRUE(refusedWith(orx::rcOption, "EdgesSubPix", [&] {
            EXPECT_FALSE(ORXEdge::EdgesSubPix(noise, contours, 0, 0, alpha));
        })) << alpha;
    }
    EXPECT_EQ(contours.size(), 2U);
    // The largest value of the kernel is 128 exp(-1/2) / ((1 - exp(-9/2)) alpha): up to 157.01 it rounds
    // to 1.
    for (const double alpha : {150.0, 157.0}) {
        ASSERT_TRUE(ORXEdge::EdgesSubPix(noise, contours, 0, 0, alpha));
        EXPECT_TRUE(
            same(contours, edge_reference::edgesSubPix(noise, cv::noArray(), cv::RETR_LIST, 0, 0, alpha)));
        EXPECT_EQ(contours.empty(), alpha == 157.0) << "smoothed flat";
    }
    for (const double alpha : {157.1, 300.0, 1000.0}) {
        contours.resize(2);
        EXPECT_TRUE(ORXEdge::EdgesSubPix(noise, contours, 0, 0, alpha));
        EXPECT_TRUE(contours.empty());
    }
    const cv::Mat pixel(1, 1, CV_8U, cv::Scalar(7));  // which OpenCV smooths by anything
    for (const double alpha : {0.0, -1.0, std::nan("")})
        EXPECT_THROW(ORXEdge::EdgesSubPix(pixel, contours, 0, 0, alpha), cv::Exception) << alpha;
    EXPECT_TRUE(ORXEdge::EdgesSubPix(pixel, contours, 0, 0, 1.0));
}

TEST(EdgesSubPix, TakesConstantImagesAndTemporaries) {
    cv::Mat image = picture(Kind::kScene, {60, 40}, 3);
    const cv::Mat& constant = image;
    std::vector<TContour> expected;
    ASSERT_TRUE(ORXEdge::EdgesSubPix(image, expected, 5, 15, 1.0));
    std::vector<TContour> found;
    ASSERT_TRUE(ORXEdge::EdgesSubPix(constant, found, 5, 15, 1.0));
    EXPECT_TRUE(same(found, expected));
    cv::Mat hierarchy;
    ASSERT_TRUE(ORXEdge::EdgesSubPix(image.clone(), found, hierarchy, cv::RETR_LIST, 5, 15, 1.0));
    EXPECT_TRUE(same(found, expected));
    std::vector<std::vector<cv::Point2f>> points;
    ASSERT_TRUE(ORXEdge::EdgesSubPix(constant, points, 5, 15, 1.0));
    EXPECT_TRUE(sameBits(points.front(), expected.front().points));
}

TEST(EdgesSubPix, FlatImageHasNoEdges) {
    cv::Mat image(30, 40, CV_8U, cv::Scalar(128));
    std::vector<TContour> contours(2);
    EXPECT_TRUE(ORXEdge::EdgesSubPix(image, contours, 0, 0, 1.0));
    EXPECT_TRUE(contours.empty());
}

TEST(EdgesSubPix, VerticalStepLiesBetweenItsColumns) {
    cv::Mat image(30, 40, CV_8U, cv::Scalar(50));
    image.colRange(20, 40).setTo(150);
    std::vector<TContour> contours;
    std::vector<std::vector<cv::Point2f>> points;
    EXPECT_TRUE(ORXEdge::EdgesSubPix(image, contours, 10, 30, 1.0));
    EXPECT_TRUE(ORXEdge::EdgesSubPix(image, points, 10, 30, 1.0));
    ASSERT_EQ(contours.size(), 1U);
    ASSERT_EQ(points.size(), 1U);
    EXPECT_EQ(points[0], contours[0].points);
    EXPECT_EQ(contours[0].points.size(), 58U);  // down one side and up the other, the ends once
    for (std::size_t i = 0; i < contours[0].points.size(); ++i) {
        EXPECT_NEAR(contours[0].points[i].x, 19.5F, 1e-3);
        EXPECT_EQ(contours[0].points[i].y, std::round(contours[0].points[i].y));
        EXPECT_FLOAT_EQ(contours[0].direction[i], static_cast<float>(CV_PI / 2));
    }
}

// Levels are means of the two axes: gx and gy of 25600 and 0 are level 100.
TEST(CalcEdgeThresVal, IsTheHighestLevelThatEnoughPixelsReach) {
    cv::Mat gx(20, 30, CV_16S, cv::Scalar(256));
    const cv::Mat gy(20, 30, CV_16S, cv::Scalar(0));
    EXPECT_EQ(ORXEdge::calcEdgeThresVal(gx, gy), 1);
    gx.rowRange(0, 4).setTo(-25600);  // 120 pixels; the limit is 2.5 * 50 = 125
    EXPECT_EQ(ORXEdge::calcEdgeThresVal(gx, gy), 1);
    gx.row(4).colRange(0, 5).setTo(12800);  // with 5 of level 50 they are 125, which does not exceed it
    EXPECT_EQ(ORXEdge::calcEdgeThresVal(gx, gy), 1);
    gx.row(4).colRange(0, 6).setTo(12800);
    EXPECT_EQ(ORXEdge::calcEdgeThresVal(gx, gy), 50);
}

TEST(CalcEdgeThresVal, DoesNotCountTheHighestLevel) {
    cv::Mat full(20, 30, CV_16S, cv::Scalar(32767));
    EXPECT_EQ(ORXEdge::calcEdgeThresVal(full, full), -1);  // level 255 throughout
    const cv::Mat half(20, 30, CV_16S, cv::Scalar(32200));
    EXPECT_EQ(ORXEdge::calcEdgeThresVal(full, half), 254);
    EXPECT_EQ(ORXEdge::calcEdgeThresVal(cv::Mat(), cv::Mat()), -1);
    const cv::Mat small(4, 4, CV_16S, cv::Scalar(1000));  // 16 pixels cannot exceed 20
    EXPECT_EQ(ORXEdge::calcEdgeThresVal(small, small), -1);
}

TEST(CalcEdgeThresVal, PassesOnTheExceptionsOfTheImageLibrary) {
    const cv::Mat gx(20, 30, CV_16S, cv::Scalar(256));
    const cv::Mat narrower(20, 29, CV_16S, cv::Scalar(256));
    EXPECT_THROW(ORXEdge::calcEdgeThresVal(gx, narrower), cv::Exception);
    EXPECT_THROW(ORXEdge::calcEdgeThresVal(gx, cv::Mat()), cv::Exception);
}

TEST(CalcEdgeThresVal, AgreesWithTheImageLibraryOnAnyGradients) {
    cv::RNG random(5);
    for (int i = 0; i < 40; ++i) {
        cv::Mat gx(60 + i, 90, CV_16S);
        cv::Mat gy(60 + i, 90, CV_16S);
        random.fill(gx, cv::RNG::NORMAL, 0, 400 * (i + 1));
        random.fill(gy, cv::RNG::UNIFORM, -32768, 32768);
        if (i % 2 == 0) gy /= 16;
        EXPECT_EQ(ORXEdge::calcEdgeThresVal(gx, gy), edge_reference::automaticThreshold(gx, gy)) << i;
        cv::Mat fx;
        cv::Mat fy;
        gx.convertTo(fx, CV_32F);
        gy.convertTo(fy, CV_32F);
        EXPECT_EQ(ORXEdge::calcEdgeThresVal(fx, fy), edge_reference::automaticThreshold(fx, fy)) << i;
    }
}

}  // namespace
