#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/edge_scene.h"

namespace {

using edge_scene::Look;
using ORXEdge::TMetricContour;
using ORXEdge::TMetricOptions;

std::vector<TMetricContour> find(const cv::Mat& image, const TMetricOptions& options = TMetricOptions()) {
    std::vector<TMetricContour> contours;
    EXPECT_TRUE(ORXEdge::edgesSubPixMetric(image, contours, options));
    return contours;
}

struct Errors {
    double sum = 0;
    double squares = 0;
    double estimates = 0;
    int count = 0;

    double rms() const { return std::sqrt(squares / count); }
    double bias() const { return sum / count; }
    double estimated() const { return std::sqrt(estimates / count); }
};

using Distance = std::function<double(cv::Point2f)>;

// Adds the points that are `margin` pixels or more inside the picture.
void addErrors(const std::vector<TMetricContour>& contours, cv::Size size, float margin,
               const Distance& distance, Errors& errors) {
    const cv::Rect2f inside(margin, margin, static_cast<float>(size.width) - 1 - 2 * margin,
                            static_cast<float>(size.height) - 1 - 2 * margin);
    for (const TMetricContour& contour : contours) {
        for (std::size_t i = 0; i < contour.points.size(); ++i) {
            if (!inside.contains(contour.points[i])) continue;
            const double d = distance(contour.points[i]);
            errors.sum += d;
            errors.squares += d * d;
            errors.estimates += contour.deviation[i] * contour.deviation[i];
            ++errors.count;
        }
    }
}

Errors diskErrors(double radius, const Look& look, int trials) {
    cv::RNG random(77);
    Errors errors;
    for (int i = 0; i < trials; ++i) {
        const int size = static_cast<int>(2 * radius) + 30;
        const int middle = size / 2;
        const cv::Point2d centre(middle + random.uniform(-0.5, 0.5), middle + random.uniform(-0.5, 0.5));
        Look varied = look;
        varied.seed = i;
        const auto contours = find(edge_scene::disk({size, size}, centre, radius, varied));
        addErrors(
            contours, {size, size}, 2,
            [&](cv::Point2f p) { return std::hypot(p.x - centre.x, p.y - centre.y) - radius; }, errors);
    }
    return errors;
}

// A bright and a dark disk: the compensation must know which side is which.
TEST(EdgesSubPixMetric, PlacesDisksWithoutBias) {
    for (const double radius : {20.0, 45.0}) {
        for (const double blur : {0.4, 0.7, 1.2}) {
            Look look;
            look.blur = blur;
            const Errors bright = diskErrors(radius, look, 5);
            EXPECT_LT(bright.rms(), 0.009) << radius << ' ' << blur;
            EXPECT_LT(std::abs(bright.bias()), 0.002) << radius << ' ' << blur;
            std::swap(look.dark, look.bright);
            const Errors dark = diskErrors(radius, look, 5);
            EXPECT_LT(dark.rms(), 0.009) << radius << ' ' << blur;
            EXPECT_LT(std::abs(dark.bias()), 0.002) << radius << ' ' << blur;
        }
    }
}

// What bent edges lose to the blur is given back where they are bent: round ends of a bar, and next to
// nothing along its sides. The bar's edge has the profile of a straight one, so that the round ends are given
// too much: the blur of the optics squared by twice the radius.
TEST(EdgesSubPixMetric, TakesTheBendOfAnEdgeWhereItIs) {
    const Look look;
    const cv::Point2d middle(70.3, 40.6);
    constexpr double kHalf = 40;
    constexpr double kRadius = 14;
    const auto outside = [&](double x, double y) {
        const double beyond = std::max(0.0, std::abs(x - middle.x) - kHalf);
        return std::hypot(beyond, y - middle.y) - kRadius;
    };
    const auto contours =
        find(edge_scene::draw({140, 82}, look, [&](double x, double y) { return -outside(x, y); }));
    ASSERT_EQ(contours.size(), 1U);
    ASSERT_TRUE(contours[0].closed);
    int sides = 0;
    int ends = 0;
    for (const cv::Point2f& p : contours[0].points) {
        const double along = std::abs(p.x - middle.x);
        if (along < kHalf - 10) {
            EXPECT_NEAR(outside(p.x, p.y), 0, 0.03) << p;
            ++sides;
        } else if (along > kHalf + 10) {
            EXPECT_NEAR(outside(p.x, p.y), (0.7 * 0.7 + 1.0 / 12) / (2 * kRadius), 0.02) << p;
            ++ends;
        }
    }
    EXPECT_GT(sides, 100);
    EXPECT_GT(ends, 30);
}

TEST(EdgesSubPixMetric, PlacesStraightEdgesOfAnyAngle) {
    cv::RNG random(5);
    const cv::Size size(90, 80);
    for (int degrees = 0; degrees < 360; degrees += 9) {
        const double angle = degrees * CV_PI / 180;
        const cv::Point2d through(45 + random.uniform(-0.5, 0.5), 40 + random.uniform(-0.5, 0.5));
        Look look;
        look.dark = 30;
        look.bright = 210;
        const auto contours = find(edge_scene::halfPlane(size, through, angle, look));
        ASSERT_EQ(contours.size(), 1U) << degrees;
        Errors errors;
        addErrors(
            contours, size, 7,
            [&](cv::Point2f p) {
                return (p.x - through.x) * std::cos(angle) + (p.y - through.y) * std::sin(angle);
            },
            errors);
        EXPECT_GT(errors.count, 40) << degrees;
        EXPECT_LT(errors.rms(), 0.008) << degrees;
        for (std::size_t i = 10; i + 10 < contours[0].points.size(); ++i) {
            const double turn = std::remainder(contours[0].direction[i] - angle, 2 * CV_PI);
            EXPECT_NEAR(turn, 0, 0.02) << degrees;
            EXPECT_GE(contours[0].direction[i], 0);
            EXPECT_LE(contours[0].direction[i], 2 * CV_PI);
            EXPECT_NEAR(contours[0].contrast[i], 180, 6) << degrees;
        }
    }
}

// Sampling moves sharp edges along an axis to and fro with their phase to the pixels: by up to 0.02 pixels at
// this blur, were it not taken back. Every angle of the four axes, bright or dark, and slightly off them.
TEST(EdgesSubPixMetric, PlacesSharpEdgesAlongAnAxisAtAnyPhase) {
    const cv::Size size(60, 60);
    for (const double degrees : {0.0, 2.0, 87.0, 90.0, 180.0, 264.0, 270.0}) {
        const double angle = degrees * CV_PI / 180;
        Errors errors;
        for (int phase = 0; phase < 16; ++phase) {
            const cv::Point2d through(30 + phase / 16.0, 30 + phase / 16.0);
            Look look;
            look.blur = 0.4;
            addErrors(
                find(edge_scene::halfPlane(size, through, angle, look)), size, 7,
                [&](cv::Point2f p) {
                    return (p.x - through.x) * std::cos(angle) + (p.y - through.y) * std::sin(angle);
                },
                errors);
        }
        EXPECT_GT(errors.count, 16 * 40) << degrees;
        EXPECT_LT(errors.rms(), 0.0075) << degrees;
        EXPECT_LT(std::abs(errors.bias()), 0.002) << degrees;
    }
}

TEST(EdgesSubPixMetric, SaysHowFarItsPointsScatter) {
    for (const double noise : {2.0, 6.0}) {
        Look look;
        look.noise = noise;
        look.blur = 0.8;
        const Errors errors = diskErrors(50, look, 6);
        EXPECT_NEAR(errors.estimated() / errors.rms(), 1, 0.15) << noise;
        EXPECT_LT(errors.rms(), noise * 0.0078) << noise;  // 1.3 of the bound sigma / contrast * sqrt(blur)
    }
}

TEST(EdgesSubPixMetric, TakesTheNoiseThatTheCallerKnows) {
    const cv::Mat image = edge_scene::halfPlane({60, 60}, {30.2, 30}, 0.4, Look());
    TMetricOptions options;
    options.noise = 4;
    const auto four = find(image, options);
    options.noise = 8;
    const auto eight = find(image, options);
    ASSERT_EQ(four.size(), eight.size());
    for (std::size_t i = 0; i < four[0].points.size(); ++i) {
        EXPECT_NEAR(eight[0].deviation[i] / four[0].deviation[i], 2, 1e-5);
        EXPECT_EQ(eight[0].points[i], four[0].points[i]);
    }
}

// Closed edges come once (a border follower finds their inside too), points are spaced evenly, and an open
// edge is one contour even where the follower starts in its middle.
TEST(EdgesSubPixMetric, GivesOnePointForEachCrossing) {
    for (const double shift : {0.0, 0.13, 0.27, 0.5}) {
        const auto disk = find(edge_scene::disk({110, 110}, {55 + shift, 54.6 - shift}, 37.3, Look()));
        ASSERT_EQ(disk.size(), 1U) << shift;
        EXPECT_TRUE(disk[0].closed);
        const std::size_t count = disk[0].points.size();
        double length = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const double step = cv::norm(disk[0].points[(i + 1) % count] - disk[0].points[i]);
            EXPECT_GT(step, 0.55) << shift;
            EXPECT_LT(step, 2.3) << shift;
            length += step;
        }
        EXPECT_NEAR(length, 2 * CV_PI * 37.3, 0.3) << shift;
    }
    cv::Mat roof(80, 120, CV_8U, cv::Scalar(30));
    const std::vector<cv::Point> outline = {{-20, 90}, {60, 20}, {140, 90}};
    cv::fillConvexPoly(roof, outline, 200, cv::LINE_AA);
    const auto open = find(roof);
    ASSERT_EQ(open.size(), 1U);
    EXPECT_FALSE(open[0].closed);
    for (std::size_t i = 1; i < open[0].points.size(); ++i) {
        EXPECT_LT(cv::norm(open[0].points[i] - open[0].points[i - 1]), 2.5) << i;
    }
}

