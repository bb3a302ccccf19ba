// What a batch meets on POSIX: signals, and a disk that takes no more.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include "tests/examples/batch_fixture.h"
#include "tests/examples/limited_run_posix.h"

namespace {

namespace fs = std::filesystem;
using test::AtLimit;
using test::BatchProgram;
using test::Outcome;
using test::textOf;
using testing::HasSubstr;

class LongBatch : public BatchProgram {
  protected:
    LongBatch() {
        writeRadius("disk.png", 30);
        for (int i = 0; i < kPictures; ++i)
            fs::create_hard_link(path("disk.png"), path("in/p" + std::to_string(1000 + i) + ".png"));
    }

    // Sends the signal once there are more results than before, and waits for the end.
    int runUntil(const std::string& signal, const std::string& jobs) const {
        const std::string script = R"sh(
            size() { wc -c <"$1/results.jsonl" 2>/dev/null || echo 0; }
            before=$(size "$2")
            "$0" --recipe "$1" --jobs "$5" --annotate none --quiet -o "$2" "$3" &
            while kill -0 $! && [ "$(size "$2")" = "$before" ]; do sleep 0.02; done
            kill -"$4" $!
            wait $!)sh";
        return test::runProgram(
            "/bin/sh",
            {"-c", script, ORX_INSPECTION_PROGRAM, path("disk.json"), path("out"), path("in"), signal, jobs},
            folder.path(), path("stdout"), path("stderr"));
    }

    Outcome finish() const { return run(arguments({path("in"), "--annotate", "none"})); }

    void expectAllOnceInOrder() const {
        const auto lines = results();
        ASSERT_EQ(lines.size(), static_cast<std::size_t>(kPictures));
        for (int i = 0; i < kPictures; ++i)
            EXPECT_EQ(lines[static_cast<std::size_t>(i)]["picture"].asString(),
                      path("in/p" + std::to_string(1000 + i) + ".png"));
    }

    static constexpr int kPictures = 1500;
};

TEST_F(LongBatch, InterruptedRunsAreReportedAndGoneOnWith) {
    EXPECT_EQ(runUntil("INT", "2"), 130) << textOf(path("stderr"));
    const std::size_t first = results().size();
    EXPECT_GT(first, 0U);
    EXPECT_LT(first, static_cast<std::size_t>(kPictures));
    EXPECT_EQ(statistics()["pictures"].asUInt64(), first);
    EXPECT_THAT(textOf(path("out/report.html")), HasSubstr("Interrupted: "));
    fs::remove(path("out/report.html"));
    EXPECT_EQ(runUntil("TERM", "1"), 143) << textOf(path("stderr"));
    EXPECT_TRUE(fs::exists(path("out/report.html")));
    EXPECT_GT(results().size(), first);
    EXPECT_EQ(finish().exitCode, 0);
    expectAllOnceInOrder();
}

TEST_F(LongBatch, AKilledRunIsGoneOnWith) {
    runUntil("KILL", "2");
    const std::string killed = textOf(path("out/results.jsonl"));
    EXPECT_GT(killed.size(), 0U);
    EXPECT_THAT(finish().output, HasSubstr("going on after "));
    expectAllOnceInOrder();
    EXPECT_EQ(statistics()["pictures"].asInt(), kPictures);
    EXPECT_EQ(statistics()["verdicts"]["pass"].asInt(), kPictures);
}

TEST_F(LongBatch, AFullDiskIsToldAndWhatWasWrittenIsKept) {
    const int exitCode = test::runLimited(
        64, AtLimit::kFails, arguments({path("in"), "--annotate", "none", "--quiet"}), folder.path());
    EXPECT_EQ(exitCode, 1);
    EXPECT_THAT(textOf(path("stderr")), HasSubstr("results.jsonl can't be written"));
    const std::string text = textOf(path("out/results.jsonl"));
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.back(), '\n') << "no half lines";
    EXPECT_GT(results().size(), 10U);
    EXPECT_THAT(textOf(path("out/report.html")), HasSubstr("The run ended early"));
    EXPECT_EQ(finish().exitCode, 0);
    expectAllOnceInOrder();
}

// The table is made anew from the lines when a run goes on, the sheets when their pictures are measured
// again.
TEST_F(BatchProgram, TheEarlierTableAndSheetsStayUntilTheNewOnesAreWhole) {
    const std::string first = writeRadius("in/p10.png", 30);
    for (int i = 11; i < 50; ++i) fs::create_hard_link(first, path("in/p" + std::to_string(i) + ".png"));
    ASSERT_EQ(run(arguments({path("in"), "--annotate", "none"})).exitCode, 0);
    const std::string table = textOf(path("out/results.csv"));
    ASSERT_GT(table.size(), 2048U);
    for (const AtLimit what : {AtLimit::kFails, AtLimit::kIsKilled}) {
        const int exitCode = test::runLimited(4, what, arguments({path("in")}), folder.path());
        EXPECT_EQ(exitCode, what == AtLimit::kFails ? 1 : test::kKilled) << textOf(path("stderr"));
        EXPECT_EQ(textOf(path("out/results.csv")), table);
        EXPECT_EQ(test::unfinishedIn(path("out")).size(), what == AtLimit::kFails ? 0U : 1U);
    }
    EXPECT_EQ(run(arguments({path("in")})).exitCode, 0);
    EXPECT_EQ(textOf(path("out/results.csv")), table);
    EXPECT_TRUE(test::unfinishedIn(path("out")).empty());

    ASSERT_EQ(run(arguments({first, "--annotate", "all"}, "sheets")).exitCode, 0);
    const fs::path sheet = fs::directory_iterator(path("sheets/pictures"))->path();
    const std::string drawn = textOf(sheet.string());
    ASSERT_GT(drawn.size(), 4096U);
    for (const AtLimit what : {AtLimit::kFails, AtLimit::kIsKilled}) {
        fs::remove(path("sheets/results.jsonl"));
        EXPECT_NE(test::runLimited(8, what, arguments({first, "--annotate", "all"}, "sheets"), folder.path()),
                  0);
        EXPECT_EQ(textOf(sheet.string()), drawn);
    }
}

// Lines of two runs would mix.
TEST_F(BatchProgram, OneRunAtATimeWritesIntoAFolder) {
    const std::vector<std::string> wanted = arguments({writeRadius("in/a.png", 30), "--again"});
    ASSERT_EQ(run(wanted).exitCode, 0);
    const std::string before = textOf(path("out/results.jsonl"));
    const int other = open(path("out").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0) << "the first run has let it go";
    const Outcome outcome = run(wanted);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("another run writes there"));
    EXPECT_EQ(textOf(path("out/results.jsonl")), before);
    close(other);
    EXPECT_EQ(run(wanted).exitCode, 0);
}

TEST_F(BatchProgram, ARecipeFromAPipeIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(path("pipe.json").c_str(), 0600), 0);
    const Outcome outcome = run({"--recipe", path("pipe.json"), writeDisk("a.png"), "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("pipe.json: the file can't be read"));
}

}  // namespace
