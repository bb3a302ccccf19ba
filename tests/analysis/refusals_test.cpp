// What the image operators say when they refuse.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/refusal_check.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;

// An operator by its name, called with an image and otherwise sound.
struct Operator {
    std::string name;
    std::function<void(const cv::Mat&)> call;
    bool colour;   // takes colour
    bool sixteen;  // takes 16 bits
};

// The image, its right half bright where it can be.
cv::Mat stepIn(const cv::Mat& img) {
    if (img.empty() || img.dims > 2 || img.channels() > 4) return img;
    cv::Mat step = img.clone();
    step.colRange(5, step.cols).setTo(cv::Scalar::all(step.depth() == CV_16U ? 50000 : 100));
    return step;
}

std::vector<Operator> operators() {
    static cv::Mat out;
    static std::vector<ORXEdge::TMetricContour> edges;
    return {
        {"toGray", [](const cv::Mat& img) { orx::toGray(img); }, true, true},
        {"toBGR", [](const cv::Mat& img) { orx::toBGR(img); }, true, true},
        {"getContrastEdges",
         [](const cv::Mat& img) {
             orx::getContrastEdges(stepIn(img), {0, 4}, {8, 4}, 3);
         },
         true, true},
        {"getCircleEdges",
         [](const cv::Mat& img) {
             orx::TCircleCaliperOptions options;
             options.searchLength = 8;
             orx::getCircleEdges(stepIn(img), {1, 4}, 4, options);
         },
         true, true},
        {"edgesAcross",
         [](const cv::Mat& img) {
             orx::edgesAcross(img, {{{4, 4}}});
         },
         true, true},
        {"autoCanny", [](const cv::Mat& img) { orx::autoCanny(img); }, true, true},
        {"getCannyThresholds", [](const cv::Mat& img) { orx::getCannyThresholds(img); }, true, true},
        {"enhanceImage", [](const cv::Mat& img) { orx::enhanceImage(img, out, orx::emEqualize); }, true,
         true},
        {"correctGamma", [](const cv::Mat& img) { orx::correctGamma(img, out, 0.5); }, true, true},
        {"stretchLog", [](const cv::Mat& img) { orx::stretchLog(img, out); }, true, true},
        {"suppressHighlights", [](const cv::Mat& img) { orx::suppressHighlights(img, out); }, true, true},
        {"getWhiteBalance", [](const cv::Mat& img) { orx::getWhiteBalance(img); }, true, true},
        {"applyWhiteBalance",
         [](const cv::Mat& img) {
             orx::applyWhiteBalance(img, out, {{1, 2, 3}, true});
         },
         true, true},
        {"whiteBalance", [](const cv::Mat& img) { orx::whiteBalance(img, out); }, true, true},
        {"calcGrayDifference", [](const cv::Mat& img) { AutoFocus::calcGrayDifference(img); }, true, true},
        {"calcBrenner", [](const cv::Mat& img) { AutoFocus::calcBrenner(img); }, true, true},
        {"calcTenengrad", [](const cv::Mat& img) { AutoFocus::calcTenengrad(img); }, true, true},
        {"calcLaplacianVariance", [](const cv::Mat& img) { AutoFocus::calcLaplacianVariance(img); }, true,
         true},
        {"getImageNoise", [](const cv::Mat& img) { orx::getImageNoise(img); }, true, true},
        {"getBackground", [](const cv::Mat& img) { orx::getBackground(img, out); }, false, true},
        {"flattenLight", [](const cv::Mat& img) { orx::flattenLight(img, out); }, false, true},
        {"removeSmallObjects", [](const cv::Mat& img) { orx::removeSmallObjects(img, out, 2); }, false,
         false},
        {"removeShortLines", [](const cv::Mat& img) { orx::removeShortLines(img, out, 2); }, false, false},
        {"fillHoles", [](const cv::Mat& img) { orx::fillHoles(img, out); }, false, false},
        {"getContours", [](const cv::Mat& img) { orx::getContours(img, orx::ctAll); }, false, false},
        {"edgesSubPixMetric", [](const cv::Mat& img) { ORXEdge::edgesSubPixMetric(img, edges); }, false,
         false},
    };
}

