// Recipes whose features are ellipses, meet, or place the part on the plane, in pictures whose truth is
// known.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "orxFunctions/orxfunctions.h"
#include "tests/measuring/recipe_answers.h"
#include "tests/support/edge_scene.h"
#include "tests/support/flat_plane.h"
#include "tests/support/temporary_folder.h"

namespace {

using recipe_answers::parsed;
using recipe_answers::valueOf;
using testing::HasSubstr;

// Sharp: edges of these scenes have the profile of straight ones, which hardly shows then.
const edge_scene::Look kLook{40, 200, 0.4, 2, 5};

void expectNear(const orx::TRecipeResult& result, const char* name, double truth, double atMost) {
    const orx::TRecipeValue& value = valueOf(result, name);
    EXPECT_TRUE(value.measured) << name << ": " << value.problem;
    EXPECT_LT(value.deviation, atMost) << name;
    EXPECT_NEAR(value.value, truth, 3.5 * value.deviation + 0.003) << name;
}

double discs(double x, double y) {
    return std::max(30 - std::hypot(x - 50, y - 45), 20 - std::hypot(x - 90, y - 45));
}

constexpr const char* kDiscs = R"({"recipe": 1, "features": [
    {"name": "left", "type": "arc", "center": [50, 45], "radius": 30, "start": 60, "sweep": 240, "search": 4},
    {"name": "right", "type": "arc", "center": [90, 45], "radius": 20, "start": -100, "sweep": 200, "search": 4},
    {"name": "low", "type": "intersection", "of": ["left", "right"], "which": "first"},
    {"name": "high", "type": "intersection", "of": ["left", "right"], "which": "second"},
    {"name": "axis", "type": "connection", "of": ["left", "right"]},
    {"name": "west", "type": "intersection", "of": ["axis", "left"], "which": "first"},
    {"name": "east", "type": "intersection", "of": ["right", "axis"], "which": "second"}],
  "values": [
    {"name": "x", "type": "x", "of": ["low"]}, {"name": "low", "type": "y", "of": ["low"]},
    {"name": "high", "type": "y", "of": ["high"]}, {"name": "west", "type": "x", "of": ["west"]},
    {"name": "east", "type": "x", "of": ["east"]}, {"name": "gap", "type": "gap", "of": ["left", "right"]},
    {"name": "off", "type": "concentricity", "of": ["left", "right"]}]})";

// Two discs that overlap: by hand, they meet at x = (50 + 90) / 2 + (900 - 400) / 80.
TEST(RecipeShapes, CirclesMeetAndLieApartAsTheSceneSays) {
    const cv::Mat img = edge_scene::draw({140, 90}, kLook, discs);
    const orx::TRecipeResult result = parsed(kDiscs).run(img);
    const double half = std::sqrt(900 - 26.25 * 26.25);
    expectNear(result, "x", 76.25, 0.05);
    // The first one is to the right of the way from left to right: below it in a picture.
    expectNear(result, "low", 45 + half, 0.05);
    expectNear(result, "high", 45 - half, 0.05);
    expectNear(result, "west", 20, 0.05);
    expectNear(result, "east", 110, 0.05);
    expectNear(result, "gap", -10, 0.05);
    expectNear(result, "off", 80, 0.08);
}

TEST(RecipeShapes, WhatIsMadeOfShapesThatDoNotMeetTellsSo) {
    const auto apart = [](double x, double y) {
        return std::max(15 - std::hypot(x - 30, y - 45), 15 - std::hypot(x - 90, y - 45));
    };
    const orx::TRecipeResult result = parsed(R"({"recipe": 1, "features": [
        {"name": "a", "type": "circle", "center": [30, 45], "radius": 15, "search": 4},
        {"name": "b", "type": "circle", "center": [90, 45], "radius": 15, "search": 4},
        {"name": "both", "type": "intersection", "of": ["a", "b"]},
        {"name": "twin", "type": "arc", "center": [30, 45], "radius": 15, "start": 0, "sweep": 350, "search": 4},
        {"name": "touching", "type": "intersection", "of": ["a", "twin"]},
        {"name": "beyond", "type": "midpoint", "of": ["both", "a"]}],
      "values": [{"name": "gap", "type": "gap", "of": ["a", "b"]}, {"name": "x", "type": "x", "of": ["both"]},
        {"name": "same", "type": "x", "of": ["touching"]}, {"name": "y", "type": "y", "of": ["beyond"]}]})")
                                          .run(edge_scene::draw({120, 90}, kLook, apart));
    expectNear(result, "gap", 30, 0.05);
    for (const char* name : {"x", "same", "y"}) {
        EXPECT_EQ(valueOf(result, name).verdict, orx::vdNotMeasured) << name;
        EXPECT_FALSE(valueOf(result, name).problem.empty()) << name;
    }
    EXPECT_EQ(result.verdict, orx::vdNotMeasured);
}

