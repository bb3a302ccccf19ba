#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "ZULLib/zullib.h"

namespace {

TEST(Parameters, EachTypeIsANameSpaceAndUnsetOnesAreZero) {
    EXPECT_FALSE(zul::APPgetParamBool("p"));
    EXPECT_EQ(zul::APPgetParamInt("p"), 0);
    EXPECT_EQ(zul::APPgetParamDouble("p"), 0.0);
    EXPECT_EQ(zul::APPgetParamString("p"), "");
    zul::APPaddOrSetParamBool("p", true);
    zul::APPaddOrSetParamInt("p", 7);
    EXPECT_EQ(zul::APPgetParamDouble("p"), 0.0);
    zul::APPaddOrSetParamDouble("p", 2.5);
    zul::APPaddOrSetParamString("p", "\xD6\xD0");
    zul::APPaddOrSetParamInt("p", 8);
    EXPECT_TRUE(zul::APPgetParamBool("p"));
    EXPECT_EQ(zul::APPgetParamInt("p"), 8);
    EXPECT_EQ(zul::APPgetParamDouble("p"), 2.5);
    EXPECT_EQ(zul::APPgetParamString("p"), "\xD6\xD0");
    EXPECT_EQ(zul::APPgetParamInt("P"), 0);
}

TEST(Parameters, ReadersSeeWholeValuesWhileOthersWrite) {
    const std::string one(100, 'a');
    const std::string other(200, 'b');
    zul::APPaddOrSetParamString("shared", one);
    std::vector<std::thread> threads;
    threads.emplace_back([&] {
        for (int i = 0; i < 3000; ++i) zul::APPaddOrSetParamString("shared", i % 2 == 0 ? other : one);
    });
    for (int reader = 0; reader < 2; ++reader) {
        threads.emplace_back([&] {
            for (int i = 0; i < 3000; ++i) {
                const std::string seen = zul::APPgetParamString("shared");
                ASSERT_TRUE(seen == one || seen == other);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
