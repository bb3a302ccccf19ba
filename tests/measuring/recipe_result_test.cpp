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
#include "tests/support/edge_scene.h"
#include "tests/support/temporary_folder.h"

namespace {

using testing::HasSubstr;

const edge_scene::Look kLook{40, 200, 0.8, 2, 5};

const char* const kRecipe = R"({"recipe": 1, "name": "two \"disks\"", "features": [
    {"name": "disk", "type": "circle", "center": [60, 50], "radius": 20, "search": 5},
    {"name": "gone", "type": "circle", "center": [60, 50], "radius": 45, "search": 3}],
  "values": [
    {"name": "good", "type": "diameter", "of": ["disk"], "nominal": 40, "tolerance": 0.5},
    {"name": "bad", "type": "radius", "of": ["disk"], "nominal": 21, "tolerance": 0.5},
    {"name": "near", "type": "diameter", "of": ["disk"], "lower": 40},
    {"name": "free", "type": "x", "of": ["disk"]},
    {"name": "gone", "type": "diameter", "of": ["gone"], "upper": 91}]})";

TEST(RecipeResult, JsonIsOneLineThatHoldsEveryValueAndItsVerdict) {
    const orx::TRecipe recipe = orx::parseRecipe(kRecipe);
    ASSERT_TRUE(recipe.valid());
    const cv::Mat img = edge_scene::disk({120, 100}, {60.3, 50.4}, 20, kLook);
    const orx::TRecipeResult result = recipe.run(img);
    orx::TJsonResultOptions options;
    options.picture = "a/b \"c\".png";
    const std::string line = orx::toJson(result, options);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    Json::Value json;
    std::istringstream(line) >> json;
    EXPECT_EQ(json["picture"].asString(), options.picture);
    EXPECT_EQ(json["recipe"].asString(), "two \"disks\"");
    EXPECT_EQ(json["verdict"].asString(), "fail");
    EXPECT_EQ(json["width"].asInt(), 120);
    ASSERT_EQ(json["values"].size(), 5U);
    const auto verdict = [&](Json::ArrayIndex i) { return json["values"][i]["verdict"].asString(); };
    EXPECT_EQ(verdict(0), "pass");
    EXPECT_EQ(verdict(1), "fail");
    EXPECT_EQ(verdict(2), "undecided");
    EXPECT_EQ(verdict(3), "no limits");
    EXPECT_EQ(verdict(4), "not measured");
    EXPECT_NEAR(json["values"][0]["value"].asDouble(), result.values[0].value, 1e-7);
    EXPECT_EQ(json["values"][0]["lower"].asDouble(), 39.5);
    EXPECT_TRUE(json["values"][2]["upper"].isNull());
    EXPECT_TRUE(json["values"][4]["value"].isNull());
    EXPECT_THAT(json["values"][4]["problem"].asString(), HasSubstr("\"gone\" was not measured"));
    EXPECT_EQ(json["features"][0]["kind"].asString(), "circle");
    EXPECT_FALSE(json["features"][1]["measured"].asBool());
    options.features = false;
    options.milliseconds = false;
    const std::string shorter = orx::toJson(result, options);
    EXPECT_EQ(shorter.find("features"), std::string::npos);
    EXPECT_EQ(shorter, orx::toJson(recipe.run(img), options));
    EXPECT_FALSE(orx::toJson(orx::TRecipeResult()).empty());
}

TEST(RecipeResult, PicturesShowVerdictsInTheirColours) {
    const orx::TRecipe recipe = orx::parseRecipe(kRecipe);
    const cv::Mat img = edge_scene::disk({120, 100}, {60.3, 50.4}, 20, kLook);
    const cv::Mat before = img.clone();
    const orx::TRecipeResult result = recipe.run(img);
    const auto colourAt = [](const cv::Mat& picture, int x, int y) { return picture.at<cv::Vec3b>(y, x); };
    const cv::Mat drawn = orx::drawRecipeResult(img, recipe, result);
    ASSERT_EQ(drawn.type(), CV_8UC3);
    EXPECT_EQ(drawn.size(), img.size());
    EXPECT_EQ(cv::norm(img, before, cv::NORM_INF), 0);
    // One of its values fails: the outline is red where nothing is written over it.
    const cv::Vec3b edge = colourAt(drawn, 60, 70);
    EXPECT_GT(edge[2], edge[1] + 60);
    EXPECT_GT(edge[2], edge[0] + 60);
    const std::string text = kRecipe;
    const std::string plain =
        text.substr(0, text.size() - 1) + R"(, "draw": {"features": false, "values": false, "pose": false}})";
    cv::Mat grey;
    cv::cvtColor(img, grey, cv::COLOR_GRAY2BGR);
    EXPECT_EQ(cv::norm(orx::drawRecipeResult(img, orx::parseRecipe(plain), result), grey, cv::NORM_INF), 0);
    // Results of another recipe, of none, and other pictures are borne.
    for (const int type : {CV_8UC3, CV_8UC4, CV_16UC1, CV_16UC3}) {
        const cv::Mat other(50, 60, type, cv::Scalar::all(90));
        EXPECT_EQ(orx::drawRecipeResult(other, orx::TRecipe(), result).type(), CV_8UC3);
        EXPECT_EQ(orx::drawRecipeResult(other, recipe, orx::TRecipeResult()).size(), other.size());
    }
    EXPECT_TRUE(orx::drawRecipeResult(cv::Mat(), recipe, result).empty());
}

