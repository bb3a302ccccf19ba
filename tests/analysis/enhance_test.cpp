#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/fit_scenes.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<cv::Mat> noPictures() {
    const int sizes[] = {3, 3, 3};
    return {cv::Mat(), cv::Mat(4, 4, CV_32FC1, cv::Scalar(1)), cv::Mat(4, 4, CV_8SC3, cv::Scalar(1)),
            cv::Mat(4, 4, CV_8UC(5)), cv::Mat(3, sizes, CV_8UC1, cv::Scalar(1))};
}

cv::Mat levels() {
    cv::Mat img(1, 256, CV_8UC1);
    for (int i = 0; i < 256; ++i) img.at<uchar>(i) = static_cast<uchar>(i);
    return img;
}

TEST(Colour, GrayByChannelCountAndDepth) {
    const cv::Mat bgr(2, 3, CV_8UC3, cv::Scalar(10, 100, 200));
    const int luma = 120;  // 1.14 + 58.7 + 59.8 = 119.64
    EXPECT_EQ(orx::toGray(bgr).at<uchar>(0), luma);
    EXPECT_EQ(orx::toGray(cv::Mat(2, 3, CV_8UC4, cv::Scalar(10, 100, 200, 3))).at<uchar>(0), luma);
    EXPECT_EQ(orx::toGray(cv::Mat(2, 3, CV_16UC3, cv::Scalar(2570, 25700, 51400))).at<uchar>(0), luma);
    EXPECT_EQ(orx::toGray(cv::Mat(2, 3, CV_8UC2, cv::Scalar(44, 99))).at<uchar>(0), 44);
    for (const auto& [level, bits, expected] : std::vector<std::array<int, 3>>{{65535, 16, 255},
                                                                               {128, 16, 0},
                                                                               {129, 16, 1},
                                                                               {4095, 12, 255},
                                                                               {2048, 12, 128},
                                                                               {5000, 12, 255},
                                                                               {77, 8, 77}}) {
        const cv::Mat grey = orx::toGray(cv::Mat(1, 1, CV_16UC1, cv::Scalar(level)), bits);
        ASSERT_EQ(grey.type(), CV_8UC1);
        EXPECT_EQ(grey.at<uchar>(0), expected) << level << " in " << bits << " bits";
    }
}

TEST(Colour, BGRByChannelCountAndDepth) {
    const cv::Vec3b expected(10, 100, 200);
    for (const cv::Mat& img : {cv::Mat(2, 3, CV_8UC3, cv::Scalar(10, 100, 200)),
                               cv::Mat(2, 3, CV_8UC4, cv::Scalar(10, 100, 200, 3)),
                               cv::Mat(2, 3, CV_16UC4, cv::Scalar(2570, 25700, 51400, 9))}) {
        const cv::Mat bgr = orx::toBGR(img);
        ASSERT_EQ(bgr.type(), CV_8UC3);
        EXPECT_EQ(bgr.at<cv::Vec3b>(1, 2), expected);
    }
    EXPECT_EQ(orx::toBGR(cv::Mat(1, 1, CV_16UC2, cv::Scalar(257 * 8, 5))).at<cv::Vec3b>(0),
              cv::Vec3b(8, 8, 8));
}

TEST(Colour, ResultsShareNothingAndRefusedImagesGiveNone) {
    cv::Mat grey(2, 2, CV_8UC1, cv::Scalar(5));
    orx::toGray(grey).setTo(9);
    EXPECT_EQ(grey.at<uchar>(0), 5);
    cv::Mat bgr(2, 2, CV_8UC3, cv::Scalar::all(5));
    orx::toBGR(bgr).setTo(9);
    EXPECT_EQ(bgr.at<uchar>(0), 5);
    for (const cv::Mat& refused : noPictures()) {
        EXPECT_TRUE(orx::toGray(refused).empty());
        EXPECT_TRUE(orx::toBGR(refused).empty());
    }
    EXPECT_TRUE(orx::toGray(grey, 7).empty());
    EXPECT_TRUE(orx::toBGR(grey, 17).empty());
}

