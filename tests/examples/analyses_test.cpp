// Splitting, edges and calipers as the inspection program uses them, on shapes of known truth.
#include "inspection/analyse/analyses.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "inspection/analyse/analyses_sections.h"
#include "inspection/run/places.h"
#include "support/synthetic_scene.h"

namespace {

using inspection::ArcPiece;
using inspection::Settings;
using inspection::SplitContour;

const scenes::Exposure kExposure{0.0, 0.8, 1.0, 3};

cv::Mat exposed(const cv::Mat& ideal) { return scenes::expose(ideal, kExposure); }

std::vector<SplitContour> split(const cv::Mat& grey) {
    Settings settings;
    std::string problem;
    const auto prepared = inspection::prepare(grey, settings, problem);
    EXPECT_TRUE(prepared) << problem;
    return inspection::splitContours(inspection::measure(grey, *prepared, settings));
}

TEST(Pieces, ASlotIsTwoLinesAndTwoArcs) {
    // A straight part of 160 between half circles of radius 50.
    cv::Mat ideal(200, 340, CV_32F, cv::Scalar(40.0));
    scenes::paint(ideal, scenes::Bar{{170.0, 100.0}, 0.0, 160.0, 100.0}, 180.0);
    scenes::paint(ideal, scenes::Disk{{90.0, 100.0}, 50.0}, 180.0);
    scenes::paint(ideal, scenes::Disk{{250.0, 100.0}, 50.0}, 180.0);
    const auto contours = split(exposed(ideal));
    ASSERT_EQ(contours.size(), 1U);
    ASSERT_EQ(contours[0].lines.size(), 2U);
    ASSERT_EQ(contours[0].arcs.size(), 2U);
    // Pieces run through pixel centres, half a pixel inside the outline.
    std::vector<double> heights;
    for (const auto& line : contours[0].lines) {
        EXPECT_LT(std::abs(std::remainder(line.angle(), 180.0)), 0.5);
        EXPECT_NEAR(line.length(), 160.0, 25.0);
        heights.push_back(0.5 * (line.from.y + line.to.y));
    }
    std::sort(heights.begin(), heights.end());
    EXPECT_NEAR(heights[0], 50.5, 0.5);
    EXPECT_NEAR(heights[1], 149.5, 0.5);
    std::vector<ArcPiece> arcs = contours[0].arcs;
    if (arcs[0].circle.center.x > arcs[1].circle.center.x) std::swap(arcs[0], arcs[1]);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_NEAR(arcs[i].circle.radius, 49.5, 1.0);
        EXPECT_NEAR(arcs[i].circle.center.x, i == 0 ? 90.0 : 250.0, 1.5);
        EXPECT_NEAR(arcs[i].circle.center.y, 100.0, 1.0);
        EXPECT_NEAR(arcs[i].endAngle - arcs[i].startAngle, 180.0, 25.0);
    }
    // The left arc lies at 180 degrees, the right one at 0.
    EXPECT_LT(std::abs(std::remainder(0.5 * (arcs[0].startAngle + arcs[0].endAngle) - 180.0, 360.0)), 12.0);
    EXPECT_LT(std::abs(std::remainder(0.5 * (arcs[1].startAngle + arcs[1].endAngle), 360.0)), 12.0);
}

