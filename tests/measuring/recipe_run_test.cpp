#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <thread>

#include "orxFunctions/orxfunctions.h"
#include "support/part_scene.h"
#include "tests/measuring/recipe_answers.h"
#include "tests/measuring/tilted_plate.h"
#include "tests/support/edge_scene.h"
#include "tests/support/flat_plane.h"
#include "tests/support/temporary_folder.h"

namespace {

using recipe_answers::parsed;
using recipe_answers::valueOf;
using testing::HasSubstr;

// How far values are off, beside what is stated.
struct Spread {
    double errors = 0;
    double stated = 0;
    int count = 0;
    void add(const orx::TRecipeValue& value, double truth) {
        ASSERT_TRUE(value.measured) << value.name << ": " << value.problem;
        errors += std::pow(value.value - truth, 2);
        stated += std::pow(value.deviation, 2);
        ++count;
    }
    double rms() const { return std::sqrt(errors / count); }
    double ratio() const { return std::sqrt(stated / errors); }
};

// The plate of the rendered parts, found by its model: its drawing is in the part's own coordinates.
class PlateRecipe : public testing::Test {
  protected:
    PlateRecipe() {
        const scenes::PartPicture alone = scenes::renderPartAlone(scenes::PartKind::plate);
        orx::TTeachOptions options;
        options.hasReference = true;
        options.reference = {alone.pose.x, alone.pose.y};
        options.direction = alone.pose.angle;
        const cv::Rect whole(cv::Point(), alone.image.size());
        EXPECT_EQ(orx::writePartModel(folder_ / "plate.part", orx::teachPart(alone.image, whole, options)),
                  orx::msOk);
    }

    static std::string text(const std::string& part, const std::string& by) {
        const std::string how = R"("search": 4, "by": ")" + by + "\"}";
        return R"({"recipe": 1, "part": )" + part + R"(, "features": [
            {"name": "h1", "type": "circle", "center": [-38, -14], "radius": 9, )" +
               how + R"(,
            {"name": "h2", "type": "circle", "center": [31, 0], "radius": 15, )" +
               how + R"(,
            {"name": "top", "type": "line", "from": [-40, -31], "to": [40, -31], )" +
               how + R"(,
            {"name": "bottom", "type": "line", "from": [-40, 31], "to": [40, 31], )" +
               how + R"(,
            {"name": "left", "type": "line", "from": [-54, -20], "to": [-54, 20], )" +
               how + R"(,
            {"name": "corner", "type": "intersection", "of": ["top", "left"]},
            {"name": "height", "type": "edgePair", "from": [0, -31], "to": [0, 31], "search": 4, "count": 9}
          ], "values": [
            {"name": "d1", "type": "diameter", "of": ["h1"], "nominal": 18, "tolerance": 1},
            {"name": "d2", "type": "diameter", "of": ["h2"], "nominal": 30, "tolerance": [-1, -0.5]},
            {"name": "pitch", "type": "distance", "of": ["h1", "h2"]},
            {"name": "across", "type": "distance", "of": ["top", "bottom"]},
            {"name": "height", "type": "width", "of": ["height"]},
            {"name": "x", "type": "x", "of": ["h1"]},
            {"name": "y", "type": "y", "of": ["corner"]},
            {"name": "square", "type": "angle", "of": ["top", "left"]},
            {"name": "left", "type": "angle", "of": ["left"], "nominal": 90, "tolerance": 2},
            {"name": "round", "type": "roundness", "of": ["h2"], "upper": 0.5},
            {"name": "straight", "type": "straightness", "of": ["top"], "upper": 0.5}]})";
    }
    static const std::map<std::string, double>& truth() {
        static const std::map<std::string, double> kTruth{
            {"d1", 18}, {"d2", 30}, {"pitch", std::hypot(69.0, 14.0)}, {"across", 62}, {"height", 62},
            {"x", -38}, {"y", -31}};
        return kTruth;
    }
    static scenes::PartScene scene(std::uint64_t seed) {
        scenes::PartSceneSettings settings;
        settings.kind = scenes::PartKind::plate;
        settings.seed = seed;
        settings.size = {280, 260};
        settings.blurSigma = 0.7;
        return scenes::renderParts(settings);
    }

    const std::string model_ = R"({"by": "model", "model": "plate.part"})";
    test::TemporaryFolder folder_;
};

