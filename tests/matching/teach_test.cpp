#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/matching/part_model.h"
#include "support/part_scene.h"
#include "taught_scene.h"

namespace {

using namespace taught_scene;
using orx::TPartModel;
using orx::TPartPose;
using orx::TTeachOptions;

const TPartPose kPlace{100.3, 90.8, 17, 1};
const cv::Rect kRegion(25, 15, 150, 150);
const Loops kBracket = {bracket(), hole({-28, -28}, 7)};

// Share of the outline's points within `distance` of the part at its place.
double shareOnThePart(const TPartModel& model, const Loops& loops, double distance) {
    const Loops there = placed(loops, kPlace);
    double near = 0;
    for (const cv::Point2d& p : orx::applyPoseToPoints(model.taughtPose(), model.outline())) {
        near += distanceTo(there, p) < distance ? 1 : 0;
    }
    return near / static_cast<double>(model.outline().size());
}

TEST(TeachPart, LaysTheOutlineOnThePartToHundredths) {
    TTeachOptions options;
    for (const bool own : {false, true}) {
        options.hasReference = own;
        options.reference = {60, 70};
        options.direction = own ? 130 : 0;
        const TPartModel model = orx::teachPart(picture(kBracket, kPlace), kRegion, options);
        ASSERT_TRUE(model.valid());
        const TPartPose pose = model.taughtPose();
        EXPECT_EQ(pose.angle, options.direction);
        EXPECT_TRUE(!own || cv::Point2d(pose.x, pose.y) == options.reference);
        const Loops there = placed(kBracket, kPlace);
        const std::vector<cv::Point2d> points = orx::applyPoseToPoints(pose, model.outline());
        const std::vector<cv::Point2d> normals =
            orx::applyPoseToPoints({0, 0, pose.angle, 1}, model.normals());
        ASSERT_EQ(points.size(), normals.size());
        double squares = 0;
        int count = 0;
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (distanceToCorners({there.front()}, points[i]) < 8) continue;
            const double distance = distanceTo(there, points[i]);
            squares += distance * distance;
            ++count;
            // From dark to bright: the part lies where the normal points to.
            EXPECT_NEAR(cv::norm(normals[i]), 1, 1e-6);
            const cv::Point2d probe = points[i] + 2 * normals[i];
            EXPECT_TRUE(scenes::contains(there[0], probe) && !scenes::contains(there[1], probe));
        }
        EXPECT_GT(count, 250);
        EXPECT_LT(std::sqrt(squares / count), 0.02);
    }
}

// The middle of the outline's upright box: of a rectangle at 0 degrees its centre.
TEST(TeachPart, TakesTheMiddleForReference) {
    const TPartModel model =
        orx::teachPart(picture({rectangle(90, 50)}, {101.3, 88.6, 0, 1}), kRegion, TTeachOptions());
    ASSERT_TRUE(model.valid());
    EXPECT_NEAR(model.taughtPose().x, 101.3, 0.05);
    EXPECT_NEAR(model.taughtPose().y, 88.6, 0.05);
    EXPECT_NEAR(model.report().radius, std::hypot(45, 25), 1);
}

TEST(TeachPart, LooksInTheRegionAlone) {
    const cv::Mat img = picture(kBracket, kPlace);
    const TPartModel whole = orx::teachPart(img, kRegion);
    cv::Mat mask = cv::Mat::zeros(img.size(), CV_8UC1);
    mask(kRegion).setTo(1);
    const std::vector<cv::Point2d> corners = {{25, 15}, {174, 15}, {174, 164}, {25, 164}};
    EXPECT_EQ(orx::teachPart(img, mask).outline(), whole.outline());
    EXPECT_EQ(orx::teachPart(img, corners).outline(), whole.outline());

    // Only what lies left of a slanted line.
    const std::vector<cv::Point2d> triangle = {{25, 15}, {174, 15}, {25, 164}};
    const TPartModel part = orx::teachPart(img, triangle);
    ASSERT_TRUE(part.valid());
    EXPECT_GT(part.outline().size(), 50U);
    EXPECT_LT(part.outline().size(), whole.outline().size() * 8 / 10);
    for (const cv::Point2d& p : orx::applyPoseToPoints(part.taughtPose(), part.outline())) {
        EXPECT_LT(p.x - 25 + p.y - 15, 149 + 2);
    }
}

