// Operators that cut an image into stripes: each result is that of a plain version which takes the image as a
// whole, on any number of threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/thread_counts.h"

namespace {

using orx::test::madeAlike;

// So large that everything is cut, and odd, so that stripes end unevenly.
constexpr int kRows = 679;
constexpr int kCols = 811;

cv::Mat noise(int type, double low = 0, double high = 256) {
    cv::Mat img(kRows, kCols, type);
    cv::RNG(7).fill(img, cv::RNG::UNIFORM, low, high);
    return img;
}

// A part of a larger picture: what surrounds it must have no influence.
cv::Mat view(int type, double high = 256, cv::Size size = {kCols, kRows}) {
    cv::Mat img(size + cv::Size(4, 6), type);
    cv::RNG(8).fill(img, cv::RNG::UNIFORM, 0, high);
    cv::GaussianBlur(img, img, {}, 1.2);
    return img(cv::Rect({1, 2}, size));
}

bool sameNumber(double a, double b) { return a == b; }

TEST(Threads, FocusMeasuresAreThoseOfTheWholeImage) {
    struct Case {
        cv::Mat img;
        double unit;
        int depth;
    };
    cv::Mat extremes = noise(CV_16U, 0, 65536);
    extremes.setTo(65535, extremes > 32767);
    extremes.setTo(0, extremes < 65535);
    // The last one's squares add up to more than doubles hold exactly.
    for (const Case& c : {Case{view(CV_8U), 1, CV_16S}, Case{view(CV_16U, 65536), 257, CV_32F},
                          Case{extremes, 257, CV_32F}}) {
        const cv::Mat img = c.img.clone();
        const double count = static_cast<double>(img.total());
        const auto difference = [&](int step, int norm) {
            return cv::norm(img.colRange(step, kCols), img.colRange(0, kCols - step), norm) +
                   cv::norm(img.rowRange(step, kRows), img.rowRange(0, kRows - step), norm);
        };
        cv::Mat dx, dy, laplacian;
        cv::Sobel(img, dx, c.depth, 1, 0, 3, 1, 0, cv::BORDER_REPLICATE);
        cv::Sobel(img, dy, c.depth, 0, 1, 3, 1, 0, cv::BORDER_REPLICATE);
        cv::Laplacian(img, laplacian, c.depth, 1, 1, 0, cv::BORDER_REPLICATE);
        const double gradient = 0 + cv::norm(dx, cv::NORM_L2SQR) + cv::norm(dy, cv::NORM_L2SQR);
        cv::Scalar mean, deviation;
        cv::meanStdDev(laplacian, mean, deviation);
        const double spread = deviation[0] / c.unit;

        const auto measured = [&](double (*measure)(const cv::Mat&)) {
            return [&c, measure] { return measure(c.img); };
        };
        EXPECT_TRUE(madeAlike(difference(1, cv::NORM_L1) / count / c.unit,
                              measured(AutoFocus::calcGrayDifference), sameNumber));
        EXPECT_TRUE(madeAlike(difference(2, cv::NORM_L2SQR) / count / (c.unit * c.unit),
                              measured(AutoFocus::calcBrenner), sameNumber));
        EXPECT_TRUE(
            madeAlike(gradient / count / (c.unit * c.unit), measured(AutoFocus::calcTenengrad), sameNumber));
        EXPECT_TRUE(madeAlike(spread * spread, measured(AutoFocus::calcLaplacianVariance), sameNumber));
    }
}

TEST(Threads, LevelsAreCountedOnceEach) {
    const cv::Mat img = view(CV_8U, 256, {1481, 1423});  // cheap as counting is, it takes more to be cut
    const cv::Mat row = img.clone().reshape(1, 1);
    cv::Mat sorted;
    cv::sort(row, sorted, cv::SORT_EVERY_ROW | cv::SORT_ASCENDING);
    const cv::Mat binary = [&] {
        cv::Mat out;
        cv::threshold(img, out, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
        return out;
    }();
    const auto byLevel = [&] { return cv::Mat(img > orx::getThresholdValue(img, orx::tmOtsu)); };
    EXPECT_TRUE(madeAlike(binary, byLevel));
    const int median = sorted.at<uchar>(static_cast<int>(img.total() - 1) / 2);
    const auto thresholds = [&] { return orx::getCannyThresholds(img, {orx::cmMedian}).high; };
    EXPECT_TRUE(madeAlike((1 + 0.33) * median, thresholds, sameNumber));
}

TEST(Threads, WhiteBalanceIsThatOfTheWholeImage) {
    for (const int type : {CV_8UC3, CV_16UC4}) {
        const cv::Mat img = view(type, type == CV_8UC3 ? 180 : 40000);
        const cv::Scalar mean = cv::mean(img);
        const double grey = (mean[0] + mean[1] + mean[2]) / 3;
        const cv::Scalar gains(grey / mean[0], grey / mean[1], grey / mean[2], 1);
        cv::Mat balanced;
        cv::multiply(img, gains, balanced);
        EXPECT_TRUE(madeAlike(balanced, [&] {
            cv::Mat out;
            EXPECT_TRUE(orx::whiteBalance(img, out));
            return out;
        }));

        orx::TWhiteBalanceOptions patch;
        patch.method = orx::wbWhitePatch;
        patch.whiteShare = 1;  // the highest level of each channel
        std::vector<cv::Mat> channels;
        cv::split(img, channels);
        cv::Vec3d highest;
        for (int c = 0; c < 3; ++c)
            cv::minMaxLoc(channels[static_cast<std::size_t>(c)], nullptr, &highest[c]);
        const double brightest = std::max({highest[0], highest[1], highest[2]});
        const cv::Vec3d expected(brightest / highest[0], brightest / highest[1], brightest / highest[2]);
        EXPECT_TRUE(madeAlike(
            expected, [&] { return orx::getWhiteBalance(img, patch).gains; },
            [](const cv::Vec3d& a, const cv::Vec3d& b) { return a == b; }));
    }
}

TEST(Threads, TonesAreThoseOfEveryPixelAlone) {
    const cv::Mat words = noise(CV_16UC4, 0, 65536);
    cv::Mat curved = words.clone();
    std::for_each(curved.begin<cv::Vec4w>(), curved.end<cv::Vec4w>(), [](cv::Vec4w& pixel) {
        for (int c = 0; c < 3; ++c)
            pixel[c] = cv::saturate_cast<ushort>(65535.0 * std::pow(pixel[c] / 65535.0, 0.6));
    });
    EXPECT_TRUE(madeAlike(curved, [&] {
        cv::Mat out;
        EXPECT_TRUE(orx::correctGamma(words, out, 0.6));
        return out;
    }));

    // Highlights pixel by pixel: an image of one row is not cut.
    const cv::Mat colour = noise(CV_8UC3);
    cv::Mat suppressed(colour.size(), colour.type());
    for (int y = 0; y < kRows; ++y) {
        cv::Mat row;
        ASSERT_TRUE(orx::suppressHighlights(colour.row(y), row));
        row.copyTo(suppressed.row(y));
    }
    EXPECT_TRUE(madeAlike(suppressed, [&] {
        cv::Mat out;
        EXPECT_TRUE(orx::suppressHighlights(colour, out));
        return out;
    }));
}

// Brightness replaced by its own enhancement, with the library's calls on the whole image.
cv::Mat enhancedWhole(const cv::Mat& img, orx::TEnchanceMethod method) {
    cv::Mat colours, luma, result;
    cv::cvtColor(img, colours, cv::COLOR_BGR2YCrCb);
    cv::extractChannel(colours, luma, 0);
    cv::Mat changed;
    EXPECT_TRUE(orx::enhanceImage(luma, changed, method));
    cv::insertChannel(changed, colours, 0);
    cv::cvtColor(colours, result, cv::COLOR_YCrCb2BGR, img.channels());
    if (img.channels() == 4) {
        cv::Mat alpha;
        cv::extractChannel(img, alpha, 3);
        cv::insertChannel(alpha, result, 3);
    }
    return result;
}

TEST(Threads, EnhancementIsThatOfTheWholeImage) {
    for (const int type : {CV_8UC3, CV_8UC4, CV_16UC3}) {
        const cv::Mat img = view(type, CV_MAT_DEPTH(type) == CV_8U ? 256 : 65536);
        for (const orx::TEnchanceMethod method : {orx::emEqualize, orx::emDetailGain}) {
            EXPECT_TRUE(madeAlike(enhancedWhole(img, method), [&] {
                cv::Mat out;
                EXPECT_TRUE(orx::enhanceImage(img, out, method));
                return out;
            })) << type;
        }
    }
    const cv::Mat grey = view(CV_8U);
    cv::Mat smooth, sharp;
    const orx::TEnhanceOptions options;
    cv::GaussianBlur(grey.clone(), smooth, {}, options.sigma, options.sigma, cv::BORDER_REPLICATE);
    cv::addWeighted(grey, 1 + options.gain, smooth, -options.gain, 0, sharp);
    EXPECT_TRUE(madeAlike(sharp, [&] {
        cv::Mat out;
        EXPECT_TRUE(orx::enhanceImage(grey, out, orx::emDetailGain));
        return out;
    }));
}

TEST(Threads, AutomaticThresholdsAreThoseOfOneCopyAmongMirroredOnes) {
    // Rows that repeat at a mirror's edge are those that the border repeats: each copy has the gradients of
    // the first, which alone is not cut.
    cv::Mat one = view(CV_8U)(cv::Rect(0, 0, 601, 301)).clone();
    cv::Mat mirrored, both, many;
    cv::flip(one, mirrored, 0);
    cv::vconcat(one, mirrored, both);
    cv::vconcat(std::vector<cv::Mat>{both, both, both}, many);
    const orx::TCannyThresholds expected = orx::getCannyThresholds(one, {orx::cmOtsu});
    ASSERT_TRUE(expected.valid);
    ASSERT_GT(expected.high, 0);
    EXPECT_TRUE(madeAlike(
        expected.high, [&] { return orx::getCannyThresholds(many, {orx::cmOtsu}).high; }, sameNumber));

    cv::Mat dx, dy, edges;
    cv::Sobel(many, dx, CV_16S, 1, 0, 3, 1, 0, cv::BORDER_REPLICATE);
    cv::Sobel(many, dy, CV_16S, 0, 1, 3, 1, 0, cv::BORDER_REPLICATE);
    cv::Canny(dx, dy, edges, expected.low, expected.high, true);
    EXPECT_TRUE(madeAlike(edges, [&] { return orx::autoCanny(many, {orx::cmOtsu}); }));

    dx *= 16;  // so that levels differ
    dy *= 16;
    // calcEdgeThresVal looks for 2.5 (rows + columns) pixels from above; counted here by sorting.
    cv::Mat levels;
    cv::addWeighted(cv::abs(dx), 1.0 / 256, cv::abs(dy), 1.0 / 256, 0, levels);
    levels.convertTo(levels, CV_8U);
    cv::Mat sorted;
    cv::sort(levels.reshape(1, 1), sorted, cv::SORT_EVERY_ROW | cv::SORT_DESCENDING);
    const int limit = static_cast<int>(std::floor(2.5 * (many.rows + many.cols)));
    EXPECT_TRUE(madeAlike(
        static_cast<double>(sorted.at<uchar>(limit)), [&] { return ORXEdge::calcEdgeThresVal(dx, dy); },
        sameNumber));
}

}  // namespace
