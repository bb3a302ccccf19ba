#include "orxFunctions/matching/part_outline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orxFunctions/matching/part_finder.h"
#include "taught_scene.h"

namespace {

using namespace taught_scene;
using orx::outlineArc;
using orx::outlineLine;
using orx::TDrawingOptions;
using orx::TOutline;
using orx::TPartModel;

TOutline linesOf(const Loop& loop) {
    TOutline outline;
    for (std::size_t i = 0; i < loop.size(); ++i) {
        outline.push_back(outlineLine(loop[i], loop[(i + 1) % loop.size()]));
    }
    return outline;
}

// A slot with round ends in millimetres, 40 x 20, about (100, 50), walked with the material to the right when
// y runs down.
TOutline slot() {
    return {outlineLine({90, 40}, {110, 40}), outlineArc({110, 50}, 10, -90, 180),
            outlineLine({110, 60}, {90, 60}), outlineArc({90, 50}, 10, 90, 180)};
}

TOutline gearOutline(int teeth, double tip, double root) {
    TOutline outline;
    const double pitch = 360.0 / teeth;
    const auto at = [](double radius, double angle) {
        return radius * cv::Point2d(std::cos(angle * CV_PI / 180), std::sin(angle * CV_PI / 180));
    };
    for (int i = 0; i < teeth; ++i) {
        const double middle = (i + 0.5) * pitch;
        outline.push_back(outlineArc({}, tip, i * pitch, pitch / 2));
        outline.push_back(outlineLine(at(tip, middle), at(root, middle)));
        outline.push_back(outlineArc({}, root, middle, pitch / 2));
        outline.push_back(outlineLine(at(root, (i + 1) * pitch), at(tip, (i + 1) * pitch)));
    }
    return outline;
}

TEST(PartOutline, LiesOnTheDrawingInPixels) {
    TDrawingOptions options;
    options.pixelsPerUnit = 3;
    options.brightSide = orx::bsRight;
    const TPartModel model = orx::teachPart(std::vector<TOutline>{slot()}, options);
    ASSERT_TRUE(model.valid());
    const std::vector<cv::Point2d> points = model.outline();
    const std::vector<cv::Point2d> normals = model.normals();
    // 120 pixels of lines, and a circle of radius 30; nothing is disturbed where lines pass into arcs.
    EXPECT_NEAR(static_cast<double>(points.size()), 120 + 2 * CV_PI * 30, 4);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const cv::Point2d axis(std::clamp(points[i].x, -30.0, 30.0), 0);
        EXPECT_NEAR(cv::norm(points[i] - axis), 30, 1e-9);
        // Inwards.
        EXPECT_NEAR(normals[i].dot(points[i] - axis), -30, 1e-9);
    }
    EXPECT_EQ(model.taughtPose().x, 0);
    EXPECT_EQ(model.report().symmetry, 2);
    EXPECT_NEAR(model.report().radius, 60, 0.1);
    EXPECT_EQ(model.report().leastContrast, 0);
}

TEST(PartOutline, HasTheReferenceDirectionAndSidesOfTheDrawing) {
    struct Case {
        orx::TBrightSide side;
        bool yIsUp;
        double inwards;  // of the normals
    };
    // Turned over, what was walked clockwise is walked the other way round.
    for (const Case c : {Case{orx::bsRight, false, 1}, Case{orx::bsLeft, false, -1},
                         Case{orx::bsRight, true, -1}, Case{orx::bsLeft, true, 1}}) {
        TDrawingOptions options;
        options.pixelsPerUnit = 3;
        options.brightSide = c.side;
        options.yIsUp = c.yIsUp;
        options.hasReference = true;
        options.reference = {110, 50};
        options.direction = 90;
        const TPartModel model = orx::teachPart(std::vector<TOutline>{slot()}, options);
        ASSERT_TRUE(model.valid());
        const std::vector<cv::Point2d> points = model.outline();
        const std::vector<cv::Point2d> normals = model.normals();
        for (std::size_t i = 0; i < points.size(); ++i) {
            // The slot reaches 60 pixels from the reference against the drawing's x axis, which lies a
            // quarter turn before the direction: seen with y down, towards the model's -y, or its +y.
            const double along = c.yIsUp ? -points[i].y : points[i].y;
            const cv::Point2d axis(0, std::clamp(along, 0.0, 60.0) * (c.yIsUp ? -1 : 1));
            ASSERT_NEAR(cv::norm(points[i] - axis), 30, 1e-9) << c.side << c.yIsUp;
            ASSERT_NEAR(normals[i].dot(axis - points[i]), 30 * c.inwards, 1e-9) << c.side << c.yIsUp;
        }
    }
}