TEST(Pieces, DisksOfAnySizeAreArcsAndSquaresAreLines) {
    for (const double radius : {15.0, 40.0, 90.0}) {
        SCOPED_TRACE(radius);
        cv::Mat ideal(240, 240, CV_32F, cv::Scalar(40.0));
        scenes::paint(ideal, scenes::Disk{{119.6, 120.3}, radius}, 180.0);
        const auto contours = split(exposed(ideal));
        ASSERT_EQ(contours.size(), 1U);
        EXPECT_TRUE(contours[0].lines.empty());
        double turn = 0.0;
        for (const ArcPiece& arc : contours[0].arcs) {
            EXPECT_NEAR(arc.circle.radius, radius - 0.4, 0.06 * radius);
            turn += arc.endAngle - arc.startAngle;
        }
        EXPECT_GT(turn, 320.0);
    }
    cv::Mat ideal(300, 300, CV_32F, cv::Scalar(40.0));
    scenes::paint(ideal, scenes::Bar{{150.0, 150.0}, 20.0, 160.0, 160.0}, 180.0);
    const auto contours = split(exposed(ideal));
    ASSERT_EQ(contours.size(), 1U);
    EXPECT_TRUE(contours[0].arcs.empty());
    EXPECT_EQ(contours[0].lines.size(), 4U);
    for (const auto& line : contours[0].lines) {
        EXPECT_NEAR(line.length(), 158.0, 4.0);
        EXPECT_LT(std::abs(std::remainder(line.angle() - 20.0, 90.0)), 0.3);
    }
}

TEST(EdgeChains, PointsLieOnTheOutlineAndTheCropShowsIt) {
    const scenes::Disk disk{{79.7, 60.4}, 40.0};
    cv::Mat ideal(120, 160, CV_32F, cv::Scalar(40.0));
    scenes::paint(ideal, disk, 180.0);
    const auto edges = inspection::findEdgeChains(exposed(ideal));
    ASSERT_EQ(edges.chains.size(), 1U);
    EXPECT_EQ(edges.pointCount, edges.chains[0].points.size());
    EXPECT_NEAR(edges.length, 251.3, 1.5);
    EXPECT_LT(edges.medianDeviation, 0.05);
    std::size_t shown = 0;
    for (const cv::Point2f& p : edges.chains[0].points) {
        EXPECT_NEAR(cv::norm(cv::Point2d(p) - disk.center), disk.radius, 0.1);
        shown += cv::Rect2f(edges.crop).contains(p) ? 1U : 0U;
    }
    EXPECT_GT(shown, 15U);
    EXPECT_EQ((edges.crop & cv::Rect(0, 0, 160, 120)), edges.crop);
}

TEST(EdgeChains, TheCloseUpDrawsEdgesInThePicturesOwnCoordinates) {
    cv::Mat grey(40, 60, CV_8U, cv::Scalar(30));
    grey(cv::Rect(25, 0, 35, 40)).setTo(210);  // the edge lies at x = 24.5
    inspection::Analyses analyses;
    analyses.edges = inspection::findEdgeChains(grey);
    const auto sections = inspection::sectionsOf(grey, analyses);
    ASSERT_EQ(sections.size(), 1U);
    ASSERT_EQ(sections[0].figures.size(), 1U);
    const cv::Rect crop = analyses.edges->crop;
    EXPECT_EQ(crop.size(), cv::Size(44, 28));
    const std::string view = "viewBox='" + std::to_string(crop.x - 1) + ".5 ";
    EXPECT_THAT(sections[0].figures[0].svg, testing::HasSubstr(crop.x > 0 ? view : "viewBox='-0.5 "));
    EXPECT_THAT(sections[0].figures[0].svg, testing::HasSubstr("cx='24.5"));
}

TEST(Calipers, ABarIsMeasuredAcrossInBothDirections) {
    cv::Mat ideal(160, 160, CV_32F, cv::Scalar(60.0));
    scenes::paint(ideal, scenes::Bar{{80.3, 79.6}, 0.0, 90.4, 30.2}, 160.0);
    const cv::Mat grey = scenes::expose(ideal, {0.0, 0.8, 0.0, 3});
    // The scene is blurred after it was sampled, which skews an edge that cuts its pixels unevenly: its
    // steepest place moves by up to 0.027 pixels.
    const auto across = inspection::searchBox(grey, {70, 20, 21, 120});
    EXPECT_TRUE(across.downwards);
    EXPECT_EQ(across.profile.size(), 120U);
    ASSERT_EQ(across.edges.size(), 2U);
    EXPECT_NEAR(across.edges[0].position.y, 79.6 - 15.1, 0.03);
    EXPECT_NEAR(across.edges[1].position.y, 79.6 + 15.1, 0.03);
    EXPECT_NEAR(across.profile[60], 160.0, 0.5);
    EXPECT_NEAR(across.profile[0], 60.0, 0.5);
    const auto along = inspection::searchBox(grey, {10, 70, 140, 21});
    EXPECT_FALSE(along.downwards);
    ASSERT_EQ(along.edges.size(), 2U);
    EXPECT_NEAR(along.edges[0].position.x, 80.3 - 45.2, 0.03);
    EXPECT_NEAR(along.edges[1].position.x, 80.3 + 45.2, 0.03);
    EXPECT_NEAR(along.edges[0].contrast, 100.0, 5.0);
}