// Bright within, and about as far from the outline as is told, close to it.
cv::Mat ellipsePicture(double major, double minor, double degrees) {
    const double c = std::cos(degrees * CV_PI / 180);
    const double s = std::sin(degrees * CV_PI / 180);
    return edge_scene::draw({130, 110}, {40, 200, 0.4, 1, 5, CV_16U}, [=](double x, double y) {
        const cv::Point2d p((x - 65) * c + (y - 55) * s, (y - 55) * c - (x - 65) * s);
        const cv::Point2d scaled(p.x / (major * major), p.y / (minor * minor));
        const double level = 1 - p.dot(scaled);
        return level / std::max(1e-9, 2 * cv::norm(scaled));
    });
}

// A calibration of five pixels a millimetre whose scale down the picture is known to a hundredth. How far
// such a strain moves axes and angle is told by hand.
TEST(RecipeShapes, EllipsesTellWhatTheCalibrationLeavesOpen) {
    const test::TemporaryFolder folder;
    orx::TPlaneCalibration flat = test::flatPlane({130, 110}, {5, 0, 0, 0, 5, 0, 0, 0, 1});
    flat.covariance(4, 4) = 0.05 * 0.05;
    flat.degreesOfFreedom = 100;
    ASSERT_EQ(orx::writePlaneCalibration(folder / "plane.json", flat), orx::plOk);
    for (const double turn : {0.0, 30.0, 90.0}) {
        SCOPED_TRACE(turn);
        const orx::TRecipeResult result =
            parsed(
                R"({"recipe": 1, "unit": "mm", "calibration": "plane.json", "features": [{"name": "e", "type": "ellipse",
              "center": [65, 55], "semiMajor": 40, "semiMinor": 25, "angle": )" +
                    std::to_string(turn) + R"(, "search": 5}],
            "values": [{"name": "major", "type": "majorDiameter", "of": ["e"]},
              {"name": "minor", "type": "minorDiameter", "of": ["e"]},
              {"name": "turn", "type": "angle", "of": ["e"], "nominal": )" +
                    std::to_string(turn) + R"(, "tolerance": 5},
              {"name": "y", "type": "y", "of": ["e"], "frame": "picture"}]})",
                folder.name())
                .run(ellipsePicture(40, 25, turn));
        expectNear(result, "major", 16, 0.2);
        expectNear(result, "minor", 10, 0.2);
        expectNear(result, "turn", turn, 1.5);
        expectNear(result, "y", 11, 0.2);
        const double s = std::sin(turn * CV_PI / 180);
        const double c = std::cos(turn * CV_PI / 180);
        EXPECT_NEAR(valueOf(result, "major").calibrationDeviation, 0.01 * 16 * s * s, 0.002);
        EXPECT_NEAR(valueOf(result, "minor").calibrationDeviation, 0.01 * 10 * c * c, 0.002);
        const double sway = 0.01 * s * c * (64 + 25) / (64 - 25) * 180 / CV_PI;
        EXPECT_NEAR(valueOf(result, "turn").calibrationDeviation, sway, 0.03 * sway + 0.01);
        EXPECT_NEAR(valueOf(result, "y").calibrationDeviation, 0.01 * 11, 0.002);
    }
}

