#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <map>
#include <opencv2/imgproc.hpp>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/refusal_check.h"

namespace {

using Pixels = std::set<std::pair<int, int>>;  // (x, y)

using orx::test::notRefused;
using orx::test::refusedWith;

const cv::Scalar kWhite(255, 255, 255);

// Which pixels of an image of that size the drawing sets.
template <class Draw>
Pixels drawn(cv::Size size, Draw draw) {
    cv::Mat image = cv::Mat::zeros(size, CV_8UC1);
    draw(image);
    Pixels pixels;
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            if (image.at<uchar>(y, x) != 0) pixels.emplace(x, y);
        }
    }
    return pixels;
}

TEST(DrawContours, DrawsACircleAtEveryPoint) {
    const auto at = [](std::vector<cv::Point> points, int radius) {
        return drawn({12, 8}, [&](cv::Mat& image) {
            orx::drawContours(image, points, radius, kWhite, 1, cv::LINE_8, 0);
        });
    };
    EXPECT_EQ(at({}, 1), Pixels());
    EXPECT_EQ(at({{2, 3}, {9, 6}, {50, 50}}, 0), (Pixels{{2, 3}, {9, 6}}));
    EXPECT_EQ(at({{2, 3}}, 1), (Pixels{{2, 2}, {1, 3}, {3, 3}, {2, 4}}));
}

Pixels cross(double k, int length) {
    return drawn({21, 21}, [&](cv::Mat& image) {
        orx::drawCorss(image, {10, 10}, kWhite, length, k, 1, cv::LINE_8, 0);
    });
}

TEST(DrawCorss, IsUprightForSlopeZero) {
    EXPECT_EQ(cross(0, 2),
              (Pixels{{10, 8}, {10, 9}, {10, 10}, {10, 11}, {10, 12}, {8, 10}, {9, 10}, {11, 10}, {12, 10}}));
}

TEST(DrawCorss, OneArmFollowsTheSlopeAndOneLiesAcross) {
    // Slope 1/2, y down: from (6, 8) to (14, 12), and from (12, 6) to (8, 14).
    const Pixels half = cross(0.5, 4);
    for (const auto& end : Pixels{{6, 8}, {14, 12}, {12, 6}, {8, 14}, {10, 10}})
        EXPECT_EQ(half.count(end), 1U);
    for (const auto& [x, y] : half) {
        EXPECT_TRUE(std::abs(2 * (y - 10) - (x - 10)) <= 1 || std::abs((y - 10) + 2 * (x - 10)) <= 1);
    }
    EXPECT_EQ(cross(-2, 4), half) << "the slope of the other arm draws the same cross";
    // At slope 1 the arms become those of slope -1.
    EXPECT_EQ(cross(1, 2),
              (Pixels{{8, 12}, {9, 11}, {10, 10}, {11, 9}, {12, 8}, {8, 8}, {9, 9}, {11, 11}, {12, 12}}));
}

Pixels line(double k, double b, cv::Size size = {8, 5}) {
    return drawn(size, [&](cv::Mat& image) { orx::drawLine(image, k, b, kWhite, 1, cv::LINE_8, 0); });
}

TEST(DrawLine, CrossesTheImage) {
    EXPECT_EQ(line(0, 2.5), (Pixels{{0, 2}, {1, 2}, {2, 2}, {3, 2}, {4, 2}, {5, 2}, {6, 2}, {7, 2}}))
        << "ties to even";
    EXPECT_EQ(line(0, 3.5).count({0, 4}), 1U) << "ties to even";
    EXPECT_EQ(line(1, 0), (Pixels{{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}}));
    EXPECT_EQ(line(-1, 5), (Pixels{{5, 0}, {4, 1}, {3, 2}, {2, 3}, {1, 4}}));
    const Pixels flat = line(4.0 / 7, 0);
    EXPECT_EQ(flat.size(), 8U);
    EXPECT_EQ(flat.count({7, 4}), 1U);
    const Pixels steep = line(2, -4);  // from (2, 0) to (4, 4)
    EXPECT_EQ(steep.size(), 5U);
    EXPECT_EQ(steep.count({2, 0}) + steep.count({3, 2}) + steep.count({4, 4}), 3U);
}

