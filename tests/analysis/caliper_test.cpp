#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/edge_scene.h"
#include "tests/support/fit_scenes.h"

namespace {

using edge_scene::Look;
using fit_scenes::kPi;
using fit_scenes::Random;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Edges = std::vector<orx::TContrastEdge>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<double> distancesOf(const Edges& edges) {
    std::vector<double> distances;
    for (const orx::TContrastEdge& edge : edges) distances.push_back(std::round(edge.distance * 1000) / 1000);
    return distances;
}

// Root mean square of the distance between the true and the measured edge, over random angles and shifts.
double rmsOfStraightEdges(const Look& look, double width) {
    Random random(7);
    constexpr int kScenes = 150;
    double squares = 0;
    for (int i = 0; i < kScenes; ++i) {
        const double angle = random.uniform(0, 2 * kPi);
        const cv::Point2d normal(std::cos(angle), std::sin(angle));
        const cv::Point2d onEdge(40 + random.uniform(-2, 2), 40 + random.uniform(-2, 2));
        const cv::Mat img = edge_scene::halfPlane({80, 80}, onEdge, angle, look);
        const cv::Point2d from = onEdge - normal * random.uniform(10, 14);
        const Edges edges = orx::getContrastEdges(img, from, from + normal * 25, width);
        if (edges.size() != 1) return -1;
        EXPECT_NEAR(edges[0].contrast, look.bright - look.dark, 0.05 * (look.bright - look.dark));
        squares += std::pow((edges[0].position - onEdge).dot(normal), 2);
    }
    return std::sqrt(squares / kScenes);
}

TEST(Caliper, StraightEdgesOfAnyAngleAndShiftAreWithinAHundredthOfAPixel) {
    for (const double blur : {0.7, 1.0, 1.5}) {
        for (const double width : {1.0, 9.0}) {
            const double rms = rmsOfStraightEdges({50, 200, blur, 0, 1, CV_16U}, width);
            SCOPED_TRACE(testing::Message() << "blur " << blur << ", width " << width << ", rms " << rms);
            EXPECT_GE(rms, 0) << "not one edge in each scene";
            EXPECT_LT(rms, width > 1 ? 0.002 : 0.01);
        }
    }
}

TEST(Caliper, NoiseSpreadsTheEdgeAsTheoryPredicts) {
    // Slope and curvature of a Gaussian edge under white noise: see J. Canny (1986).
    Look look{60, 160, 1.0, 5.0};
    const double sigma = 1.0;
    const int width = 9;
    const double total = std::sqrt(sigma * sigma + look.blur * look.blur + 1.0 / 12);
    const double predicted = look.noise / std::sqrt(width) *
                             std::sqrt(3 / (8 * std::sqrt(kPi) * std::pow(sigma, 5))) * std::sqrt(2 * kPi) *
                             std::pow(total, 3) / (look.bright - look.dark);
    Random random(3);
    constexpr int kScenes = 300;
    double squares = 0;
    double sum = 0;
    for (int i = 0; i < kScenes; ++i) {
        const double truth = random.uniform(19, 21);
        look.seed = i;
        const cv::Mat img = edge_scene::halfPlane({41, width}, {truth, 0}, 0, look);
        orx::TCaliperOptions options;
        options.selection = orx::esStrongest;
        const Edges edges =
            orx::getContrastEdges(img, cv::Rect(0, 0, 41, width), orx::sdLeftToRight, options);
        ASSERT_THAT(edges, SizeIs(1));
        squares += std::pow(edges[0].distance - truth, 2);
        sum += edges[0].distance - truth;
    }
    EXPECT_NEAR(std::sqrt(squares / kScenes) / predicted, 1.0, 0.15);
    EXPECT_LT(std::fabs(sum / kScenes), 3 * predicted / std::sqrt(kScenes));
}

TEST(Caliper, ContrastAndBlurAreThoseOfTheEdge) {
    for (const double blur : {0.8, 1.2, 2.0}) {
        for (const double sigma : {0.7, 1.0, 2.0}) {
            SCOPED_TRACE(testing::Message() << "blur " << blur << ", sigma " << sigma);
            const cv::Mat img = edge_scene::halfPlane({60, 5}, {29.3, 0}, 0, {180, 40, blur, 0, 1, CV_16U});
            orx::TCaliperOptions options;
            options.sigma = sigma;
            const Edges edges = orx::getContrastEdges(img, {5, 2}, {50, 2}, 5, options);
            ASSERT_THAT(edges, SizeIs(1));
            EXPECT_NEAR(edges[0].contrast, -140, 3);
            EXPECT_NEAR(edges[0].blur, std::sqrt(blur * blur + 1.0 / 12), 0.1);  // with that of the pixel
            EXPECT_NEAR(edges[0].distance, 24.3, sigma < 1 ? 0.015 : 0.005);
            EXPECT_EQ(edges[0].caliper, 0);
        }
    }
}

// Columns: 50, from 20 on 150, from 40 on 90, from 60 on 250. Edges at 19.5 (+100), 39.5 (-60), 59.5 (+160).
cv::Mat bars() {
    cv::Mat img(30, 80, CV_8UC1, cv::Scalar(50));
    img.colRange(20, 40) = 150;
    img.colRange(40, 60) = 90;
    img.colRange(60, 80) = 250;
    return img;
}

Edges edgesOfBars(orx::TEdgePolarity polarity, orx::TEdgeSelection selection, double minContrast = 10) {
    return orx::getContrastEdges(bars(), {0, 15}, {79, 15}, 5, {1.0, minContrast, polarity, selection});
}

TEST(Caliper, PolaritySelectionAndContrastChooseAmongTheEdges) {
    using namespace orx;
    EXPECT_THAT(distancesOf(edgesOfBars(epAny, esAll)), ElementsAre(19.5, 39.5, 59.5));
    EXPECT_THAT(distancesOf(edgesOfBars(epDarkToBright, esAll)), ElementsAre(19.5, 59.5));
    EXPECT_THAT(distancesOf(edgesOfBars(epBrightToDark, esAll)), ElementsAre(39.5));
    EXPECT_THAT(distancesOf(edgesOfBars(epAny, esFirst)), ElementsAre(19.5));
    EXPECT_THAT(distancesOf(edgesOfBars(epAny, esLast)), ElementsAre(59.5));
    EXPECT_THAT(distancesOf(edgesOfBars(epAny, esStrongest)), ElementsAre(59.5));
    EXPECT_THAT(distancesOf(edgesOfBars(epBrightToDark, esStrongest)), ElementsAre(39.5));
    EXPECT_THAT(distancesOf(edgesOfBars(epAny, esAll, 80)), ElementsAre(19.5, 59.5));
    EXPECT_THAT(distancesOf(edgesOfBars(epAny, esFirst, 120)), ElementsAre(59.5));
    EXPECT_THAT(edgesOfBars(epAny, esAll, 1000), IsEmpty());
}

TEST(Caliper, RectanglesAreSearchedInTheDirectionNamed) {
    const cv::Mat img = bars();
    const cv::Mat turned = img.t();
    const cv::Rect rect(10, 4, 40, 7);  // edges at 19.5 and 39.5
    const cv::Rect upright(4, 10, 7, 40);
    EXPECT_THAT(distancesOf(orx::getContrastEdges(img, rect, orx::sdLeftToRight)), ElementsAre(9.5, 29.5));
    EXPECT_THAT(distancesOf(orx::getContrastEdges(img, rect, orx::sdRightToLeft)), ElementsAre(9.5, 29.5));
    EXPECT_THAT(distancesOf(orx::getContrastEdges(turned, upright, orx::sdTopToBottom)),
                ElementsAre(9.5, 29.5));
    const Edges edges = orx::getContrastEdges(turned, upright, orx::sdBottomToTop);
    ASSERT_THAT(edges, SizeIs(2));
    EXPECT_NEAR(edges[0].position.x, 7, 1e-9);
    EXPECT_NEAR(edges[0].position.y, 39.5, 1e-4);
    EXPECT_GT(edges[0].contrast, 0);  // upwards from 90 to 150
    // 45 degrees through (40, 15) along the bars' normal component: the edge x = 39.5 at (39.5, 14.5).
    const Edges slanted = orx::getContrastEdges(img, cv::RotatedRect({40, 15}, {20, 1}, 45));
    ASSERT_THAT(slanted, SizeIs(1));
    EXPECT_NEAR(slanted[0].position.x, 39.5, 0.01);
    EXPECT_NEAR(slanted[0].position.y, 14.5, 0.01);
    EXPECT_NEAR(slanted[0].distance, 10 - std::sqrt(0.5), 0.01);
}

TEST(Caliper, DepthAndColourMakeNoDifference) {
    const cv::Mat grey = edge_scene::sharpDisk({60, 60}, {30.3, 29.8}, 18.2, {});
    const Edges expected = orx::getContrastEdges(grey, {2, 27}, {57, 35}, 6);
    ASSERT_THAT(expected, SizeIs(2));
    cv::Mat deep;
    grey.convertTo(deep, CV_16U, 257);
    cv::Mat deepColour;
    cv::merge(std::vector<cv::Mat>(4, deep), deepColour);
    for (const cv::Mat& img : {orx::toBGR(grey), deep, deepColour}) {
        const Edges edges = orx::getContrastEdges(img, {2, 27}, {57, 35}, 6);
        ASSERT_THAT(edges, SizeIs(2));
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_NEAR(edges[i].distance, expected[i].distance, 1e-3);
            EXPECT_NEAR(edges[i].contrast, expected[i].contrast, 0.1);
        }
    }
}

