// Programs that measure load neither what reads pictures nor what shows them. This one links the library,
// OpenCV's core and imgproc, and nothing else; each test that counts has a process of its own.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <set>
#include <sstream>
#include <string>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/private_display_posix.h"
#include "tests/support/refusal_check.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using orx::test::notRefused;
using orx::test::refusedWith;

// The libraries that this process has mapped, by their paths.
std::set<std::string> libraries() {
    std::set<std::string> found;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        const std::size_t path = line.find('/');
        if (path != std::string::npos && line.find(".so", path) != std::string::npos)
            found.insert(line.substr(path));
    }
    return found;
}

bool isMapped(const std::string& name) {
    for (const std::string& library : libraries())
        if (library.find(name) != std::string::npos) return true;
    return false;
}

// Memory of this process that is in use, MiB.
double residentMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) return std::atof(line.c_str() + 6) / 1024;
    }
    return -1;
}

// A disk of radius 100 by threshold, edges and fit.
double measuredRadius() {
    cv::Mat image(480, 640, CV_8U, cv::Scalar(40));
    cv::circle(image, {320, 240}, 100, cv::Scalar(200), cv::FILLED, cv::LINE_AA);
    cv::GaussianBlur(image, image, {5, 5}, 1);
    const int threshold = orx::getThresholdValue(image, orx::tmOtsu);
    if (threshold < 41 || threshold > 199) return 0;
    std::vector<ORXEdge::TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(image, edges, {});
    return edges.empty() ? 0 : orx::fitCircleGeometric(edges.front(), 1.0).radius;
}

// Runs one of the tests Alone, which are left out otherwise, in a process of its own. What it printed if it
// failed.
std::string runAlone(const std::string& test, const std::string& environment = "") {
    const std::string command = environment + " '" + fs::canonical("/proc/self/exe").string() +
                                "' --gtest_filter='Alone." + test + "' 2>&1";
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return "no process";
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
    const int status = pclose(pipe);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0 && output.find("[  PASSED  ] 1 test.") != output.npos)
        return "";
    return output + "\nexit status " + std::to_string(status);
}

TEST(Loading, ProgramsThatMeasureMapFewLibraries) { EXPECT_EQ(runAlone("Measuring"), ""); }

TEST(Alone, Measuring) {
    EXPECT_NEAR(measuredRadius(), 100.5, 0.5);
    const std::set<std::string> found = libraries();
    EXPECT_TRUE(isMapped("libopencv_imgproc"));
    EXPECT_GE(found.size(), 10U);  // the C library, C++'s, OpenCV's and what they rest on
    EXPECT_LE(found.size(), 60U);
    for (const char* const name : {"imgcodecs", "highgui", "gdal", "Qt", "orxPicture"})
        EXPECT_FALSE(isMapped(name)) << name;
    const double memory = residentMemory();
    EXPECT_GT(memory, 1);
    if (!ORX_TEST_SANITIZED) {
        EXPECT_LE(memory, 35);
    }
    RecordProperty("libraries", static_cast<int>(found.size()));
    RecordProperty("mebibytes", std::to_string(memory));
}

TEST(Loading, PlainPngFilesBringNoCodecs) { EXPECT_EQ(runAlone("Decoding"), ""); }

TEST(Alone, Decoding) {
    const cv::Mat grey(20, 30, CV_8U, cv::Scalar(7));
    std::vector<unsigned char> bytes;
    ASSERT_TRUE(orx::encodePicture(".png", grey, bytes));
    EXPECT_EQ(cv::countNonZero(orx::decodePicture(bytes, cv::IMREAD_GRAYSCALE) != grey), 0);
    EXPECT_EQ(isMapped("imgcodecs"), !ORX_TEST_PLAIN_PNG);
    ASSERT_TRUE(orx::encodePicture(".bmp", grey, bytes));
    EXPECT_EQ(cv::countNonZero(orx::decodePicture(bytes, cv::IMREAD_GRAYSCALE) != grey), 0);
    EXPECT_TRUE(isMapped("imgcodecs"));
}

TEST(Loading, TheFirstPictureToSaveBringsTheCodecs) { EXPECT_EQ(runAlone("Saving"), ""); }

TEST(Alone, Saving) {
    const test::TemporaryFolder folder;
    EXPECT_FALSE(isMapped("imgcodecs"));
    std::string path;
    ASSERT_TRUE(
        FileOperator::saveImage(cv::Mat(20, 30, CV_8U, cv::Scalar(7)), folder.name(), "", ".png", &path));
    EXPECT_TRUE(isMapped("imgcodecs"));
    EXPECT_FALSE(isMapped("highgui"));
    ASSERT_TRUE(FileOperator::flush());
    EXPECT_EQ(test::bytesOf(path).substr(1, 3), "PNG");
}

