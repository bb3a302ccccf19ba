// What the image operators say when they refuse.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
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

std::vector<Operator> operators() {
    static cv::Mat out;
    static std::vector<ORXEdge::TMetricContour> edges;
    return {
        {"toGray", [](const cv::Mat& img) { orx::toGray(img); }, true, true},
        {"toBGR", [](const cv::Mat& img) { orx::toBGR(img); }, true, true},
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