TEST(Caliper, ReachesOverTheBorderAndOutOfAView) {
    const cv::Mat img = bars();
    EXPECT_THAT(distancesOf(orx::getContrastEdges(img, {-20, -10}, {99, -10}, 3)),
                ElementsAre(39.5, 59.5, 79.5));
    // In the view the image ends at its columns 25 and 54: only the edge between 39 and 40 is left.
    const cv::Mat view = img(cv::Rect(25, 3, 30, 20));
    EXPECT_THAT(distancesOf(orx::getContrastEdges(view, {0, 10}, {29, 10}, 30)), ElementsAre(14.5));
    EXPECT_THAT(orx::getContrastEdges(img, {200, 200}, {230, 210}, 3), IsEmpty());
}

TEST(Caliper, FindsEdgesUpToItsEndsAndNoneBehindThem) {
    const cv::Mat img = edge_scene::halfPlane({80, 60}, {39.7, 30}, 0, {50, 200, 0.7, 0, 1, CV_16U});
    const auto distances = [&](double from, double to) {
        return distancesOf(orx::getContrastEdges(img, {from, 30}, {to, 30}, 3));
    };
    EXPECT_THAT(distances(20, 40.3), ElementsAre(DoubleNear(19.7, 0.01)));
    EXPECT_THAT(distances(39.1, 60), ElementsAre(DoubleNear(0.6, 0.01)));
    EXPECT_THAT(distances(20, 39.3), IsEmpty());
    EXPECT_THAT(distances(40.1, 60), IsEmpty());
}