// The part's axes from a disc and a side of the rectangle around it, five pixels a millimetre.
TEST(RecipeShapes, FeaturesPlaceThePartOnThePlane) {
    const test::TemporaryFolder folder;
    const auto scene = [](double x, double y) {
        const double plate = std::min({x - 20, 120 - x, y - 15, 85 - y});
        return std::min(plate, std::hypot(x - 40, y - 50) - 12);
    };
    const cv::Mat img = edge_scene::draw({140, 100}, kLook, scene);
    const std::string recipe =
        R"({"recipe": 1, "unit": "mm", "calibration": "plane.json",
        "part": {"by": "features", "origin": "hole", "direction": "top"}, "features": [
        {"name": "hole", "type": "circle", "center": [40, 50], "radius": 12, "search": 4},
        {"name": "top", "type": "line", "from": [30, 15], "to": [110, 15], "search": 4},
        {"name": "right", "type": "line", "from": [80, -27], "to": [80, 27], "search": 4}],
      "values": [{"name": "x", "type": "x", "of": ["hole"]}, {"name": "bore", "type": "diameter", "of": ["hole"]},
        {"name": "side", "type": "distance", "of": ["hole", "right"]}, {"name": "there", "type": "partX"},
        {"name": "turn", "type": "partAngle"}]})";
    ASSERT_EQ(orx::writePlaneCalibration(folder / "plane.json",
                                         test::flatPlane({140, 100}, {5, 0, 0, 0, 5, 0, 0, 0, 1})),
              orx::plOk);
    const orx::TRecipeResult seen = parsed(recipe, folder.name()).run(img);
    expectNear(seen, "x", 0, 0.01);
    expectNear(seen, "bore", 4.8, 0.01);
    expectNear(seen, "side", 16, 0.01);
    expectNear(seen, "there", 8, 0.01);
    expectNear(seen, "turn", 0, 0.1);
    // The plane's horizon goes through the picture, and the disc lies behind it: it is seen, but on no plane.
    ASSERT_EQ(orx::writePlaneCalibration(folder / "plane.json",
                                         test::flatPlane({140, 100}, {5, 0, 70, 0, 5, 50, 0.1, 0, 1})),
              orx::plOk);
    const orx::TRecipeResult behind = parsed(R"({"recipe": 1, "calibration": "plane.json",
        "part": {"by": "features", "origin": "hole", "direction": "top"}, "features": [
        {"name": "hole", "type": "circle", "center": [40, 50], "radius": 12, "search": 4},
        {"name": "top", "type": "line", "from": [30, 15], "to": [110, 15], "search": 4}],
      "values": [{"name": "pixels", "type": "partX"}, {"name": "x", "type": "partX", "unit": "mm"},
        {"name": "bore", "type": "diameter", "of": ["hole"], "unit": "mm"}]})",
                                             folder.name())
                                          .run(img);
    EXPECT_FALSE(behind.pose.found);
    for (const orx::TRecipeValue& value : behind.values) {
        EXPECT_FALSE(value.measured) << value.name << ": " << value.value;
        EXPECT_THAT(value.problem, HasSubstr("\"hole\" has no place on the calibrated plane")) << value.name;
    }
}

TEST(RecipeShapes, AnEllipseIsProposedAsOne) {
    const cv::Mat img = ellipsePicture(40, 25, 30);
    const orx::TProposal proposal = orx::proposeRecipe(img);
    ASSERT_TRUE(proposal.valid) << proposal.problem;
    const orx::TRecipe recipe = parsed(proposal.text);
    const orx::TRecipeResult result = recipe.run(img);
    EXPECT_EQ(result.verdict, orx::vdPass) << orx::toJson(result);
    const auto tells = [&](const char* type, double truth) {
        return std::any_of(result.values.begin(), result.values.end(), [&](const orx::TRecipeValue& value) {
            return value.type == type && std::abs(value.value - truth) < 0.1 && value.hasNominal;
        });
    };
    EXPECT_TRUE(tells("majorDiameter", 80)) << proposal.text;
    EXPECT_TRUE(tells("minorDiameter", 50)) << proposal.text;
}

TEST(RecipeShapes, AxesPointsAndEdgesAreDrawnWhereTheyAre) {
    const cv::Mat img = edge_scene::draw({140, 90}, kLook, discs);
    std::string text = kDiscs;
    const std::string where =
        R"("part": {"by": "fixed", "x": 30, "y": 5, "angle": 0}, "draw": {"points": true, "values": false}, )";
    text.insert(text.find("\"features\""), where);
    for (const auto& [there, here] : {std::pair{"[50, 45]", "[20, 40]"}, {"[90, 45]", "[60, 40]"}})
        text.replace(text.find(there), 8, here);
    const orx::TRecipe recipe = parsed(text);
    const orx::TRecipeResult result = recipe.run(img);
    expectNear(result, "x", 46.25, 0.05);
    const cv::Mat drawn = orx::drawRecipeResult(img, recipe, result);
    const auto isColoured = [&](int x, int y) {
        const cv::Vec3b& c = drawn.at<cv::Vec3b>(y, x);
        return std::max({c[0], c[1], c[2]}) - std::min({c[0], c[1], c[2]}) > 60;
    };
    EXPECT_TRUE(isColoured(42, 5));                         // along the x axis
    EXPECT_TRUE(isColoured(30, 12));                        // and the y axis
    EXPECT_TRUE(isColoured(76, 60) || isColoured(76, 59));  // where the circles meet
    EXPECT_FALSE(isColoured(5, 85));
}

}  // namespace
