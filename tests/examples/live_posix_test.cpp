// A recipe on cameras, through the camera driver module.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <map>

#include "tests/examples/batch_fixture.h"

namespace {

namespace fs = std::filesystem;
using test::BatchProgram;
using test::Outcome;
using test::textOf;
using testing::HasSubstr;
using testing::StartsWith;

class LiveProgram : public BatchProgram {
  protected:
    LiveProgram() {
        // Under the sanitizers the module must be found without the library's run path.
        setenv("LD_LIBRARY_PATH", ORX_DRIVER_FOLDER, 1);
        fs::create_directory(path("second"));
        // One of three is too large; of the second camera's, one of two shows nothing.
        writeRadius("in/a.png", 30.0, 1);
        writeRadius("in/b.png", 31.0, 2);
        writeRadius("in/c.png", 30.0, 3);
        writeRadius("second/a.png", 30.0, 4);
        writeRadius("second/b.png", 4.0, 5);
        std::ofstream(path("camera.ini"))
            << "[camera1]\nsource = replay\nfolder = in\nrate = 20\nloop = true\n"
               "[camera2]\nsource = replay\nfolder = second\nrate = 10\nloop = true\n";
        setenv("TQVISION_CONFIG", path("camera.ini").c_str(), 1);
    }
    ~LiveProgram() override {
        unsetenv("LD_LIBRARY_PATH");
        unsetenv("TQVISION_CONFIG");
    }

    std::size_t pictures(const std::string& out) const {
        const auto entries = fs::directory_iterator(path(out + "/pictures"));
        return static_cast<std::size_t>(std::distance(fs::begin(entries), fs::end(entries)));
    }
};

TEST_F(LiveProgram, EveryPictureOfEveryCameraHasItsVerdict) {
    const Outcome outcome = run(arguments({"--camera", "--cameras", "2", "--seconds", "2", "--keep", "4"}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors << outcome.output;
    std::map<std::string, int> counts;
    std::string names;
    for (const Json::Value& line : results()) {
        const std::string name = line["picture"].asString();
        const std::string camera = name.substr(0, 7);
        EXPECT_THAT(camera, testing::AnyOf("camera1", "camera2"));
        ++counts[camera + " " + line["verdict"].asString()];
        EXPECT_EQ(names.find(name), std::string::npos) << "twice";
        names += name + "\n";
        if (!line["annotated"].isNull()) {
            EXPECT_THAT(line["annotated"].asString(), StartsWith("pictures/" + name));
        }
    }
    EXPECT_GT(counts["camera1 pass"], 0);
    EXPECT_GT(counts["camera1 fail"], 0);
    EXPECT_EQ(counts["camera1 not measured"], 0);
    EXPECT_GT(counts["camera2 pass"], 0);
    EXPECT_EQ(counts["camera2 fail"], 0);
    EXPECT_GT(counts["camera2 not measured"], 0);
    EXPECT_EQ(statistics()["verdicts"]["fail"].asInt(), counts["camera1 fail"]);
    EXPECT_LE(pictures("out"), 4U);
    EXPECT_GT(pictures("out"), 0U);
    EXPECT_THAT(textOf(path("out/results.csv")), HasSubstr("\ncamera1-2"));
    const std::string told = std::to_string(counts["camera1 pass"]) + " pass, " +
                             std::to_string(counts["camera1 fail"]) + " fail, 0 undecided, 0 not measured, ";
    EXPECT_THAT(textOf(path("out/report.html")), HasSubstr(told));
    EXPECT_THAT(outcome.output, HasSubstr("dropped"));

    // Again: what was counted before counts, and the pictures kept are still so many at the most.
    const auto before = results().size();
    const Outcome more = run(arguments({"--camera", "--seconds", "1", "--keep", "3"}));
    EXPECT_THAT(more.output, HasSubstr("going on after " + std::to_string(before) + " pictures"));
    EXPECT_GT(results().size(), before);
    EXPECT_LE(pictures("out"), 3U);
}

TEST_F(LiveProgram, ResultsArePutAsideBeforeTheyFillTheDisk) {
    const auto csvRows = [&](const std::string& file) {
        const std::string text = textOf(path("out/" + file));
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) - 1;
    };
    const auto olderLines = [&] {
        const std::string text = textOf(path("out/results.old.jsonl"));
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    };
    const std::vector<std::string> options{"--camera", "--seconds", "2", "--lines", "4", "--keep", "3"};
    const Outcome outcome = run(arguments(options));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_GT(statistics()["pictures"].asInt(), 8);
    EXPECT_LT(results().size(), 4U);
    EXPECT_EQ(csvRows("results.csv"), results().size());
    EXPECT_EQ(olderLines(), 4U);
    EXPECT_EQ(csvRows("results.old.csv"), 4U);
    // What a picture stands for may be in either file: it is forgotten when its turn comes.
    run(arguments(options));
    EXPECT_LE(pictures("out"), 3U);
    std::vector<std::string> anew = options;
    anew.push_back("--again");
    anew[4] = "100000";
    run(arguments(anew));
    EXPECT_FALSE(fs::exists(path("out/results.old.jsonl")) || fs::exists(path("out/results.old.csv")));
}

// Without --seconds it runs until it is told to end.
TEST_F(LiveProgram, InterruptedAndTerminatedRunsAreReported) {
    for (const std::string signal : {"INT", "TERM"}) {
        const std::string script = R"("$0" --recipe "$1" --camera --quiet -o "$2" &
            while kill -0 $! && ! [ -s "$2/results.jsonl" ]; do sleep 0.05; done
            kill -"$3" $!; wait $!)";
        const int exitCode = test::runProgram(
            "/bin/sh", {"-c", script, ORX_INSPECTION_PROGRAM, path("disk.json"), path(signal), signal},
            folder.path(), path("stdout"), path("stderr"));
        EXPECT_EQ(exitCode, 0) << textOf(path("stderr"));
        EXPECT_GT(results(signal).size(), 0U);
        EXPECT_EQ(statistics(signal)["pictures"].asUInt64(), results(signal).size());
        EXPECT_THAT(textOf(path(signal + "/report.html")), HasSubstr("camera1 "));
    }
}

TEST_F(LiveProgram, WhatDoesNotFitIsRefused) {
    const Outcome missing = run(arguments({"--camera", "--cameras", "3", "--seconds", "1"}));
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.errors, HasSubstr("not all cameras can be opened"));
    EXPECT_TRUE(fs::exists(path("out/report.html")));
    std::ofstream(path("bad.json")) << "{\"recipe\": 1, \"nonsense\": 2}";
    EXPECT_EQ(run({"--recipe", path("bad.json"), "--camera", "-o", path("bad")}).exitCode, 2);
    EXPECT_FALSE(fs::exists(path("bad")));
    for (const std::vector<std::string>& more :
         std::vector<std::vector<std::string>>{{"--camera", path("in")},
                                               {"--camera", "--gauge", "3"},
                                               {"--camera", "--jobs", "2"},
                                               {path("in"), "--window"}})
        EXPECT_EQ(run(arguments(more)).exitCode, 2) << more.back();
}

}  // namespace
