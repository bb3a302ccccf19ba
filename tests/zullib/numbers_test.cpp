#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "ZULLib/zullib.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Numbers, IntegersAreParsedUpToTheFirstOtherCharacter) {
    const std::vector<std::pair<std::string, int>> cases = {
        {"", 0},
        {"0", 0},
        {"42", 42},
        {" \t\n-17 ", -17},
        {"+5", 5},
        {"007", 7},
        {"12abc", 12},
        {"3.9", 3},
        {"abc", 0},
        {"-", 0},
        {"+", 0},
        {"+-5", 0},
        {"- 5", 0},
        {"--5", 0},
        {"0x10", 0},
        {"2147483647", INT_MAX},
        {"2147483648", INT_MAX},
        {"-2147483648", INT_MIN},
        {"-2147483649", INT_MIN},
        {"99999999999999999999999", INT_MAX},
        {"+99999999999", INT_MAX},
        {"-99999999999999999999999", INT_MIN},
        {std::string("1\0"
                     "2",
                     3),
         1},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(zul::strToInt(text), value) << text;
    for (const int value : {0, -1, INT_MAX, INT_MIN}) EXPECT_EQ(zul::strToInt(zul::intToStr(value)), value);
    EXPECT_EQ(zul::intToStr(INT_MIN), "-2147483648");
}

TEST(Numbers, DoublesAreParsedUpToTheFirstOtherCharacter) {
    const std::vector<std::pair<std::string, double>> cases = {
        {"", 0.0},
        {"1.5", 1.5},
        {" +2.25e2mm", 225.0},
        {"-.5", -0.5},
        {"3.", 3.0},
        {"1,5", 1.0},
        {"1e", 1.0},
        {"0x1p4", 0.0},
        {".", 0.0},
        {"+-1", 0.0},
        {"inf", kInfinity},
        {"-Infinity", -kInfinity},
        {"1e309", kInfinity},
        {"-1e99999999999999999999", -kInfinity},
        {"1" + std::string(400, '0'), kInfinity},
        {"1e-400", 0.0},
        {"0." + std::string(400, '0') + "1", 0.0},
        {"0." + std::string(400, '0') + "1e+401", 1.0},
        {"1e-99999999999999999999", 0.0},
        {"0e99999", 0.0},
        {"4.9e-324", std::numeric_limits<double>::denorm_min()},
        {"1.7976931348623157e308", std::numeric_limits<double>::max()},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(zul::strToDouble(text), value) << text;
    EXPECT_TRUE(std::isnan(zul::strToDouble(" nan")));
    EXPECT_TRUE(std::signbit(zul::strToDouble("-1e-400")));
}

TEST(Numbers, DoublesAreWrittenWithTheDecimalsAskedFor) {
    struct Case {
        double value;
        int decimals;
        std::string text;
    };
    const std::vector<Case> cases = {
        {3.14159, 2, "3.14"},
        {2.5, 0, "2"},  // a tie goes to the even digit
        {3.5, 0, "4"},
        {0.125, 2, "0.12"},
        {0.375, 2, "0.38"},
        {1.005, 2, "1.00"},  // the nearest double lies below the tie
        {-0.001, 2, "-0.00"},
        {7.0, -3, "7"},
        {0.5, 1000, "0.5" + std::string(99, '0')},
        {1e22, 1, "10000000000000000000000.0"},
        {-kInfinity, 3, "-inf"},
        {kInfinity, 3, "inf"},
        {std::nan(""), 3, "nan"},
        {std::copysign(std::nan(""), -1.0), 3, "nan"},
    };
    for (const Case& c : cases) EXPECT_EQ(zul::doubleToStr(c.value, c.decimals), c.text);
    const std::string longest = zul::doubleToStr(-std::numeric_limits<double>::max(), 100);
    EXPECT_EQ(longest.size(), 1U + 309U + 1U + 100U);
    EXPECT_EQ(longest.substr(0, 18), "-17976931348623157");
}

TEST(Numbers, ALocaleWithADecimalCommaChangesNothing) {
    const char* chosen = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "ru_RU.UTF-8", "German_Germany"}) {
        if (chosen == nullptr) chosen = std::setlocale(LC_ALL, name);
    }
    if (chosen == nullptr) GTEST_SKIP() << "this system has no locale with a decimal comma";
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(zul::doubleToStr(1234.5, 1), "1234.5");
    EXPECT_EQ(zul::strToDouble("1234.5"), 1234.5);
    EXPECT_EQ(zul::strToDouble("1234,5"), 1234.0);
    EXPECT_EQ(zul::intToStr(1234567), "1234567");
    std::setlocale(LC_ALL, "C");
}

}  // namespace
