#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <string>

#include "ZULLib/zullib.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::system_clock;

long long nowInMilliseconds() {
    return std::chrono::duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string formatted(long long millisecondsOfEpoch, const char* format) {
    const auto second = static_cast<std::time_t>(millisecondsOfEpoch / 1000);
    char text[64] = {};
    std::strftime(text, sizeof text, format, std::localtime(&second));
    return text;
}

// A time string and the moments before and after it was made, all within one second.
struct Sample {
    std::string text;
    long long before;
    long long after;
};

Sample sample(int format) {
    for (;;) {
        const long long before = nowInMilliseconds();
        const std::string text = zul::getCurrentTime(format);
        const long long after = nowInMilliseconds();
        if (before / 1000 == after / 1000) return {text, before, after};
    }
}

TEST(CurrentTime, IsTheLocalTimeInEachFormat) {
    const std::pair<int, const char*> formats[] = {
        {0, "%Y-%m-%d %H:%M:%S "}, {1, "%Y-%m-%d"},           {2, "%H:%M:%S"},
        {3, "%Y%m%d%H%M%S"},       {5, "%Y-%m-%d %H:%M:%S "}, {-1, "%Y-%m-%d %H:%M:%S "},
    };
    for (const auto& [format, pattern] : formats) {
        const Sample time = sample(format);
        EXPECT_EQ(time.text, formatted(time.before, pattern)) << format;
    }
}

TEST(CurrentTime, FormatFourEndsInThreeDigitsOfMilliseconds) {
    const Sample time = sample(4);
    ASSERT_EQ(time.text.size(), 19U);
    EXPECT_EQ(time.text.substr(0, 16), formatted(time.before, "%Y%m%d_%H%M%S_"));
    const int millisecond = std::stoi(time.text.substr(16));
    EXPECT_GE(millisecond, time.before % 1000);
    EXPECT_LE(millisecond, time.after % 1000);
}

}  // namespace