TEST(Caliper, OutermostRaysReadThePixelsBesideThem) {
    // An edge whose contrast is a parabola across the caliper, which cubic interpolation keeps. Everything is
    // linear in the levels: against the same edge of contrast 1 it is the mean over the rays, half way
    // between rows 28 and 33.
    const auto contrastOf = [](double bend) {
        cv::Mat img(60, 60, CV_16U);
        for (int y = 0; y < img.rows; ++y) {
            for (int x = 0; x < img.cols; ++x) {
                const double part = 0.5 + 0.5 * std::erf((x - 29.8) / (std::sqrt(2.0) * 0.9));
                const double contrast = 16000 * (1 + bend * (y - 28) * (y - 28));
                img.at<ushort>(y, x) = cv::saturate_cast<ushort>(4000 + contrast * part);
            }
        }
        const Edges edges = orx::getContrastEdges(img, {20, 30.5}, {40, 30.5}, 5);
        return edges.size() == 1 ? edges[0].contrast : 0.0;
    };
    // By hand: the mean of (y - 28)^2 at y = 28.5, 29.5 ... 32.5 is 8.25.
    EXPECT_NEAR(contrastOf(0.02) / contrastOf(0.0), 1 + 0.02 * 8.25, 2e-4);
}

TEST(Caliper, WhatIsRefusedGivesNoEdges) {
    const cv::Mat img = bars();
    const cv::Point2d from(0, 15);
    const cv::Point2d to(79, 15);
    for (const cv::Mat& refused :
         {cv::Mat(), cv::Mat(1, 1, CV_8UC1, cv::Scalar(9)), cv::Mat(30, 80, CV_32FC1),
          cv::Mat(30, 80, CV_8SC1), cv::Mat(30, 80, CV_8UC(5))}) {
        EXPECT_THAT(orx::getContrastEdges(refused, from, to, 3), IsEmpty());
        EXPECT_THAT(orx::getCircleEdges(refused, from, 5), IsEmpty());
    }
    for (const double bad : {kNan, 1e300, -1e300, 1e9}) {
        EXPECT_THAT(orx::getContrastEdges(img, {bad, 15}, to, 3), IsEmpty());
        EXPECT_THAT(orx::getContrastEdges(img, from, {79, bad}, 3), IsEmpty());
        EXPECT_THAT(orx::getContrastEdges(img, from, to, bad), IsEmpty());
        EXPECT_THAT(orx::getContrastEdges(img, from, to, 3, {bad}), IsEmpty());
        EXPECT_THAT(orx::getCircleEdges(img, {bad, 15}, 10), IsEmpty());
        EXPECT_THAT(orx::getCircleEdges(img, from, bad), IsEmpty());
        orx::TCircleCaliperOptions options;
        options.searchLength = bad;
        EXPECT_THAT(orx::getCircleEdges(img, from, 10, options), IsEmpty());
    }
    EXPECT_THAT(orx::getContrastEdges(img, from, from, 3), IsEmpty());
    EXPECT_THAT(orx::getContrastEdges(img, from, to, 3, {1.0, kNan}), IsEmpty());
    EXPECT_THAT(orx::getContrastEdges(img, from, to, 3, {1.0, 10, orx::TEdgePolarity(7)}), IsEmpty());
    EXPECT_THAT(orx::getContrastEdges(img, cv::Rect(INT_MIN, INT_MIN, INT_MAX, INT_MAX), orx::sdLeftToRight),
                IsEmpty());
    EXPECT_THAT(orx::getContrastEdges(img, cv::Rect(0, 0, -5, 5), orx::sdLeftToRight), IsEmpty());
    EXPECT_THAT(orx::getContrastEdges(img, cv::Rect(0, 0, 80, 30), orx::TScanDirection(9)), IsEmpty());
    EXPECT_THAT(orx::getContrastEdges(img, cv::RotatedRect({40, 15}, {20, 1}, NAN)), IsEmpty());
}