TEST(Refusals, OfImagesTellWhatIsWrongWithThem) {
    const cv::Mat volume(std::vector<int>{3, 3, 3}, CV_8UC1, cv::Scalar(1));
    for (const Operator& op : operators()) {
        const auto refuses = [&](orx::TRefusalCode code, const cv::Mat& img) {
            EXPECT_TRUE(refusedWith(code, op.name, [&] { op.call(img); }));
        };
        refuses(orx::rcEmptyImage, {});
        refuses(orx::rcImageDimensions, volume);
        for (const int type : {CV_8SC1, CV_32FC1, CV_8UC(5)})
            refuses(orx::rcImageType, cv::Mat::zeros(9, 9, type));
        if (!op.colour) refuses(orx::rcImageType, cv::Mat::ones(9, 9, CV_8UC3));
        if (!op.sixteen) refuses(orx::rcImageType, cv::Mat::ones(9, 9, CV_16UC1));
        EXPECT_TRUE(notRefused([&] {
            op.call(cv::Mat::ones(9, 9, CV_8UC1));
            if (op.colour) op.call(cv::Mat::ones(9, 9, CV_16UC4));
            if (op.sixteen) op.call(cv::Mat::ones(9, 9, CV_16UC1));
        })) << op.name;
    }
}

TEST(Refusals, OfOptionsTellWhichIsOutsideItsRange) {
    const cv::Mat img = cv::Mat::ones(9, 9, CV_8UC1);
    cv::Mat out;
    for (const int bits : {7, 17}) {
        EXPECT_TRUE(refusedWith(orx::rcOption, "toGray", [&] { orx::toGray(img, bits); }));
        EXPECT_TRUE(refusedWith(orx::rcOption, "toBGR", [&] { orx::toBGR(img, bits); }));
    }
    for (const int window : {2, 100001}) {
        EXPECT_TRUE(
            refusedWith(orx::rcOption, "getBackground", [&] { orx::getBackground(img, out, {window}); }));
        EXPECT_TRUE(
            refusedWith(orx::rcOption, "flattenLight", [&] { orx::flattenLight(img, out, {window}); }));
    }
    const double nan = std::nan("");
    EXPECT_TRUE(
        refusedWith(orx::rcNotFinite, "removeSmallObjects", [&] { orx::removeSmallObjects(img, out, nan); }));
    EXPECT_TRUE(
        refusedWith(orx::rcNotFinite, "removeShortLines", [&] { orx::removeShortLines(img, out, nan); }));
    EXPECT_TRUE(refusedWith(orx::rcNotFinite, "fillHoles", [&] { orx::fillHoles(img, out, {nan}); }));
    EXPECT_TRUE(refusedWith(orx::rcOption, "fillHoles", [&] {
        orx::fillHoles(img, out, {5, orx::TConnectivity(6)});
    }));
    EXPECT_TRUE(
        refusedWith(orx::rcNotFinite, "getContours", [&] { orx::getContours(img, orx::ctAll, {nan}); }));
    EXPECT_TRUE(
        refusedWith(orx::rcOption, "getContours", [&] { orx::getContours(img, orx::TContourType(5)); }));

    std::vector<ORXEdge::TMetricContour> edges;
    const auto refusesOptions = [&](const ORXEdge::TMetricOptions& options) {
        EXPECT_TRUE(refusedWith(orx::rcOption, "edgesSubPixMetric",
                                [&] { ORXEdge::edgesSubPixMetric(img, edges, options); }));
    };
    for (const double sigma : {0.4, 20.5, nan}) refusesOptions({sigma});
    for (const double level : {-1.0, nan}) {
        refusesOptions({1.0, level});
        refusesOptions({1.0, 12.0, level});
        refusesOptions({1.0, 12.0, 36.0, false, 1, level});
    }
    for (const int mode : {-1, 4}) refusesOptions({1.0, 12.0, 36.0, false, mode});
}

