// The host programs that show pictures, run as a user runs them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <opencv2/imgcodecs.hpp>
#include <string>

#include "tests/display/viewer_picture.h"
#include "tests/support/private_display_posix.h"
#include "tests/support/temporary_folder.h"

namespace {

class DisplayProgram : public ::testing::Test {
  protected:
    // The exit code; what it prints goes to the file "output".
    int run(const std::string& command) const {
        const int status = std::system((command + " >" + (folder / "output") + " 2>&1").c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    bool printed(const std::string& text) const {
        return test::bytesOf(folder / "output").find(text) != std::string::npos;
    }

    const test::TemporaryFolder folder;
};

TEST_F(DisplayProgram, WithoutADisplayTheyStaySane) {
    unsetenv("DISPLAY");
    EXPECT_EQ(run(ORX_VIEWER_PROGRAM), 1);
    EXPECT_TRUE(printed("no display"));
    EXPECT_EQ(run(std::string(ORX_INSPECTION_PROGRAM) + " --synthetic 1 --window -o " + (folder / "out")), 0);
    EXPECT_TRUE(printed("no display"));
    EXPECT_TRUE(printed("1 measured"));
    EXPECT_EQ(run(std::string(ORX_VIEWER_PROGRAM) + " --fps 0"), 2);
}

TEST_F(DisplayProgram, TheViewerShowsBothBoxes) {
    const test::PrivateDisplay display;
    if (!display.isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
    ASSERT_EQ(run(std::string(ORX_VIEWER_PROGRAM) + " --seconds 4 --screenshot " + (folder / "seen.png")), 0);
    test::expectBothBoxes(cv::imread(folder / "seen.png"));
}

TEST_F(DisplayProgram, TheInspectionShowsItsPictures) {
    const test::PrivateDisplay display;
    if (!display.isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
    EXPECT_EQ(run(std::string(ORX_INSPECTION_PROGRAM) + " --synthetic 1 --window --window-seconds 0.5 -o " +
                  (folder / "out")),
              0);
    EXPECT_FALSE(printed("no display"));
    EXPECT_TRUE(printed("1 measured"));
}

}  // namespace