TEST_F(PlateRecipe, ValuesAreThoseOfTheDrawingWithinWhatIsStated) {
    constexpr int kScenes = 24;
    for (const char* by : {"calipers", "edges", "chain"}) {
        SCOPED_TRACE(by);
        const orx::TRecipe recipe = parsed(text(model_, by), folder_.name());
        std::map<std::string, Spread> spreads;
        Spread all;
        for (int i = 0; i < kScenes; ++i) {
            const orx::TRecipeResult result = recipe.run(scene(100 + i).image);
            for (const auto& [name, value] : truth()) {
                spreads[name].add(valueOf(result, name), value);
                all.add(valueOf(result, name), value);
            }
            EXPECT_NEAR(valueOf(result, "square").value, 90, 0.2);
            EXPECT_NEAR(valueOf(result, "left").value, 90, 0.3);  // not -90, which is the same line
            EXPECT_LT(valueOf(result, "round").value, 0.06);
            EXPECT_LT(valueOf(result, "straight").value, 0.12);
            EXPECT_EQ(valueOf(result, "d1").verdict, orx::vdPass);
            EXPECT_EQ(valueOf(result, "d2").verdict, orx::vdFail);
            EXPECT_EQ(valueOf(result, "pitch").verdict, orx::vdNoLimits);
            EXPECT_EQ(result.verdict, orx::vdFail);
        }
        for (const auto& [name, spread] : spreads) {
            EXPECT_LT(spread.rms(), 0.03) << name;
            EXPECT_GT(spread.ratio(), 0.6) << name;
            EXPECT_LT(spread.ratio(), 1.7) << name;
        }
        EXPECT_LT(all.rms(), 0.016);
        EXPECT_GT(all.ratio(), 0.85);
        EXPECT_LT(all.ratio(), 1.25);
    }
}

TEST_F(PlateRecipe, TheGuidesExampleMeasuresAPlate) {
    const std::string page = test::bytesOf(std::string(ORX_SOURCE_FOLDER) + "/docs/recipes.md");
    const std::size_t from = page.find("```json\n") + 8;
    const std::string example = page.substr(from, page.find("```", from) - from);
    // A camera right above the plane, five pixels a millimetre.
    const orx::TPlaneCalibration flat =
        test::flatPlane(scene(3).image.size(), {5, 0, 100, 0, 5, 100, 0, 0, 1});
    ASSERT_EQ(orx::writePlaneCalibration(folder_ / "camera.json", flat), orx::plOk);
    test::writeBytes(folder_ / "recipe.json", example);
    const orx::TRecipe recipe = orx::readRecipe(folder_ / "recipe.json");
    for (const orx::TRecipeProblem& problem : recipe.problems()) ADD_FAILURE() << problem.sentence();
    const orx::TRecipeResult result = recipe.run(scene(3).image);
    EXPECT_NEAR(valueOf(result, "bore").value, 18 / 5.0, 0.02);
    EXPECT_NEAR(valueOf(result, "edge distance").value, std::hypot(16.0, 17.0) / 5, 0.02);
    EXPECT_EQ(result.verdict, orx::vdPass) << orx::toJson(result);
}

TEST_F(PlateRecipe, HoweverThePartIsPlacedItsValuesAreTheSame) {
    const scenes::PartScene rendered = scene(7);
    const scenes::ScenePose pose = rendered.parts[0].pose;
    const auto number = [](double x) { return std::to_string(x); };
    const std::string fixed = R"({"by": "fixed", "x": )" + number(pose.x) + R"(, "y": )" + number(pose.y) +
                              R"(, "angle": )" + number(std::remainder(pose.angle, 360)) + "}";
    const orx::TRecipeResult byModel = parsed(text(model_, "calipers"), folder_.name()).run(rendered.image);
    const orx::TRecipeResult byPlace = parsed(text(fixed, "calipers")).run(rendered.image);
    EXPECT_NEAR(byModel.pose.pose.x, pose.x, 0.03);
    EXPECT_NEAR(byModel.pose.pose.y, pose.y, 0.03);
    EXPECT_EQ(byPlace.pose.deviationX, 0);
    for (const auto& [name, value] : truth()) {
        SCOPED_TRACE(name);
        EXPECT_NEAR(valueOf(byModel, name).value, valueOf(byPlace, name).value, 0.02);
        EXPECT_NEAR(valueOf(byPlace, name).value, value, 0.06);
    }
    // The pose has its share in places within the part, and none in lengths.
    EXPECT_GT(valueOf(byModel, "x").deviation, valueOf(byPlace, "x").deviation);
    EXPECT_NEAR(valueOf(byModel, "d1").deviation, valueOf(byPlace, "d1").deviation, 1e-3);

    // By two holes, which the recipe places in the picture: the origin at one, the x axis 10 degrees off the
    // way to the other. By hand: h2 lies at hypot(69, 14) along the way.
    const cv::Point2d a = scenes::placed(pose, {-38, -14});
    const cv::Point2d b = scenes::placed(pose, {31, 0});
    const auto circle = [&](const char* name, cv::Point2d p, double radius) {
        return std::string(R"({"name": ")") + name + R"(", "type": "circle", "search": 4, "center": [)" +
               number(p.x + 1.2) + "," + number(p.y - 1) + R"(], "radius": )" + number(radius) + "}";
    };
    const orx::TRecipeResult byHoles =
        parsed(R"({"recipe": 1, "part": {"by": "features", "origin": "a", "direction": "b",
        "angle": -10}, "features": [)" +
               circle("a", a, 9) + "," + circle("b", b, 15) + R"(,
        {"name": "again", "type": "circle", "center": [69.336, -12.226], "radius": 15, "search": 3}],
        "values": [{"name": "ax", "type": "x", "of": ["a"]}, {"name": "bx", "type": "x", "of": ["b"]},
        {"name": "by", "type": "y", "of": ["again"]}, {"name": "turn", "type": "partAngle"}]})")
            .run(rendered.image);
    ASSERT_TRUE(byHoles.pose.found) << byHoles.problem;
    const double length = std::hypot(69.0, 14.0);
    EXPECT_NEAR(valueOf(byHoles, "ax").value, 0, 1e-9);
    EXPECT_NEAR(valueOf(byHoles, "bx").value, length * std::cos(10 * CV_PI / 180), 0.05);
    EXPECT_NEAR(valueOf(byHoles, "by").value, -length * std::sin(10 * CV_PI / 180), 0.05);
    const double way = std::atan2(b.y - a.y, b.x - a.x) * 180 / CV_PI;
    EXPECT_NEAR(std::remainder(valueOf(byHoles, "turn").value - (way + 10), 360), 0, 0.05);
    // The place is as uncertain as the holes, which are measured in the picture for comparison.
    const orx::TRecipeResult holes =
        parsed(R"({"recipe": 1, "features": [)" + circle("a", a, 9) + "," + circle("b", b, 15) + R"(],
        "values": [{"name": "ax", "type": "x", "of": ["a"]}, {"name": "ay", "type": "y", "of": ["a"]},
        {"name": "bx", "type": "x", "of": ["b"]}]})")
            .run(rendered.image);
    const double ax = valueOf(holes, "ax").deviation;
    EXPECT_NEAR(byHoles.pose.deviationX, ax, 1e-6);
    EXPECT_NEAR(byHoles.pose.deviationY, valueOf(holes, "ay").deviation, 1e-6);
    const double across = std::hypot(ax, valueOf(holes, "bx").deviation);
    EXPECT_NEAR(byHoles.pose.deviationAngle, across / length * 180 / CV_PI,
                0.1 * byHoles.pose.deviationAngle);
}

