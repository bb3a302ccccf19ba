#include "orxFunctions/analysis/contour_edges.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/analysis/image_noise.h"
#include "tests/support/edge_scene.h"

namespace {

using edge_scene::Look;
using orx::TContourEdge;
using orx::TEdgeProbe;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Statistics {
    double mean = 0.0;
    double rms = 0.0;
    std::size_t found = 0;
};

template <class ErrorOf>
Statistics statisticsOf(const std::vector<TContourEdge>& edges, const ErrorOf& errorOf) {
    Statistics result;
    for (const TContourEdge& edge : edges) {
        if (!edge.found) continue;
        const double error = errorOf(edge);
        result.mean += error;
        result.rms += error * error;
        ++result.found;
    }
    result.mean /= static_cast<double>(result.found);
    result.rms = std::sqrt(result.rms / static_cast<double>(result.found));
    return result;
}

TEST(ContourEdges, TheMeanPlaceOnABlurredDiskIsRightOnceTheCurvatureIsTold) {
    const cv::Point2d centre{80.3, 79.6};
    for (const double radius : {12.4, 25.0, 60.3})
        for (const double blur : {0.5, 0.9, 1.5})
            for (const bool bright : {true, false}) {
                SCOPED_TRACE(testing::Message()
                             << "radius " << radius << ", blur " << blur << ", " << bright);
                const Look look{bright ? 40.0 : 200.0, bright ? 200.0 : 40.0, blur};
                const cv::Mat image = edge_scene::disk({160, 160}, centre, radius, look);
                orx::TContourEdgeOptions options;
                options.reach = 6.0;
                options.polarity = bright ? orx::epBrightToDark : orx::epDarkToBright;
                // The nominal circle lies half a pixel beside the true one.
                auto probes = orx::probesAlongCircle(centre + cv::Point2d(0.4, -0.3), radius + 0.2);
                const auto distance = [&](const TContourEdge& e) {
                    return cv::norm(e.position - centre) - radius;
                };
                const auto told = statisticsOf(orx::edgesAcross(image, probes, options), distance);
                EXPECT_EQ(told.found, probes.size());
                EXPECT_LT(std::abs(told.mean), 0.004);
                EXPECT_LT(told.rms, 0.03);
                // Of what the pixel's own blur and interpolation add, 1/12 and 1/4.
                const double shift = (blur * blur + 1.0 / 12 + 1.0 / 4) / (2 * radius);
                for (TEdgeProbe& probe : probes) probe.curvature = 0.0;
                const auto untold = statisticsOf(orx::edgesAcross(image, probes, options), distance);
                EXPECT_NEAR(untold.mean, -shift, 0.1 * shift + 0.003);
            }
}

TEST(ContourEdges, DeviationsAreThoseOfThePointsOnNoisyEdges) {
    for (const double blur : {0.5, 0.9, 1.5})
        for (const double noise : {1.0, 4.0}) {
            double squares = 0.0;
            std::size_t count = 0;
            for (int turn = 0; turn < 12; ++turn) {
                const double angle = 0.13 + 0.5 * turn;
                const cv::Point2d across(std::cos(angle), std::sin(angle));
                const cv::Point2d along(-across.y, across.x);
                const cv::Point2d through(80.2, 79.7);
                const cv::Mat image =
                    edge_scene::halfPlane({160, 160}, through, angle, {40, 200, blur, noise, turn + 1});
                orx::TContourEdgeOptions options;
                options.reach = 4.0;
                const auto probes = orx::probesAlongLine(through - 60 * along, through + 60 * along);
                for (const TContourEdge& edge : orx::edgesAcross(image, probes, options)) {
                    ASSERT_TRUE(edge.found);
                    EXPECT_NEAR(std::abs(edge.contrast), 160.0, 8.0 + 4 * noise);
                    squares += std::pow((edge.position - through).dot(across) / edge.deviation, 2);
                    ++count;
                }
            }
            EXPECT_NEAR(std::sqrt(squares / static_cast<double>(count)), 1.0, 0.1)
                << "blur " << blur << ", noise " << noise;
        }
}

// Otherwise the uncertainty of what is fitted to them would be wrong by the root of the ratio.
TEST(ContourEdges, NeighboursShareNoiseAsTheSmoothingSays) {
    constexpr int kScenes = 60;
    constexpr int kPoints = 100;
    double ofMean = 0.0;
    double ofPoint = 0.0;
    for (int scene = 0; scene < kScenes; ++scene) {
        const double angle = 0.07 + 0.37 * scene;
        const cv::Point2d across(std::cos(angle), std::sin(angle));
        const cv::Point2d along(-across.y, across.x);
        const cv::Point2d through(80.2, 79.7);
        const cv::Mat image =
            edge_scene::halfPlane({160, 160}, through, angle, {40, 200, 0.9, 4.0, scene + 1});
        const auto edges = orx::edgesAcross(
            image, orx::probesAlongLine(through, through + (kPoints - 1) * 0.75 * along, 0.75));
        const auto statistics =
            statisticsOf(edges, [&](const TContourEdge& e) { return (e.position - through).dot(across); });
        ofMean += statistics.mean * statistics.mean / kScenes;
        ofPoint += statistics.rms * statistics.rms / kScenes;
    }
    const double independent = ofPoint / ofMean;
    const double promised = kPoints * 0.75 / (2 * std::sqrt(CV_PI) * orx::kContourEdgeSmoothing);
    // 60 scenes tell the ratio of variances to about 18 %.
    EXPECT_NEAR(independent / promised, 1.0, 0.45);
}

TEST(ContourEdges, UnevenLightAndOtherPictureTypesMoveNothing) {
    const cv::Point2d centre{60.3, 59.6};
    const cv::Mat image = edge_scene::disk({120, 120}, centre, 30.2, {40, 200, 0.9, 0, 1, CV_16U});
    cv::Mat shaded(image.size(), CV_16U);
    for (int y = 0; y < image.rows; ++y)
        for (int x = 0; x < image.cols; ++x)
            shaded.at<ushort>(y, x) = cv::saturate_cast<ushort>(image.at<ushort>(y, x) * (0.5 + x / 240.0));
    const auto probes = orx::probesAlongCircle(centre, 30.2);
    const auto plain = orx::edgesAcross(image, probes);
    const auto uneven = orx::edgesAcross(shaded, probes);
    cv::Mat grey;
    cv::Mat colour;
    image.convertTo(grey, CV_8U, 1.0 / 257);
    cv::cvtColor(grey, colour, cv::COLOR_GRAY2BGR);
    const auto eight = orx::edgesAcross(grey, probes);
    const auto coloured = orx::edgesAcross(colour, probes);
    for (std::size_t i = 0; i < probes.size(); ++i) {
        EXPECT_LT(cv::norm(uneven[i].position - plain[i].position), 0.03);
        EXPECT_LT(cv::norm(eight[i].position - plain[i].position), 0.01);
        EXPECT_EQ(coloured[i].position, eight[i].position);
        EXPECT_NEAR(eight[i].contrast, plain[i].contrast, 1.0);
    }
}

TEST(ContourEdges, WhatIsNoEdgeIsNotFoundAndKeepsItsPlace) {
    const cv::Mat image = edge_scene::halfPlane({60, 60}, {30.4, 0}, 0.0, {100, 130, 0.7});
    const auto one = [&](TEdgeProbe probe, orx::TContourEdgeOptions options = {}) {
        const auto edges = orx::edgesAcross(image, {probe}, options);
        EXPECT_EQ(edges.size(), 1U);
        return edges.at(0);
    };
    const TEdgeProbe good{{30.0, 20.0}, {1, 0}, 0};
    EXPECT_TRUE(one(good).found);
    EXPECT_NEAR(one(good).offset, 0.4, 0.02);
    EXPECT_NEAR(one(good).contrast, 30.0, 1.0);
    EXPECT_NEAR(one({{30.0, 20.0}, {-1, 0}, 0}).contrast, -30.0, 1.0);

    orx::TContourEdgeOptions options;
    options.polarity = orx::epBrightToDark;
    EXPECT_FALSE(one(good, options).found);
    options.polarity = orx::epDarkToBright;
    EXPECT_TRUE(one(good, options).found);
    options.minContrast = 35;
    EXPECT_FALSE(one(good, options).found);
    for (const TEdgeProbe& probe :
         {TEdgeProbe{{10, 20}, {1, 0}, 0}, TEdgeProbe{{30, 20}, {0, 1}, 0}, TEdgeProbe{{1, 1}, {1, 0}, 0},
          TEdgeProbe{{30, 20}, {2, 0}, 0}, TEdgeProbe{{30, 20}, {0, 0}, 0},
          TEdgeProbe{{1e300, 20}, {1, 0}, 0}, TEdgeProbe{{30, 20}, {1, 0}, kNan},
          TEdgeProbe{{30, 20}, {1, 0}, 20}}) {  // by which a blur of 0.7 would lie 5 pixels inwards
        const TContourEdge edge = one(probe);
        EXPECT_FALSE(edge.found);
        EXPECT_EQ(edge.position, probe.point);
        EXPECT_EQ(edge.deviation, 0.0);
    }
    EXPECT_FALSE(one({{kNan, 20}, {1, 0}, 0}).found);
    EXPECT_TRUE(orx::pointsOf(orx::edgesAcross(image, {{{10, 20}, {1, 0}, 0}})).empty());
    EXPECT_EQ(orx::deviationsOf(orx::edgesAcross(image, {{{10, 20}, {1, 0}, 0}, good})).size(), 1U);

    for (const cv::Mat& odd : {cv::Mat(), cv::Mat(20, 20, CV_32F, cv::Scalar(1))})
        EXPECT_TRUE(orx::edgesAcross(odd, {good}).empty());
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 40), cv::Size(2, 2)})
        EXPECT_FALSE(orx::edgesAcross(cv::Mat(size, CV_8U, cv::Scalar(9)), {{{0, 0}, {1, 0}, 0}})[0].found);
    for (const auto& [reach, contrast, noise] :
         {std::tuple(1.4, 8.0, 0.0), std::tuple(51.0, 8.0, 0.0), std::tuple(kNan, 8.0, 0.0),
          std::tuple(3.0, -1.0, 0.0), std::tuple(3.0, 8.0, -1.0), std::tuple(3.0, 8.0, kNan)}) {
        orx::TContourEdgeOptions bad;
        bad.reach = reach;
        bad.minContrast = contrast;
        bad.noise = noise;
        EXPECT_TRUE(orx::edgesAcross(image, {good}, bad).empty());
    }
}