// The least-squares circle of sub-pixel points, as (x, y, radius).
cv::Point3d circleThrough(const Edges& edges) {
    cv::Mat a(static_cast<int>(edges.size()), 3, CV_64F);
    cv::Mat b(a.rows, 1, CV_64F);
    for (int i = 0; i < a.rows; ++i) {
        const cv::Point2d p = edges[static_cast<std::size_t>(i)].position;
        a.at<double>(i, 0) = 2 * p.x;
        a.at<double>(i, 1) = 2 * p.y;
        a.at<double>(i, 2) = 1;
        b.at<double>(i) = p.dot(p);
    }
    const cv::Mat_<double> c = (cv::Mat_<double>(a.inv(cv::DECOMP_SVD) * b));
    return {c(0), c(1), std::sqrt(c(2) + c(0) * c(0) + c(1) * c(1))};
}

TEST(CircleCaliper, FittedCirclesAreWithinTwoHundredthsOfAPixel) {
    Random random(11);
    for (int i = 0; i < 8; ++i) {
        const cv::Point2d centre(60 + random.uniform(-1, 1), 60 + random.uniform(-1, 1));
        const double radius = random.uniform(12, 45);
        const cv::Mat img = edge_scene::disk({121, 121}, centre, radius, {40, 220, random.uniform(0.7, 1.3)});
        // The nominal circle is off by up to three pixels.
        const cv::Point2d nominal = centre + cv::Point2d(random.uniform(-3, 3), random.uniform(-3, 3));
        orx::TCircleCaliperOptions options;
        options.edge.polarity = orx::epBrightToDark;
        options.width = 3;
        const Edges edges = orx::getCircleEdges(img, nominal, radius + random.uniform(-3, 3), options);
        ASSERT_THAT(edges, SizeIs(36));
        const cv::Point3d circle = circleThrough(edges);
        SCOPED_TRACE(testing::Message() << "radius " << radius << " around " << centre);
        EXPECT_LT(std::hypot(circle.x - centre.x, circle.y - centre.y), 0.02);
        EXPECT_NEAR(circle.z, radius, 0.02);
    }
}

TEST(CircleCaliper, WideCalipersKeepTheRadius) {
    const cv::Point2d centre(60.4, 59.7);
    const cv::Mat img = edge_scene::disk({121, 121}, centre, 25.3, {50, 200, 1, 0, 1, CV_16U});
    for (const double width : {1.0, 15.0}) {  // along tangents, 15 pixels would shorten the radius by 0.37
        orx::TCircleCaliperOptions options;
        options.width = width;
        for (const orx::TContrastEdge& edge : orx::getCircleEdges(img, centre, 25, options)) {
            EXPECT_NEAR(std::hypot(edge.position.x - centre.x, edge.position.y - centre.y), 25.3, 0.02);
        }
    }
}

double meanRadius(const Edges& edges, cv::Point2d centre) {
    double sum = 0;
    for (const orx::TContrastEdge& edge : edges) sum += cv::norm(edge.position - centre);
    return sum / static_cast<double>(edges.size());
}