TEST(EdgesSubPixMetric, RunsStraightOnWhereEdgesBranch) {
    // Dark on the left, two brighter parts on the right: the upright edge turned by some degrees, and the one
    // between the two parts that ends at it.
    for (const double degrees : {0.0, 5.0, 20.0, 30.0, 45.0, 60.0, 75.0, 80.0}) {
        SCOPED_TRACE(degrees);
        const double angle = degrees * CV_PI / 180;
        cv::Mat image(140, 140, CV_8U);
        for (int y = 0; y < image.rows; ++y) {
            for (int x = 0; x < image.cols; ++x) {
                const double right = (x - 70) * std::cos(angle) + (y - 70) * std::sin(angle);
                const double down = (y - 70) * std::cos(angle) - (x - 70) * std::sin(angle);
                const double levels[] = {40, down < 0 ? 130.0 : 220.0};
                const double share = std::clamp(right + 0.5, 0.0, 1.0);
                image.at<std::uint8_t>(y, x) =
                    cv::saturate_cast<std::uint8_t>(levels[0] + share * (levels[1] - levels[0]));
            }
        }
        cv::GaussianBlur(image, image, cv::Size(), 0.8);
        double longest = 0;
        for (const TMetricContour& contour : find(image)) {
            longest = std::max(longest, cv::norm(contour.points.front() - contour.points.back()));
        }
        EXPECT_GT(longest, 125);
    }
}

