// Trees that others change meanwhile, and trees deeper than a process may have files open.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "tests/files/file_operator_fixture.h"

namespace {

namespace fs = std::filesystem;
using test::FileOperatorTest;

// So many files of this process may be open, until the end of the test.
class MostOpenFiles {
  public:
    explicit MostOpenFiles(rlim_t count) {
        getrlimit(RLIMIT_NOFILE, &former_);
        const rlimit fewer = {count, former_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &fewer);
    }
    ~MostOpenFiles() { setrlimit(RLIMIT_NOFILE, &former_); }
    MostOpenFiles(const MostOpenFiles&) = delete;
    MostOpenFiles& operator=(const MostOpenFiles&) = delete;

  private:
    rlimit former_ = {};
};

// Folders one in the other, each with a file of one byte and an empty folder beside it.
void makeDeep(const std::string& top, const std::string& name, int depth) {
    fs::create_directories(top);
    int folder = open(top.c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < depth; ++i) {
        mkdirat(folder, name.c_str(), 0700);
        mkdirat(folder, "beside", 0700);
        const int file = openat(folder, "file", O_WRONLY | O_CREAT, 0600);
        ASSERT_EQ(write(file, "x", 1), 1);
        close(file);
        const int next = openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY);
        close(folder);
        folder = next;
    }
    close(folder);
}

TEST_F(FileOperatorTest, TreesMayBeDeeperThanPathsAreLongAndHandlesAreMany) {
    constexpr int kDepth = 300;
    const std::string top = folder / "deep";
    makeDeep(top, "a name of twenty let", kDepth);
    make("deep/beside/at the top");
    const MostOpenFiles few(64);
    EXPECT_EQ(FileOperator::folderSize(top), kDepth + 1);
    const std::vector<std::string> files = FileOperator::listFiles(top, "", true);
    ASSERT_EQ(files.size(), kDepth + 1U);
    std::size_t longest = 0;
    for (const std::string& file : files) longest = std::max(longest, file.size());
    EXPECT_EQ(longest, top.size() + (kDepth - 1) * 21 + 5) << "that at the bottom is named in full";
    EXPECT_TRUE(FileOperator::deleteFolder(top));
    EXPECT_FALSE(fs::exists(top));
}

// Where nothing more can be opened, the answer is none and not a part.
TEST_F(FileOperatorTest, WhatCantBeReadIsNotPassedOffAsAll) {
    makeDeep(folder / "deep", "sub", 3);
    const int next = dup(0);
    ASSERT_GE(next, 0);
    close(next);
    // Two handles are left: the folder's own, and its copy while it is read.
    const MostOpenFiles few(static_cast<rlim_t>(next) + 2);
    EXPECT_EQ(FileOperator::folderSize(folder / "deep"), -1);
    EXPECT_TRUE(FileOperator::listFiles(folder / "deep", "", true).empty());
    EXPECT_EQ(FileOperator::listFiles(folder / "deep").size(), 1U) << "its subfolders aren't asked for";
    EXPECT_FALSE(FileOperator::deleteFolder(folder / "deep"));
}

TEST_F(FileOperatorTest, WhatOthersDeleteMeanwhileHidesNothing) {
    std::vector<std::string> kept;
    for (int i = 0; i < 20; ++i) kept.push_back(make("tree/kept" + std::to_string(i) + "/file", "12345"));
    std::sort(kept.begin(), kept.end());
    std::atomic<bool> ends{false};
    std::thread other([&] {
        while (!ends) {
            for (int i = 0; i < 20; ++i) make("tree/passing" + std::to_string(i) + "/sub/file", "1");
            for (int i = 0; i < 20; ++i)
                FileOperator::deleteFolder(folder / ("tree/passing" + std::to_string(i)));
        }
    });
    for (int i = 0; i < 120; ++i) {
        const std::vector<std::string> files = FileOperator::listFiles(folder / "tree", "", true);
        EXPECT_TRUE(std::includes(files.begin(), files.end(), kept.begin(), kept.end())) << files.size();
        const std::int64_t size = FileOperator::folderSize(folder / "tree");
        EXPECT_GE(size, 100);
        EXPECT_LE(size, 120);
    }
    ends = true;
    other.join();
}

TEST_F(FileOperatorTest, TwoMayDeleteOneTree) {
    for (int round = 0; round < 6; ++round) {
        for (int i = 0; i < 40; ++i) make("tree/sub" + std::to_string(i % 7) + "/" + std::to_string(i));
        std::atomic<int> gone{0};
        const auto work = [&] { gone += FileOperator::deleteFolder(folder / "tree") ? 1 : 0; };
        std::thread other(work);
        work();
        other.join();
        EXPECT_GE(gone, 1);
        EXPECT_FALSE(fs::exists(folder.path() / "tree"));
    }
}

TEST_F(FileOperatorTest, WhatMayNotBeReadIsPassedOverAndNotDeleted) {
    make("tree/open/file", "123");
    make("tree/locked/file", "12345");
    fs::permissions(folder.path() / "tree/locked", fs::perms::none);
    const bool wasRoot = geteuid() == 0;
    if (wasRoot) {  // who may read everything: become nobody for the while
        for (const char* name : {"", "tree", "tree/open", "tree/locked"}) {
            ASSERT_EQ(chown((folder / name).c_str(), 65534, 65534), 0);
        }
        ASSERT_EQ(seteuid(65534), 0);
    }
    EXPECT_EQ(FileOperator::folderSize(folder / "tree"), 3);
    EXPECT_EQ(FileOperator::listFiles(folder / "tree", "", true).size(), 1U);
    EXPECT_EQ(FileOperator::folderSize(folder / "tree/locked"), -1);
    EXPECT_FALSE(FileOperator::deleteFolder(folder / "tree"));
    if (wasRoot) {
        ASSERT_EQ(seteuid(0), 0);
    }
    fs::permissions(folder.path() / "tree/locked", fs::perms::owner_all);
    EXPECT_EQ(FileOperator::folderSize(folder / "tree"), 5) << "all but the locked one was deleted";
}

}  // namespace