TEST(PartOutline, LeavesOutCornersAndWhatIsTooSmall) {
    const Loop corners = bracket();
    TDrawingOptions options;
    options.hasReference = true;
    // A slit of a pixel, a dimple of two.
    const std::vector<TOutline> drawing = {linesOf(corners),
                                           linesOf({{-30, -30}, {-20, -30}, {-20, -29}, {-30, -29}}),
                                           {outlineArc({0, 28}, 2, 0, 360)}};
    for (const double sigma : {1.0, 2.0}) {
        options.sigma = sigma;
        const std::vector<cv::Point2d> points = orx::teachPart(drawing, options).outline();
        // Twelve stretches of two to three sigma are missing.
        EXPECT_NEAR(static_cast<double>(points.size()), lengthOf({corners}) - 12 * 2.5 * sigma, 8 * sigma);
        for (const cv::Point2d& p : points) {
            EXPECT_GT(distanceToCorners({corners}, p), 2 * sigma);
            EXPECT_LT(distanceTo({corners}, p), 1e-9);
        }
    }
}

// As programs that draw write out curves.
TEST(PartOutline, HasAPointAPixelAlongPiecesOfAnyLength) {
    Loop loop;
    for (int i = 0; i < 3000; ++i) {
        loop.push_back(50 * cv::Point2d(std::cos(i * CV_PI / 1500), std::sin(i * CV_PI / 1500)));
    }
    const TPartModel model = orx::teachPart(std::vector<TOutline>{linesOf(loop)});
    ASSERT_TRUE(model.valid());
    EXPECT_EQ(model.report().symmetry, 0);
    const std::vector<cv::Point2d> points = model.outline();
    EXPECT_EQ(points.size(), 314U);
    for (std::size_t i = 1; i < points.size(); ++i) EXPECT_NEAR(cv::norm(points[i] - points[i - 1]), 1, 0.01);
}

// Roundings fall otherwise for each: nothing may leave its memory.
TEST(PartOutline, MayLieAnywhere) {
    cv::RNG random(7);
    for (int i = 0; i < 100; ++i) {
        const cv::Point2d centre(random.uniform(-1e4, 1e4), random.uniform(-1e4, 1e4));
        const TOutline circle = {
            outlineArc(centre, random.uniform(20.0, 90.0), random.uniform(0.0, 360.0), 360)};
        TDrawingOptions options;
        options.hasReference = i % 2 == 0;
        EXPECT_EQ(orx::teachPart(std::vector<TOutline>{circle}, options).report().symmetry, 0);
    }
}

TEST(PartOutline, HasTheSymmetryOfTheDrawing) {
    const auto report = [](const std::vector<TOutline>& drawing) { return orx::teachPart(drawing).report(); };
    EXPECT_EQ(report({gearOutline(64, 150, 140), {outlineArc({}, 40, 0, 360)}}).symmetry, 64);
    EXPECT_EQ(report({gearOutline(64, 150, 140), {outlineArc({60, 0}, 5, 0, 360)}}).symmetry, 1);
    EXPECT_EQ(report({{outlineArc({}, 40, 10, -360)}}).symmetry, 0);
    const orx::TTeachReport line = report({{outlineLine({0, 0}, {100, 0})}});
    EXPECT_TRUE(line.aShiftIsFree && line.scaleIsFree);
}

// Fine teeth leave nothing of themselves on coarse levels but the circle that they stand on.
TEST(PartOutline, ShowsFineTeethAsACircleOnCoarseLevels) {
    const std::vector<int> points =
        orx::teachPart(std::vector<TOutline>{gearOutline(24, 60, 53)}).report().pointsPerLevel;
    ASSERT_EQ(points.size(), 4U);
    const double circle = 2 * CV_PI * 56.5;
    EXPECT_NEAR(points[2], circle / 4, 0.25 * circle / 4);
    EXPECT_NEAR(points[3], circle / 8, 0.25 * circle / 8);
}