TEST(EdgeProbes, OfAContourPointOutwardsWhicheverWayItTurns) {
    const cv::Point2d centre{50.2, 49.7};
    cv::Mat binary(100, 100, CV_8U, cv::Scalar(0));
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x)
            if (cv::norm(cv::Point2d(x, y) - centre) < 30.0) binary.at<uchar>(y, x) = 255;
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    ASSERT_EQ(contours.size(), 1U);
    std::vector<cv::Point> contour = contours[0];
    for (int turn = 0; turn < 2; ++turn) {
        const auto probes = orx::probesAlongContour(contour);
        ASSERT_EQ(probes.size(), contour.size());
        double mean = 0.0;
        for (const TEdgeProbe& probe : probes) {
            const cv::Point2d ray = probe.point - centre;
            EXPECT_GT(ray.dot(probe.normal) / cv::norm(ray), 0.98);
            mean += cv::norm(ray) / static_cast<double>(probes.size());
        }
        EXPECT_NEAR(mean, 30.0, 0.15);
        std::reverse(contour.begin(), contour.end());
    }
    EXPECT_TRUE(orx::probesAlongContour({}).empty());
    EXPECT_TRUE(orx::probesAlongContour(std::vector<cv::Point>(50, {3, 3})).empty());
}

TEST(EdgeProbes, OfShapesStandOnThemAtEqualSteps) {
    const auto line = orx::probesAlongLine({10, 20}, {10, 30}, 2.5);
    ASSERT_EQ(line.size(), 5U);
    EXPECT_EQ(line[1].point, cv::Point2d(10, 22.5));
    EXPECT_EQ(line[1].normal, cv::Point2d(-1, 0));

    const auto arc = orx::probesAlongCircle({50, 50}, 20, 1.0, 90, -90);
    ASSERT_EQ(arc.size(), 32U);  // 31.4 pixels
    EXPECT_LT(cv::norm(arc.front().point - cv::Point2d(50, 70)), 1e-12);
    EXPECT_LT(cv::norm(arc.back().point - cv::Point2d(70, 50)), 1e-12);
    EXPECT_EQ(arc[0].curvature, 0.05);
    EXPECT_EQ(orx::probesAlongCircle({50, 50}, 20).size(), 126U);

    // u^2/a^2 + v^2/b^2 = 1, and the normal is its gradient; the curvature at the ends of the axes is a/b^2
    // and b/a^2.
    const cv::RotatedRect box({60, 50}, {80, 30}, 30);
    const auto ellipse = orx::probesAlongEllipse(box, 0.5);
    const cv::Point2d along(std::cos(CV_PI / 6), 0.5);
    for (std::size_t i = 0; i < ellipse.size(); ++i) {
        const cv::Point2d ray = ellipse[i].point - cv::Point2d(60, 50);
        const cv::Point2d q(ray.dot(along) / 40, along.cross(ray) / 15);
        EXPECT_NEAR(q.dot(q), 1.0, 1e-9);
        const cv::Point2d gradient(q.x / 40, q.y / 15);
        const cv::Point2d normal(ellipse[i].normal.dot(along), along.cross(ellipse[i].normal));
        EXPECT_NEAR(gradient.cross(normal), 0.0, 1e-9);
        EXPECT_GT(gradient.dot(normal), 0.0);
        const TEdgeProbe& next = ellipse[(i + 1) % ellipse.size()];
        EXPECT_NEAR(cv::norm(next.point - ellipse[i].point), 0.5, 0.005);
    }
    EXPECT_NEAR(ellipse[0].curvature, 40.0 / 225, 1e-9);
    EXPECT_NEAR(ellipse[ellipse.size() / 4].curvature, 15.0 / 1600, 1e-4);

    EXPECT_TRUE(orx::probesAlongLine({10, 20}, {10, 20}).empty());
    EXPECT_TRUE(orx::probesAlongLine({kNan, 20}, {10, 20}).empty());
    EXPECT_TRUE(orx::probesAlongCircle({50, 50}, 20, 0.0).empty());
    EXPECT_TRUE(orx::probesAlongCircle({50, 50}, 1e6, 1e-6).empty());
    EXPECT_TRUE(orx::probesAlongCircle({50, 50}, 20, 1, 0, 361).empty());
    EXPECT_TRUE(orx::probesAlongEllipse({{60, 50}, {80, 0}, 30}).empty());
}

TEST(ImageNoise, IsThatOfThePixelsAndRefusesWhatIsNoPicture) {
    for (const double noise : {1.0, 5.0}) {
        const cv::Mat image = edge_scene::disk({300, 300}, {150, 150}, 100, {60, 180, 0.9, noise});
        EXPECT_NEAR(orx::getImageNoise(image), std::hypot(noise, 0.289), 0.05 * noise);
        cv::Mat deep;
        image.convertTo(deep, CV_16U, 257);
        EXPECT_NEAR(orx::getImageNoise(deep), orx::getImageNoise(image), 1e-12);
    }
    EXPECT_EQ(orx::getImageNoise(cv::Mat()), -1.0);
    EXPECT_EQ(orx::getImageNoise(cv::Mat(9, 9, CV_32F, cv::Scalar(1))), -1.0);
}

}  // namespace