TEST_F(PlateRecipe, ThreadsChangeNothing) {
    const orx::TRecipe recipe = parsed(text(model_, "edges"), folder_.name());
    const std::vector<cv::Mat> pictures{scene(1).image, scene(2).image, scene(3).image};
    orx::TJsonResultOptions options;
    options.milliseconds = false;
    std::vector<std::string> alone;
    for (const cv::Mat& picture : pictures) alone.push_back(orx::toJson(recipe.run(picture), options));
    EXPECT_NE(alone[0], alone[1]);
    std::vector<std::string> together(12);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < together.size(); ++i) {
        threads.emplace_back([&, i] { together[i] = orx::toJson(recipe.run(pictures[i % 3]), options); });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < together.size(); ++i) EXPECT_EQ(together[i], alone[i % 3]);
}

TEST_F(PlateRecipe, WhatIsNotThereIsNotMeasuredAndNeverPasses) {
    const orx::TRecipe recipe = parsed(text(model_, "calipers"), folder_.name());
    const cv::Mat empty(200, 200, CV_8UC1, cv::Scalar(80));
    const orx::TRecipeResult nothing = recipe.run(empty);
    EXPECT_EQ(nothing.verdict, orx::vdNotMeasured);
    EXPECT_EQ(nothing.problem, "the part was not found");
    for (const orx::TRecipeValue& value : nothing.values) {
        EXPECT_EQ(value.verdict, orx::vdNotMeasured);
        EXPECT_EQ(value.problem, "the part was not found");
    }
    for (const cv::Mat& bad : {cv::Mat(), cv::Mat(20, 20, CV_32FC1, cv::Scalar(0)), cv::Mat(1, 1, CV_8UC1)}) {
        EXPECT_EQ(recipe.run(bad).verdict, orx::vdNotMeasured);
    }
    // Colour and 16 bits are the same picture.
    const cv::Mat grey = scene(5).image;
    cv::Mat colour;
    cv::cvtColor(grey, colour, cv::COLOR_GRAY2BGR);
    cv::Mat deep;
    grey.convertTo(deep, CV_16U, 257);
    const double value = valueOf(recipe.run(grey), "pitch").value;
    EXPECT_NEAR(valueOf(recipe.run(colour), "pitch").value, value, 1e-9);
    EXPECT_NEAR(valueOf(recipe.run(deep), "pitch").value, value, 0.01);
}

const edge_scene::Look kLook{40, 200, 0.8, 2, 5};