TEST(TeachPart, TakesPicturesOfEveryKind) {
    const cv::Mat grey = picture(kBracket, kPlace);
    const std::vector<cv::Point2d> outline = orx::teachPart(grey, kRegion).outline();
    cv::Mat deep;
    grey.convertTo(deep, CV_16U, 257);
    EXPECT_EQ(orx::teachPart(deep, kRegion).outline(), outline);
    cv::Mat colour;
    cv::cvtColor(grey, colour, cv::COLOR_GRAY2BGR);
    EXPECT_EQ(orx::teachPart(colour, kRegion).outline(), outline);
    // A view into a larger picture, and one thread in the place of all.
    cv::Mat wide(300, 400, CV_8UC1, cv::Scalar(60));
    const cv::Mat view = wide(cv::Rect(90, 70, grey.cols, grey.rows));
    grey.copyTo(view);
    cv::setNumThreads(1);
    EXPECT_EQ(orx::teachPart(view, kRegion).outline(), outline);
    cv::setNumThreads(-1);
}

struct Light {
    double contrast;
    double noise;
    double texture;  // grey levels of bars beside and on the part
};

TEST(TeachPart, TakesTheLeastContrastFromThePicture) {
    for (const Light light :
         {Light{100, 2, 0}, Light{20, 2, 0}, Light{-50, 2, 0}, Light{100, 8, 0}, Light{100, 2, 18}}) {
        cv::Mat ideal(180, 200, CV_32F, cv::Scalar(110));
        scenes::paint(ideal, placed(kBracket, kPlace), 110 + light.contrast);
        for (int y = 0; y < ideal.rows; y += 12) ideal.rowRange(y, y + 6) += light.texture;
        Look look;
        look.noise = light.noise;
        const TPartModel model = orx::teachPart(blurredAndNoisy(ideal, look), kRegion);
        ASSERT_TRUE(model.valid()) << light.contrast << ' ' << light.noise << ' ' << light.texture;
        EXPECT_GT(shareOnThePart(model, kBracket, 1.5), 0.97)
            << light.contrast << ' ' << light.noise << ' ' << light.texture;
        EXPECT_GT(static_cast<double>(model.outline().size()), 0.75 * lengthOf(kBracket));
        EXPECT_NEAR(model.report().leastContrast, std::abs(light.contrast),
                    0.25 * std::abs(light.contrast) + light.texture);
    }
}

// Grains of the ground, 15 levels of deviation, have edges of up to half of the part's contrast.
TEST(TeachPart, TellsThePartFromRoughGround) {
    for (const scenes::PartKind kind : scenes::kFiveParts) {
        scenes::PartSceneSettings settings;
        settings.kind = kind;
        settings.size = {240, 240};
        settings.texture = 15;
        const scenes::PartScene scene = scenes::renderParts(settings);
        ASSERT_EQ(scene.parts.size(), 1U);
        const scenes::ScenePose& pose = scene.parts[0].pose;
        const cv::Rect region(cvRound(pose.x) - 65, cvRound(pose.y) - 65, 131, 131);
        const TPartModel model = orx::teachPart(scene.image, region & cv::Rect({}, scene.image.size()));
        ASSERT_TRUE(model.valid());
        const Loops there = placed(scenes::partShape(kind).loops, {pose.x, pose.y, pose.angle, pose.scale});
        double near = 0;
        for (const cv::Point2d& p : orx::applyPoseToPoints(model.taughtPose(), model.outline())) {
            near += distanceTo(there, p) < 1.5 ? 1 : 0;
        }
        EXPECT_GT(near / static_cast<double>(model.outline().size()), 0.9) << scenes::partName(kind);
        // Slanted edges have 0.7 points a pixel.
        EXPECT_GT(near, 0.65 * lengthOf(there)) << scenes::partName(kind);
    }
}

TEST(TeachPart, LeavesOutDust) {
    cv::Mat ideal(180, 200, CV_32F, cv::Scalar(60));
    scenes::paint(ideal, placed(kBracket, kPlace), 160);
    for (const cv::Point speck : {cv::Point(120, 60), cv::Point(150, 80), cv::Point(60, 30)}) {
        ideal(cv::Rect(speck, cv::Size(2, 2))).setTo(160);
    }
    EXPECT_EQ(shareOnThePart(orx::teachPart(blurredAndNoisy(ideal, {}), kRegion), kBracket, 1.5), 1);
}

