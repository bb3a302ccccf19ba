// What the inspection program meets on POSIX only: names of any bytes, pipes, permissions.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "inspection/run/image_source.h"
#include "support/picture_file.h"
#include "tests/examples/limited_run_posix.h"
#include "tests/examples/program_fixture.h"

namespace {

namespace fs = std::filesystem;
using test::AtLimit;
using test::Outcome;
using test::Program;
using test::textOf;
using testing::HasSubstr;
using testing::Not;

// The inspection with a camera. Under the sanitizers, whose dlopen does not know the run path of the library
// that calls it, the driver module must be found without.
class CameraProgram : public Program {
  protected:
    CameraProgram() { setenv("LD_LIBRARY_PATH", ORX_DRIVER_FOLDER, 1); }
    ~CameraProgram() override {
        unsetenv("LD_LIBRARY_PATH");
        unsetenv("TQVISION_CONFIG");
    }
};

TEST_F(Program, APipeIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(path("pipe.png").c_str(), 0600), 0);
    const Outcome outcome = run({path("pipe.png"), "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr(path("pipe.png") + ": not a regular file"));
}

TEST_F(Program, TheEarlierReportStaysUntilTheNewOneIsWhole) {
    std::vector<std::string> arguments = {"-o", path("out")};
    for (int i = 0; i < 6; ++i) arguments.push_back(writeDisk("p" + std::to_string(i) + ".png"));
    ASSERT_EQ(run(arguments).exitCode, 0);
    const std::string report = textOf(path("out/report.html"));
    // Room for each picture, not for the report of all.
    std::uintmax_t largest = 0;
    for (const auto& entry : fs::directory_iterator(path("out")))
        if (entry.path().extension() == ".png") largest = std::max(largest, entry.file_size());
    const int blocks = static_cast<int>(largest / 512) + 8;
    ASSERT_GT(report.size(), 512U * static_cast<unsigned>(blocks));
    for (const AtLimit what : {AtLimit::kFails, AtLimit::kIsKilled}) {
        const int exitCode = test::runLimited(blocks, what, arguments, folder.path());
        EXPECT_EQ(exitCode, what == AtLimit::kFails ? 1 : test::kKilled) << textOf(path("stderr"));
        EXPECT_EQ(textOf(path("out/report.html")), report);
        EXPECT_EQ(test::unfinishedIn(path("out")).size(), what == AtLimit::kFails ? 0U : 1U);
    }
    EXPECT_EQ(run(arguments).exitCode, 0);
    EXPECT_EQ(textOf(path("out/report.html")), report);
    EXPECT_TRUE(test::unfinishedIn(path("out")).empty());
    // Where a link leads, and nowhere else.
    fs::rename(path("out/report.html"), path("kept.html"));
    fs::create_symlink(path("kept.html"), path("out/report.html"));
    EXPECT_EQ(run({path("p0.png"), "-o", path("out")}).exitCode, 0);
    EXPECT_TRUE(fs::is_symlink(path("out/report.html")));
    EXPECT_LT(textOf(path("kept.html")).size(), report.size());
    fs::remove(path("out/report.html"));
    fs::create_directory(path("out/report.html"));
    EXPECT_THAT(run({path("p0.png"), "-o", path("out")}).errors, HasSubstr("it can't be written"));
}

TEST_F(Program, AFileWithoutPermissionIsNamedAsSuch) {
    const std::string locked = writeDisk("locked.png");
    fs::permissions(locked, fs::perms::none);
    fs::permissions(folder.path(), fs::perms::owner_all | fs::perms::others_exec);
    // Root may read everything: become nobody for the while.
    const bool wasRoot = geteuid() == 0;
    if (wasRoot) {
        ASSERT_EQ(seteuid(65534), 0);
    }
    std::string problem;
    const cv::Mat picture = inspection::readGrey(locked, problem);
    if (wasRoot) {
        ASSERT_EQ(seteuid(0), 0);
    }
    EXPECT_TRUE(picture.empty());
    EXPECT_EQ(problem, "no permission to read it");
}

// It opens, and its first bytes can't be read: as a file whose disk or server has gone.
TEST_F(Program, AFileThatFailsToBeReadIsNamedAsSuch) {
    const std::string broken = "/proc/self/mem";
    std::string problem;
    EXPECT_TRUE(inspection::readGrey(broken, problem).empty());
    EXPECT_EQ(problem, "can't be read to its end");
    EXPECT_NO_THROW(EXPECT_TRUE(host::readPicture(broken, cv::IMREAD_GRAYSCALE).empty()));
    const std::string good = writeDisk("good.png");
    EXPECT_FALSE(host::readPicture(good, cv::IMREAD_GRAYSCALE).empty());
}

TEST_F(Program, OddNamesAreSafeInEveryReport) {
    const std::vector<std::string> names = {"a<b>&'\"c.png",
                                            "semi;colon $(id) `id`.png",
                                            "\xE9\x9B\xB6\xE4\xBB\xB6.png",
                                            "<script>alert(1)<script>.png",
                                            "bad\xFFutf8.png",
                                            "esc\x1b[31m.png",
                                            "-dash.png"};
    fs::create_directory(path("in"));
    for (const std::string& name : names) writeDisk("in/" + name);
    const Outcome outcome = run({path("in"), "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, Not(HasSubstr("\x1b")));
    EXPECT_EQ(outcome.errors, "");  // more than three pictures, but no terminal: no progress bar

    const Json::Value images = report()["images"];
    ASSERT_EQ(images.size(), names.size());
    std::vector<std::string> reported;
    for (const Json::Value& image : images) {
        reported.push_back(fs::path(image["name"].asString()).filename().string());
        EXPECT_EQ(image["features"].size(), 1U);
    }
    EXPECT_THAT(reported, testing::UnorderedElementsAre(names[0], names[1], names[2], names[3],
                                                        "bad\xEF\xBF\xBDutf8.png", "esc?[31m.png", names[6]));
    const std::string html = textOf(path("out/report.html"));
    EXPECT_THAT(html, HasSubstr("a&lt;b&gt;&amp;&#39;&quot;c.png"));
    EXPECT_THAT(html, Not(HasSubstr("<script")));
    EXPECT_THAT(html, Not(HasSubstr("\xFF")));
}

// Through the camera driver module, which makes the pictures: a bright disk with a hole on a dark tray.
TEST_F(CameraProgram, LiveCamerasAreMeasured) {
    std::ofstream(path("camera.ini")) << "[camera1]\nsource = scene\nwidth = 320\nheight = 240\nrate = 50\n"
                                         "[camera2]\nsource = scene\nwidth = 200\nheight = 240\nrate = 50\n";
    setenv("TQVISION_CONFIG", path("camera.ini").c_str(), 1);
    const Outcome outcome = run({"--camera", "--cameras", "2", "--seconds", "1", "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("320x240"));
    EXPECT_THAT(outcome.output, HasSubstr("200x240"));
    for (const char* file : {"out/camera1-measured.png", "out/camera2-measured.png"}) {
        EXPECT_FALSE(cv::imread(path(file)).empty());
        EXPECT_THAT(outcome.output, HasSubstr(path(file)));
    }

    const Outcome missing = run({"--camera", "--cameras", "3", "--seconds", "1", "-o", path("out")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.errors, HasSubstr("camera3 start failed"));
    EXPECT_EQ(run({"--camera", "--synthetic", "1"}).exitCode, 2) << "one or the other";
    EXPECT_EQ(run({"--camera", "--type", "9"}).exitCode, 2);
}

// Ctrl-C ends the grabbing, not the report.
TEST_F(CameraProgram, InterruptedCamerasAreStillReported) {
    std::ofstream(path("camera.ini")) << "[camera1]\nsource = scene\nwidth = 320\nheight = 240\n";
    setenv("TQVISION_CONFIG", path("camera.ini").c_str(), 1);
    // Once it says that it grabs, it gets a second more.
    const std::string script =
        R"("$0" --camera --seconds 60 -o "$1" & while kill -0 $! && ! grep -q grabbing "$2"; do sleep 0.1; done
           sleep 1; kill -INT $!; wait $!)";
    const int exitCode =
        test::runProgram("/bin/sh", {"-c", script, ORX_INSPECTION_PROGRAM, path("out"), path("stderr")},
                         folder.path(), path("stdout"), path("stderr"));
    EXPECT_EQ(exitCode, 0) << textOf(path("stderr"));
    EXPECT_THAT(textOf(path("stdout")), HasSubstr("320x240"));
    EXPECT_TRUE(fs::exists(path("out/camera1-measured.png")));
}

}  // namespace