TEST(Refusals, OfCannyEdgesTellWhichOptionIsOutsideItsRange) {
    const cv::Mat img = cv::Mat::ones(9, 9, CV_8UC1);
    std::vector<orx::TAutoCannyOptions> wrong;
    wrong.push_back({orx::TCannyMethod(2)});
    for (const double value : {-0.1, 1.1, std::nan("")}) {
        wrong.push_back({orx::cmMedian, value});
        wrong.push_back({orx::cmOtsu, 0.3, value});
    }
    for (const double blur : {-0.1, 50.5}) wrong.push_back({orx::cmOtsu, 0.3, 0.5, blur});
    for (const int bits : {7, 17}) wrong.push_back({orx::cmOtsu, 0.3, 0.5, 0.0, bits});
    for (const orx::TAutoCannyOptions& options : wrong) {
        EXPECT_TRUE(refusedWith(orx::rcOption, "autoCanny", [&] { orx::autoCanny(img, options); }));
        EXPECT_TRUE(
            refusedWith(orx::rcOption, "getCannyThresholds", [&] { orx::getCannyThresholds(img, options); }));
    }
    EXPECT_TRUE(notRefused([&] { orx::autoCanny(img, {orx::cmOtsu, 1, 1, 50, 8}); }));
}

TEST(Refusals, OfEnhancementTellWhichOptionIsOutsideItsRange) {
    const cv::Mat img = cv::Mat::ones(9, 9, CV_8UC1);
    const double nan = std::nan("");
    cv::Mat out;
    const std::vector<orx::TEnhanceOptions> wrong = {{0.0},        {100.5},        {nan},
                                                     {2.0, 0},     {2.0, 65},      {2.0, 8, -0.1},
                                                     {2, 8, 20.5}, {2, 8, 1, 0.2}, {2, 8, 1, 50.5}};
    for (const orx::TEnhanceOptions& options : wrong)
        EXPECT_TRUE(refusedWith(orx::rcOption, "enhanceImage",
                                [&] { orx::enhanceImage(img, out, orx::emEqualize, options); }));
    for (const double gamma : {0.005, 101.0, nan})
        EXPECT_TRUE(refusedWith(orx::rcOption, "correctGamma", [&] { orx::correctGamma(img, out, gamma); }));
    for (const double gain : {0.0, 1.1e6, nan})
        EXPECT_TRUE(refusedWith(orx::rcOption, "stretchLog", [&] { orx::stretchLog(img, out, gain); }));
    for (const orx::THighlightOptions& options :
         {orx::THighlightOptions{-0.1, 0.5}, {0.5, 0.5}, {0.5, 1.1}, {nan, 0.5}, {0.5, nan}})
        EXPECT_TRUE(refusedWith(orx::rcOption, "suppressHighlights",
                                [&] { orx::suppressHighlights(img, out, options); }));
    orx::stretchLog(img, out, 0.0);
    EXPECT_EQ(orx::lastRefusal().text, "stretchLog: gain is 0; above 0 to 1e+06 is taken");
}

TEST(Refusals, OfWhiteBalanceTellOptionsFromGains) {
    cv::Mat img(8, 8, CV_16UC3, cv::Scalar(0, 65535, 65535));
    cv::Mat out;
    for (const orx::TWhiteBalanceOptions& options : {orx::TWhiteBalanceOptions{orx::TWhiteBalanceMethod(2)},
                                                     {orx::wbGreyWorld, 0.0},
                                                     {orx::wbWhitePatch, 1.01},
                                                     {orx::wbWhitePatch, std::nan("")}}) {
        EXPECT_TRUE(
            refusedWith(orx::rcOption, "getWhiteBalance", [&] { orx::getWhiteBalance(img, options); }));
        EXPECT_TRUE(
            refusedWith(orx::rcOption, "whiteBalance", [&] { orx::whiteBalance(img, out, options); }));
    }
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "applyWhiteBalance",
                            [&] { orx::applyWhiteBalance(img, out, orx::TWhiteBalance{}); }));
    for (const double gain : {-0.1, 1.1e6, std::nan("")})
        EXPECT_TRUE(refusedWith(orx::rcOption, "applyWhiteBalance", [&] {
            orx::applyWhiteBalance(img, out, {{1, 1, gain}, true});
        }));
    EXPECT_TRUE(notRefused([&] { orx::whiteBalance(img, out); }));
    // One level in 64 pixels against the mean of 43690: a gain of 2.8 million.
    img.at<cv::Vec3w>(3, 4)[0] = 1;
    out = cv::Mat();
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "whiteBalance", [&] { orx::whiteBalance(img, out); }));
    EXPECT_TRUE(out.empty());
}

