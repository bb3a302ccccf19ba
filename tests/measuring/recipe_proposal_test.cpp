// Recipes that are proposed from one picture, on others of the same part.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "orxFunctions/orxfunctions.h"
#include "support/part_scene.h"
#include "support/synthetic_scene.h"
#include "tests/measuring/tilted_plate.h"
#include "tests/support/temporary_folder.h"

namespace {

using scenes::PartKind;

class ProposedRecipe : public testing::Test {
  protected:
    // The recipe and the model that it taught, as a host keeps them.
    orx::TRecipe taught(const cv::Mat& picture, orx::TProposalOptions options = {}) {
        options.teach = true;
        options.model = "a.part";
        options.folder = folder_.name();
        proposal_ = orx::proposeRecipe(picture, options);
        EXPECT_TRUE(proposal_.valid) << proposal_.problem;
        if (!proposal_.valid) return {};
        EXPECT_EQ(orx::writePartModel(folder_ / "a.part", proposal_.partModel), orx::msOk);
        const orx::TRecipe recipe = orx::parseRecipe(proposal_.text, folder_.name());
        EXPECT_TRUE(recipe.valid());
        EXPECT_EQ(static_cast<int>(recipe.featureNames().size()), proposal_.features);
        return recipe;
    }

    static bool hasNominal(const orx::TRecipe& recipe, double wanted, double tolerance) {
        return std::any_of(recipe.targets().begin(), recipe.targets().end(), [&](const auto& target) {
            return target.hasNominal && std::abs(target.nominal - wanted) < tolerance;
        });
    }