// Arms of slope k and -1 / k through (150, 100), 5 pixels wide as OpenCV draws thickness 3.
TEST(DrawLine, ThickLinesThatLeadFarAwayKeepTheirCourse) {
    for (const double k : {0.0, 0.5, -0.25, 0.125}) {
        const Pixels pixels = drawn({300, 200}, [&](cv::Mat& image) {
            orx::drawCorss(image, {150, 100}, kWhite, 1 << 28, k, 3, cv::LINE_8, 0);
        });
        const double length = std::hypot(1, k);
        const auto distance = [&](int x, int y) {
            const double along = std::abs(k * (x - 150) - (y - 100)) / length;
            return std::min(along, std::abs((x - 150) + k * (y - 100)) / length);
        };
        for (int y = 0; y < 200; ++y) {
            for (int x = 0; x < 300; ++x) {
                const bool set = pixels.count({x, y}) != 0;
                EXPECT_TRUE(set ? distance(x, y) < 3.5 : distance(x, y) > 1) << k << ' ' << x << ' ' << y;
            }
        }
    }
    // A wild curve: from far below to far above half way between the columns 30 and 31.
    cv::Mat image(100, 60, CV_8UC1, cv::Scalar(0));
    orx::TPolynomial wild;
    wild.getY(0, std::vector<double>{-30.5 * 1e7, 1e7});
    wild.draw(image, kWhite, 3, cv::LINE_8, 0);
    EXPECT_EQ(cv::countNonZero(image.colRange(30, 32)), 2 * 100);
    EXPECT_EQ(cv::countNonZero(image), cv::countNonZero(image.colRange(28, 34)));
}

TEST(DrawLine, LinesBeyondTheImageAreSafe) {
    EXPECT_EQ(line(0, 1e300), Pixels());
    EXPECT_EQ(line(1e-5, -1e300), Pixels());
    EXPECT_EQ(line(5, 1e300), Pixels());
    EXPECT_NO_THROW(line(std::numeric_limits<double>::infinity(), 1));
    EXPECT_NO_THROW(line(std::nan(""), std::nan("")));
    EXPECT_EQ(line(0.5, 1, {0, 0}), Pixels());
    EXPECT_EQ(line(5, 1, {0, 0}), Pixels());
    EXPECT_EQ(cross(0, std::numeric_limits<int>::max()).size(), 41U);
    cv::Mat image(50, 50, CV_8UC1, cv::Scalar(0));
    for (const double k : {0.0, 0.3, std::nan("")}) {
        orx::drawCorss(image, {25, 25}, kWhite, std::numeric_limits<int>::max(), k, 2, cv::LINE_8, 0);
    }
    EXPECT_EQ(image.at<uchar>(25, 3), 255) << "thick and long";
    EXPECT_EQ(image.at<uchar>(3, 25), 255);
}

struct Style {
    int thickness;
    int lineType;
    int shift;
};

using Draw = std::function<void(cv::Mat&, const Style&)>;

// What draws lines, by name.
std::map<std::string, Draw> strokes() {
    return {{"drawCorss",
             [](cv::Mat& image, const Style& s) {
                 orx::drawCorss(image, {4, 4}, kWhite, 2, 0, s.thickness, s.lineType, s.shift);
             }},
            {"drawLine",
             [](cv::Mat& image, const Style& s) {
                 orx::drawLine(image, 0.5, 1, kWhite, s.thickness, s.lineType, s.shift);
             }},
            {"drawLineHough",
             [](cv::Mat& image, const Style& s) {
                 orx::drawLineHough(image, 1, 1, kWhite, s.thickness, s.lineType, s.shift);
             }},
            {"draw", [](cv::Mat& image, const Style& s) {
                 orx::TPolynomial level;
                 level.getY(0, std::vector<double>{2});
                 level.draw(image, kWhite, s.thickness, s.lineType, s.shift);
             }}};
}

std::map<std::string, Draw> drawings() {
    std::map<std::string, Draw> all = strokes();
    all["drawContours"] = [](cv::Mat& image, const Style& s) {
        orx::drawContours(image, {{1, 1}}, 1, kWhite, s.thickness, s.lineType, s.shift);
    };
    return all;
}

