// What calipers and edges across outlines say when they refuse.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/refusal_check.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;

// A step of 100 levels between the columns 19 and 20.
cv::Mat stepImage() {
    cv::Mat img(40, 40, CV_8UC1, cv::Scalar(50));
    img.colRange(20, 40).setTo(150);
    return img;
}

const std::vector<orx::TCaliperOptions>& wrongCaliperOptions() {
    static const double nan = std::nan("");
    static const std::vector<orx::TCaliperOptions> wrong = {{0.4},
                                                            {50.5},
                                                            {nan},
                                                            {1, -1},
                                                            {1, nan},
                                                            {1, 10, orx::TEdgePolarity(3)},
                                                            {1, 10, orx::epAny, orx::TEdgeSelection(-1)}};
    return wrong;
}

TEST(EdgeRefusals, OfCalipersTellPlacesFromOptions) {
    const cv::Mat img = stepImage();
    const double nan = std::nan("");
    const auto refuses = [&](orx::TRefusalCode code, cv::Point2d from, cv::Point2d to, double width,
                             const orx::TCaliperOptions& options = {}) {
        EXPECT_TRUE(refusedWith(code, "getContrastEdges", [&] {
            EXPECT_TRUE(orx::getContrastEdges(img, from, to, width, options).empty());
        }));
    };
    for (const orx::TCaliperOptions& options : wrongCaliperOptions())
        refuses(orx::rcOption, {10, 20}, {30, 20}, 5, options);
    refuses(orx::rcNotFinite, {nan, 20}, {30, 20}, 5);
    refuses(orx::rcNotFinite, {10, 20}, {30, HUGE_VAL}, 5);
    refuses(orx::rcOption, {-1.1e6, 20}, {30, 20}, 5);
    refuses(orx::rcOption, {10, 20}, {10.9, 20}, 5);  // shorter than a pixel
    refuses(orx::rcOption, {10, 20}, {171, 20}, 5);   // longer than 2 (40 + 40)
    refuses(orx::rcOption, {10, 20}, {30, 20}, 161);
    refuses(orx::rcOption, {10, 20}, {30, 20}, nan);
    refuses(orx::rcNoResult, {2, 20}, {15, 20}, 5);  // flat there
    refuses(orx::rcNoResult, {10, 20}, {30, 20}, 5, {1, 130});
    refuses(orx::rcNoResult, {10, 20}, {30, 20}, 5, {1, 10, orx::epBrightToDark});
    orx::getContrastEdges(img, {10, 20}, {30, 20}, 5, {1, 130});
    EXPECT_EQ(orx::lastRefusal().text,
              "getContrastEdges: there is no edge of the polarity asked for with 130 levels or more");
    EXPECT_TRUE(notRefused([&] { orx::getContrastEdges(img, {10, 20}, {30, 20}, 5); }));
}

TEST(EdgeRefusals, OfCalipersInRectanglesHaveTheNameThatWasCalled) {
    const cv::Mat img = stepImage();
    const auto refuses = [&](orx::TRefusalCode code, const cv::Rect& rect, orx::TScanDirection direction) {
        EXPECT_TRUE(
            refusedWith(code, "getContrastEdges", [&] { orx::getContrastEdges(img, rect, direction); }));
    };
    refuses(orx::rcOption, {10, 10, 0, 9}, orx::sdLeftToRight);
    refuses(orx::rcOption, {10, 10, 20, -1}, orx::sdLeftToRight);
    refuses(orx::rcOption, {10, 10, 20, 9}, orx::TScanDirection(4));
    refuses(orx::rcNoResult, {10, 10, 20, 9}, orx::sdTopToBottom);
    const auto refusesTurned = [&](orx::TRefusalCode code, const cv::RotatedRect& rect) {
        EXPECT_TRUE(refusedWith(code, "getContrastEdges", [&] { orx::getContrastEdges(img, rect); }));
    };
    refusesTurned(orx::rcNotFinite, {{20, 20}, {20, 5}, NAN});
    refusesTurned(orx::rcOption, {{20, 20}, {0.5F, 5}, 0});
    refusesTurned(orx::rcNoResult, {{20, 20}, {20, 5}, 90});
    EXPECT_TRUE(notRefused([&] {
        orx::getContrastEdges(img, cv::Rect(10, 10, 20, 9), orx::sdRightToLeft);
        orx::getContrastEdges(img, cv::RotatedRect({20, 20}, {20, 5}, 0));
    }));
}

