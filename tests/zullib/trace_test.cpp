#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ZULLib/zullib.h"

namespace {

// Collects the lines while it lives.
class Collector {
  public:
    Collector() { zul::setTraceSink(&Collector::receive, this); }
    ~Collector() { zul::setTraceSink(nullptr, nullptr); }
    Collector(const Collector&) = delete;
    Collector& operator=(const Collector&) = delete;

    std::vector<std::string> lines() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return lines_;
    }

  private:
    static void receive(const char* line, void* self) {
        auto* const collector = static_cast<Collector*>(self);
        const std::lock_guard<std::mutex> lock(collector->mutex_);
        collector->lines_.emplace_back(line);
    }

    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

TEST(Trace, EachOverloadWritesItsOneLine) {
    const Collector collector;
    char writable[] = "text";
    zul::outPutDebugString("plain");
    zul::outPutDebugString("label", "text");
    zul::outPutDebugString("label", writable);
    zul::outPutDebugString("label", std::string("text"));
    zul::outPutDebugString("label", static_cast<const char*>(nullptr));
    zul::outPutDebugString("label", 7);
    zul::outPutDebugString("label", 3.14159, 2);
    zul::outPutDebugString("label", true);
    zul::outPutDebugString("label", false);
    const std::vector<std::string> expected = {"plain",   "label text", "label text", "label text", "label ",
                                               "label 7", "label 3.14", "label true", "label false"};
    EXPECT_EQ(collector.lines(), expected);
}

TEST(Trace, ASinkReceivesUtf8) {
    const Collector collector;
    zul::outPutDebugString("\xD6\xD0\xCE\xC4", 1);
    EXPECT_EQ(collector.lines(), std::vector<std::string>{"中文 1"});
}

TEST(Trace, AReplacedSinkIsNotCalledAgain) {
    const Collector first;
    {
        const Collector second;
        zul::outPutDebugString("to the second");
        EXPECT_EQ(second.lines().size(), 1U);
    }
    zul::outPutDebugString("to nobody");
    EXPECT_TRUE(first.lines().empty());
}

struct Recursion {
    int calls = 0;
    int callsAfter = 0;
};

TEST(Trace, ASinkMayTraceAndItsLinesAreDropped) {
    Recursion recursion;
    zul::setTraceSink(
        [](const char*, void* context) {
            ++static_cast<Recursion*>(context)->calls;
            zul::outPutDebugString("from inside");
        },
        &recursion);
    zul::outPutDebugString("one");
    zul::outPutDebugString("two");
    zul::setTraceSink(nullptr, nullptr);
    EXPECT_EQ(recursion.calls, 2);
}

TEST(Trace, ASinkMayReplaceItself) {
    Recursion recursion;
    zul::setTraceSink(
        [](const char*, void* context) {
            ++static_cast<Recursion*>(context)->calls;
            zul::setTraceSink([](const char*, void* inner) { ++static_cast<Recursion*>(inner)->callsAfter; },
                              context);
        },
        &recursion);
    for (int i = 0; i < 3; ++i) zul::outPutDebugString("line");
    zul::setTraceSink(nullptr, nullptr);
    EXPECT_EQ(recursion.calls, 1);
    EXPECT_EQ(recursion.callsAfter, 2);
}

struct Gate {
    std::atomic<bool> entered{false};
    std::atomic<bool> open{false};
    std::atomic<bool> left{false};
    std::atomic<int> lines{0};
};

void waitAtTheGate(const char* line, void* context) {
    auto& gate = *static_cast<Gate*>(context);
    ++gate.lines;
    if (std::string(line) != "slow") return;
    gate.entered = true;
    while (!gate.open) std::this_thread::yield();
    gate.left = true;
}

TEST(Trace, ASlowSinkHoldsUpNobodyElseAndIsWaitedForWhenReplaced) {
    Gate gate;
    zul::setTraceSink(&waitAtTheGate, &gate);
    std::thread slow([] { zul::outPutDebugString("slow"); });
    while (!gate.entered) std::this_thread::yield();
    zul::outPutDebugString("quick");
    EXPECT_EQ(gate.lines, 2);

    std::atomic<bool> replaced{false};
    std::thread replacing([&] {
        zul::setTraceSink(nullptr, nullptr);
        EXPECT_TRUE(gate.left);
        replaced = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(replaced);
    gate.open = true;
    replacing.join();
    slow.join();
}

// Each sink lives on the stack of the loop and is gone right after its replacement: a late call would write
// to freed memory, which the sanitizers see, and break the count.
TEST(Trace, SinksComeAndGoWhileThreadsTrace) {
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    threads.reserve(3);
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&stop] {
            while (!stop) zul::outPutDebugString("\xD6\xD0", 1);
        });
    }
    std::size_t wrong = 0;
    for (int round = 0; round < 100; ++round) {
        const Collector collector;
        std::this_thread::yield();
        const std::vector<std::string> lines = collector.lines();
        wrong += static_cast<std::size_t>(std::count_if(
            lines.begin(), lines.end(), [](const std::string& line) { return line != "中 1"; }));
    }
    stop = true;
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0U);
}

#if !defined(_WIN32)
TEST(TraceDeathTest, TheDefaultSinkIsStandardErrorWhenItIsAskedFor) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            setenv("ZUL_TRACE", "", 1);
            zul::outPutDebugString("\xD6\xD0", true);
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "^中 true\n$");
    EXPECT_EXIT(
        {
            unsetenv("ZUL_TRACE");
            zul::outPutDebugString("nothing");
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "^$");
}
#endif

}  // namespace
