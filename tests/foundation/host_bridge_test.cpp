// The bridge forwards: what goes in under an orx name must come out under the zul name, and the other way
// round.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

TEST(HostBridge, ParametersAreThoseOfTheCompanion) {
    orx::APPaddOrSetParamBool("bridge", true);
    orx::APPaddOrSetParamInt("bridge", 7);
    orx::APPaddOrSetParamDouble("bridge", 2.5);
    orx::APPaddOrSetParamString("bridge", "text");
    EXPECT_TRUE(zul::APPgetParamBool("bridge"));
    EXPECT_EQ(zul::APPgetParamInt("bridge"), 7);
    EXPECT_EQ(zul::APPgetParamDouble("bridge"), 2.5);
    EXPECT_EQ(zul::APPgetParamString("bridge"), "text");

    zul::APPaddOrSetParamInt("bridge", -3);
    EXPECT_EQ(orx::APPgetParamInt("bridge"), -3);
    EXPECT_FALSE(orx::APPgetParamBool("never set"));
    EXPECT_EQ(orx::APPgetParamInt("never set"), 0);
    EXPECT_EQ(orx::APPgetParamDouble("never set"), 0.0);
    EXPECT_EQ(orx::APPgetParamString("never set"), "");
}

TEST(HostBridge, MessagesPassInOrderWithTheirColours) {
    std::string text;
    int color = -1;
    while (orx::APPgetMessage(text, color)) {
    }
    EXPECT_TRUE(orx::APPshowMessage("first", 1));
    EXPECT_TRUE(zul::APPshowMessage("second", 2));
    ASSERT_TRUE(zul::APPgetMessage(text, color));
    EXPECT_EQ(text, "first");
    EXPECT_EQ(color, 1);
    ASSERT_TRUE(orx::APPgetMessage(text, color));
    EXPECT_EQ(text, "second");
    EXPECT_EQ(color, 2);
    EXPECT_FALSE(orx::APPgetMessage(text, color));
    EXPECT_EQ(text, "second");
}

TEST(HostBridge, TracesReachTheSinkWithTheRightOverload) {
    std::vector<std::string> lines;
    zul::setTraceSink([](const char* line,
                         void* context) { static_cast<std::vector<std::string>*>(context)->push_back(line); },
                      &lines);
    orx::outPutDebugString("plain");
    orx::outPutDebugString("label", "literal");
    orx::outPutDebugString(std::string("label"), std::string("text"));
    orx::outPutDebugString("label", 42);
    orx::outPutDebugString("label", 3.14159, 2);
    orx::outPutDebugString("label", true);
    orx::outPutDebugString("label", false);
    zul::setTraceSink(nullptr, nullptr);
    orx::outPutDebugString("after the sink was taken away");
    EXPECT_THAT(lines, testing::ElementsAre("plain", "label literal", "label text", "label 42", "label 3.14",
                                            "label true", "label false"));
}

TEST(HostBridge, HelpersForward) {
    EXPECT_EQ(orx::intToStr(-12), "-12");
    EXPECT_EQ(orx::strToInt("41x"), 41);
    EXPECT_EQ(orx::strToDouble("2.5"), 2.5);
    EXPECT_EQ(orx::doubleToStr(1.0 / 3.0, 3), "0.333");
    EXPECT_EQ(orx::extractFilePath("/a/b/c.png"), "/a/b/");
    EXPECT_EQ(orx::extractFileName("/a/b/c.png"), "c.png");
    EXPECT_EQ(orx::extractFileExt("/a/b/c.png"), ".png");
    EXPECT_EQ(orx::getCurrentTime(0).size(), std::string("YYYY-MM-DD HH:MM:SS ").size());
    EXPECT_EQ(orx::getExeFileName(), zul::getExeFileName());
    EXPECT_EQ(orx::getDllPath(nullptr), zul::extractFilePath(zul::getExeFileName()));
    EXPECT_EQ(orx::getFileVersion("/no/such/file"), "");
    EXPECT_FALSE(orx::processIsExist("no such process of this name"));
}

TEST(HostBridge, TheMessageColourOfTheLibraryIsTheCompanionsOwn) {
    EXPECT_EQ(orx::G_appshowMsg_defaultColor, 0);
    zul::G_appshowMsg_defaultColor = 9;
    EXPECT_EQ(orx::G_appshowMsg_defaultColor, 0);
    zul::G_appshowMsg_defaultColor = 0;
}

}  // namespace
