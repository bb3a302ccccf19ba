// The inspection program proposes a recipe and measures by it.
#include <gmock/gmock.h>

#include <set>

#include "orxFunctions/orxfunctions.h"
#include "support/part_scene.h"
#include "tests/examples/program_fixture.h"

namespace {

namespace fs = std::filesystem;
using test::Outcome;
using test::Program;
using test::textOf;
using testing::HasSubstr;

class TeachProgram : public Program {
  protected:
    std::string writePlate(const std::string& name, std::uint64_t seed) const {
        scenes::PartSceneSettings settings;
        settings.size = {300, 260};
        settings.seed = seed;
        std::vector<uchar> bytes;
        cv::imencode(".png", scenes::renderParts(settings).image, bytes);
        test::writeBytes(path(name), std::string(bytes.begin(), bytes.end()));
        return path(name);
    }

    orx::TRecipe recipe(const std::string& out) const { return orx::readRecipe(path(out + "/recipe.json")); }
};

TEST_F(TeachProgram, WhatItProposesMeasuresOtherPictures) {
    const Outcome taught = run({"--teach", writePlate("a plate.png", 1), "-o", path("taught")});
    EXPECT_EQ(taught.exitCode, 0) << taught.errors;
    EXPECT_EQ(taught.errors, "");
    EXPECT_THAT(taught.output, HasSubstr("7 features"));
    EXPECT_THAT(taught.output, HasSubstr("circle 1 to circle "));
    EXPECT_THAT(taught.output, HasSubstr("orx_inspection --recipe "));
    EXPECT_THAT(taught.output, HasSubstr(path("taught/recipe.json")));
    EXPECT_EQ(recipe("taught").name(), "a plate");
    EXPECT_FALSE(cv::imread(path("taught/features.png")).empty());
    fs::create_directory(path("in"));
    for (int i = 0; i < 3; ++i)
        writePlate("in/" + std::to_string(i) + ".png", 20U + static_cast<unsigned>(i));
    const Outcome measured = run({"--recipe", path("taught/recipe.json"), path("in"), "-o", path("out")});
    EXPECT_EQ(measured.exitCode, 0) << measured.errors;
    EXPECT_THAT(measured.output, HasSubstr("3 pictures: 3 pass"));
}

TEST_F(TeachProgram, ARecipeThatMayHaveBeenEditedIsKept) {
    const std::string plate = writePlate("plate.png", 1);
    ASSERT_EQ(run({"--teach", plate, "-o", path("out"), "--fixed", "--name", "first"}).exitCode, 0);
    EXPECT_FALSE(fs::exists(path("out/recipe.part")));
    const std::string before = textOf(path("out/recipe.json"));
    const Outcome refused = run({"--teach", plate, "-o", path("out"), "--name", "second"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.errors, HasSubstr("is there already"));
    EXPECT_EQ(textOf(path("out/recipe.json")), before);
    EXPECT_EQ(run({"--teach", plate, "-o", path("out"), "--name", "second", "--again"}).exitCode, 0);
    EXPECT_EQ(recipe("out").name(), "second");
    EXPECT_TRUE(fs::exists(path("out/recipe.part")));
}

TEST_F(TeachProgram, FilesAreNamedAsTheRecipeSeesThem) {
    const std::string plate = writePlate("plate.png", 1);
    const cv::Mat picture = cv::imread(plate, cv::IMREAD_GRAYSCALE);
    const orx::TPartModel model = orx::teachPart(picture, cv::Rect(cv::Point(), picture.size()));
    ASSERT_EQ(orx::writePartModel(path("plate.part"), model), orx::msOk);
    orx::TPlaneCalibration flat;
    flat.status = orx::plOk;
    flat.imageSize = picture.size();
    flat.lens = false;
    flat.homography = {5, 0, 150, 0, 5, 130, 0, 0, 1};  // five pixels a millimetre
    flat.degreesOfFreedom = 100;
    ASSERT_EQ(orx::writePlaneCalibration(path("plane.json"), flat), orx::plOk);
    // Seen from the folder that the program runs in, which is not the recipe's.
    const Outcome outcome = run({"--teach", plate, "--model", "plate.part", "--calibration", "plane.json",
                                 "-o", "sub/out", "--features", "1"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(textOf(path("sub/out/recipe.json")), HasSubstr("\"../../plate.part\""));
    ASSERT_EQ(recipe("sub/out").featureNames().size(), 1U);
    // The largest feature of the plate is a hole of 30 pixels.
    ASSERT_EQ(recipe("sub/out").targets().size(), 1U);
    EXPECT_EQ(recipe("sub/out").targets()[0].unit, "mm");
    EXPECT_NEAR(recipe("sub/out").targets()[0].nominal, 6.0, 0.02);
}

TEST_F(TeachProgram, RefusalsSayWhatToDo) {
    test::writeBytes(path("flat.pgm"), "P5 64 64 255\n" + std::string(64 * 64, 'a'));
    const Outcome flat = run({"--teach", path("flat.pgm"), "-o", path("out")});
    EXPECT_EQ(flat.exitCode, 1);
    EXPECT_THAT(flat.errors, HasSubstr("no recipe: the part can't be taught: too few edges"));
    EXPECT_THAT(flat.errors, HasSubstr("--region"));
    EXPECT_FALSE(fs::exists(path("out/recipe.json")));
    EXPECT_THAT(run({"--teach", path("none.png")}).errors, HasSubstr("none.png: no such file"));
    const std::string plate = writePlate("plate.png", 1);
    const std::vector<std::vector<std::string>> wrong = {{"--teach", plate, plate},
                                                         {"--teach", plate, "--camera"},
                                                         {"--teach", plate, "--recipe", "a.json"},
                                                         {"--teach", plate, "--region", "1,2,3"},
                                                         {"--teach", plate, "--min-area", "3"},
                                                         {"--teach", plate, "--fixed", "--model", "a.part"},
                                                         {"--region", "1,2,30,40", plate},
                                                         {"--again", plate}};
    for (const auto& arguments : wrong) EXPECT_EQ(run(arguments).exitCode, 2) << arguments.back();
}

}  // namespace