TEST(EdgeRefusals, OfCirclesTellPlacesFromOptions) {
    const cv::Mat img = stepImage();
    const double nan = std::nan("");
    orx::TCircleCaliperOptions sound;
    sound.count = 1;  // at (28, 20), from 20 pixels before it: across the step
    sound.searchLength = 30;
    const auto refuses = [&](orx::TRefusalCode code, const orx::TCircleCaliperOptions& options,
                             cv::Point2d centre = {10, 20}, double radius = 18) {
        EXPECT_TRUE(refusedWith(code, "getCircleEdges", [&] {
            EXPECT_TRUE(orx::getCircleEdges(img, centre, radius, options).empty());
        }));
    };
    const auto with = [&](auto change) {
        orx::TCircleCaliperOptions options = sound;
        change(options);
        return options;
    };
    for (const orx::TCaliperOptions& edge : wrongCaliperOptions())
        refuses(orx::rcOption, with([&](auto& options) { options.edge = edge; }));
    for (const int count : {0, 100001})
        refuses(orx::rcOption, with([&](auto& options) { options.count = count; }));
    for (const double length : {0.5, 160.5, nan})
        refuses(orx::rcOption, with([&](auto& options) { options.searchLength = length; }));
    refuses(orx::rcOption, with([](auto& options) { options.width = 161; }));
    refuses(orx::rcOption, with([](auto& options) { options.direction = orx::TRadialDirection(2); }));
    for (const double sweep : {-360.5, 361.0, nan})
        refuses(orx::rcOption, with([&](auto& options) { options.sweep = sweep; }));
    refuses(orx::rcNotFinite, with([&](auto& options) { options.startAngle = nan; }));
    refuses(orx::rcNotFinite, sound, {nan, 20});
    refuses(orx::rcOption, sound, {10, 1.1e6});
    for (const double radius : {0.0, -1.0, 1.1e6, nan}) refuses(orx::rcOption, sound, {10, 20}, radius);
    refuses(orx::rcNoResult, with([](auto& options) { options.startAngle = 180; }));
    EXPECT_TRUE(notRefused([&] { orx::getCircleEdges(img, {10, 20}, 18, sound); }));
}

TEST(EdgeRefusals, OfEdgesAcrossOutlinesTellOptionsFromMissingProbes) {
    const cv::Mat img = stepImage();
    const std::vector<orx::TEdgeProbe> probes = {{{20, 20}}, {{NAN, 20}}};
    const double nan = std::nan("");
    for (const orx::TContourEdgeOptions& options : {orx::TContourEdgeOptions{1.4},
                                                    {50.5},
                                                    {nan},
                                                    {3, -1},
                                                    {3, nan},
                                                    {3, 8, orx::TEdgePolarity(3)},
                                                    {3, 8, orx::epAny, -1},
                                                    {3, 8, orx::epAny, HUGE_VAL}})
        EXPECT_TRUE(
            refusedWith(orx::rcOption, "edgesAcross", [&] { orx::edgesAcross(img, probes, options); }));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "edgesAcross", [&] { orx::edgesAcross(img, {}); }));
    EXPECT_TRUE(notRefused([&] { orx::edgesAcross(img, probes); }));
}