TEST(TeachPart, ChoosesLevelsOnWhichThePartIsSeen) {
    struct Size {
        double scale;
        std::size_t levels;
    };
    for (const Size size : {Size{1, 3}, Size{0.45, 2}, Size{0.2, 1}}) {
        TPartPose place = kPlace;
        place.scale = size.scale;
        const TPartModel model = orx::teachPart(picture(kBracket, place), kRegion);
        ASSERT_TRUE(model.valid()) << size.scale;
        const std::vector<int>& points = model.report().pointsPerLevel;
        // Half the part's size, 42 pixels, is at least 6 pixels on the coarsest.
        EXPECT_NEAR(static_cast<double>(points.size()), static_cast<double>(size.levels), 1) << size.scale;
        for (std::size_t k = 0; k < points.size(); ++k) {
            const double pixels = size.scale * lengthOf(kBracket) / (1 << k);
            EXPECT_GT(points[k], 0.5 * pixels) << k;
            EXPECT_LT(points[k], 1.1 * pixels) << k;
        }
    }
    TTeachOptions options;
    options.levels = 2;
    EXPECT_EQ(orx::teachPart(picture(kBracket, kPlace), kRegion, options).report().pointsPerLevel.size(), 2U);
}

TEST(TeachPart, RefusesWhatItCantTeachFrom) {
    const cv::Mat img = picture(kBracket, kPlace);
    const auto status = [&img](const TTeachOptions& options) {
        const TPartModel model = orx::teachPart(img, kRegion, options);
        EXPECT_EQ(model.valid(), model.report().status == orx::msOk);
        return model.report().status;
    };
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    TTeachOptions options;
    EXPECT_EQ(status(options), orx::msOk);
    for (const double sigma : {0.4, 5.1, kNan}) {
        options.sigma = sigma;
        EXPECT_EQ(status(options), orx::msBadOptions);
    }
    options = {};
    for (const int levels : {-1, 9}) {
        options.levels = levels;
        EXPECT_EQ(status(options), orx::msBadOptions);
    }
    options = {};
    options.hasReference = true;
    for (const double x : {kNan, 1e300}) {
        options.reference.x = x;
        EXPECT_EQ(status(options), orx::msBadOptions);
    }
    options = {};
    options.minContrast = 250;
    EXPECT_EQ(status(options), orx::msTooFewEdges);

    const auto of = [](const cv::Mat& picture, const auto& region) {
        return orx::teachPart(picture, region).report().status;
    };
    EXPECT_EQ(of(cv::Mat(), kRegion), orx::msBadImage);
    EXPECT_EQ(of(cv::Mat(180, 200, CV_32F, cv::Scalar(0)), kRegion), orx::msBadImage);
    EXPECT_EQ(of(cv::Mat(180, 200, CV_8UC1, cv::Scalar(7)), kRegion), orx::msTooFewEdges);
    EXPECT_EQ(of(img, cv::Rect(60, 60, 1, 1)), orx::msTooFewEdges);
    constexpr int kLargest = std::numeric_limits<int>::max();
    for (const cv::Rect& rect : {cv::Rect(), cv::Rect(-1, 0, 50, 50), cv::Rect(100, 0, 101, 50),
                                 cv::Rect(10, 10, kLargest, kLargest), cv::Rect(kLargest, 0, 50, 50)}) {
        EXPECT_EQ(of(img, rect), orx::msBadRegion);
    }
    using Polygon = std::vector<cv::Point2d>;
    EXPECT_EQ(of(img, Polygon{{20, 20}, {90, 90}}), orx::msBadRegion);
    EXPECT_EQ(of(img, Polygon{{20, 20}, {90, 90}, {kNan, 30}}), orx::msBadRegion);
    EXPECT_EQ(of(img, Polygon{{20, 20}, {90, 90}, {201, 30}}), orx::msBadRegion);
    EXPECT_EQ(of(img, cv::Mat::zeros(180, 200, CV_8UC1)), orx::msBadRegion);
    EXPECT_EQ(of(img, cv::Mat::ones(180, 199, CV_8UC1)), orx::msBadRegion);
    EXPECT_EQ(of(img, cv::Mat::ones(180, 200, CV_32F)), orx::msBadRegion);
    EXPECT_FALSE(TPartModel().valid());
    EXPECT_TRUE(TPartModel().outline().empty());
}

}  // namespace
