#include <gtest/gtest.h>

#include <limits>
#include <opencv2/core.hpp>
#include <type_traits>

#include "orxFunctions/orxfunctions.h"

namespace {

TEST(TORXRect, IsLaidOutLikeTheMatrixLibrarysRectangle) {
    static_assert(sizeof(orx::TORXRect) == sizeof(cv::Rect));
    const orx::TORXRect empty;
    EXPECT_EQ(orx::TORXRect(empty).toCVRect(), cv::Rect(0, 0, 0, 0));
    EXPECT_EQ(orx::TORXRect(1, 2, 3, 4).toCVRect(), cv::Rect(1, 2, 3, 4));
}

TEST(TORXRect, CheckROIAcceptsOnlyWhatLiesInsideTheImage) {
    const cv::Mat image = cv::Mat::zeros(10, 10, CV_8UC1);
    for (orx::TORXRect usable : {orx::TORXRect(0, 0, 10, 10), {9, 9, 1, 1}, {3, 0, 7, 10}}) {
        EXPECT_TRUE(usable.checkROI(image)) << usable.toCVRect();
    }
    for (orx::TORXRect refused : {orx::TORXRect(1, 0, 10, 10),
                                  {0, 1, 10, 10},
                                  {0, 0, 0, 5},
                                  {0, 0, 5, -1},
                                  {-1, 0, 5, 5},
                                  {0, -1, 5, 5}}) {
        EXPECT_FALSE(refused.checkROI(image)) << refused.toCVRect();
    }
}

TEST(TORXRect, AnEmptyImageHasNoUsableRegion) { EXPECT_FALSE(orx::TORXRect(0, 0, 1, 1).checkROI(cv::Mat())); }

TEST(TORXRect, ContainsOnlyWhatLiesStrictlyInside) {
    orx::TORXRect outer(0, 0, 10, 10);
    EXPECT_TRUE(outer.isContainRect({1, 1, 8, 8}));
    EXPECT_FALSE(outer.isContainRect(outer));
    EXPECT_FALSE(outer.isContainRect({0, 0, 9, 9}));
    EXPECT_FALSE(outer.isContainRect({1, 1, 9, 3}));
    EXPECT_FALSE(outer.isContainRect({5, 5, 20, 2}));
}

TEST(TORXRect, FarEdgesWrapIn32Bits) {
    const cv::Mat image = cv::Mat::zeros(10, 10, CV_8UC1);
    EXPECT_TRUE(orx::TORXRect(std::numeric_limits<int>::max(), 0, 1, 1).checkROI(image)) << "a negative sum";
    EXPECT_TRUE(orx::TORXRect(10, 10, -10, -10).isContainRect({1, 1, 8, 8})) << "the other corner first";
}

TEST(TORXTime, CountsMillisecondsFromTheLastStart) {
    orx::TORXTime watch;
    const double tick = cv::getTickFrequency() / 1000.0;
    // Started a known time ago, far longer than the call itself takes.
    watch.startTick -= 1.0e6 * tick;
    EXPECT_NEAR(watch.getTimeMs(), 1000000, 5000);
    watch.restart();
    EXPECT_LT(watch.getTimeMs(), 5000);
    EXPECT_GE(watch.getTimeMs(), 0);
}

TEST(RawImages, BecomeHeadersOverTheSameBuffer) {
    unsigned char pixels[24] = {};
    for (const auto& [channels, type] :
         {std::pair{1, CV_8UC1}, {3, CV_8UC3}, {4, CV_8UC4}, {2, CV_8UC1}, {0, CV_8UC1}}) {
        orx::TORXImage raw;
        raw.width = 3;
        raw.height = 2;
        raw.channels = channels;
        raw.data = pixels;
        cv::Mat header(5, 5, CV_32FC1);
        orx::ORXImage2Mat(&raw, header);
        EXPECT_EQ(header.type(), type) << channels << " channels";
        EXPECT_EQ(header.size(), cv::Size(3, 2));
        EXPECT_EQ(header.data, pixels);
        EXPECT_TRUE(header.isContinuous());
    }

    orx::TORXImage raw;
    raw.width = 3;
    raw.height = 2;
    cv::Mat header(5, 5, CV_8UC1);
    orx::ORXImage2Mat(&raw, header);
    EXPECT_EQ(header.size(), cv::Size(3, 2)) << "a header over no buffer";
    EXPECT_EQ(header.data, nullptr);
}

TEST(RawImages, DescribeAMatrixWithoutCopying) {
    cv::Mat image(4, 7, CV_8UC3, cv::Scalar(1, 2, 3));
    orx::TORXImage raw;
    orx::Mat2ORXImage(image, &raw);
    EXPECT_EQ(raw.width, 7);
    EXPECT_EQ(raw.height, 4);
    EXPECT_EQ(raw.channels, 3);
    EXPECT_EQ(raw.data, image.data);
    raw.data[0] = 200;
    EXPECT_EQ(image.at<cv::Vec3b>(0, 0)[0], 200);
}

TEST(Records, StartEmptyAndInvalid) {
    EXPECT_FALSE(orx::TCircle().valid);
    EXPECT_EQ(orx::TCircle().pointCount, 0);
    EXPECT_FALSE(orx::TLine().valid);
    EXPECT_EQ(orx::TEllipse().valid, 0);
    static_assert(std::is_empty_v<orx::TClassBase> && std::is_trivially_destructible_v<orx::TClassBase>);
}

}  // namespace