TEST(RecipeResult, SheetsAreEnlargedAndHaveATableBesideThePicture) {
    const orx::TRecipe recipe = orx::parseRecipe(kRecipe);
    const cv::Mat img = edge_scene::disk({120, 100}, {60.3, 50.4}, 20, kLook);
    orx::TRecipeResult result = recipe.run(img);
    const cv::Mat sheet = orx::drawRecipeSheet(img, recipe, result);
    ASSERT_EQ(sheet.type(), CV_8UC3);
    EXPECT_EQ(sheet.rows, 400);
    ASSERT_GT(sheet.cols, 480 + 200);
    // The lowest place of the disk's outline, four times as far from the corner.
    const cv::Rect lowest(235, 280, 14, 7);
    const auto redPixels = [](const cv::Mat& part) {
        cv::Mat red;
        cv::inRange(part, cv::Scalar(0, 0, 150), cv::Scalar(90, 90, 255), red);
        return cv::countNonZero(red);
    };
    EXPECT_GT(redPixels(sheet(lowest)), 10);
    const cv::Range table(480, sheet.cols);
    EXPECT_EQ(sheet.at<cv::Vec3b>(399, sheet.cols - 1), cv::Vec3b(255, 255, 255));
    EXPECT_GT(redPixels(sheet.colRange(table)), 100) << "the bad value's verdict";
    // Of each row's bar the part between the limits is the thickest of what is light grey.
    cv::Mat grey;
    cv::inRange(sheet.colRange(table), cv::Scalar(226, 219, 212), cv::Scalar(226, 219, 212), grey);
    cv::erode(grey, grey, cv::Mat::ones(4, 1, CV_8U));
    EXPECT_GT(cv::countNonZero(grey), 20) << "the tolerance";
    for (orx::TRecipeValue& value : result.values) value.verdict = orx::vdPass;
    result.verdict = orx::vdPass;
    EXPECT_EQ(redPixels(orx::drawRecipeSheet(img, recipe, result).colRange(table)), 0);

    const std::string text = kRecipe;
    const std::string plain = text.substr(0, text.size() - 1) + R"(, "draw": {"values": false}})";
    EXPECT_EQ(orx::drawRecipeSheet(img, orx::parseRecipe(plain), result).size(), cv::Size(480, 400));
    const cv::Mat large(1000, 1200, CV_16UC1, cv::Scalar(9000));
    EXPECT_EQ(orx::drawRecipeSheet(large, recipe, result).rows, 1000);
    // More values than there is room for, long texts, flat pictures.
    result.recipe = std::string(3000, 'x');
    result.problem = std::string(3000, 'y');
    result.values.resize(2000, result.values[0]);
    EXPECT_EQ(orx::drawRecipeSheet(img, recipe, result).rows, 400);
    EXPECT_EQ(orx::drawRecipeSheet(cv::Mat(1, 300, CV_8U, cv::Scalar(0)), orx::TRecipe(), result).rows, 3);
    EXPECT_TRUE(orx::drawRecipeSheet(cv::Mat(), recipe, result).empty());
}