TEST(ToneCurves, FollowTheirFormulas) {
    cv::Mat out;
    ASSERT_TRUE(orx::correctGamma(levels(), out, 0.5));
    EXPECT_EQ(out.at<uchar>(64), 128);  // 255 sqrt(64 / 255) = 127.75
    ASSERT_TRUE(orx::correctGamma(levels(), out, 2));
    EXPECT_EQ(out.at<uchar>(100), 39);  // 39.2
    ASSERT_TRUE(orx::correctGamma(levels(), out, 1));
    EXPECT_EQ(cv::norm(out, levels(), cv::NORM_INF), 0);
    ASSERT_TRUE(orx::stretchLog(levels(), out));
    EXPECT_EQ(out.at<uchar>(15), 128);  // ln 16 / ln 256 = 1 / 2
    EXPECT_EQ(out.at<uchar>(0), 0);
    EXPECT_EQ(out.at<uchar>(255), 255);
    ASSERT_TRUE(orx::suppressHighlights(levels(), out, {0.2, 0.6}));
    EXPECT_EQ(out.at<uchar>(51), 51);
    EXPECT_EQ(out.at<uchar>(153), 115);  // 153 - 102 / e = 115.5, whole steps from the knee: 115.48
    EXPECT_EQ(out.at<uchar>(255), 139);  // 153 - 102 / e^2 = 139.2
}

TEST(ToneCurves, SixteenBitsFollowTheSameCurveAndAlphaStays) {
    const cv::Mat deep(3, 3, CV_16UC4, cv::Scalar(0, 16384, 65535, 12345));
    cv::Mat out;
    ASSERT_TRUE(orx::correctGamma(deep, out, 0.5));
    EXPECT_EQ(out.at<cv::Vec4w>(2, 2),
              cv::Vec4w(0, 32768, 65535, 12345));  // 65535 sqrt(16384 / 65535) = 32767.9
    ASSERT_TRUE(orx::stretchLog(cv::Mat(1, 1, CV_8UC2, cv::Scalar(15, 15)), out));
    EXPECT_EQ(out.at<cv::Vec2b>(0), cv::Vec2b(128, 15));
}

TEST(SuppressHighlights, KeepsTheHueOfBrightColours) {
    const cv::Mat img(2, 2, CV_8UC4, cv::Scalar(60, 120, 240, 250));
    cv::Mat out;
    ASSERT_TRUE(orx::suppressHighlights(img, out));
    // Knee 178.5, ceiling 216.75: 216.75 - 38.25 exp(-61.5 / 38.25) = 209.1.
    EXPECT_EQ(out.at<cv::Vec4b>(0), cv::Vec4b(52, 104, 209, 250));  // 52.25, 104.5 to even
    const cv::Mat dark(1, 1, CV_8UC3, cv::Scalar(0, 100, 178));
    ASSERT_TRUE(orx::suppressHighlights(dark, out));
    EXPECT_EQ(out.at<cv::Vec3b>(0), cv::Vec3b(0, 100, 178));
}

// Grey 100 and 110 in columns by turns, on a background that rises slowly.
cv::Mat faintStripes(int type) {
    cv::Mat img(64, 64, CV_8UC1);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) img.at<uchar>(y, x) = static_cast<uchar>(60 + y + (x / 4 % 2) * 10);
    }
    cv::Mat out;
    img.convertTo(out, CV_MAT_DEPTH(type), CV_MAT_DEPTH(type) == CV_16U ? 257 : 1);
    cv::merge(std::vector<cv::Mat>(static_cast<std::size_t>(CV_MAT_CN(type)), out), out);
    return out;
}

double stripeContrast(const cv::Mat& img) {
    const cv::Mat grey = orx::toGray(img);
    return AutoFocus::calcGrayDifference(grey);
}

TEST(EnhanceImage, BothMethodsRaiseFaintDetailOfEveryKindOfImage) {
    for (const int type : {CV_8UC1, CV_8UC2, CV_8UC3, CV_8UC4, CV_16UC1, CV_16UC3, CV_16UC4}) {
        const cv::Mat img = faintStripes(type);
        for (const int method : {0, 1, 2, -7}) {
            SCOPED_TRACE(testing::Message() << "type " << type << ", method " << method);
            cv::Mat out;
            ASSERT_TRUE(orx::enhanceImage(img, out, orx::TEnchanceMethod(method)));
            ASSERT_EQ(out.type(), type);
            EXPECT_GT(stripeContrast(out), 1.3 * stripeContrast(img));
            if (type == CV_8UC4 || type == CV_16UC4) {
                cv::Mat before;
                cv::Mat after;
                cv::extractChannel(img, before, 3);
                cv::extractChannel(out, after, 3);
                EXPECT_EQ(cv::norm(before, after, cv::NORM_INF), 0);
            }
        }
    }
}

