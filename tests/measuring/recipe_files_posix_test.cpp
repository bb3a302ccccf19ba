// Pipes and devices in place of the files of a recipe.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "orxFunctions/orxfunctions.h"
#include "support/part_scene.h"
#include "tests/support/temporary_folder.h"

namespace {

// Nobody writes to the pipe: a reader that opens it as it opens files waits for ever.
TEST(RecipeFiles, PipesAndDevicesAreRefusedAtOnce) {
    const test::TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& name :
         {pipe, std::string("/dev/zero"), std::string("/dev/null"), folder.name()}) {
        const orx::TRecipe recipe = orx::readRecipe(name);
        ASSERT_EQ(recipe.problems().size(), 1U) << name;
        EXPECT_EQ(recipe.problems()[0].text, "the file can't be read: " + name);
        EXPECT_EQ(orx::readPartModel(name).report().status, orx::msUnreadable) << name;
        EXPECT_EQ(orx::readPlaneCalibration(name).status, orx::plUnreadable) << name;
        for (const std::string& field :
             {"\"calibration\": \"" + name + "\"", R"("part": {"by": "model", "model": ")" + name + "\"}"}) {
            const orx::TRecipe naming = orx::parseRecipe("{\"recipe\": 1, " + field + "}");
            ASSERT_EQ(naming.problems().size(), 1U) << field;
            EXPECT_NE(naming.problems()[0].text.find(name), std::string::npos);
        }
    }
}

TEST(RecipeFiles, LinksToFilesAreFollowed) {
    const test::TemporaryFolder folder;
    test::writeBytes(folder / "a.json", R"({"recipe": 1, "name": "linked"})");
    const scenes::PartPicture alone = scenes::renderPartAlone(scenes::PartKind::bracket, 1);
    const orx::TPartModel model = orx::teachPart(alone.image, cv::Rect(cv::Point(), alone.image.size()));
    ASSERT_EQ(orx::writePartModel(folder / "a.part", model), orx::msOk);
    for (const std::string file : {"a.json", "a.part"})
        ASSERT_EQ(symlink((folder / file).c_str(), (folder / ("to-" + file)).c_str()), 0);
    EXPECT_EQ(orx::readRecipe(folder / "to-a.json").name(), "linked");
    EXPECT_TRUE(orx::readPartModel(folder / "to-a.part").valid());
}

}  // namespace
