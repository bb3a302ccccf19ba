#include "orxFunctions/analysis/flatten.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

namespace {

// A ground whose level rises from 60 to 140 along x, with squares of 30 pixels 60 levels brighter or darker.
struct Shaded {
    cv::Mat image = cv::Mat(200, 400, CV_8U);
    cv::Mat objects = cv::Mat(200, 400, CV_8U, cv::Scalar(0));

    explicit Shaded(int step) {
        for (int i = 0; i < 5; ++i) objects(cv::Rect(40 + 75 * i, 80, 30, 30)).setTo(255);
        for (int y = 0; y < image.rows; ++y)
            for (int x = 0; x < image.cols; ++x)
                image.at<uchar>(y, x) =
                    cv::saturate_cast<uchar>(60 + 80.0 * x / 399 + (objects.at<uchar>(y, x) > 0 ? step : 0));
    }
};

TEST(Flatten, OneThresholdPartsObjectsWhichUnevenLightHadSwallowed) {
    for (const bool bright : {true, false})
        for (const int type : {CV_8U, CV_16U}) {
            SCOPED_TRACE(testing::Message() << bright << ", " << type);
            const Shaded scene(bright ? 60 : -60);
            const double unit = type == CV_8U ? 1 : 257;
            cv::Mat image;
            scene.image.convertTo(image, type, unit);
            orx::TFlattenOptions options;
            options.window = 61;
            options.brightObjects = bright;
            cv::Mat background;
            cv::Mat flat;
            ASSERT_TRUE(orx::getBackground(image, background, options));
            ASSERT_TRUE(orx::flattenLight(image, flat, options));
            ASSERT_EQ(flat.type(), type);
            cv::Mat levels;
            flat.convertTo(levels, CV_32F, 1 / unit);
            if (!bright) levels = 255 - levels;
            // Objects stand out by their step, the ground lies within the slope of the light across a window.
            EXPECT_NEAR(cv::mean(levels, scene.objects)[0], 60, 8);
            double highest = 0;
            cv::minMaxLoc(levels, nullptr, &highest, nullptr, nullptr, scene.objects == 0);
            EXPECT_LT(highest, 15);
            double least = 0;
            cv::minMaxLoc(levels, &least, nullptr, nullptr, nullptr, scene.objects);
            EXPECT_GT(least, 45);
            // The background is the ramp.
            background.convertTo(levels, CV_32F, 1 / unit);
            for (const int x : {60, 200, 340}) EXPECT_NEAR(levels.at<float>(100, x), 60 + 80.0 * x / 399, 8);
        }
}

TEST(Flatten, WorksInPlaceOnAnySizeAndRefusesOtherPicturesAndWindows) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(2, 1), cv::Size(1, 40), cv::Size(3, 3)}) {
        cv::Mat image(size, CV_8U, cv::Scalar(77));
        ASSERT_TRUE(orx::flattenLight(image, image));
        EXPECT_EQ(cv::countNonZero(image), 0);
    }
    cv::Mat kept(2, 2, CV_8U, cv::Scalar(5));
    for (const cv::Mat& odd :
         {cv::Mat(), cv::Mat(9, 9, CV_8UC3, cv::Scalar(1)), cv::Mat(9, 9, CV_32F, cv::Scalar(1))}) {
        EXPECT_FALSE(orx::flattenLight(odd, kept));
        EXPECT_FALSE(orx::getBackground(odd, kept));
    }
    for (const int window : {2, -5, 100001}) {
        orx::TFlattenOptions options;
        options.window = window;
        EXPECT_FALSE(orx::flattenLight(cv::Mat(9, 9, CV_8U, cv::Scalar(1)), kept, options));
    }
    EXPECT_EQ(kept.at<uchar>(1, 1), 5);
}

}  // namespace
