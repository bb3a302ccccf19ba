// Why the functions of the foundation refuse, and images that are const.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/image_convert.h"
#include "orxFunctions/foundation/registry.h"
#include "tests/support/refusal_check.h"
#include "tests/support/temporary_folder.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;

TEST(FoundationRefusals, OfTheSystemAndTheRegistry) {
    const test::TemporaryFolder folder;
    const std::string plain = folder / "plain";
    test::writeBytes(plain, "no library");
    int place = 0;
    const auto unknown = reinterpret_cast<zul::TModuleHandle>(&place);
    EXPECT_TRUE(refusedWith(orx::rcOption, "getDllPath", [&] { orx::getDllPath(unknown); }));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "getFileVersion", [&] { orx::getFileVersion(plain); }));
    EXPECT_EQ(orx::lastRefusal().text, "getFileVersion: the file has no version, or can't be read: " + plain);
    EXPECT_TRUE(refusedWith(orx::rcFileName, "getFileVersion", [&] { orx::getFileVersion(""); }));
    EXPECT_TRUE(
        refusedWith(orx::rcFileMissing, "getFileVersion", [&] { orx::getFileVersion(folder / "missing"); }));
    EXPECT_TRUE(
        refusedWith(orx::rcFileUnreadable, "getFileVersion", [&] { orx::getFileVersion(folder.name()); }));
    EXPECT_TRUE(refusedWith(orx::rcFileName, "processIsExist", [&] { orx::processIsExist(""); }));

    orx::TAppSys registry;
    int result = 5;
    EXPECT_TRUE(refusedWith(orx::rcOption, "callFunc", [&] { registry.callFunc("add", 1, 2, result); }));
    EXPECT_EQ(orx::lastRefusal().text, "callFunc: no function of this kind is registered as \"add\"");
    EXPECT_TRUE(refusedWith(orx::rcOption, "callFunc", [&] { registry.callFunc("add"); }));
    EXPECT_TRUE(refusedWith(orx::rcOption, "callFunc", [&] { registry.callFunc("add", "text"); }));
    EXPECT_TRUE(notRefused([&] {
        registry.RegisterFunc(
            "add", +[](int a, int b) { return a + b; });
        EXPECT_TRUE(registry.callFunc("add", 1, 2, result));
        EXPECT_NE(orx::getDllPath(nullptr), "");
        EXPECT_FALSE(orx::processIsExist("no such process"));
        EXPECT_EQ(registry.suport("nobody"), nullptr);
        cv::Mat none;
        while (orx::APPgetImage(none)) continue;
    }));
}

TEST(ConstImages, AreTakenAsOthersAre) {
    cv::Mat image(2, 3, CV_8UC3, cv::Scalar(1, 2, 3));
    const cv::Mat& constant = image;
    orx::TORXImage record = {};
    orx::TORXImage same = {};
    static_cast<void (*)(cv::Mat&, orx::TORXImage*)>(orx::Mat2ORXImage)(image, &record);
    static_cast<void (*)(const cv::Mat&, orx::TORXImage*)>(orx::Mat2ORXImage)(constant, &same);
    EXPECT_EQ(same.data, image.data);
    EXPECT_EQ(record.data, same.data);
    EXPECT_EQ(std::make_pair(record.width, record.height), std::make_pair(same.width, same.height));
    EXPECT_EQ(same.channels, 3);
    cv::Mat out;
    for (int turn = 0; turn < 4; ++turn) {
        orx::APPshowOneImage(cv::Mat::zeros(1, 1, CV_8U));
        ASSERT_TRUE(orx::APPgetOneImage(out));
        EXPECT_EQ(out.size(), cv::Size(1, 1)) << "a temporary one";
        if (turn == 0) orx::APPshowOneImage(image);
        if (turn == 1) orx::APPshowOneImage(constant);
        if (turn == 2) static_cast<void (*)(cv::Mat&)>(orx::APPshowOneImage)(image);
        if (turn == 3) static_cast<void (*)(const cv::Mat&)>(orx::APPshowOneImage)(constant);
        ASSERT_TRUE(orx::APPgetOneImage(out));
        EXPECT_EQ(cv::norm(out, image, cv::NORM_INF), 0.0);
        EXPECT_NE(out.data, image.data);
    }
}

}  // namespace