TEST(Calipers, ADentAndAWrongNominalCircleDoNotMoveTheFit) {
    const scenes::Disk disk{{100.4, 99.3}, 50.3};
    cv::Mat ideal(200, 200, CV_32F, cv::Scalar(40.0));
    scenes::paint(ideal, disk, 180.0);
    scenes::paint(ideal, scenes::Disk{{150.0, 99.7}, 12.0}, 40.0);
    const auto found = inspection::searchCircleEdges(exposed(ideal), {{103.0, 97.0}, 47.0});
    ASSERT_TRUE(found.fitted.valid());
    EXPECT_NEAR(found.fitted.center.x, disk.center.x, 0.05);
    EXPECT_NEAR(found.fitted.center.y, disk.center.y, 0.05);
    EXPECT_NEAR(found.fitted.radius, disk.radius, 0.05);
    EXPECT_LT(found.fitted.usedPoints, static_cast<int>(found.edges.size()));
    EXPECT_GT(found.fitted.usedPoints, 55);
}

TEST(Focus, BlurLowersEveryMeasure) {
    cv::Mat ideal(120, 120, CV_32F, cv::Scalar(40.0));
    scenes::paint(ideal, scenes::Disk{{60.0, 60.0}, 30.0}, 180.0);
    Settings settings;
    settings.focus = true;
    const auto sharp = inspection::analyse(scenes::expose(ideal, {0.0, 0.5, 0.0, 1}), {}, settings).focus;
    const auto soft = inspection::analyse(scenes::expose(ideal, {0.0, 3.0, 0.0, 1}), {}, settings).focus;
    ASSERT_TRUE(sharp && soft);
    EXPECT_GT(sharp->brenner, 1.2 * soft->brenner);
    EXPECT_GT(sharp->tenengrad, 1.2 * soft->tenengrad);
    EXPECT_GT(sharp->laplacianVariance, 1.2 * soft->laplacianVariance);
    EXPECT_GE(sharp->greyDifference, 0.99 * soft->greyDifference);  // a lone step: its sum is its height
}

TEST(Places, AreReadExactlyOrRefused) {
    EXPECT_EQ(inspection::problemOfBox("-3,4,50,6"), "");
    EXPECT_EQ(inspection::boxFrom("-3,4,50,6"), cv::Rect(-3, 4, 50, 6));
    EXPECT_EQ(inspection::problemOfCircle("10.25,-7,3.5"), "");
    EXPECT_EQ(inspection::circleFrom("10.25,-7,3.5").center, cv::Point2d(10.25, -7.0));
    EXPECT_EQ(inspection::circleFrom("10.25,-7,3.5").radius, 3.5);
    for (const char* text : {"", ",", "1,2,3", "1,2,3,4,", "1,2,3,4 ", " 1,2,3,4", "1, 2,3,4", "1,2,3,x",
                             "1,2,inf,4", "1,2,-3,4", "1.5,2,3,4", "1,2,1e300,4", "1e999,2,3,4"})
        EXPECT_NE(inspection::problemOfBox(text), "") << text;
    for (const char* text : {"", "1,2", "1,2,3,4", "1,2,-1", "nan,2,3", "1,2,0", "1,2,3x"})
        EXPECT_NE(inspection::problemOfCircle(text), "") << text;
}

}  // namespace
