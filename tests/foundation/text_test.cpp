#include <gtest/gtest.h>

#include "orxFunctions/orxfunctions.h"

namespace {

TEST(TextCutting, StartAndEndAreCutAtTheFirstSeparator) {
    EXPECT_EQ(orx::getStartStr("a=b=c", "="), "a");
    EXPECT_EQ(orx::getEndStr("a=b=c", "="), "b=c");
    EXPECT_EQ(orx::getStartStr("a::b", "::"), "a");
    EXPECT_EQ(orx::getEndStr("a::b", "::"), "b");
    EXPECT_EQ(orx::getStartStr("=x", "="), "");
    EXPECT_EQ(orx::getEndStr("x=", "="), "");
}

TEST(TextCutting, AMissingSeparatorGivesNothing) {
    EXPECT_EQ(orx::getStartStr("abc", "="), "");
    EXPECT_EQ(orx::getEndStr("abc", "="), "");
    EXPECT_EQ(orx::getMiddleStr("abc", "[", "]"), "");
    EXPECT_EQ(orx::getMiddleStr("[abc", "[", "]"), "");
    EXPECT_EQ(orx::getMiddleStr("abc]", "[", "]"), "");
}

TEST(TextCutting, TheMiddleLiesBetweenTheFirstOfEach) {
    EXPECT_EQ(orx::getMiddleStr("[x]", "[", "]"), "x");
    EXPECT_EQ(orx::getMiddleStr("p[x]q[y]", "[", "]"), "x");
    EXPECT_EQ(orx::getMiddleStr("<b>bold</b>", "<b>", "</b>"), "bold");
    EXPECT_EQ(orx::getMiddleStr("[]", "[", "]"), "");
}

TEST(TextCutting, AnEndMarkInFrontMeansTheWholeRest) {
    EXPECT_EQ(orx::getMiddleStr("]ab[cd", "[", "]"), "cd");
    EXPECT_EQ(orx::getMiddleStr("]ab[cd]ef", "[", "]"), "cd]ef");
    // The same mark at both ends stands before its own end.
    EXPECT_EQ(orx::getMiddleStr("a|b|c", "|", "|"), "b|c");
}

}  // namespace