TEST(CircleCaliper, BlurDoesNotShrinkCircles) {
    const cv::Point2d centre(40.3, 39.8);
    const double radius = 21;
    for (const double blur : {0.5, 1.0, 1.5}) {
        for (const bool dark : {false, true}) {
            const Look look{dark ? 200.0 : 40.0, dark ? 40.0 : 200.0, blur, 0, 1, CV_16U};
            const cv::Mat img = edge_scene::disk({80, 80}, centre, radius, look);
            orx::TCircleCaliperOptions options;
            options.width = 3;
            options.direction = dark ? orx::rdInward : orx::rdOutward;
            const Edges found = orx::getCircleEdges(img, centre, radius, options);
            options.compensateBlur = false;
            const Edges asFound = orx::getCircleEdges(img, centre, radius, options);
            ASSERT_THAT(found, SizeIs(36));
            ASSERT_THAT(asFound, SizeIs(36));
            SCOPED_TRACE(testing::Message() << "blur " << blur << ", dark " << dark);
            EXPECT_NEAR(meanRadius(found, centre), radius, 0.002);
            const double shrinking = (blur * blur + 1.0 / 12) / (2 * radius);
            EXPECT_NEAR(meanRadius(asFound, centre), radius - shrinking, 0.003);
            const double way = found[0].distance - asFound[0].distance;
            EXPECT_NEAR(dark ? -way : way, shrinking, 0.003);
        }
    }
}

TEST(CircleCaliper, TheBlursOfTwoCirclesAreKeptApart) {
    // A washer: the outer edge is blurred by 1.5, the hole by 0.6. The nominal circle is off.
    const cv::Point2d centre(50.2, 49.7);
    const cv::Mat outer = edge_scene::disk({100, 100}, centre, 36, {40, 200, 1.5, 0, 1, CV_16U});
    const cv::Mat hole = edge_scene::disk({100, 100}, centre, 22, {0, 150, 0.6, 0, 1, CV_16U});
    orx::TCircleCaliperOptions options;
    options.edge.selection = orx::esAll;
    options.searchLength = 30;
    options.width = 3;
    Edges edges = orx::getCircleEdges(outer - hole, centre + cv::Point2d(1, -1), 29, options);
    ASSERT_THAT(edges, SizeIs(72));
    Edges of[2];
    for (std::size_t i = 0; i < edges.size(); ++i) of[i % 2].push_back(edges[i]);
    EXPECT_NEAR(circleThrough(of[0]).z, 22, 0.005);
    EXPECT_NEAR(circleThrough(of[1]).z, 36, 0.005);
    // A slope of shading shows no blur to go by.
    cv::Mat slope;
    cv::resize(cv::Mat(cv::Matx<uchar, 1, 2>(20, 220)), slope, {60, 60});
    options.edge.minContrast = 1;
    options.edge.selection = orx::esStrongest;
    options.count = 1;
    edges = orx::getCircleEdges(slope, {5, 30}, 25, options);
    ASSERT_THAT(edges, SizeIs(1));
    options.compensateBlur = false;
    EXPECT_EQ(edges[0].distance, orx::getCircleEdges(slope, {5, 30}, 25, options)[0].distance);
}

TEST(CircleCaliper, ArcsDirectionsAndMissesAreToldApart) {
    const cv::Point2d centre(60, 60);
    cv::Mat img = edge_scene::sharpDisk({121, 121}, centre, 30, {});
    orx::TCircleCaliperOptions options;
    options.count = 5;
    options.startAngle = 90;
    options.sweep = -180;
    options.direction = orx::rdInward;
    Edges edges = orx::getCircleEdges(img, centre, 30, options);
    ASSERT_THAT(edges, SizeIs(5));
    const cv::Point2d expected[] = {
        {0, 1}, {std::sqrt(0.5), std::sqrt(0.5)}, {1, 0}, {std::sqrt(0.5), -std::sqrt(0.5)}, {0, -1}};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_LT(cv::norm(edges[i].position - centre - 30 * expected[i]), 0.03);
        EXPECT_GT(edges[i].contrast, 0);
        EXPECT_NEAR(edges[i].distance, 10, 0.03);
        EXPECT_EQ(edges[i].caliper, static_cast<int>(i));
    }
    img.rowRange(60, 121) = 100;  // hides the lower half
    edges = orx::getCircleEdges(img, centre, 30, options);
    ASSERT_THAT(edges, SizeIs(3));
    EXPECT_EQ(edges[1].caliper, 3);
    options.searchLength = 200;  // ends at the centre
    options.edge.polarity = orx::epDarkToBright;
    edges = orx::getCircleEdges(img, centre, 30, options);
    ASSERT_FALSE(edges.empty());
    EXPECT_NEAR(edges.back().distance, 100, 0.03);
}

}  // namespace