// Pictures to a level, drawn areas exactly, soft edges to a mixture that is near.
TEST(RecipeResult, IndexedSheetsLookLikeThoseInColour) {
    const std::string text = kRecipe;
    const orx::TRecipe bare =
        orx::parseRecipe(text.substr(0, text.size() - 1) +
                         R"(, "draw": {"features": false, "values": false, "pose": false}})");
    const orx::TRecipe recipe = orx::parseRecipe(kRecipe);
    for (const int type : {CV_8UC1, CV_16UC1}) {
        cv::Mat img;
        edge_scene::disk({120, 100}, {60.3, 50.4}, 20, kLook).convertTo(img, type, type == CV_8UC1 ? 1 : 257);
        const orx::TRecipeResult result = recipe.run(img);
        const auto expanded = [&](const orx::TRecipe& of) {
            std::vector<cv::Vec3b> palette;
            const cv::Mat indices = orx::drawIndexedRecipeSheet(img, of, result, palette);
            EXPECT_EQ(indices.type(), CV_8UC1);
            EXPECT_EQ(palette.size(), 256U);
            cv::Mat colours(indices.size(), CV_8UC3);
            for (int y = 0; y < indices.rows; ++y)
                for (int x = 0; x < indices.cols; ++x)
                    colours.at<cv::Vec3b>(y, x) = palette[indices.at<unsigned char>(y, x)];
            return colours;
        };
        EXPECT_LE(cv::norm(expanded(bare), orx::drawRecipeSheet(img, bare, result), cv::NORM_INF), 1);
        const cv::Mat sheet = orx::drawRecipeSheet(img, recipe, result);
        const cv::Mat indexed = expanded(recipe);
        ASSERT_EQ(indexed.size(), sheet.size());
        cv::Mat difference;
        cv::absdiff(indexed, sheet, difference);
        difference = difference.reshape(1);
        EXPECT_EQ(cv::countNonZero(difference > 100), 0);
        EXPECT_LT(cv::countNonZero(difference > 20), 0.003 * static_cast<double>(difference.total()));
        // Whole strokes and bars have the very colours.
        for (const cv::Scalar& ink : {cv::Scalar(50, 50, 235), cv::Scalar(24, 35, 200),
                                      cv::Scalar(226, 219, 212), cv::Scalar(255, 255, 255)}) {
            cv::Mat of;
            cv::Mat ofIndexed;
            cv::inRange(sheet, ink, ink, of);
            cv::inRange(indexed, ink, ink, ofIndexed);
            EXPECT_GT(cv::countNonZero(of), 0) << ink;
            EXPECT_EQ(cv::countNonZero(of & ~ofIndexed), 0) << ink;
        }
    }
}

// Two reasons that differ in their last letter only look the same where that letter is cut off.
TEST(RecipeResult, TextsOfSheetsAreCutOnlyWhereTheyHaveNoRoom) {
    const cv::Mat img(960, 700, CV_8UC1, cv::Scalar(90));
    const auto sheetWith = [&](const std::string& reason) {
        orx::TRecipeResult result;
        result.recipe = "reasons";
        result.values.resize(1);
        result.values[0].name = "missing";
        result.values[0].problem = reason;
        return orx::drawRecipeSheet(img, orx::TRecipe(), result);
    };
    const auto showsLastOf = [&](std::size_t letters) {
        const std::string all(letters - 1, 'n');
        return cv::norm(sheetWith(all + "o"), sheetWith(all + "e"), cv::NORM_INF) > 0;
    };
    EXPECT_TRUE(showsLastOf(25));
    EXPECT_FALSE(showsLastOf(80));
    // As many letters as go into the table: its width without margins by that of a letter.
    int baseline = 0;
    const double letter =
        cv::getTextSize(std::string(100, 'n'), cv::FONT_HERSHEY_DUPLEX, 0.66, 1, &baseline).width / 100.0;
    const auto most = static_cast<std::size_t>((620 - 2 * 28) / letter);
    EXPECT_TRUE(showsLastOf(most - 1)) << most;
    EXPECT_FALSE(showsLastOf(most + 2)) << most;
}

TEST(RecipeResult, ValuesAreToldToTheSecondDigitOfTheirUncertainty) {
    orx::TRecipeValue value;
    value.measured = true;
    value.unit = "mm";
    const auto told = [&](double number, double deviation) {
        value.value = number;
        value.deviation = deviation;
        return orx::measuredText(value);
    };
    EXPECT_EQ(told(56.16309, 0.00143), "56.1631 +- 0.0014 mm");
    EXPECT_EQ(told(-0.5, 0.25), "-0.50 +- 0.25 mm");
    EXPECT_EQ(told(1234.6, 123.4), "1235 +- 123 mm");
    EXPECT_EQ(told(3.5, 0), "3.5 mm");
    value.unit = "";
    EXPECT_EQ(told(0.875, INFINITY), "0.875");
    EXPECT_EQ(told(1, 1e-30), "1.000000000000 +- 0.000000000000");
    value.measured = false;
    EXPECT_EQ(orx::measuredText(value), "not measured");
    value.problem = "it is not there";
    EXPECT_EQ(orx::measuredText(value), "it is not there");
}