TEST(Drawing, ImagesThatOpenCvCannotDrawOnStayAsTheyAre) {
    const Style thin{1, cv::LINE_8, 0};
    for (const auto& [name, draw] : drawings()) {
        cv::Mat none;
        cv::Mat volume(std::vector<int>{3, 4, 5}, CV_8UC1, cv::Scalar(0));
        cv::Mat many = cv::Mat::zeros(9, 9, CV_8UC(5));
        const auto on = [&, &draw = draw](cv::Mat& image) { return [&] { draw(image, thin); }; };
        EXPECT_TRUE(refusedWith(orx::rcEmptyImage, name, on(none)));
        EXPECT_TRUE(refusedWith(orx::rcImageDimensions, name, on(volume)));
        EXPECT_TRUE(refusedWith(orx::rcImageType, name, on(many)));
        EXPECT_EQ(cv::countNonZero(volume) + cv::countNonZero(many.reshape(1)), 0) << name;
        for (const int type : {CV_8UC4, CV_16UC3, CV_32FC1, CV_64FC2}) {
            cv::Mat image = cv::Mat::zeros(9, 9, type);
            EXPECT_TRUE(notRefused(on(image))) << name;
            EXPECT_GT(cv::countNonZero(image.reshape(1)), 0) << name;
        }
    }
}

TEST(Drawing, StylesThatOpenCvThrowsForDrawNothing) {
    for (const auto& [name, draw] : drawings()) {
        const bool circles = name == "drawContours";
        std::vector<Style> bad{{32768, 8, 0}, {1, 8, -1}, {1, 8, 17}};
        if (!circles) bad.insert(bad.end(), {{-1, 8, 0}, {1, -1, 0}, {1, 2, 0}, {1, 15, 0}});
        if (!circles && name != "draw") bad.push_back({0, 8, 0});
        for (const Style& style : bad) {
            cv::Mat image = cv::Mat::zeros(9, 9, CV_8UC1);
            EXPECT_TRUE(refusedWith(orx::rcOption, name, [&, &draw = draw] { draw(image, style); }))
                << style.thickness << ' ' << style.lineType << ' ' << style.shift;
            EXPECT_EQ(cv::countNonZero(image), 0) << name;
        }
        for (const Style& style : {Style{1, 0, 0}, Style{1, 1, 0}, Style{1, 4, 0}, Style{2, 5, 0},
                                   Style{1, 16, 0}, Style{32767, 8, 16}}) {
            cv::Mat image = cv::Mat::zeros(9, 9, CV_8UC1);
            EXPECT_TRUE(notRefused([&, &draw = draw] { draw(image, style); })) << name;
        }
    }
}

TEST(DrawContours, RefusesRadiiThatOpenCvCannotDraw) {
    cv::Mat image = cv::Mat::zeros(9, 9, CV_8UC1);
    const auto with = [&](int radius, int thickness, int shift) {
        return [&image, radius, thickness, shift] {
            orx::drawContours(image, {{4, 4}}, radius, kWhite, thickness, cv::LINE_8, shift);
        };
    };
    for (const int radius : {-1, std::numeric_limits<int>::min(), 1'000'001, std::numeric_limits<int>::max()})
        EXPECT_TRUE(refusedWith(orx::rcOption, "drawContours", with(radius, 1, 0)));
    EXPECT_EQ(orx::lastRefusal().text,
              "drawContours: the radius is 2147483647; 0 to 1000000 pixels are taken");
    EXPECT_EQ(cv::countNonZero(image), 0);
    EXPECT_TRUE(notRefused(with(1'000'000, 1, 0)));
    EXPECT_TRUE(notRefused(with(1'000'000 << 10, 1, 10)));
    EXPECT_TRUE(notRefused(with(2, -1, 0)));
    EXPECT_EQ(image.at<uchar>(4, 4), 255) << "filled";
}

Pixels hough(double theta, double rho) {
    return drawn({9, 5},
                 [&](cv::Mat& image) { orx::drawLineHough(image, theta, rho, kWhite, 1, cv::LINE_8, 0); });
}