TEST(EnhanceImage, DetailGainAddsTheDifferenceToTheSmoothedImage) {
    const cv::Mat img = faintStripes(CV_8UC1);
    cv::Mat smooth;
    cv::GaussianBlur(img, smooth, {}, 1.5, 1.5, cv::BORDER_REPLICATE);
    orx::TEnhanceOptions options;
    options.gain = 3;
    options.sigma = 1.5;
    cv::Mat out = img.clone();
    ASSERT_TRUE(orx::enhanceImage(out, out, orx::emDetailGain, options));
    for (const cv::Point p : {cv::Point(5, 9), {12, 40}, {63, 63}, {0, 0}}) {
        EXPECT_EQ(out.at<uchar>(p), 4 * img.at<uchar>(p) - 3 * smooth.at<uchar>(p)) << p;
    }
    cv::Mat colour(20, 20, CV_8UC3, cv::Scalar(40, 90, 160));
    ASSERT_TRUE(orx::enhanceImage(colour, out, orx::emDetailGain));
    EXPECT_LE(cv::norm(out, colour, cv::NORM_INF), 2);  // nothing to raise: the colour stays
}

TEST(Enhance, SinglePixelsAreAllowedAndRefusalsLeaveTheResult) {
    cv::Mat out;
    for (const int type : {CV_8UC1, CV_16UC3, CV_8UC4}) {
        const cv::Mat pixel(1, 1, type, cv::Scalar::all(50));
        for (const int method : {0, 1})
            EXPECT_TRUE(orx::enhanceImage(pixel, out, orx::TEnchanceMethod(method)));
        EXPECT_TRUE(orx::suppressHighlights(pixel, out));
        EXPECT_TRUE(orx::whiteBalance(pixel, out));
    }
    const cv::Mat img = levels();
    out = cv::Mat(2, 2, CV_8UC1, cv::Scalar(3));
    for (const cv::Mat& refused : noPictures()) {
        EXPECT_FALSE(orx::enhanceImage(refused, out, orx::emEqualize));
        EXPECT_FALSE(orx::correctGamma(refused, out, 1));
        EXPECT_FALSE(orx::stretchLog(refused, out));
        EXPECT_FALSE(orx::suppressHighlights(refused, out));
        EXPECT_FALSE(orx::whiteBalance(refused, out));
    }
    for (const double bad : {kNan, -1.0, 0.0, 1e9}) {
        EXPECT_FALSE(orx::enhanceImage(img, out, orx::emEqualize, {bad}));
        EXPECT_FALSE(orx::enhanceImage(img, out, orx::emDetailGain, {2, 8, 1, bad}));
        EXPECT_FALSE(orx::correctGamma(img, out, bad));
        EXPECT_FALSE(orx::stretchLog(img, out, bad));
        EXPECT_FALSE(orx::suppressHighlights(img, out, {0.7, bad}));
        EXPECT_FALSE(orx::whiteBalance(img, out, {orx::wbWhitePatch, bad}));
    }
    EXPECT_FALSE(orx::enhanceImage(img, out, orx::emEqualize, {2, 0}));
    EXPECT_FALSE(orx::suppressHighlights(img, out, {0.9, 0.8}));
    EXPECT_FALSE(orx::whiteBalance(img, out, {orx::TWhiteBalanceMethod(2)}));
    EXPECT_FALSE(orx::applyWhiteBalance(img, out, {}));
    EXPECT_FALSE(orx::applyWhiteBalance(img, out, {{1, kNan, 1}, true}));
    EXPECT_EQ(out.size(), cv::Size(2, 2));
}

