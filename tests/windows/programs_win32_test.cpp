// The host programs that show pictures, run as a user runs them.
#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "tests/display/viewer_picture.h"
#include "tests/examples/run_program.h"
#include "tests/support/temporary_folder.h"
#include "tests/windows/host_window.h"

namespace {

class ProgramWithWindows : public testing::Test {
  protected:
    void SetUp() override {
        const test::HostWindow host(50, 50);
        if (host.handle() == nullptr) GTEST_SKIP() << "no window can be opened here: no display";
    }
    int run(const std::string& program, const std::vector<std::string>& arguments) const {
        return test::runProgram(program, arguments, folder.path(), folder / "output", folder / "errors");
    }

    const test::TemporaryFolder folder;
};

TEST_F(ProgramWithWindows, TheViewerShowsBothBoxes) {
    ASSERT_EQ(run(ORX_VIEWER_PROGRAM, {"--seconds", "4", "--screenshot", folder / "seen.png"}), 0)
        << test::textOf(folder / "errors");
    test::expectBothBoxes(cv::imread(folder / "seen.png"));
}

TEST_F(ProgramWithWindows, TheInspectionShowsItsPictures) {
    EXPECT_EQ(run(ORX_INSPECTION_PROGRAM,
                  {"--synthetic", "1", "--window", "--window-seconds", "0.5", "-o", folder / "out"}),
              0);
    EXPECT_EQ(test::textOf(folder / "errors").find("no display"), std::string::npos);
    EXPECT_NE(test::textOf(folder / "output").find("1 measured"), std::string::npos);
}

}  // namespace