TEST(RecipeRun, FeaturesTellWhyTheyWereNotMeasured) {
    const cv::Mat img = edge_scene::disk({120, 100}, {60.3, 50.4}, 20, kLook);
    struct Case {
        const char* fields;
        const char* problem;
    };
    const std::vector<Case> cases{
        {R"("center": [60, 50])", ""},
        {R"("center": [60, 50], "edge": "brightToDark")", ""},
        {R"("center": [60, 50], "edge": "darkToBright")", "no edge within the search band"},
        {R"("center": [300, 50])", "lies outside of the picture"},
        {R"("center": [108, 50], "minShare": 0.9)", "reaches out of the picture: "},
        {R"("center": [60, 50], "minContrast": 200)", "no edge within the search band"},
    };
    for (const Case& c : cases) {
        for (const char* by : {"calipers", "edges", "chain"}) {
            SCOPED_TRACE(std::string(c.fields) + " by " + by);
            const orx::TRecipeResult result =
                parsed(
                    R"({"recipe": 1, "features": [{"name": "disk", "type": "circle", "radius": 20, "search": 5, "by": ")" +
                    std::string(by) + "\", " + c.fields + R"(}], "values": [
                       {"name": "d", "type": "diameter", "of": ["disk"], "nominal": 40, "tolerance": 0.2}]})")
                    .run(img);
            const orx::TRecipeFeature& feature = result.features[0];
            const orx::TRecipeValue& value = result.values[0];
            EXPECT_EQ(feature.measured, std::string(c.problem).empty());
            if (feature.measured) {
                EXPECT_NEAR(value.value, 40, 0.05);
                EXPECT_EQ(result.verdict, orx::vdPass);
                EXPECT_GT(feature.points.size(), 15U);
            } else {
                EXPECT_THAT(feature.problem, HasSubstr(c.problem));
                EXPECT_THAT(value.problem, HasSubstr("\"disk\" was not measured: " + feature.problem));
                EXPECT_EQ(result.verdict, orx::vdNotMeasured);
                EXPECT_TRUE(std::isnan(value.conformity));
            }
        }
    }
}

TEST(RecipeRun, ShapesThatAreSeenInPartWantTheirShare) {
    // Half of the nominal circle has the disk's edge within its band.
    const cv::Mat img = edge_scene::disk({120, 100}, {60, 50}, 20, kLook);
    for (const char* by : {"calipers", "chain"}) {
        const auto shareOf = [&](const char* share) {
            return parsed(R"({"recipe": 1, "features": [{"name": "disk", "type": "circle", "center": [67, 50],
                "radius": 20, "search": 5, "by": ")" +
                          std::string(by) + R"(", "minShare": )" + share + "}]}")
                .run(img)
                .features[0];
        };
        EXPECT_TRUE(shareOf("0.3").measured) << by;
        EXPECT_THAT(shareOf("0.8").problem, HasSubstr("of its places, 80 % is asked for")) << by;
    }
}

TEST(RecipeRun, CirclesBesideTheirNominalPlaceAreNotPulledTowardsIt) {
    const cv::Mat img = edge_scene::disk({120, 100}, {63.2, 51.7}, 10, {40, 200, 0.8, 0, 5});
    for (const char* by : {"calipers", "edges", "chain"}) {
        const orx::TRecipeResult result =
            parsed(R"({"recipe": 1, "features": [{"name": "disk", "type": "circle",
            "center": [60, 50], "radius": 10.5, "search": 5, "by": ")" +
                   std::string(by) + R"("}], "values": [
            {"name": "x", "type": "x", "of": ["disk"]}, {"name": "d", "type": "diameter", "of": ["disk"]}]})")
                .run(img);
        EXPECT_NEAR(valueOf(result, "x").value, 63.2, 0.004) << by;
        EXPECT_NEAR(valueOf(result, "d").value, 20, 0.005) << by;
    }
}

