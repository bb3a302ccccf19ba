#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "inspection/parts/part_sections.h"
#include "inspection/report/data_uri.h"
#include "inspection/report/table.h"
#include "inspection/report/utf8.h"
#include "inspection/run/progress.h"

namespace {

using namespace std::string_literals;

TEST(Texts, WhatIsNotUtf8IsReplacedByteByByte) {
    const std::string bad = "\xEF\xBF\xBD";
    EXPECT_EQ(inspection::cleanUtf8("caf\xC3\xA9 \xE9\x9B\xB6\xE4\xBB\xB6 \xF0\x9F\x94\xA9"),
              "caf\xC3\xA9 \xE9\x9B\xB6\xE4\xBB\xB6 \xF0\x9F\x94\xA9");
    EXPECT_EQ(inspection::cleanUtf8("caf\xE9.png"), "caf" + bad + ".png");
    EXPECT_EQ(inspection::cleanUtf8("\xC3"), bad);                                // cut short
    EXPECT_EQ(inspection::cleanUtf8("\xC0\xAF"), bad + bad);                      // over-long
    EXPECT_EQ(inspection::cleanUtf8("\xE0\x80\xAF"), bad + bad + bad);            // over-long
    EXPECT_EQ(inspection::cleanUtf8("\xED\xA0\x80"), bad + bad + bad);            // surrogate
    EXPECT_EQ(inspection::cleanUtf8("\xF4\x90\x80\x80"), bad + bad + bad + bad);  // above U+10FFFF
    EXPECT_EQ(inspection::cleanUtf8("a\x1b[2Jb\nc\x7F\xC2\x9B"), "a?[2Jb?c??");
    EXPECT_EQ(inspection::cleanUtf8("a\0b"s), "a?b");
}

TEST(Texts, AWholeTurnIsNone) {
    inspection::FoundParts found;
    found.result.status = orx::msOk;
    for (const double angle : {359.9996, 359.9994}) {
        found.result.parts.emplace_back();
        found.result.parts.back().pose.angle = angle;
    }
    const inspection::Section section =
        inspection::foundSection(cv::Mat(20, 20, CV_8UC1, cv::Scalar(0)), found);
    ASSERT_EQ(section.rows.size(), 3U);
    EXPECT_EQ(section.rows[1][4], "0.000");
    EXPECT_EQ(section.rows[2][4], "359.999");
}

TEST(Texts, MarkupIsEscaped) {
    EXPECT_EQ(inspection::escapeHtml("<a href='x\"y'>&amp;"), "&lt;a href=&#39;x&quot;y&#39;&gt;&amp;amp;");
}

TEST(Texts, ColumnsStayAlignedBesideWideCharacters) {
    std::ostringstream out;
    inspection::printAligned(
        out, {{"name", "n"}, {"\xE9\x9B\xB6\xE4\xBB\xB6", "10"}, {"caf\xC3\xA9s", "7"}, {"x"}});
    EXPECT_EQ(out.str(),
              "   name   n\n"
              "   \xE9\x9B\xB6\xE4\xBB\xB6  10\n"
              "  caf\xC3\xA9s   7\n"
              "      x\n");
}

TEST(Texts, NumbersAreFixedAndZeroHasNoSign) {
    EXPECT_EQ(inspection::fixedText(-0.004, 2), "0.00");
    EXPECT_EQ(inspection::fixedText(-0.006, 2), "-0.01");
    EXPECT_EQ(inspection::fixedText(1234.5, 1), "1234.5");
    EXPECT_EQ(inspection::fixedText(std::numeric_limits<double>::quiet_NaN(), 2), "nan");
}

TEST(Texts, Base64OfTheStandardsExamples) {
    const auto encode = [](const std::string& text) {
        return inspection::base64({text.begin(), text.end()});
    };
    EXPECT_EQ(encode(""), "");
    EXPECT_EQ(encode("f"), "Zg==");
    EXPECT_EQ(encode("fo"), "Zm8=");
    EXPECT_EQ(encode("foo"), "Zm9v");
    EXPECT_EQ(encode("foobar"), "Zm9vYmFy");
    EXPECT_EQ(encode("\xFF\xFB"), "//s=");
}

TEST(Progress, IsShownForManyPicturesOnATerminalOnly) {
    const auto shown = [](std::size_t total, bool onTerminal) {
        std::ostringstream out;
        inspection::Progress progress(out, total, onTerminal);
        progress.show(1, "a.png");
        return out.str();
    };
    EXPECT_EQ(shown(3, true), "");
    EXPECT_EQ(shown(40, false), "");
    EXPECT_NE(shown(4, true).find("[#######.......................] 1/4 a.png"), std::string::npos);
}

}  // namespace
