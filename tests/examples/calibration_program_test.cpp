// The calibration program, from pictures to files.
#include <gmock/gmock.h>

#include "support/plane_scene.h"
#include "tests/examples/program_fixture.h"

namespace {

namespace fs = std::filesystem;
using test::Outcome;
using test::textOf;
using testing::HasSubstr;

class CalibrationProgram : public test::Program {
  protected:
    CalibrationProgram() {
        fs::create_directory(path("in"));
        scenes::PlaneCamera camera;
        camera.size = {320, 240};
        camera.fx = camera.fy = 310;
        camera.cx = 161;
        camera.cy = 119;
        camera.k1 = -0.2;
        for (int i = 0; i < 5; ++i)
            write("in/view" + std::to_string(i) + ".png",
                  scenes::renderPlane(
                      scenes::tilted(camera, {30, 20}, 95 + 3 * i, i == 0 ? 5 : 24 + 2 * i, 75 * i, 4 * i),
                      scenes::dotGridShape(7, 5, 10, 5), {}));
        write("in/small.png", cv::Mat(60, 80, CV_8U, cv::Scalar(90)));
    }

    void write(const std::string& name, const cv::Mat& picture) const {
        std::vector<uchar> bytes;
        cv::imencode(".png", picture, bytes);
        test::writeBytes(path(name), std::string(bytes.begin(), bytes.end()));
    }

    Outcome calibrate() const {
        const int exitCode = test::runProgram(
            ORX_CALIBRATION_PROGRAM,
            {"in", "--dots", "--columns", "7", "--rows", "5", "--plane-view", "view0.png", "--out", "out"},
            folder.path(), path("stdout"), path("stderr"));
        return {exitCode, textOf(path("stdout")), textOf(path("stderr"))};
    }
};

TEST_F(CalibrationProgram, PicturesAreFreedFromDistortionWhereTheTargetWasSeen) {
    const Outcome outcome = calibrate();
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("5 undistorted pictures"));
    EXPECT_TRUE(fs::is_regular_file(path("out/view4-undistorted.png")));
    EXPECT_FALSE(fs::exists(path("out/small-undistorted.png")))
        << "of another size: bent by a lens not its own";
}

TEST_F(CalibrationProgram, BadArgumentsEndWithTwoAndAHint) {
    const std::vector<std::vector<std::string>> wrong = {
        {},
        {"--no-such-option"},
        {"in", "--columns", "2"},
        {"in", "--rows", "many"},
        {"in", "--pitch", "nan"},
        {"in", "--pitch", "0"},
        {"in", "--dots", "--pitch", "10", "--diameter", "9.5"},
        {"in", "--radial", "4"},
        {"in", "--height", "inf"},
        {"in", "--height-deviation", "-1"},
        {"in", "--scale-deviation", "0.2"},
        {"in", "--no-lens", "--height", "3"},
        {"--target", "board.png", "--target-margin", "2147483647"},
        {"--target", "board.png", "--target-margin", "-5"},
        {"--target", "board.png", "--target-margin", "1100"},
        {"--target", "board.png", "--target-square", "0"},
        {"--target", "board.png", "--target-width", "2147483647"},
        {"--target-pdf", "board.pdf", "--page", "A5"},
        {"--target-pdf", "board.pdf", "--page", "60x40"},
    };
    for (const auto& arguments : wrong) {
        const int exitCode = test::runProgram(ORX_CALIBRATION_PROGRAM, arguments, folder.path(),
                                              path("stdout"), path("stderr"));
        EXPECT_EQ(exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_THAT(textOf(path("stderr")), HasSubstr("--help")) << testing::PrintToString(arguments);
        EXPECT_EQ(textOf(path("stdout")), "");
    }
    EXPECT_FALSE(fs::exists(path("board.png")) || fs::exists(path("board.pdf")));
    EXPECT_FALSE(fs::exists(path("calibration-output")));
}

// Folders in the way stand for a disk that takes no more.
TEST_F(CalibrationProgram, WhatCantBeWrittenIsToldByTheExitCode) {
    for (const std::string name : {"view3-undistorted.png", "residuals.png", "camera.yml"}) {
        fs::remove_all(path("out"));
        fs::create_directories(path("out/" + name));
        const Outcome outcome = calibrate();
        EXPECT_EQ(outcome.exitCode, 1) << name;
        EXPECT_THAT(outcome.errors, HasSubstr(name.substr(0, name.find_first_of("-"))));
        EXPECT_TRUE(fs::is_directory(path("out/" + name))) << "what is no picture of ours stays";
    }
}

}  // namespace