TEST(RecipeRun, WidthsChainsAndConstructionsAreThoseOfTheScene) {
    // A rectangle from 30.2 to 95.9 and from 20.4 to 70.7.
    const cv::Mat img = edge_scene::rectangle({130, 95}, {30.2, 20.4, 65.7, 50.3}, kLook);
    const orx::TRecipeResult result = parsed(R"({"recipe": 1, "features": [
        {"name": "one", "type": "edgePair", "from": [30, 45], "to": [96, 45], "search": 5, "edge": "darkToBright"},
        {"name": "many", "type": "edgePair", "from": [30, 45], "to": [96, 45], "search": 5, "count": 7},
        {"name": "wrong", "type": "edgePair", "from": [30, 45], "to": [96, 45], "search": 5, "edge": "brightToDark"},
        {"name": "side", "type": "chain", "path": [[30, 34], [30, 58]], "search": 4},
        {"name": "a", "type": "line", "from": [30, 25], "to": [30, 66], "search": 5},
        {"name": "b", "type": "line", "from": [35, 20], "to": [90, 20], "search": 5},
        {"name": "c", "type": "line", "from": [96, 66], "to": [96, 25], "search": 5},
        {"name": "d", "type": "line", "from": [35, 70], "to": [90, 70], "search": 5},
        {"name": "ab", "type": "intersection", "of": ["a", "b"]},
        {"name": "cd", "type": "intersection", "of": ["c", "d"]},
        {"name": "none", "type": "intersection", "of": ["a", "c"]},
        {"name": "middle", "type": "midpoint", "of": ["ab", "cd"]},
        {"name": "diagonal", "type": "connection", "of": ["ab", "cd"]}],
      "values": [
        {"name": "one", "type": "width", "of": ["one"]},
        {"name": "many", "type": "width", "of": ["many"]},
        {"name": "wrong", "type": "width", "of": ["wrong"]},
        {"name": "length", "type": "length", "of": ["side"]},
        {"name": "straight", "type": "straightness", "of": ["side"]},
        {"name": "diagonal", "type": "distance", "of": ["ab", "cd"]},
        {"name": "x", "type": "x", "of": ["middle"]},
        {"name": "y", "type": "y", "of": ["middle"]},
        {"name": "slant", "type": "angle", "of": ["diagonal"]},
        {"name": "off", "type": "distance", "of": ["middle", "diagonal"]},
        {"name": "parallel", "type": "parallelism", "of": ["a", "c"]},
        {"name": "none", "type": "x", "of": ["none"]}]})")
                                          .run(img);
    const auto near = [&](const char* name, double truth, double atMost) {
        const orx::TRecipeValue& value = valueOf(result, name);
        EXPECT_TRUE(value.measured) << name << ": " << value.problem;
        EXPECT_LT(value.deviation, atMost) << name;
        EXPECT_NEAR(value.value, truth, 3.5 * value.deviation + 0.003) << name;
    };
    near("one", 65.7, 0.03);
    near("many", 65.7, 0.015);
    near("length", 24, 1);
    near("straight", 0, 0.03);
    near("diagonal", std::hypot(65.7, 50.3), 0.03);
    near("x", 30.2 + 65.7 / 2, 0.015);
    near("y", 20.4 + 50.3 / 2, 0.015);
    near("slant", std::atan2(50.3, 65.7) * 180 / CV_PI, 0.02);
    near("off", 0, 0.03);
    near("parallel", 0, 0.05);
    EXPECT_THAT(valueOf(result, "wrong").problem, HasSubstr("no edge"));
    EXPECT_THAT(valueOf(result, "none").problem, HasSubstr("parallel"));
}

// A step of 120 levels and one of 40 at other ends: by theory, edges are as uncertain as their contrast is
// low.
TEST(RecipeRun, AWidthIsAsUncertainAsBothItsEdges) {
    const auto deviation = [](double between, const char* ends) {
        cv::Mat levels(60, 120, CV_64F);
        for (int x = 0; x < levels.cols; ++x) {
            const double first = 0.5 * std::erfc((30.2 - x) / (0.85 * std::sqrt(2.0)));
            const double second = 0.5 * std::erfc((90.7 - x) / (0.85 * std::sqrt(2.0)));
            levels.col(x) = 40 + between * first + (160 - between) * second;
        }
        const cv::Mat img = edge_scene::quantised(levels, {0, 0, 0, 3, 5, CV_16U});
        const orx::TRecipeResult result =
            parsed(
                std::string(R"({"recipe": 1, "features": [{"name": "w", "type": "edgePair", "search": 5, )") +
                ends + R"(}], "values": [{"name": "w", "type": "width", "of": ["w"]}]})")
                .run(img);
        EXPECT_NEAR(valueOf(result, "w").value, 60.5, 4 * valueOf(result, "w").deviation);
        return valueOf(result, "w").deviation;
    };
    const char* const onwards = R"("from": [30, 30], "to": [91, 30])";
    const char* const back = R"("from": [91, 30], "to": [30, 30])";
    const double even = deviation(80, onwards);
    // By hand: (1/120^2 + 1/40^2) / (1/80^2 + 1/80^2) = 20/9.
    EXPECT_NEAR(deviation(120, onwards) / even, std::sqrt(20.0) / 3, 0.1);
    EXPECT_NEAR(deviation(120, back) / even, std::sqrt(20.0) / 3, 0.1);
    EXPECT_NEAR(deviation(40, onwards) / even, std::sqrt(20.0) / 3, 0.1);
}