TEST(EdgeRefusals, OfProbesTellPlacesFromSizes) {
    const double nan = std::nan("");
    const auto along = [](orx::TRefusalCode code, const std::string& name, auto call) {
        EXPECT_TRUE(refusedWith(code, name, [&] { EXPECT_TRUE(call().empty()); }));
    };
    const std::vector<cv::Point> stroke = {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0},
                                           {6, 0}, {5, 0}, {4, 0}, {3, 0}, {2, 0}, {1, 0}};
    const std::vector<cv::Point> few(stroke.begin(), stroke.begin() + 11);
    along(orx::rcTooFew, "probesAlongContour", [&] { return orx::probesAlongContour(few); });
    along(orx::rcDegenerate, "probesAlongContour", [&] { return orx::probesAlongContour(stroke); });

    const auto line = [&](orx::TRefusalCode code, cv::Point2d from, cv::Point2d to, double spacing) {
        along(code, "probesAlongLine", [&] { return orx::probesAlongLine(from, to, spacing); });
    };
    line(orx::rcNotFinite, {nan, 0}, {9, 0}, 1);
    line(orx::rcNotFinite, {0, 0}, {9, HUGE_VAL}, 1);
    line(orx::rcOption, {0, 0}, {-1.1e6, 0}, 1);
    line(orx::rcDegenerate, {3, 4}, {3, 4}, 1);
    line(orx::rcTooMany, {0, 0}, {10, 0}, 1e-6);

    const auto circle = [&](orx::TRefusalCode code, cv::Point2d centre, double radius, double start,
                            double sweep) {
        along(code, "probesAlongCircle",
              [&] { return orx::probesAlongCircle(centre, radius, 1, start, sweep); });
    };
    circle(orx::rcNotFinite, {nan, 0}, 5, 0, 360);
    circle(orx::rcNotFinite, {0, 0}, 5, HUGE_VAL, 360);
    circle(orx::rcOption, {1.1e6, 0}, 5, 0, 360);
    for (const double radius : {0.0, 1.1e6, nan}) circle(orx::rcOption, {0, 0}, radius, 0, 360);
    for (const double sweep : {-361.0, 361.0, nan}) circle(orx::rcOption, {0, 0}, 5, 0, sweep);
    along(orx::rcTooMany, "probesAlongCircle", [] { return orx::probesAlongCircle({0, 0}, 1e6, 0.5); });

    const auto ellipse = [&](orx::TRefusalCode code, const cv::RotatedRect& rect, double spacing) {
        along(code, "probesAlongEllipse", [&] { return orx::probesAlongEllipse(rect, spacing); });
    };
    ellipse(orx::rcNotFinite, {{NAN, 0}, {9, 5}, 0}, 1);
    ellipse(orx::rcNotFinite, {{0, 0}, {9, 5}, NAN}, 1);
    ellipse(orx::rcOption, {{1.1e6F, 0}, {9, 5}, 0}, 1);
    ellipse(orx::rcOption, {{0, 0}, {0, 5}, 0}, 1);
    ellipse(orx::rcOption, {{0, 0}, {9, 2.1e6F}, 0}, 1);
    ellipse(orx::rcTooMany, {{0, 0}, {9, 5}, 0}, 1e-6);

    for (const double spacing : {0.0, -1.0, 1.1e6, nan}) {
        line(orx::rcOption, {0, 0}, {9, 0}, spacing);
        along(orx::rcOption, "probesAlongCircle", [&] { return orx::probesAlongCircle({0, 0}, 5, spacing); });
        ellipse(orx::rcOption, {{0, 0}, {9, 5}, 0}, spacing);
    }
    EXPECT_TRUE(notRefused([] {
        orx::probesAlongContour(
            {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {3, 1}, {3, 2}, {3, 3}, {2, 3}, {1, 3}, {0, 3}, {0, 2}, {0, 1}});
        orx::probesAlongLine({0, 0}, {9, 0});
        orx::probesAlongCircle({0, 0}, 5);
        orx::probesAlongEllipse({{0, 0}, {9, 5}, 0});
    }));
}

}  // namespace