TEST(WhiteBalance, GreyWorldBringsTheMeansTogether) {
    cv::Mat img(10, 10, CV_8UC3, cv::Scalar(50, 100, 150));
    img.rowRange(0, 5).setTo(cv::Scalar(30, 60, 90));
    cv::Mat out;
    ASSERT_TRUE(orx::whiteBalance(img, out));  // means 40, 80, 120 become 80
    EXPECT_EQ(out.at<cv::Vec3b>(9, 9), cv::Vec3b(100, 100, 100));
    EXPECT_EQ(out.at<cv::Vec3b>(0, 0), cv::Vec3b(60, 60, 60));
    const orx::TWhiteBalance dark = orx::getWhiteBalance(cv::Mat(3, 3, CV_8UC3, cv::Scalar(0, 40, 80)));
    EXPECT_EQ(dark.gains, cv::Vec3d(1, 1, 0.5));
}

TEST(WhiteBalance, WhitePatchIgnoresTheShareAboveIt) {
    // 100 pixels: 2 hot ones, 10 of a yellowish white, the rest dark.
    for (const int scale : {1, 257}) {
        cv::Mat img(10, 10, scale == 1 ? CV_8UC4 : CV_16UC4, cv::Scalar(20, 20, 20, 9) * scale);
        img.row(3).setTo(cv::Scalar(100, 200, 200, 9) * scale);
        img.row(0).colRange(0, 2).setTo(cv::Scalar(255, 255, 255, 9) * scale);
        const orx::TWhiteBalance balance = orx::getWhiteBalance(img, {orx::wbWhitePatch, 0.98});
        EXPECT_EQ(balance.gains, cv::Vec3d(2, 1, 1));
        EXPECT_EQ(orx::getWhiteBalance(img, {orx::wbWhitePatch, 0.981}).gains, cv::Vec3d(1, 1, 1));
        cv::Mat out;
        ASSERT_TRUE(orx::applyWhiteBalance(img, out, balance));
        out.convertTo(out, CV_8U, 1.0 / scale);
        EXPECT_EQ(out.at<cv::Vec4b>(3, 3), cv::Vec4b(200, 200, 200, 9));
        EXPECT_EQ(out.at<cv::Vec4b>(0, 0), cv::Vec4b(255, 255, 255, 9));
    }
}

// Every level times every kind of gain, in widths that leave a rest behind the last vector.
TEST(WhiteBalance, GainsAreOpenCvsProducts) {
    cv::RNG random(15);
    for (const int type : {CV_8UC3, CV_8UC4, CV_16UC3}) {
        for (const cv::Vec3d& gains : {cv::Vec3d(1, 2, 3), cv::Vec3d(0, 1e6, 0.5),
                                       cv::Vec3d(1.37, 0.211, 4.9), cv::Vec3d(0.9999999, 1.0000001, 253.7)}) {
            cv::Mat whole(40, 53, type);
            random.fill(whole, cv::RNG::UNIFORM, 0, 65536);
            const cv::Mat img = whole(cv::Rect(3, 1, 47, 37));
            orx::TWhiteBalance balance;
            balance.gains = gains;
            balance.valid = true;
            cv::Mat out, expected;
            ASSERT_TRUE(orx::applyWhiteBalance(img, out, balance));
            cv::multiply(img, cv::Scalar(gains[0], gains[1], gains[2], 1), expected);
            EXPECT_EQ(cv::norm(out, expected, cv::NORM_INF), 0) << gains;
        }
    }
}

// Each channel of 0 .. 255 of its own, in rows that do not fill a round of the tables.
TEST(WhiteBalance, WhitePatchCountsEveryPixel) {
    cv::Mat img(3, 67, CV_8UC3, cv::Scalar(0, 0, 0));
    for (int i = 0; i < 201; ++i) img.at<cv::Vec3b>(i / 67, i % 67) = cv::Vec3b(uchar(i), uchar(200 - i), 7);
    for (const int kept : {1, 66, 67, 133, 200, 201}) {
        const orx::TWhiteBalance balance = orx::getWhiteBalance(img, {orx::wbWhitePatch, (kept - 0.5) / 201});
        const double white = kept - 1;
        const double brightest = std::max(white, 7.0);
        EXPECT_EQ(balance.gains, cv::Vec3d(white > 0 ? brightest / white : 1,
                                           white > 0 ? brightest / white : 1, brightest / 7))
            << kept;
    }
}

TEST(WhiteBalance, GreyImagesStay) {
    cv::Mat out;
    ASSERT_TRUE(orx::whiteBalance(levels(), out, {orx::wbWhitePatch}));
    EXPECT_EQ(cv::norm(out, levels(), cv::NORM_INF), 0);
}

}  // namespace
