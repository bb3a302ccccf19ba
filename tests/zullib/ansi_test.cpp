#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "ZULLib/zullib.h"

namespace {

struct Pair {
    std::string utf8;
    std::string ansi;
};

// The bytes are those of the code page's published table.
TEST(TextConversion, KnownCharactersGoBothWays) {
    const std::string nul(1, '\0');
    const std::vector<Pair> pairs = {
        {"", ""},
        {"plain ASCII \x7F\t\n", "plain ASCII \x7F\t\n"},
        {"中文", "\xD6\xD0\xCE\xC4"},
        {"不为空！", "\xB2\xBB\xCE\xAA\xBF\xD5\xA3\xA1"},
        {"a·b",
         "a\xA1\xA4"
         "b"},
        {"é", "\xA8\xA6"},
        {"€", "\x80"},
        {"丂", "\x81\x40"},  // the first double-byte character
        {"誠", "\xD5\x5C"},  // its second byte is that of a backslash
        {"〇", "\xA9\x96"},
        {"中" + nul + "文" + nul, "\xD6\xD0" + nul + "\xCE\xC4" + nul},
    };
    for (const Pair& pair : pairs) {
        EXPECT_EQ(zul::toAnsi(pair.utf8), pair.ansi) << pair.utf8;
        EXPECT_EQ(zul::toUtf8(pair.ansi), pair.utf8) << pair.utf8;
    }
}

TEST(TextConversion, EachCharacterWithoutCounterpartIsOneQuestionMark) {
    const std::vector<Pair> pairs = {
        {"x¢y", "x?y"},                    // two bytes
        {"\uFB00中", "?\xD6\xD0"},         // three
        {"\U0001F600\U0001F600.", "??."},  // four
        {"\U000E0041", "?"},               // a tag, which some tables drop in silence
    };
    for (const Pair& pair : pairs) EXPECT_EQ(zul::toAnsi(pair.utf8), pair.ansi) << pair.utf8;
    // A whole pair that stands for nothing; the table of Windows has a private character for it.
    EXPECT_THAT(zul::toUtf8("\xFE\x50\xD6\xD0"), testing::AnyOf("?中", "\uE815中"));
}

// Beside each character the nearest bytes that are none.
TEST(TextConversion, EachLengthOfCharactersBeginsAndEndsWhereUnicodeSays) {
    const std::vector<Pair> pairs = {
        {"\xC1\xBF", "??"},            // U+007F takes one byte
        {"\xE0\xA0\x80", "?"},         // U+0800
        {"\xE0\x9F\xBF", "???"},       // U+07FF takes two
        {"\xED\x9F\xBF", "?"},         // U+D7FF, the last before the surrogates
        {"\xF0\x90\x80\x80", "?"},     // U+10000
        {"\xF0\x8F\xBF\xBF", "????"},  // U+FFFF takes three
        {"\xF4\x8F\xBF\xBF", "?"},     // U+10FFFF, the last of all
        {"\xF5\x80\x80\x80", "????"},
    };
    for (const Pair& pair : pairs) EXPECT_EQ(zul::toAnsi(pair.utf8), pair.ansi) << pair.utf8;
}

TEST(TextConversion, EachStrayByteIsOneQuestionMark) {
    const std::vector<Pair> badUtf8 = {
        {"a\x80z", "a?z"},
        {"\xC0\xAF", "??"},            // overlong '/'
        {"\xE0\x80\xAF", "???"},       // the same in three bytes
        {"\xED\xA0\x80", "???"},       // a surrogate
        {"\xF4\x90\x80\x80", "????"},  // beyond U+10FFFF
        {"\xE4\xB8", "??"},            // cut off at the end
        {"\xE4\xB8"
         "A\xE4\xB8\xAD",
         "??A\xD6\xD0"},  // cut off by a letter
        {"\xFF\xE4\xB8\xAD\xFE", "?\xD6\xD0?"},
    };
    for (const Pair& pair : badUtf8) EXPECT_EQ(zul::toAnsi(pair.utf8), pair.ansi);
    const std::vector<Pair> badAnsi = {
        {"?", "\xD6"},              // a lead byte at the end
        {"? 中", "\xD6 \xD6\xD0"},  // one before a blank
        {"?\x7F", "\xD6\x7F"},
        {"?中?", "\xFF\xD6\xD0\xFF"},
    };
    for (const Pair& pair : badAnsi) EXPECT_EQ(zul::toUtf8(pair.ansi), pair.utf8);
}

// Every pair of the code page that stands for a character comes back as it was, from several threads.
TEST(TextConversion, TheWholeTableRoundTripsOnSeveralThreads) {
    const auto roundTrip = [](int& characters) {
        for (int lead = 0x81; lead <= 0xFE; ++lead) {
            std::string row;
            for (int trail = 0x40; trail <= 0xFE; ++trail) {
                if (trail == 0x7F) continue;
                const std::string pair = {static_cast<char>(lead), static_cast<char>(trail)};
                if (zul::toUtf8(pair) != "?") row += pair;
            }
            const std::string back = zul::toAnsi(zul::toUtf8(row));
            EXPECT_EQ(back, row);
            characters += static_cast<int>(row.size() / 2);
        }
    };
    std::vector<int> characters(3, 0);
    std::vector<std::thread> threads;
    threads.reserve(characters.size());
    for (int& count : characters) threads.emplace_back(roundTrip, std::ref(count));
    for (std::thread& thread : threads) thread.join();
    // The code page defines 21,791 double-byte characters; tables differ in some private and newer ones.
    for (const int count : characters) EXPECT_GE(count, 21700);
}

TEST(TextConversion, LongTextsAreConvertedWhole) {
    std::string utf8;
    std::string ansi;
    for (int i = 0; i < 5000; ++i) {
        utf8 += i % 7 == 0 ? "中¢" : "文x";
        ansi += i % 7 == 0 ? "\xD6\xD0?" : "\xCE\xC4x";
    }
    EXPECT_EQ(zul::toAnsi(utf8), ansi);
}

}  // namespace
