// orx_line_host as a program: what it says of each frame adds up, whatever happens to its cameras.
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <regex>

#include "tests/examples/run_program.h"
#include "tests/support/private_display_posix.h"
#include "tests/support/temporary_folder.h"

namespace {

using testing::HasSubstr;
using testing::Not;

// A line of its account.
struct Account {
    long frames = -1, measured = -1, missed = -1, left = -1, failed = -1, saved = -1;
};

class LineHost : public testing::Test {
  protected:
    // Its cameras can be unplugged.
    LineHost() { setenv("LD_LIBRARY_PATH", ORX_FLAKY_FOLDER, 1); }
    ~LineHost() override {
        unsetenv("LD_LIBRARY_PATH");
        unsetenv("ORX_TEST_UNPLUG");
    }
    int run(const std::string& program, const std::vector<std::string>& arguments) {
        return test::runProgram(program, arguments, folder_.path(), folder_ / "output", folder_ / "errors");
    }
    std::string output() const { return test::textOf(folder_ / "output"); }
    Account account(int camera) const {
        const std::regex line(
            "camera " + std::to_string(camera) +
            ": (\\d+) frames = (\\d+) measured \\+ (\\d+) missed \\+ (\\d+) left; (\\d+) failed, "
            "(\\d+) saved\n");
        const std::string text = output();
        std::smatch found;
        if (!std::regex_search(text, found, line)) return {};
        return {std::stol(found[1]), std::stol(found[2]), std::stol(found[3]),
                std::stol(found[4]), std::stol(found[5]), std::stol(found[6])};
    }
    void expectThatFramesAddUp() const {
        for (const int camera : {1, 2}) {
            const Account told = account(camera);
            EXPECT_EQ(told.frames, told.measured + told.missed + told.left) << output();
            EXPECT_GT(told.measured, 0) << output();
        }
    }

    const test::TemporaryFolder folder_;
};

TEST_F(LineHost, WithoutADisplayItEndsAtOnce) {
    unsetenv("DISPLAY");
    EXPECT_EQ(run(ORX_LINE_HOST_PROGRAM, {"3"}), 1);
}

TEST_F(LineHost, MeasuresEachFrameAndSavesWhatFails) {
    const test::PrivateDisplay display;
    if (!display.isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
    ASSERT_EQ(run(ORX_LINE_HOST_PROGRAM, {"25", "bad"}), 0) << test::textOf(folder_ / "errors");
    expectThatFramesAddUp();
    EXPECT_EQ(account(1).measured, 25);
    EXPECT_EQ(account(1).failed, 0) << "the part before this camera is good";
    EXPECT_EQ(account(2).measured, 25);
    EXPECT_EQ(account(2).failed, 25) << "the part before that camera is too small";
    EXPECT_EQ(account(2).saved, 25);
    int pictures = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder_ / "bad")) {
        EXPECT_EQ(cv::imread(file.path().string(), cv::IMREAD_UNCHANGED).size(), cv::Size(320, 236));
        ++pictures;
    }
    EXPECT_EQ(pictures, 25);
    EXPECT_THAT(output(), Not(HasSubstr("lost")));
}

TEST_F(LineHost, GoesOnWhereACameraIsUnpluggedForAWhile) {
    const test::PrivateDisplay display;
    if (!display.isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
    setenv("ORX_TEST_UNPLUG", "0 10 8", 1);
    ASSERT_EQ(run(ORX_LINE_HOST_PROGRAM, {"30"}), 0) << test::textOf(folder_ / "errors");
    expectThatFramesAddUp();
    EXPECT_EQ(account(1).measured, 30);
    EXPECT_EQ(account(2).measured, 30);
    EXPECT_THAT(output(), testing::ContainsRegex("camera 1 is lost: six fetches in a row failed\n"
                                                 "(camera 2 .*\n)*"
                                                 "camera 1 is reconnecting: (.*\n)+"
                                                 "camera 1 is grabbing: it was lost and is back"));
    EXPECT_THAT(output(), Not(HasSubstr("camera 2 is lost")));
}

TEST_F(LineHost, EndsInOrderWhenInterrupted) {
    const test::PrivateDisplay display;
    if (!display.isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
    const std::string script = R"("$0" & while kill -0 $! && ! [ -d failed ]; do sleep 0.05; done
                                  kill -INT $!; wait $!)";
    EXPECT_EQ(run("/bin/bash", {"-c", "set -m; " + script, ORX_LINE_HOST_PROGRAM}), 0) << output();
    expectThatFramesAddUp();
    EXPECT_GT(account(2).saved, 0);
}

}  // namespace
