// Brands by the names that modules have on POSIX.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "tests/camera/brand.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using test::CameraBrand;
using test::Message;
using testing::ElementsAre;

struct Runtime {
    int type;
    const char* module;
    const char* message;
};

TEST_F(CameraBrand, RuntimeIsLookedForByItsModule) {
    const Runtime runtimes[] = {{7, "MVSDK", "未找到大华相机驱动,请重新安装驱动"},
                                {10, "pylonbase", "未找到Basler相机驱动,请重新安装驱动"},
                                {11, "MvCameraControl", "未找到海康相机驱动,请重新安装驱动"},
                                {14, "MultiVDMV", "未找到微视相机驱动,请重新安装驱动"},
                                {15, "tcam", "未找到映美精相机驱动,请重新安装驱动"}};
    for (const Runtime& runtime : runtimes) {
        SCOPED_TRACE(runtime.type);
        EXPECT_EQ(check(runtime.type), std::make_pair(false, std::string(runtime.message)));
        const test::LoadedModule module(test::fakeModule("runtimes", runtime.module));
        ASSERT_TRUE(module.loaded());
        EXPECT_EQ(check(runtime.type), std::make_pair(true, std::string(runtime.message)))
            << "the text stays where the runtime is there";
    }
}

// The runtime is loaded from a copy, whose date is then changed.
TEST_F(CameraBrand, DahengRuntimeMustNotBeOlderThanApril2019) {
    const test::TemporaryFolder folder;
    const std::string copy = folder / "libgxiapi.so";
    fs::copy_file(test::fakeModule("runtimes", "gxiapi"), copy);
    EXPECT_EQ(check(13), std::make_pair(false, std::string("未找到大恒相机驱动,请重新安装驱动")));
    const test::LoadedModule module(copy);
    ASSERT_TRUE(module.loaded());
    const auto setTime = [&](std::time_t seconds) {
        const timespec times[2] = {{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, copy.c_str(), times, 0), 0);
    };
    // 2019-04-07 00:00 in China is 16:00 the day before in UTC: 17992 days and 16 hours after 1970.
    constexpr std::time_t kFirst = 17992 * 86400 + 16 * 3600;

    setenv("TZ", "CST-8", 1);
    tzset();
    setTime(kFirst);
    host_.takeTraces();
    std::string text;
    EXPECT_TRUE(cams_.CheckCameraDriverValid(13, &text));
    EXPECT_THAT(host_.takeTraces(), ElementsAre(copy, "Driver File Abs Time: " + std::to_string(kFirst),
                                                "Driver File Modified Time : 2019: 4: 7: 0:0:0\n"));
    setTime(kFirst - 1);
    EXPECT_FALSE(cams_.CheckCameraDriverValid(13, &text));
    EXPECT_EQ(zul::toUtf8(text), "请升级高版本的大恒相机驱动,需要安装2019年4月7日之后的版本驱动!");
    EXPECT_THAT(host_.takeTraces(), ElementsAre(copy, "Driver File Abs Time: " + std::to_string(kFirst - 1),
                                                "Driver File Modified Time : 2019: 4: 6: 23:59:59\n"));
    EXPECT_FALSE(cams_.CheckCameraDriverValid(13, nullptr));
}

TEST_F(CameraBrand, ConnectedBrandIsAskedOfTheProbe) {
    const test::LoadedModule module(test::fakeModule("probe", "LumoCfg"));
    ASSERT_TRUE(module.loaded());
    const auto setType = reinterpret_cast<void (*)(int)>(module.function("setCameraType"));
    host_.takeTraces();
    setType(11);
    EXPECT_EQ(cams_.getCameraType(), 11);
    const std::string folder = fs::path(zul::getExeFileName()).parent_path().string();
    EXPECT_THAT(host_.takeTraces(), ElementsAre("Load  win32 dll---" + folder + "/Win32",
                                                "SetDllDirectoryA Success", folder + "/Win32/libLumoCfg.so"));

    orx::TCamera camera(0);
    EXPECT_TRUE(camera.CheckCameraType(11));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(Message{"CurrrentCameraType:11", test::kPlainColor}));
    EXPECT_FALSE(camera.CheckCameraType(10));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(Message{"CurrrentCameraType:11", test::kPlainColor},
                                                  Message{test::kWrongBrand, test::kErrorColor}));
    setType(-2);
    EXPECT_FALSE(camera.CheckCameraType(11));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(Message{"CurrrentCameraType:-2", test::kPlainColor},
                                                  Message{test::kMixedBrands, test::kErrorColor}));
}

}  // namespace