TEST(RecipeProposal, MeasuresThePlateThatItWasTaughtFrom) {
    const scenes::PartPicture alone = scenes::renderPartAlone(scenes::PartKind::plate, 2);
    const orx::TProposal proposal = orx::proposeRecipe(alone.image);
    ASSERT_TRUE(proposal.valid) << proposal.problem;
    EXPECT_EQ(proposal.picture.size(), alone.image.size() * 4);  // small, so enlarged
    const orx::TRecipe recipe = orx::parseRecipe(proposal.text);
    ASSERT_TRUE(recipe.valid());
    // Three holes and four sides, no more; diameters 30, 18 and 12, sides 62 and 108 apart.
    EXPECT_EQ(recipe.featureNames().size(), 7U);
    EXPECT_EQ(proposal.features, 7);
    EXPECT_EQ(proposal.values, static_cast<int>(recipe.targets().size()));
    for (const double wanted : {30.0, 18.0, 12.0, 62.0, 108.0, std::hypot(69.0, 14.0)}) {
        const bool told =
            std::any_of(recipe.targets().begin(), recipe.targets().end(), [&](const auto& target) {
                return target.hasNominal && std::abs(target.nominal - wanted) < 0.08;
            });
        EXPECT_TRUE(told) << wanted;
    }
    for (const orx::TRecipeTarget& target : recipe.targets()) {
        const double half = (target.tolerance.upper - target.tolerance.lower) / 2;
        EXPECT_NEAR(half, std::max(0.1, 0.01 * target.nominal), 2e-3 * half + 1e-4);
    }
    EXPECT_EQ(recipe.run(alone.image).verdict, orx::vdPass);
}

TEST(RecipeProposal, FollowsTheModelIntoOtherPictures) {
    const test::TemporaryFolder folder;
    const scenes::PartPicture alone = scenes::renderPartAlone(scenes::PartKind::plate, 2);
    const orx::TPartModel model = orx::teachPart(alone.image, cv::Rect(cv::Point(), alone.image.size()));
    ASSERT_EQ(orx::writePartModel(folder / "plate.part", model), orx::msOk);
    orx::TProposalOptions options;
    options.model = "plate.part";
    options.folder = folder.name();
    options.name = "plate";
    const orx::TProposal proposal = orx::proposeRecipe(alone.image, options);
    ASSERT_TRUE(proposal.valid) << proposal.problem;
    scenes::PartSceneSettings settings;
    settings.kind = scenes::PartKind::plate;
    settings.seed = 4;
    settings.size = {300, 260};
    const orx::TRecipeResult result =
        orx::parseRecipe(proposal.text, folder.name()).run(scenes::renderParts(settings).image);
    EXPECT_EQ(result.verdict, orx::vdPass) << orx::toJson(result);
    EXPECT_EQ(result.recipe, "plate");
}

TEST(RecipeProposal, RefusalsHaveTheirReason) {
    const cv::Mat flat(100, 100, CV_8UC1, cv::Scalar(90));
    const auto problem = [&](const orx::TProposalOptions& options) {
        const orx::TProposal proposal = orx::proposeRecipe(flat, options);
        EXPECT_FALSE(proposal.valid);
        EXPECT_TRUE(proposal.text.empty());
        return proposal.problem;
    };
    EXPECT_EQ(problem({}), "no lines, circles or arcs were found");
    EXPECT_EQ(orx::proposeRecipe(cv::Mat()).problem, "no picture, or of a kind that is not supported");
    orx::TProposalOptions options;
    options.region = {50, 50, 60, 10};
    EXPECT_THAT(problem(options), HasSubstr("out"));
    options = {};
    options.model = "none.part";
    EXPECT_THAT(problem(options), HasSubstr("none.part"));
    options = {};
    options.calibration = "none.json";
    EXPECT_THAT(problem(options), HasSubstr("none.json"));
    options = {};
    options.name = "a\nb";
    EXPECT_THAT(problem(options), HasSubstr("option"));
    options = {};
    options.share = std::nan("");
    EXPECT_THAT(problem(options), HasSubstr("option"));
}

}  // namespace
