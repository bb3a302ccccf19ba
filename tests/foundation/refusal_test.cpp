#include "orxFunctions/foundation/refusal.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <set>
#include <string>
#include <thread>

#include "ZULLib/zullib.h"
#include "orxFunctions/analysis/focus.h"
#include "orxFunctions/analysis/thinning.h"
#include "orxFunctions/calibration/calibration_file.h"
#include "tests/support/refusal_check.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;

bool refuseMethod(int method) {
    const cv::Mat dot(1, 1, CV_8UC1, cv::Scalar(255));
    cv::Mat lines;
    return orx::thinning(dot, lines, static_cast<orx::TThinningMethod>(method));
}

TEST(Refusal, EachThreadKeepsItsOwn) {
    EXPECT_FALSE(refuseMethod(7));
    std::string other = "not asked";
    std::thread([&] { other = orx::lastRefusal().text; }).join();
    EXPECT_EQ(other, "");
    const orx::TRefusal mine = orx::lastRefusal();
    EXPECT_EQ(mine.code, orx::rcOption);
    EXPECT_EQ(mine.function, "thinning");
    EXPECT_EQ(mine.text, "thinning: there is no method 7");
}

TEST(Refusal, IsCountedReplacedAndForgotten) {
    refuseMethod(7);
    const std::uint64_t number = orx::lastRefusal().number;
    EXPECT_EQ(AutoFocus::calcBrenner({}), -1.0);
    EXPECT_EQ(orx::lastRefusal().number, number + 1);
    EXPECT_EQ(orx::lastRefusal().text, "calcBrenner: the image is empty");
    EXPECT_TRUE(refuseMethod(orx::tnGuoHall));
    EXPECT_EQ(orx::lastRefusal().number, number + 1) << "a success changed it";
    orx::clearLastRefusal();
    const orx::TRefusal none = orx::lastRefusal();
    EXPECT_EQ(none.code, orx::rcNone);
    EXPECT_EQ(none.function + none.text, "");
    EXPECT_EQ(none.number, number + 1);
}

TEST(Refusal, LongTextsEndWithAWholeCharacter) {
    const auto refusedName = [](const std::string& name) {
        cv::Mat none;
        cv::Size size;
        std::string text;
        EXPECT_FALSE(orx::calibrateDataFromFile(zul::toAnsi(name), none, none, size, text));
        return orx::lastRefusal().text;
    };
    EXPECT_EQ(refusedName(std::string(300, 'x')).size(), 250U);
    const std::string middle = "\xe4\xb8\xad";  // of three bytes
    for (std::string name : {"", "x", "xx"}) {
        for (int i = 0; i < 100; ++i) name += middle;
        const std::string text = refusedName(name);
        EXPECT_GT(text.size(), 247U);
        EXPECT_LE(text.size(), 250U);
        const std::size_t start = text.find(middle);
        ASSERT_NE(start, std::string::npos) << text;
        EXPECT_EQ((text.size() - start) % middle.size(), 0U) << text;
    }
}

TEST(Refusal, EveryCodeHasAText) {
    std::set<std::string> texts;
    for (int code = orx::rcNone; code <= orx::rcFailed; ++code)
        texts.insert(orx::refusalCodeText(static_cast<orx::TRefusalCode>(code)));
    EXPECT_EQ(texts.size(), 25U);
    EXPECT_EQ(texts.count("unknown code"), 0U);
    EXPECT_STREQ(orx::refusalCodeText(static_cast<orx::TRefusalCode>(-1)), "unknown code");
    EXPECT_STREQ(orx::refusalCodeText(static_cast<orx::TRefusalCode>(25)), "unknown code");
}

TEST(Refusal, TellsWhatIsWrongWithAnImage) {
    const int sizes[] = {2, 2, 2};
    const cv::Mat cube(3, sizes, CV_8UC1, cv::Scalar(0));
    cv::Mat lines;
    EXPECT_TRUE(refusedWith(orx::rcEmptyImage, "thinning", [&] { orx::thinning({}, lines); }));
    EXPECT_TRUE(refusedWith(orx::rcImageDimensions, "thinning", [&] { orx::thinning(cube, lines); }));
    EXPECT_TRUE(
        refusedWith(orx::rcImageDimensions, "calcTenengrad", [&] { AutoFocus::calcTenengrad(cube); }));
    for (const int type : {CV_8UC2, CV_8SC1, CV_16UC1, CV_32FC1}) {
        const cv::Mat other = cv::Mat::zeros(2, 2, type);
        EXPECT_TRUE(refusedWith(orx::rcImageType, "thinning", [&] { orx::thinning(other, lines); }));
    }
    for (const int type : {CV_8UC(5), CV_8SC1, CV_16SC1, CV_32FC1, CV_64FC3}) {
        const cv::Mat other = cv::Mat::zeros(2, 2, type);
        EXPECT_TRUE(refusedWith(orx::rcImageType, "calcLaplacianVariance",
                                [&] { AutoFocus::calcLaplacianVariance(other); }));
    }
    EXPECT_TRUE(notRefused([&] {
        EXPECT_TRUE(orx::thinning(cv::Mat::zeros(2, 2, CV_8UC1), lines));
        for (const int type : {CV_8UC1, CV_8UC4, CV_16UC1, CV_16UC4})
            EXPECT_EQ(AutoFocus::calcGrayDifference(cv::Mat::zeros(2, 2, type)), 0.0);
    }));
}

}  // namespace