TEST(EdgesSubPixMetric, TakesItsThresholdsFromTheImageWhenAsked) {
    Look faint;
    faint.dark = 100;
    faint.bright = 108;
    const cv::Mat image = edge_scene::rectangle({80, 80}, {20.3, 25.1, 30, 30}, faint);
    EXPECT_TRUE(find(image).empty());
    TMetricOptions options;
    options.low = options.high = 2;
    EXPECT_EQ(find(image, options).size(), 1U);
    options = TMetricOptions();
    options.automaticThresholds = true;
    EXPECT_FALSE(find(image, options).empty());
}

TEST(EdgesSubPixMetric, LeavesOutWhatLiesInsideWhenOnlyOuterEdgesAreAsked) {
    cv::Mat image = edge_scene::disk({120, 120}, {60, 60}, 45, Look());
    cv::circle(image, {60, 60}, 15, cv::Scalar(40), cv::FILLED, cv::LINE_AA);
    TMetricOptions options;
    EXPECT_EQ(find(image, options).size(), 2U);
    options.mode = cv::RETR_EXTERNAL;
    EXPECT_EQ(find(image, options).size(), 1U);
}

TEST(EdgesSubPixMetric, RefusesWhatItCannotMeasure) {
    std::vector<TMetricContour> contours(2);
    const auto refuses = [&](const cv::Mat& image, const TMetricOptions& options) {
        return !ORXEdge::edgesSubPixMetric(image, contours, options) && contours.size() == 2;
    };
    const cv::Mat gray(20, 20, CV_8U, cv::Scalar(7));
    EXPECT_TRUE(refuses(cv::Mat(), TMetricOptions()));
    for (const int type : {CV_8UC3, CV_16UC1, CV_32FC1}) {
        EXPECT_TRUE(refuses(cv::Mat(20, 20, type, cv::Scalar::all(7)), TMetricOptions())) << type;
    }
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double wrong : {0.0, 0.49, 20.1, -1.0, nan}) {
        TMetricOptions options;
        options.sigma = wrong;
        EXPECT_TRUE(refuses(gray, options)) << wrong;
    }
    for (double TMetricOptions::*field :
         {&TMetricOptions::low, &TMetricOptions::high, &TMetricOptions::noise}) {
        for (const double wrong : {-1.0, nan}) {
            TMetricOptions options;
            options.*field = wrong;
            EXPECT_TRUE(refuses(gray, options));
        }
    }
    TMetricOptions options;
    options.mode = cv::RETR_FLOODFILL;
    EXPECT_TRUE(refuses(gray, options));
    EXPECT_TRUE(find(gray).empty());
}