// Five pixels a millimetre, exactly: what is uncertain by 0.05 pixels is by 0.01 mm, and angles stay.
TEST(RecipeRun, UncertaintiesOnThePlaneAreThoseOfThePicture) {
    const test::TemporaryFolder folder;
    orx::TPlaneCalibration flat = test::flatPlane({120, 100}, {5, 0, 0, 0, 5, 0, 0, 0, 1});
    flat.degreesOfFreedom = 1e9;
    ASSERT_EQ(orx::writePlaneCalibration(folder / "plane.json", flat), orx::plOk);
    const std::string lines = R"("features": [
            {"name": "left", "type": "line", "from": [25, 30], "to": [25, 70], "search": 4},
            {"name": "top", "type": "line", "from": [35, 20], "to": [85, 20], "search": 4}],
          "values": [
            {"name": "square", "type": "angle", "of": ["left", "top"]}]})";
    const std::string rounds = R"("features": [
            {"name": "round", "type": "circle", "center": [60, 50], "radius": 20, "search": 5},
            {"name": "oval", "type": "ellipse", "center": [60, 50], "semiMajor": 20, "semiMinor": 20, "search": 5}],
          "values": [
            {"name": "bore", "type": "diameter", "of": ["round"]},
            {"name": "x", "type": "x", "of": ["round"], "frame": "picture"},
            {"name": "major", "type": "majorDiameter", "of": ["oval"]},
            {"name": "minor", "type": "minorDiameter", "of": ["oval"]},
            {"name": "apart", "type": "distance", "of": ["round", "oval"]}]})";
    const auto compare = [&](const cv::Mat& img, const std::string& body, double pixels, double tolerance) {
        const orx::TRecipeResult inPixels = parsed(R"({"recipe": 1, )" + body).run(img);
        const orx::TRecipeResult inMillimetres =
            parsed(R"({"recipe": 1, "unit": "mm", "calibration": "plane.json", )" + body, folder.name())
                .run(img);
        for (const orx::TRecipeValue& value : inPixels.values) {
            SCOPED_TRACE(value.name);
            const orx::TRecipeValue& onPlane = valueOf(inMillimetres, value.name);
            ASSERT_TRUE(value.measured) << value.problem;
            ASSERT_TRUE(onPlane.measured) << onPlane.problem;
            EXPECT_GT(value.deviation, 0);
            EXPECT_NEAR(onPlane.value, value.value / pixels, tolerance);
            EXPECT_NEAR(onPlane.deviation, value.deviation / pixels, 0.01 * value.deviation / pixels);
        }
    };
    compare(edge_scene::disk({120, 100}, {60.3, 50.4}, 20, kLook), rounds, 5, 1e-3);
    compare(edge_scene::rectangle({120, 100}, {25.2, 20.4, 65.7, 55.3}, kLook), lines, 1, 1e-3);
}

// A plane that leads away to the right: five pixels a millimetre at its origin, 2 to 3 along the line that is
// looked for. Five millimetres to each side are 10 to 15 pixels there, and would be 25 at the origin.
TEST(RecipeRun, LinesAreLookedForAsFarAsTheirOwnPlaceSays) {
    const test::TemporaryFolder folder;
    const orx::TPlaneCalibration leaning = test::flatPlane({160, 130}, {5, 0, 0, 0, 5, 0, 0.02, 0, 1});
    ASSERT_EQ(orx::writePlaneCalibration(folder / "plane.json", leaning), orx::plOk);
    const orx::TRecipe recipe = parsed(
        R"({"recipe": 1, "unit": "mm", "coordinates": "mm", "calibration": "plane.json",
          "part": {"by": "fixed", "x": 0, "y": 0, "angle": 0}, "features": [
            {"name": "side", "type": "line", "from": [30, 10], "to": [30, 30], "search": 5, "by": "calipers"}],
          "values": [{"name": "side", "type": "angle", "of": ["side"]}]})",
        folder.name());
    const double nominal = 5 * 30 / (1 + 0.02 * 30);
    for (const double off : {-19.0, -5.0, 5.0, 19.0}) {
        SCOPED_TRACE(off);
        const cv::Mat img = edge_scene::halfPlane({160, 130}, {nominal + off, 60}, 0, kLook);
        const orx::TRecipeResult result = recipe.run(img);
        EXPECT_EQ(valueOf(result, "side").measured, std::abs(off) < 10) << orx::toJson(result);
    }
}

// A rectangle seen five pixels a millimetre, by a calibration whose scale down the picture is known to a
// hundredth.
TEST(RecipeRun, LengthsOfChainsTellWhatTheCalibrationLeavesOpen) {
    const test::TemporaryFolder folder;
    orx::TPlaneCalibration flat = test::flatPlane({130, 95}, {5, 0, 0, 0, 5, 0, 0, 0, 1});
    flat.covariance(4, 4) = 0.05 * 0.05;
    flat.degreesOfFreedom = 100;
    ASSERT_EQ(orx::writePlaneCalibration(folder / "plane.json", flat), orx::plOk);
    const cv::Mat img = edge_scene::rectangle({130, 95}, {30.2, 20.4, 65.7, 50.3}, kLook);
    const orx::TRecipeResult result =
        parsed(R"({"recipe": 1, "unit": "mm", "calibration": "plane.json", "features": [
            {"name": "down", "type": "chain", "path": [[30, 34], [30, 58]], "search": 4},
            {"name": "across", "type": "chain", "path": [[40, 20], [80, 20]], "search": 4}],
          "values": [
            {"name": "down", "type": "length", "of": ["down"]},
            {"name": "across", "type": "length", "of": ["across"]}]})",
               folder.name())
            .run(img);
    const orx::TRecipeValue& down = valueOf(result, "down");
    const orx::TRecipeValue& across = valueOf(result, "across");
    EXPECT_NEAR(down.value, 24 / 5.0, 0.5);  // its ends are lost
    EXPECT_NEAR(across.value, 40 / 5.0, 0.5);
    EXPECT_NEAR(down.calibrationDeviation, 0.01 * down.value, 0.0005);
    EXPECT_NEAR(across.calibrationDeviation, 0, 0.0005);
}

