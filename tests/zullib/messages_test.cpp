#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "ZULLib/zullib.h"

namespace {

void drain() {
    std::string text;
    int color = 0;
    while (zul::APPgetMessage(text, color)) {
    }
}

TEST(Messages, ComeOutInOrderWithTheirColours) {
    drain();
    EXPECT_EQ(zul::G_appshowMsg_defaultColor, 0);
    EXPECT_TRUE(zul::APPshowMessage("first", 1));
    EXPECT_TRUE(zul::APPshowMessage("", -7));
    std::string text = "untouched";
    int color = 99;
    ASSERT_TRUE(zul::APPgetMessage(text, color));
    EXPECT_EQ(text, "first");
    EXPECT_EQ(color, 1);
    ASSERT_TRUE(zul::APPgetMessage(text, color));
    EXPECT_EQ(text, "");
    EXPECT_EQ(color, -7);
    text = "untouched";
    EXPECT_FALSE(zul::APPgetMessage(text, color));
    EXPECT_EQ(text, "untouched");
    EXPECT_EQ(color, -7);
}

TEST(Messages, TheOldestBeyondOneThousandAreDroppedAndCounted) {
    drain();
    const std::uint64_t before = zul::droppedMessageCount();
    for (int i = 0; i < 1000; ++i) zul::APPshowMessage(std::to_string(i), i);
    EXPECT_EQ(zul::droppedMessageCount(), before);
    for (int i = 1000; i < 1003; ++i) zul::APPshowMessage(std::to_string(i), i);
    EXPECT_EQ(zul::droppedMessageCount(), before + 3);
    std::string text;
    int color = 0;
    for (int i = 3; i < 1003; ++i) {
        ASSERT_TRUE(zul::APPgetMessage(text, color));
        ASSERT_EQ(text, std::to_string(i));
        ASSERT_EQ(color, i);
    }
    EXPECT_FALSE(zul::APPgetMessage(text, color));
}

TEST(Messages, AFloodOfOneIsCountedAndPushesNothingOut) {
    drain();
    const std::uint64_t droppedBefore = zul::droppedMessageCount();
    const std::uint64_t repeatedBefore = zul::repeatedMessageCount();
    zul::APPshowMessage("the disk is full", 1);
    for (int i = 0; i < 5000; ++i) {
        zul::APPshowMessage("no camera", 1);
        zul::APPshowMessage("no camera", 2);
    }
    zul::APPshowMessage("the last", 1);
    EXPECT_EQ(zul::droppedMessageCount(), droppedBefore);
    EXPECT_EQ(zul::repeatedMessageCount(), repeatedBefore + 2 * (5000 - 16)) << "a colour is another message";
    std::string text;
    int color = 0;
    ASSERT_TRUE(zul::APPgetMessage(text, color));
    EXPECT_EQ(text, "the disk is full");
    zul::APPshowMessage("no camera", 1);
    ASSERT_TRUE(zul::APPgetMessage(text, color));
    EXPECT_EQ(text, "no camera");
    EXPECT_EQ(color, 1);
    zul::APPshowMessage("no camera", 1);
    EXPECT_EQ(zul::repeatedMessageCount(), repeatedBefore + 2 * (5000 - 16) + 1) << "one was taken meanwhile";
    int left = 0;
    while (zul::APPgetMessage(text, color)) ++left;
    EXPECT_EQ(left, 15 + 16 + 1 + 1);
    EXPECT_EQ(text, "no camera");
}

TEST(Messages, NoneIsLostOrDoubledBetweenThreads) {
    drain();
    const std::uint64_t before = zul::droppedMessageCount();
    constexpr int kProducers = 3;
    constexpr int kEach = 2000;
    std::atomic<int> running{kProducers};
    std::atomic<int> taken{0};
    std::vector<std::thread> threads;
    threads.reserve(kProducers + 2);
    for (int producer = 0; producer < kProducers; ++producer) {
        threads.emplace_back([&] {
            for (int i = 0; i < kEach; ++i) zul::APPshowMessage("message", i);
            --running;
        });
    }
    for (int consumer = 0; consumer < 2; ++consumer) {
        threads.emplace_back([&] {
            std::string text;
            int color = 0;
            for (;;) {
                const bool last = running == 0;
                if (zul::APPgetMessage(text, color)) {
                    ++taken;
                } else if (last) {
                    return;
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    const std::uint64_t dropped = zul::droppedMessageCount() - before;
    EXPECT_EQ(static_cast<std::uint64_t>(taken) + dropped, std::uint64_t{kProducers} * kEach);
}

}  // namespace