TEST(Refusals, OfThresholdsTellRefusedImagesFromThoseThatLeaveNoLevel) {
    const cv::Mat volume(std::vector<int>{3, 3, 3}, CV_8UC1, cv::Scalar(1));
    const cv::Mat white(5, 5, CV_8UC1, cv::Scalar(255));
    cv::Mat parts(5, 5, CV_8UC1, cv::Scalar(20));
    parts.rowRange(0, 2).setTo(200);
    double score = 0;
    using Call = std::function<int(const cv::Mat&)>;
    const std::vector<std::pair<std::string, Call>> calls = {
        {"getThresholdValue", [](const cv::Mat& img) { return orx::getThresholdValue(img, orx::tmOtsu); }},
        {"getThresholdValOTSU", [&](const cv::Mat& img) { return orx::getThresholdValOTSU(img, score); }},
        {"getThresholdValueByRequiredNumber",
         [](const cv::Mat& img) { return orx::getThresholdValueByRequiredNumber(img, 3); }}};
    for (const auto& [name, call] : calls) {
        const auto answersNone = [&, &c = call](const cv::Mat& img) { EXPECT_EQ(c(img), -1); };
        EXPECT_TRUE(refusedWith(orx::rcEmptyImage, name, [&] { answersNone({}); }));
        EXPECT_TRUE(refusedWith(orx::rcImageDimensions, name, [&] { answersNone(volume); }));
        EXPECT_TRUE(refusedWith(orx::rcNoResult, name, [&] { answersNone(white); }));
        EXPECT_TRUE(notRefused([&, &c = call] { EXPECT_GE(c(parts), 20); })) << name;
    }
    const cv::Mat colour(5, 5, CV_8UC3, cv::Scalar(20, 30, 40));
    for (int method = orx::tmOtsu; method <= orx::tmShanbhag; ++method)
        EXPECT_TRUE(refusedWith(orx::rcImageType, "getThresholdValue", [&] {
            EXPECT_EQ(orx::getThresholdValue(colour, orx::TThresholdMethod(method)), -1);
        }));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "getThresholdValue",
                            [&] { EXPECT_EQ(orx::getThresholdValue(white, orx::tmMinimum), -1); }));
}

TEST(Refusals, OfGradientsTellEmptyOnesFromFlatOnes) {
    const cv::Mat flat = cv::Mat::zeros(9, 9, CV_16SC1);
    EXPECT_TRUE(refusedWith(orx::rcEmptyImage, "calcEdgeThresVal",
                            [] { EXPECT_EQ(ORXEdge::calcEdgeThresVal({}, {}), -1.0); }));
    const cv::Mat bright(9, 9, CV_16SC1, cv::Scalar(32767));  // levels of 255 and above do not count
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "calcEdgeThresVal",
                            [&] { EXPECT_EQ(ORXEdge::calcEdgeThresVal(bright, bright), -1.0); }));
    EXPECT_TRUE(notRefused([&] { EXPECT_EQ(ORXEdge::calcEdgeThresVal(flat, flat), 0.0); }));
}

TEST(Refusals, OfContoursTellThatNothingIsWithinTheLimits) {
    cv::Mat img = cv::Mat::zeros(9, 9, CV_8UC1);
    const auto findsNone = [&] { EXPECT_TRUE(orx::getContours(img, orx::ctAll, {0, 100}).empty()); };
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "getContours", findsNone));
    img(cv::Rect(2, 2, 5, 5)).setTo(255);
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "getContours", findsNone));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "getContours", [&] { orx::getContours(img, orx::ctHoles); }));
}

TEST(Refusals, OfContoursWithoutPointsHaveTheNameThatWasCalled) {
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "getContourCenterPt", [] { orx::getContourCenterPt({}, 0); }));
    EXPECT_TRUE(
        refusedWith(orx::rcTooFew, "getContourCenterSubPix", [] { orx::getContourCenterSubPix({}, 0); }));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "getContourCenterPts", [] {
        orx::getContourCenterPts({{{3, 4}}, {}}, 0);
    }));
    EXPECT_TRUE(notRefused([] { orx::getContourCenterPts({{{3, 4}}, {{1, 2}, {5, 2}}}, 2); }));
}

}  // namespace