TEST(RecipeRun, OutliersAreBorneAndDentsAreForm) {
    // A disk with a bump over 30 degrees of it, a pixel high.
    const auto outline = [](double x, double y) {
        const double angle = std::atan2(y - 50, x - 60);
        const double bump = std::abs(angle) < CV_PI / 12 ? 1.0 : 0.0;
        return 25 + bump - std::hypot(x - 60, y - 50);
    };
    const cv::Mat img = edge_scene::draw({120, 100}, {40, 200, 0.5, 1, 3}, outline);
    const orx::TRecipeResult result = parsed(R"({"recipe": 1, "features": [
        {"name": "tukey", "type": "circle", "center": [60, 50], "radius": 25, "search": 5, "by": "edges"},
        {"name": "all", "type": "circle", "center": [60, 50], "radius": 25, "search": 5, "by": "edges", "loss": "leastSquares"}],
      "values": [{"name": "x", "type": "x", "of": ["tukey"]}, {"name": "all", "type": "x", "of": ["all"]},
        {"name": "round", "type": "roundness", "of": ["tukey"], "upper": 0.5}]})")
                                          .run(img);
    EXPECT_NEAR(valueOf(result, "x").value, 60, 0.02);
    EXPECT_GT(valueOf(result, "all").value, 60.08);
    // The form is that of all points: an outlier of the fit, but no less a bump.
    EXPECT_NEAR(valueOf(result, "round").value, 1, 0.1);
    EXPECT_EQ(valueOf(result, "round").verdict, orx::vdFail);
}

using tilted_plate::Exposure;

class MillimetreRecipe : public testing::Test {
  protected:
    std::string text(const std::string& part) const {
        return R"({"recipe": 1, "unit": "mm", "coordinates": "mm", "calibration": "plane.json", "part": )" +
               part +
               R"(, "features": [
            {"name": "h1", "type": "circle", "center": [-30, -12], "radius": 5, "search": 1.2},
            {"name": "h2", "type": "circle", "center": [30, -12], "radius": 5, "search": 1.2, "by": "edges"},
            {"name": "h3", "type": "circle", "center": [-30, 12], "radius": 3, "search": 1.2},
            {"name": "top", "type": "line", "from": [-40, -26], "to": [40, -26], "search": 1.2},
            {"name": "bottom", "type": "line", "from": [-40, 26], "to": [40, 26], "search": 1.2, "by": "chain"},
            {"name": "left", "type": "line", "from": [-45, -20], "to": [-45, 20], "search": 1.2, "by": "edges"},
            {"name": "corner", "type": "intersection", "of": ["top", "left"]},
            {"name": "across", "type": "edgePair", "from": [-15, -26], "to": [-15, 26], "search": 1.2, "count": 7}],
          "values": [
            {"name": "d1", "type": "diameter", "of": ["h1"]},
            {"name": "pitch", "type": "distance", "of": ["h1", "h2"]},
            {"name": "near", "type": "distance", "of": ["h1", "h3"]},
            {"name": "height", "type": "distance", "of": ["top", "bottom"]},
            {"name": "edge", "type": "distance", "of": ["h2", "top"]},
            {"name": "corner", "type": "distance", "of": ["corner", "h3"]},
            {"name": "across", "type": "width", "of": ["across"]},
            {"name": "x", "type": "x", "of": ["h2"]},
            {"name": "round", "type": "roundness", "of": ["h1"], "upper": 1},
            {"name": "straight", "type": "straightness", "of": ["top"], "upper": 1},
            {"name": "pixels", "type": "distance", "of": ["h1", "h2"], "unit": "px"}]})";
    }
    const std::map<std::string, double> truth_{{"d1", 10},    {"pitch", 60},
                                               {"near", 24},  {"height", 52},
                                               {"edge", 14},  {"corner", std::hypot(15.0, 38.0)},
                                               {"across", 52}};
    const orx::TPlaneCalibration camera_ = tilted_plate::camera();
    test::TemporaryFolder folder_;
};