TEST(PartOutline, IsFoundInPicturesOfThePart) {
    const orx::TPartPose place{100.3, 90.8, 17, 1};
    const Loops loops = {bracket(), hole({-28, -28}, 7)};
    Look look;
    look.noise = 2;
    for (const double contrast : {100.0, -40.0}) {
        look.contrast = contrast;
        look.ground = 120;
        const cv::Mat img = picture(loops, place, look);
        for (const orx::TBrightSide side : {orx::bsUnknown, orx::bsLeft, orx::bsRight}) {
            TDrawingOptions options;
            options.brightSide = side;
            options.hasReference = true;
            const TPartModel model =
                orx::teachPart(std::vector<TOutline>{linesOf(loops[0]), linesOf(loops[1])}, options);
            const orx::TFindResult found = orx::findParts(img, model);
            ASSERT_EQ(found.status, orx::msOk);
            // The bracket is walked with its material to the right.
            const bool fits = side == orx::bsUnknown || (side == orx::bsRight) == (contrast > 0);
            ASSERT_EQ(found.parts.size(), fits ? 1U : 0U) << contrast << ' ' << side;
            if (!fits) continue;
            EXPECT_NEAR(found.parts[0].pose.x, place.x, 0.03);
            EXPECT_NEAR(found.parts[0].pose.y, place.y, 0.03);
            EXPECT_NEAR(found.parts[0].pose.angle, place.angle, 0.05);
        }
    }
}

TEST(PartOutline, RefusesWhatCantBeDrawn) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    const auto status = [](const TOutline& outline, const TDrawingOptions& options = {}) {
        return orx::teachPart(std::vector<TOutline>{outline}, options).report().status;
    };
    EXPECT_EQ(status(slot()), orx::msOk);
    EXPECT_EQ(orx::teachPart(std::vector<TOutline>()).report().status, orx::msBadOutline);
    EXPECT_EQ(status({}), orx::msBadOutline);
    EXPECT_EQ(status({outlineLine({1, 2}, {1, 2})}), orx::msBadOutline);
    EXPECT_EQ(status({outlineLine({1, 2}, {kNan, 2})}), orx::msBadOutline);
    EXPECT_EQ(status({outlineArc({0, 0}, 0, 0, 90)}), orx::msBadOutline);
    EXPECT_EQ(status({outlineArc({0, 0}, -30, 0, 90)}), orx::msBadOutline);
    EXPECT_EQ(status({outlineArc({0, 0}, 30, 0, 361)}), orx::msBadOutline);
    EXPECT_EQ(status({outlineArc({0, 0}, 30, 0, 0)}), orx::msBadOutline);
    EXPECT_EQ(status(TOutline(100001, outlineLine({0, 0}, {50, 0}))), orx::msBadOutline);
    EXPECT_EQ(status({outlineLine({0, 0}, {10, 0})}), orx::msTooFewEdges);
    EXPECT_EQ(status({outlineLine({0, 0}, {250000, 0})}), orx::msTooLarge);
    EXPECT_EQ(status({outlineLine({2e6, 0}, {2e6 + 50, 0})}), orx::msTooLarge);
    EXPECT_EQ(status({outlineLine({1e300, 0}, {-1e300, 0})}), orx::msTooLarge);
    TDrawingOptions options;
    for (const double pixelsPerUnit : {0.0, -1.0, kNan}) {
        options.pixelsPerUnit = pixelsPerUnit;
        EXPECT_EQ(status(slot(), options), orx::msBadOptions);
    }
    options = {};
    options.brightSide = static_cast<orx::TBrightSide>(3);
    EXPECT_EQ(status(slot(), options), orx::msBadOptions);
    options = {};
    options.hasReference = true;
    options.reference = {kNan, 0};
    EXPECT_EQ(status(slot(), options), orx::msBadOptions);
    options.reference = {2e6, 0};
    EXPECT_EQ(status(slot(), options), orx::msTooLarge);
    options = {};
    options.pixelsPerUnit = 1e8;
    EXPECT_EQ(status(slot(), options), orx::msTooLarge);
}

}  // namespace