// In 9 x 5 pixels. The far end at x = 9 moves the midpoint of the flat line: from (0, 0) to (9, 3) it is in
// row 1 at x = 4, while a line that ended at (8, 3) would already be in row 2 there.
TEST(DrawLineHough, EndsAtTheColumnsAndRowsThemselves) {
    EXPECT_EQ(hough(CV_PI / 2, 3),
              (Pixels{{0, 3}, {1, 3}, {2, 3}, {3, 3}, {4, 3}, {5, 3}, {6, 3}, {7, 3}, {8, 3}}));
    EXPECT_EQ(hough(0, 6), (Pixels{{6, 0}, {6, 1}, {6, 2}, {6, 3}, {6, 4}}));
    EXPECT_EQ(hough(CV_PI, -6), hough(0, 6));
    const double theta = CV_PI / 2 + std::atan(1.0 / 3);  // y = x / 3
    const Pixels flat = hough(theta, 0);
    EXPECT_EQ(flat.count({4, 1}), 1U);
    EXPECT_EQ(flat.count({8, 3}), 1U);
}

// The bounding box of what is drawn in colour `channel` only.
cv::Rect textBox(const cv::Mat& image) {
    cv::Mat channels[3];
    cv::split(image, channels);
    EXPECT_EQ(cv::countNonZero(channels[0]) + cv::countNonZero(channels[1]), 0) << "not red";
    return cv::boundingRect(channels[2]);
}

TEST(DrawText, StandsRedInTheCornerAskedFor) {
    // 400 x 200 with ratio 200: scale 2, thickness 2, margins 20 and 10.
    int baseline = 0;
    const cv::Size size = cv::getTextSize("NG 7", cv::FONT_HERSHEY_PLAIN, 2.0, 2, &baseline);
    const auto inCorner = [](int corner) {
        cv::Mat image = cv::Mat::zeros(200, 400, CV_8UC3);
        orx::drawText(image, "NG 7", cv::Scalar(255, 255, 0), corner, 200);
        return textBox(image);
    };
    const cv::Point origins[] = {{400 - size.width - 20, size.height + 10},
                                 {400 - size.width - 20, 200 - size.height - 10},
                                 {20, size.height + 10},
                                 {20, 200 - size.height - 10}};
    for (int corner = 0; corner < 4; ++corner) {
        const cv::Rect box = inCorner(corner);
        // Glyphs have side bearings and strokes have a width: a few pixels.
        EXPECT_NEAR(box.x, origins[corner].x, 6) << corner;
        EXPECT_NEAR(box.br().y, origins[corner].y, 4) << corner;
        EXPECT_NEAR(box.width, size.width, 10) << corner;
    }
    EXPECT_LE(inCorner(4).br().y, 4) << "at the top-left pixel, out of sight but for the lowest strokes";
}

TEST(DrawText, ScaleIsAtLeastOne) {
    const auto width = [](double ratio) {
        cv::Mat image = cv::Mat::zeros(200, 400, CV_8UC3);
        orx::drawText(image, "NG 7", kWhite, 3, ratio);
        return textBox(image).width;
    };
    EXPECT_EQ(width(500), width(400)) << "0.8 becomes 1";
    EXPECT_EQ(width(4000), width(400)) << "thickness 0";
    EXPECT_GT(width(200), width(400));
}

TEST(DrawText, OnlyOnThreeChannelsAndWithASensibleRatio) {
    cv::Mat grey = cv::Mat::zeros(100, 100, CV_8UC1);
    EXPECT_TRUE(
        refusedWith(orx::rcImageType, "drawText", [&] { orx::drawText(grey, "text", kWhite, 3, 100); }));
    EXPECT_EQ(cv::countNonZero(grey), 0);
    cv::Mat color = cv::Mat::zeros(100, 100, CV_8UC3);
    for (const double ratio : {0.0, 1e-300, -0.01, std::nan("")})
        EXPECT_TRUE(
            refusedWith(orx::rcOption, "drawText", [&] { orx::drawText(color, "text", kWhite, 3, ratio); }));
    EXPECT_EQ(cv::countNonZero(color.reshape(1)), 0);
    cv::Mat wide = cv::Mat::zeros(10, 320, CV_8UC3);
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "drawText",
                            [&] { orx::drawText(wide, std::string(6000, 'W'), kWhite, 3, 0.01); }));
    EXPECT_EQ(cv::countNonZero(wide.reshape(1)), 0) << "a text wider than 32 bits can say";
    cv::Mat empty;
    EXPECT_TRUE(
        refusedWith(orx::rcEmptyImage, "drawText", [&] { orx::drawText(empty, "text", kWhite, 3, 100); }));
    EXPECT_TRUE(empty.empty());
}

}  // namespace
