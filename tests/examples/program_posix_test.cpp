// What the inspection program meets on POSIX only: names of any bytes, pipes, permissions.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "inspection/image_source.h"
#include "tests/examples/program_fixture.h"

namespace {

namespace fs = std::filesystem;
using test::Outcome;
using test::Program;
using test::textOf;
using testing::HasSubstr;
using testing::Not;

TEST_F(Program, APipeIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(path("pipe.png").c_str(), 0600), 0);
    const Outcome outcome = run({path("pipe.png"), "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr(path("pipe.png") + ": not a regular file"));
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

}  // namespace
