#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "orxFunctions/matching/part_model.h"
#include "taught_scene.h"

namespace {

using namespace taught_scene;
using orx::TPartPose;
using orx::TTeachReport;

const TPartPose kPlace{100.3, 90.8, 17, 1};
const cv::Rect kRegion(25, 15, 150, 150);

TTeachReport taught(const Loops& loops, double noise, const orx::TTeachOptions& options = {}) {
    Look look;
    look.noise = noise;
    return orx::teachPart(picture(loops, kPlace, look), kRegion, options).report();
}

bool warnsOf(const TTeachReport& report, const std::string& words) {
    for (const std::string& warning : report.warnings) {
        if (warning.find(words) != std::string::npos) return true;
    }
    return false;
}

// Four pixels wide and six deep.
Loop notched() {
    Loop loop = arc({}, 60, 2, 358);
    loop.emplace_back(54, -2);
    loop.emplace_back(54, 2);
    return loop;
}

struct Case {
    const char* name;
    Loops loops;
    int symmetry;
    int nearSymmetry;
};

class Symmetry : public testing::TestWithParam<Case> {};

// The names are those of the cases.
std::string nameOf(const testing::TestParamInfo<Case>& info) { return info.param.name; }

TEST_P(Symmetry, IsThatOfTheShapeInNoiseToo) {
    for (const double noise : {0.0, 8.0}) {
        const TTeachReport report = taught(GetParam().loops, noise);
        ASSERT_EQ(report.status, orx::msOk) << noise;
        EXPECT_EQ(report.symmetry, GetParam().symmetry) << noise;
        EXPECT_EQ(report.nearSymmetry, GetParam().nearSymmetry) << noise;
        EXPECT_EQ(report.anglesAreFree, GetParam().symmetry == 0) << noise;
        EXPECT_FALSE(report.aShiftIsFree || report.scaleIsFree) << noise;
        EXPECT_EQ(warnsOf(report, "looks the same"), GetParam().symmetry != 1) << noise;
        EXPECT_EQ(warnsOf(report, "nearly"), GetParam().nearSymmetry != 1) << noise;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, Symmetry,
    testing::Values(
        Case{"bracket", {bracket()}, 1, 1}, Case{"rectangle", {rectangle(110, 60)}, 2, 1},
        Case{"square", {rectangle(80, 80)}, 4, 1}, Case{"triangle", {polygon(3, 60)}, 3, 1},
        Case{"hexagon", {polygon(6, 55)}, 6, 1}, Case{"disk", {circle({}, 55)}, 0, 1},
        Case{"ring", {circle({}, 60), hole({}, 35)}, 0, 1},
        Case{"ringWithANotch", {notched(), hole({}, 35)}, 1, 0},
        Case{"gearOf24", {gear(24, 60, 53), hole({}, 18)}, 24, 1},
        Case{"gearWithAToothMissing", {gear(24, 60, 53, 1), hole({}, 18)}, 1, 24},
        Case{"gearOf36", {gear(36, 62, 57)}, 36, 1},
        Case{"plateWithAHoleInTheMiddle", {rectangle(110, 60), hole({}, 8)}, 2, 1},
        Case{"plateWithASmallHoleBesideTheMiddle", {rectangle(110, 60), hole({25, 0}, 3)}, 1, 2},
        Case{"squareWithTwoHoles", {rectangle(80, 80), hole({25, 0}, 5), hole({-25, 0}, 5)}, 2, 1}),
    nameOf);

TEST(SymmetryCentre, IsTheShapesWhereverTheReferenceLies) {
    orx::TTeachOptions options;
    options.hasReference = true;
    options.reference = {70, 100};
    options.direction = 17;
    for (const double noise : {0.0, 8.0}) {
        const TTeachReport report = taught({rectangle(110, 60)}, noise, options);
        EXPECT_EQ(report.symmetry, 2);
        const cv::Point2d centre = orx::applyPose({70, 100, 17, 1}, report.symmetryCentre);
        EXPECT_NEAR(centre.x, kPlace.x, noise > 0 ? 0.05 : 0.01);
        EXPECT_NEAR(centre.y, kPlace.y, noise > 0 ? 0.05 : 0.01);
        // The farthest corner.
        const cv::Point2d corner = orx::applyPose(kPlace, cv::Point2d(55, -30));
        EXPECT_NEAR(report.radius, std::hypot(corner.x - 70, corner.y - 100), 1.0);
    }
}

// Of a wide plate only an edge, two edges or a corner lie in the region.
TEST(Freedom, IsToldOfOutlinesThatEndAtTheRegion) {
    const auto shown = [](const Loop& loop) { return taught({loop}, 4); };
    const TTeachReport edge = shown({{-300, 5}, {300, 5}, {300, 300}, {-300, 300}});
    EXPECT_TRUE(edge.aShiftIsFree && edge.scaleIsFree);
    EXPECT_NEAR(edge.freeDirection, 17, 0.5);
    EXPECT_TRUE(warnsOf(edge, "shifted along itself, in the direction of"));
    EXPECT_TRUE(warnsOf(edge, "scale can't be told"));

    const TTeachReport band = shown({{-300, -20}, {300, -20}, {300, 20}, {-300, 20}});
    EXPECT_TRUE(band.aShiftIsFree);
    EXPECT_FALSE(band.scaleIsFree || band.anglesAreFree);

    const TTeachReport corner = shown({{-10, -5}, {300, -5}, {300, 300}, {-10, 300}});
    EXPECT_TRUE(corner.scaleIsFree);
    EXPECT_FALSE(corner.aShiftIsFree || corner.anglesAreFree);

    const TTeachReport slice = shown({{0, 0}, {300, -80}, {300, 80}});
    EXPECT_TRUE(slice.scaleIsFree);
    EXPECT_FALSE(slice.aShiftIsFree || slice.anglesAreFree);
}

TEST(Freedom, OfAnArcIsATurnAboutItsCentre) {
    // A mask leaves out the chord: the arc alone is taught.
    const Loops loops = {arc({0, 20}, 60, 200, 340)};
    const cv::Point2d centre = orx::applyPose(kPlace, cv::Point2d(0, 20));
    cv::Mat mask = cv::Mat::zeros(180, 200, CV_8UC1);
    for (int y = 0; y < mask.rows; ++y) {
        for (int x = 0; x < mask.cols; ++x) {
            const double angle = std::atan2(y - centre.y, x - centre.x) * 180 / CV_PI - kPlace.angle;
            mask.at<unsigned char>(y, x) = angle > -150 && angle < -30 ? 255 : 0;
        }
    }
    for (int y = 0; y < mask.rows; ++y) {
        for (int x = 0; x < mask.cols; ++x) {
            if (std::hypot(x - centre.x, y - centre.y) < 50) mask.at<unsigned char>(y, x) = 0;
        }
    }
    const TTeachReport report = orx::teachPart(picture(loops, kPlace), mask).report();
    ASSERT_EQ(report.status, orx::msOk);
    EXPECT_EQ(report.symmetry, 1);
    EXPECT_TRUE(report.anglesAreFree);
    EXPECT_FALSE(report.scaleIsFree);
    EXPECT_TRUE(warnsOf(report, "turned along itself"));
    const TPartPose place = orx::teachPart(picture(loops, kPlace), mask).taughtPose();
    EXPECT_NEAR(report.symmetryCentre.x + place.x, centre.x, 0.5);
    EXPECT_NEAR(report.symmetryCentre.y + place.y, centre.y, 0.5);
}

}  // namespace