// Thread count, instruction set and the storage of the image change no bit, whatever the image's size.
TEST(EdgesSubPixMetric, GivesTheSameBitsOnEveryProcessor) {
    const int threads = cv::getNumThreads();
    cv::RNG random(9);
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(2, 2), cv::Size(1, 30), cv::Size(40, 1),
                                cv::Size(17, 5), cv::Size(333, 290)}) {
        cv::Mat large(size.height + 9, size.width + 13, CV_8U);
        random.fill(large, cv::RNG::UNIFORM, 0, 256);
        if (size.width > 50) cv::GaussianBlur(large, large, cv::Size(), 1.5);
        const cv::Mat view = large(cv::Rect(cv::Point(5, 4), size));
        for (const double sigma : {0.5, 1.0, 2.7}) {
            TMetricOptions options;
            options.sigma = sigma;
            options.low = 1;
            options.high = 3;
            options.minPoints = 1;
            const auto expected = find(view.clone(), options);
            for (const bool optimized : {true, false}) {
                cv::setUseOptimized(optimized);
                cv::setNumThreads(optimized ? 1 : 5);
                const auto found = find(view, options);
                ASSERT_EQ(found.size(), expected.size());
                for (std::size_t i = 0; i < found.size(); ++i) {
                    EXPECT_EQ(found[i].points, expected[i].points);
                    EXPECT_EQ(found[i].direction, expected[i].direction);
                    EXPECT_EQ(found[i].contrast, expected[i].contrast);
                    EXPECT_EQ(found[i].deviation, expected[i].deviation);
                }
            }
            cv::setUseOptimized(true);
            cv::setNumThreads(threads);
        }
    }
}

}  // namespace
