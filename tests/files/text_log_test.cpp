#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <sstream>
#include <thread>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/temporary_folder.h"

namespace {

TEST(Save2Txt, AppendsLinesWithAndWithoutTime) {
    const test::TemporaryFolder folder;
    const std::string path = folder / "log.txt";
    orx::save2Txt(path, "first", 1);
    orx::save2Txt(path, "", -5);
    orx::save2Txt(path, "two\nlines", 7);
    EXPECT_EQ(test::textOf(path), "first\n\ntwo\nlines\n");
    orx::save2Txt(path, "timed", 0);
    const std::string all = test::textOf(path);
    EXPECT_TRUE(
        std::regex_match(all.substr(17), std::regex("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d timed\n")))
        << all;
}

TEST(Save2Txt, UnopenableFilesAreIgnored) {
    const test::TemporaryFolder folder;
    orx::save2Txt(folder / "missing/log.txt", "x", 1);
    orx::save2Txt(folder.name(), "x", 1);
    orx::save2Txt("", "x", 0);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(Save2Txt, ThreadsNeverTearALine) {
    const test::TemporaryFolder folder;
    const std::string path = folder / "log.txt";
    constexpr int kThreads = 4;
    constexpr int kLines = 400;
    const auto lineOf = [](int thread, int i) {
        return std::string(static_cast<std::size_t>(1 + (i * 37) % 9000), static_cast<char>('a' + thread));
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kLines; ++i) orx::save2Txt(path, lineOf(t, i), 1);
        });
    }
    for (std::thread& thread : threads) thread.join();

    std::istringstream lines(test::textOf(path));
    std::map<char, int> next;
    std::string line;
    int count = 0;
    while (std::getline(lines, line)) {
        ASSERT_FALSE(line.empty());
        ASSERT_EQ(line, lineOf(line[0] - 'a', next[line[0]]++));  // whole, and each thread's in order
        ++count;
    }
    EXPECT_EQ(count, kThreads * kLines);
}

}  // namespace