    test::TemporaryFolder folder_;
    orx::TProposal proposal_;
};

struct Look {
    PartKind kind;
    double scale;
    double contrast;
    double noise;
    double blur;
    int features;  // at least
};

void PrintTo(const Look& look, std::ostream* out) {
    *out << scenes::partName(look.kind) << ", scale " << look.scale << ", contrast " << look.contrast;
}

class ProposedFor : public ProposedRecipe, public testing::WithParamInterface<Look> {};

// Faint, noisy and dark parts: short arcs that noise moves, edges in pieces and edges of noise must not be
// proposed, or not between limits that a part as good would break.
TEST_P(ProposedFor, PartsAsGoodPassAtOtherPlacesAndAngles) {
    const Look look = GetParam();
    scenes::PartSceneSettings settings;
    settings.kind = look.kind;
    settings.minScale = settings.maxScale = look.scale;
    settings.size = {cvRound(150 * look.scale + 90), cvRound(150 * look.scale + 70)};
    settings.contrast = look.contrast;
    settings.noiseSigma = look.noise;
    settings.blurSigma = look.blur;
    settings.seed = 11;
    const orx::TRecipe recipe = taught(scenes::renderParts(settings).image);
    EXPECT_GE(proposal_.features, look.features);
    for (std::size_t i = 0; i < recipe.featureNames().size(); ++i)
        EXPECT_THAT(recipe.featureNames()[i], testing::EndsWith(" " + std::to_string(i + 1)));
    for (std::uint64_t seed = 100; seed < 104; ++seed) {
        settings.seed = seed;
        const orx::TRecipeResult result = recipe.run(scenes::renderParts(settings).image);
        EXPECT_EQ(result.verdict, orx::vdPass) << orx::toJson(result);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Parts, ProposedFor,
    testing::Values(Look{PartKind::plate, 2, -60, 3, 0.8, 7}, Look{PartKind::plate, 2, 60, 8, 0.8, 7},
                    Look{PartKind::plate, 1, 15, 2, 0.8, 4}, Look{PartKind::bracket, 1, 15, 2, 0.8, 4},
                    Look{PartKind::key, 2, -60, 3, 0.8, 4}, Look{PartKind::gear, 2, 100, 2, 0.8, 13},
                    Look{PartKind::notchedRing, 1, 100, 2, 0.8, 2}, Look{PartKind::plate, 2, 12, 2, 1.5, 7}));

TEST_F(ProposedRecipe, CalibratedOnesTellWhatIsTrueOnThePlane) {
    const orx::TPlaneCalibration camera = tilted_plate::camera(8);
    ASSERT_EQ(orx::writePlaneCalibration(folder_ / "plane.json", tilted_plate::calibrated(camera, 0.05, 1)),
              orx::plOk);
    orx::TProposalOptions options;
    options.calibration = "plane.json";
    const orx::TRecipe recipe = taught(tilted_plate::render(camera, {2, -3, 15, 1}), options);
    // Four holes, which the tilt shows as ellipses, and four sides, which the lens bends.
    EXPECT_EQ(proposal_.features, 8);
    for (const std::string& name : recipe.featureNames())
        EXPECT_THAT(name, testing::AnyOf(testing::HasSubstr("line"), testing::HasSubstr("circle")));
    for (const double wanted : {16.0, 10.0, 6.0, 52.0, 90.0, 60.0, 24.0})
        EXPECT_TRUE(hasNominal(recipe, wanted, 0.02)) << wanted << proposal_.text;
    for (const double angle : {160.0, -75.0}) {
        const cv::Mat other = tilted_plate::render(camera, {-3, 2, angle, 1}, {0.7, 2, 9});
        const orx::TRecipeResult result = recipe.run(other);
        EXPECT_EQ(result.verdict, orx::vdPass) << orx::toJson(result);
    }
}

// A bar beside the part reaches into the region that was asked for.
TEST_F(ProposedRecipe, WhatTheRegionCutsIsNotProposed) {
    cv::Mat ideal(300, 400, CV_32F, cv::Scalar(60));
    scenes::paint(ideal, scenes::Bar{{200, 150}, 0, 120, 80}, 160);
    scenes::paint(ideal, scenes::Disk{{190, 150}, 20}, 60);
    scenes::paint(ideal, scenes::Bar{{200, 60}, 0, 300, 50}, 130);
    const cv::Mat picture = scenes::expose(ideal, {0.0, 0.8, 2, 1});
    orx::TProposalOptions options;
    options.region = {120, 70, 160, 140};
    const orx::TRecipe recipe = taught(picture, options);
    EXPECT_EQ(proposal_.features, 5);
    EXPECT_TRUE(hasNominal(recipe, 40, 0.05));
    EXPECT_TRUE(hasNominal(recipe, 80, 0.05));
    EXPECT_TRUE(hasNominal(recipe, 120, 0.05));
    // The part is not found where it is cut, and the region tells no part of it away.
    options.region = {120, 120, 160, 100};
    taught(picture, options);
    EXPECT_GE(proposal_.features, 4);
}

// A rim five pixels beside a hole: a search that reached it would find it in a part that lies a little off.
TEST_F(ProposedRecipe, SearchesEndBeforeTheNextEdge) {
    cv::Mat ideal(240, 240, CV_32F, cv::Scalar(60));
    scenes::paint(ideal, scenes::Disk{{120, 118}, 80}, 130);
    scenes::paint(ideal, scenes::Disk{{120, 118}, 40}, 200);
    scenes::paint(ideal, scenes::Disk{{120, 118}, 35}, 60);
    taught(scenes::expose(ideal, {0.0, 0.8, 1.5, 1}));
    Json::Value root;
    std::istringstream(proposal_.text) >> root;
    ASSERT_EQ(root["features"].size(), 3U) << proposal_.text;
    EXPECT_NEAR(root["features"][0]["radius"].asDouble(), 80, 0.05);
    EXPECT_NEAR(root["features"][0]["search"].asDouble(), 8, 0.01);
    for (Json::ArrayIndex i = 1; i < 3; ++i) {
        EXPECT_LT(root["features"][i]["search"].asDouble(), 4.0);
        EXPECT_GE(root["features"][i]["search"].asDouble(), 2.0);
    }
}

TEST_F(ProposedRecipe, ThePartIsTheLargestThingThatIsWhole) {
    cv::Mat ideal(300, 500, CV_32F, cv::Scalar(60));
    scenes::paint(ideal, scenes::Bar{{20, 150}, 90, 500, 90}, 160);  // cut by the picture on three sides
    scenes::paint(ideal, scenes::Disk{{230, 140}, 70}, 160);
    scenes::paint(ideal, scenes::Disk{{230, 150}, 30}, 60);  // of the part
    scenes::paint(ideal, scenes::Disk{{420, 80}, 30}, 160);
    const cv::Mat picture = scenes::expose(ideal, {0.0, 0.8, 2, 1});
    const orx::TPartRegion region = orx::findPartRegion(picture);
    ASSERT_TRUE(region.found);
    EXPECT_EQ(region.others, 1);  // of the bar, an edge alone is seen
    EXPECT_TRUE((region.box & cv::Rect(160, 70, 141, 141)) == cv::Rect(160, 70, 141, 141)) << region.box;
    EXPECT_LT(region.box.width, 160);
    EXPECT_LT(region.box.height, 160);
    taught(picture);
    EXPECT_EQ(proposal_.features, 2);
    EXPECT_EQ(proposal_.region.box, region.box);
    EXPECT_FALSE(orx::findPartRegion(cv::Mat()).found);
    EXPECT_FALSE(orx::findPartRegion(cv::Mat(90, 90, CV_8UC1, cv::Scalar(9))).found);
}

// The polygon of a large circle has long sides: they are no lines of their own.
TEST_F(ProposedRecipe, ALargeCircleIsOneCircle) {
    cv::Mat ideal(460, 460, CV_32F, cv::Scalar(60));
    scenes::paint(ideal, scenes::Disk{{231.3, 228.6}, 190}, 160);
    const orx::TRecipe recipe = taught(scenes::expose(ideal, {0.0, 0.8, 2, 1}));
    EXPECT_EQ(recipe.featureNames(), std::vector<std::string>{"circle 1"});
    EXPECT_TRUE(hasNominal(recipe, 380, 0.1));
}

// Nor are those of an arc, up to its last.
TEST_F(ProposedRecipe, AHalfDiskHasOneLine) {
    cv::Mat ideal(300, 460, CV_32F, cv::Scalar(60));
    scenes::paint(ideal, scenes::Disk{{231.3, 228.6}, 190}, 160);
    scenes::paint(ideal, scenes::Bar{{231.3, 278.6}, 0, 460, 100}, 60);
    const std::vector<std::string> names = taught(scenes::expose(ideal, {0.0, 0.8, 2, 1})).featureNames();
    const auto isLine = [](const std::string& name) { return name.compare(0, 4, "line") == 0; };
    EXPECT_GE(names.size(), 2U);
    EXPECT_EQ(std::count_if(names.begin(), names.end(), isLine), 1) << proposal_.text;
}

TEST_F(ProposedRecipe, NumbersAreDrawnApart) {
    scenes::PartSceneSettings settings;
    settings.kind = PartKind::gear;
    settings.minScale = settings.maxScale = 2;
    settings.size = {320, 300};
    settings.seed = 5;
    taught(scenes::renderParts(settings).image);
    ASSERT_EQ(proposal_.picture.type(), CV_8UC3);
    EXPECT_EQ(proposal_.picture.size(), cv::Size(640, 600));  // two times: the numbers want room
    // Each in a frame of its own, which nothing is drawn over.
    int frames = 0;
    for (const cv::Scalar& colour : {cv::Scalar(255, 190, 60), cv::Scalar(90, 220, 90)}) {
        cv::Mat drawn;
        cv::inRange(proposal_.picture, colour, colour, drawn);
        std::vector<std::vector<cv::Point>> borders;
        cv::findContours(drawn, borders, cv::RETR_LIST, cv::CHAIN_APPROX_SIMPLE);
        for (const std::vector<cv::Point>& border : borders) {
            const cv::Rect box = cv::boundingRect(border);
            // Within its frame, about as high as a digit.
            const bool isHole = cv::contourArea(border, true) > 0.0;
            if (isHole && box.height >= 12 && box.height <= 24 && border.size() <= 8) ++frames;
        }
    }
    EXPECT_EQ(frames, proposal_.features);
}

TEST_F(ProposedRecipe, TeachingWantsANameForItsModel) {
    orx::TProposalOptions options;
    options.teach = true;
    const cv::Mat picture = scenes::renderPartAlone(PartKind::plate, 2).image;
    EXPECT_THAT(orx::proposeRecipe(picture, options).problem, testing::HasSubstr("option"));
}

}  // namespace