TEST_F(MillimetreRecipe, LengthsAreThoseOfThePlateWhateverTheCameraDoes) {
    Spread all;
    constexpr int kPictures = 10;
    for (int i = 0; i < kPictures; ++i) {
        const orx::TPlaneCalibration found = tilted_plate::calibrated(camera_, 0.05, i);
        ASSERT_EQ(orx::writePlaneCalibration(folder_ / "plane.json", found), orx::plOk);
        const orx::TRecipe recipe =
            parsed(text(R"({"by": "fixed", "x": 2, "y": -1, "angle": 10})"), folder_.name());
        EXPECT_EQ(recipe.pictureSize(), camera_.imageSize);
        const orx::TPartPose pose{2 + 0.04 * i, -1 - 0.03 * i, 10.0 + 0.02 * i, 1};
        const orx::TRecipeResult result = recipe.run(tilted_plate::render(camera_, pose, {0.7, 2, i}));
        for (const auto& [name, value] : truth_) {
            all.add(valueOf(result, name), value);
            EXPECT_EQ(valueOf(result, name).unit, "mm");
            EXPECT_NEAR(valueOf(result, name).value, value, 4.5 * valueOf(result, name).deviation) << name;
        }
        const cv::Point2d own = orx::applyPose(pose, {30, -12});
        const cv::Point2d told = orx::applyPose(orx::invertPose({2, -1, 10, 1}), own);
        EXPECT_NEAR(valueOf(result, "x").value, told.x, 4.5 * valueOf(result, "x").deviation);
        EXPECT_EQ(valueOf(result, "pixels").unit, "px");
        const cv::Point2d first = orx::planeToImage(camera_, orx::applyPose(pose, {-30, -12}));
        EXPECT_NEAR(valueOf(result, "pixels").value, cv::norm(orx::planeToImage(camera_, own) - first), 0.2);
        EXPECT_EQ(result.size, camera_.imageSize);
    }
    EXPECT_LT(all.rms(), 0.004);  // a fiftieth of a pixel
    EXPECT_GT(all.ratio(), 0.8);
    EXPECT_LT(all.ratio(), 1.25);
}

TEST_F(MillimetreRecipe, WhatTheCalibrationLeavesOpenIsSharedByAllOfAPicture) {
    // A target whose pitch is known to a thousandth, and a camera that is known to the last digit: a length
    // is then uncertain by a thousandth of it, however many features it is told of.
    orx::TPlaneCalibration flat = tilted_plate::camera(0, 0);
    flat.lens = false;
    flat.homography = {5, 0, 320, 0, 5, 240, 0, 0, 1};
    for (const int i : {0, 4}) {
        for (const int j : {0, 4}) flat.covariance(i, j) = 5e-3 * 5e-3;  // of both diagonal elements alike
    }
    flat.degreesOfFreedom = 200;
    ASSERT_EQ(orx::writePlaneCalibration(folder_ / "plane.json", flat), orx::plOk);
    const orx::TRecipe recipe =
        parsed(text(R"({"by": "fixed", "x": 0, "y": 0, "angle": 5})"), folder_.name());
    const orx::TRecipeResult result = recipe.run(tilted_plate::render(flat, {0, 0, 5, 1}));
    for (const auto& [name, value] : truth_) {
        SCOPED_TRACE(name);
        const orx::TRecipeValue& told = valueOf(result, name);
        ASSERT_TRUE(told.measured) << told.problem;
        EXPECT_NEAR(told.calibrationDeviation, 1e-3 * value, 2e-5 * value);
        EXPECT_NEAR(told.value, value, 0.02);
        EXPECT_GT(told.deviation, told.calibrationDeviation);
    }
    EXPECT_EQ(valueOf(result, "pixels").calibrationDeviation, 0);

    EXPECT_LT(valueOf(result, "round").calibrationDeviation, 1e-4) << "a larger circle is as round";

    const orx::TRecipeResult other = recipe.run(cv::Mat(100, 100, CV_8UC1, cv::Scalar(0)));
    EXPECT_EQ(other.verdict, orx::vdNotMeasured);
    EXPECT_THAT(other.problem, HasSubstr("the picture has 100 x 100 pixels, the calibration's 640 x 480"));
}

// Only the scale across the picture is uncertain, by a thousandth. By hand: a circle then may be an ellipse
// whose axes differ by a thousandth of its diameter, which is half as much of departure from its mean circle
// to both sides; a straight line stays one.
TEST_F(MillimetreRecipe, WhatTheCalibrationLeavesOpenMayLookLikeForm) {
    orx::TPlaneCalibration flat = tilted_plate::camera(0, 0);
    flat.lens = false;
    flat.homography = {5, 0, 320, 0, 5, 240, 0, 0, 1};
    flat.covariance(0, 0) = 5e-3 * 5e-3;
    flat.degreesOfFreedom = 200;
    ASSERT_EQ(orx::writePlaneCalibration(folder_ / "plane.json", flat), orx::plOk);
    const orx::TRecipeResult result =
        parsed(text(R"({"by": "fixed", "x": 0, "y": 0, "angle": 0})"), folder_.name())
            .run(tilted_plate::render(flat, {0, 0, 0, 1}));
    const orx::TRecipeValue& round = valueOf(result, "round");
    ASSERT_TRUE(round.measured) << round.problem;
    EXPECT_NEAR(round.calibrationDeviation, 5e-3, 3e-4);
    EXPECT_GT(round.deviation, round.calibrationDeviation);
    const orx::TRecipeValue& straight = valueOf(result, "straight");
    ASSERT_TRUE(straight.measured) << straight.problem;
    EXPECT_LT(straight.calibrationDeviation, 1e-5);
}

}  // namespace
