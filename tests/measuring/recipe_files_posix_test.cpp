// The files of a recipe: pipes and devices in their place, and writers that fail or are killed.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <thread>

#include "orxFunctions/orxfunctions.h"
#include "support/part_scene.h"
#include "tests/support/flat_plane.h"
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

// What writes each kind of file, and says whether it did.
struct Writer {
    std::string name;
    std::function<bool(const std::string& file)> write;
};

bool writeCamera(const std::string& file) {
    orx::clearLastRefusal();
    try {
        orx::calibrateData2File(cv::Mat::eye(3, 3, CV_64F), cv::Mat::zeros(1, 5, CV_64F), {640, 480}, "",
                                file);
    } catch (const cv::Exception&) {
        return false;
    }
    return orx::lastRefusal().code == orx::rcNone;
}

std::vector<Writer> writers() {
    const scenes::PartPicture alone = scenes::renderPartAlone(scenes::PartKind::bracket, 1);
    const orx::TPartModel model = orx::teachPart(alone.image, cv::Rect(cv::Point(), alone.image.size()));
    return {
        {"text",
         [](const std::string& file) {
             return orx::writeWholeFile(std::filesystem::path(file), std::string(100000, 'x'));
         }},
        {"model", [model](const std::string& file) { return orx::writePartModel(file, model) == orx::msOk; }},
        {"plane",
         [](const std::string& file) {
             return orx::writePlaneCalibration(file, test::flatPlane()) == orx::plOk;
         }},
        {"camera.yml", writeCamera},
        {"camera.yml.gz", writeCamera}};
}

std::size_t filesIn(const test::TemporaryFolder& folder) {
    const std::filesystem::directory_iterator files(folder.path());
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

// In a process of its own, which may write no more than a few bytes to a file: what the system then does is
// to kill it, or, where it will not hear of that, to write no more.
[[noreturn]] void writeCut(const Writer& writer, const std::string& file, bool isKilled) {
    const rlimit limit{8, 8};
    std::signal(SIGXFSZ, isKilled ? SIG_DFL : SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    _exit(writer.write(file) ? 1 : 0);
}

TEST(RecipeFilesDeathTest, AnEarlierFileStaysUntilTheNewOneIsWhole) {
    for (const Writer& writer : writers()) {
        const test::TemporaryFolder folder;
        const std::string file = folder / writer.name;
        test::writeBytes(file, "earlier");
        EXPECT_EXIT(writeCut(writer, file, false), testing::ExitedWithCode(0), "") << writer.name;
        EXPECT_EQ(test::bytesOf(file), "earlier") << writer.name;
        EXPECT_EQ(filesIn(folder), 1U) << writer.name << ": half a file is left";
        EXPECT_EXIT(writeCut(writer, file, true), testing::KilledBySignal(SIGXFSZ), "") << writer.name;
        EXPECT_EQ(test::bytesOf(file), "earlier") << writer.name;
        // Nor is the next writer in the way of what the killed one left.
        EXPECT_TRUE(writer.write(file)) << writer.name;
        EXPECT_GT(test::bytesOf(file).size(), 100U) << writer.name;
        EXPECT_EQ(filesIn(folder), 2U) << writer.name;
    }
}

// Nor does a user who may write the file, but no other one beside it.
[[noreturn]] void writeAsAnyone(const Writer& writer, const std::string& file) {
    if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
    _exit(writer.write(file) ? 1 : 0);
}

TEST(RecipeFilesDeathTest, WhereNoFileCanBeMadeNothingChanges) {
    for (const Writer& writer : writers()) {
        const test::TemporaryFolder folder;
        const std::string file = folder / writer.name;
        test::writeBytes(file, "earlier");
        ASSERT_EQ(chmod(file.c_str(), 0666), 0);
        ASSERT_EQ(chmod(folder.name().c_str(), 0555), 0);
        EXPECT_EXIT(writeAsAnyone(writer, file), testing::ExitedWithCode(0), "") << writer.name;
        // Nor where the file itself is protected.
        ASSERT_EQ(chmod(file.c_str(), 0444), 0);
        ASSERT_EQ(chmod(folder.name().c_str(), 0777), 0);
        EXPECT_EXIT(writeAsAnyone(writer, file), testing::ExitedWithCode(0), "") << writer.name;
        EXPECT_EQ(test::bytesOf(file), "earlier") << writer.name;
        EXPECT_EQ(filesIn(folder), 1U) << writer.name;
        EXPECT_FALSE(writer.write(folder / "missing/file"));
        EXPECT_FALSE(writer.write("/proc/file"));
        EXPECT_FALSE(writer.write(""));
    }
}

TEST(RecipeFiles, PipesDevicesAndFoldersAreNotWrittenTo) {
    const test::TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ASSERT_EQ(symlink("/dev/full", (folder / "link").c_str()), 0);
    for (const Writer& writer : writers())
        for (const std::string& name : {pipe, folder / "link", std::string("/dev/null"), folder.name()})
            EXPECT_FALSE(writer.write(name)) << writer.name << " to " << name;
    EXPECT_EQ(filesIn(folder), 2U);
}

TEST(RecipeFiles, RightsAndLinksStay) {
    const test::TemporaryFolder folder;
    const std::string name = folder / std::string(250, 'n');
    test::writeBytes(name, "earlier");
    ASSERT_EQ(chmod(name.c_str(), 0640), 0);
    ASSERT_EQ(symlink(std::string(250, 'n').c_str(), (folder / "link").c_str()), 0);
    ASSERT_EQ(symlink("new", (folder / "to-new").c_str()), 0);
    for (const Writer& writer : writers()) {
        EXPECT_TRUE(writer.write(folder / "link")) << writer.name;
        EXPECT_TRUE(writer.write(folder / "to-new")) << writer.name;
    }
    struct stat info {};
    ASSERT_EQ(lstat(name.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode, static_cast<mode_t>(S_IFREG | 0640));
    ASSERT_EQ(lstat((folder / "link").c_str(), &info), 0);
    EXPECT_TRUE(S_ISLNK(info.st_mode));
    EXPECT_NE(test::bytesOf(name), "earlier");
    EXPECT_EQ(filesIn(folder), 4U);
}

TEST(RecipeFiles, OfTwoWritersAtOnceOneWins) {
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "file";
    std::vector<std::thread> threads;
    for (const char c : {'a', 'b', 'c'})
        threads.emplace_back([&file, c] {
            for (int i = 0; i < 20; ++i) EXPECT_TRUE(orx::writeWholeFile(file, std::string(5000, c)));
        });
    for (std::thread& thread : threads) thread.join();
    const std::string bytes = test::bytesOf(file.string());
    EXPECT_EQ(bytes, std::string(5000, bytes.front()));
    EXPECT_EQ(filesIn(folder), 1U);
}

}  // namespace