TEST(Loading, TheFirstWindowBringsHighgui) {
    if (ORX_TEST_SANITIZED) GTEST_SKIP() << "what Qt rests on keeps memory for good, which fails the process";
    const test::PrivateDisplay display;
    if (!display.isRunning()) GTEST_SKIP() << "Xvfb could not be started";
    EXPECT_EQ(runAlone("Showing"), "");
}

TEST(Alone, Showing) {
    cv::Mat image(120, 160, CV_8UC3, cv::Scalar(40, 90, 160));
    EXPECT_FALSE(isMapped("highgui"));
    const auto show = [&] {
        orx::TSegmentContour().disPlayResultCirclesLines(image, true, true, true, true);
    };
    EXPECT_TRUE(notRefused(show));
    EXPECT_TRUE(isMapped("highgui"));
}

// Saved by the thread at the end of the process, when what was loaded later has yet to go.
TEST(Loading, PicturesOnTheirWayAreSavedAtTheEndOfTheProcess) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(runAlone("Ending", "ORX_TEST_FOLDER='" + folder.name() + "'"), "");
    int files = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder.path())) {
        ++files;
        EXPECT_EQ(test::bytesOf(entry.path().string()).substr(1, 3), "PNG");
    }
    EXPECT_EQ(files, 20);
}

TEST(Alone, Ending) {
    for (int i = 0; i < 20; ++i)
        ASSERT_TRUE(FileOperator::saveImage(cv::Mat(200, 300, CV_8UC3, cv::Scalar(i, 2, 3)),
                                            std::getenv("ORX_TEST_FOLDER"), "", ".png"));
}

// The library alone in a folder, as one who copies a single file finds it.
TEST(Loading, AMissingModuleIsNamed) {
    const test::TemporaryFolder folder;
    for (const char* const file : {ORX_TEST_LIBRARY, ORX_TEST_COMPANION}) {
        const std::string name = fs::path(file).filename().string();  // libNAME.so.MAJOR.MINOR.PATCH
        const std::size_t end = name.find('.', name.find(".so.") + 4);
        fs::copy_file(file, folder.path() / name.substr(0, end));
    }
    EXPECT_EQ(runAlone("Missing",
                       "LD_LIBRARY_PATH='" + folder.name() + "' ORX_TEST_FOLDER='" + folder.name() + "'"),
              "");
}

TEST(Alone, Missing) {
    const std::string folder = std::getenv("ORX_TEST_FOLDER");
    ASSERT_TRUE(isMapped(folder + "/liborxFunctions.so"));
    EXPECT_NEAR(measuredRadius(), 100.5, 0.5);
    const cv::Mat image(20, 30, CV_8U, cv::Scalar(7));
    const auto save = [&] { EXPECT_FALSE(FileOperator::saveImage(image, folder, "", ".png")); };
    EXPECT_TRUE(refusedWith(orx::rcFailed, "saveImage", save));
    const std::string text = orx::lastRefusal().text;
    EXPECT_NE(text.find("liborxPictureCodecs.so"), std::string::npos) << text;
    EXPECT_NE(text.find(folder), std::string::npos) << text;
    fs::create_directories(folder + "/in");
    const auto augment = [&] {
        const orx::TAugmentationReport report =
            orx::ImageDataAugmentation().augment(folder + "/in", folder + "/out");
        EXPECT_FALSE(report.completed);
        EXPECT_EQ(report.problems.size(), 1U);
    };
    EXPECT_TRUE(refusedWith(orx::rcFailed, "augment", augment));
    // A file of the name that is no module.
    std::ofstream(folder + "/liborxPictureCodecs.so") << "not a library";
    EXPECT_TRUE(refusedWith(orx::rcFailed, "saveImage", save));
    // And the module itself, put where it belongs: the next call finds it.
    fs::create_directories(folder + "/orxFunctions");
    fs::copy_file(ORX_TEST_CODECS, folder + "/orxFunctions/liborxPictureCodecs.so");
    EXPECT_TRUE(FileOperator::saveImage(image, folder + "/in", "", ".png"));
    EXPECT_TRUE(FileOperator::flush());
}

}  // namespace

int main(int count, char** arguments) {
    GTEST_FLAG_SET(filter, "-Alone.*");
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
