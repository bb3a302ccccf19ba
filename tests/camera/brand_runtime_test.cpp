// Which vendors' runtimes are installed. A loaded module is found by its name, wherever it lies.
#include <gmock/gmock.h>

#include <cstdio>
#include <ctime>
#include <filesystem>

#include "tests/camera/brand.h"
#include "tests/support/file_time.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using test::CameraBrand;

struct Runtime {
    int type;
    const char* module;
    const char* message;
};

constexpr int kDaheng = 13;
constexpr Runtime kRuntimes[] = {{7, FAKE_RUNTIME_7, "未找到大华相机驱动,请重新安装驱动"},
                                 {10, FAKE_RUNTIME_10, "未找到Basler相机驱动,请重新安装驱动"},
                                 {11, FAKE_RUNTIME_11, "未找到海康相机驱动,请重新安装驱动"},
                                 {14, FAKE_RUNTIME_14, "未找到微视相机驱动,请重新安装驱动"},
                                 {15, FAKE_RUNTIME_15, "未找到映美精相机驱动,请重新安装驱动"}};

TEST_F(CameraBrand, RuntimeIsLookedForByItsModule) {
    for (const Runtime& runtime : kRuntimes) {
        SCOPED_TRACE(runtime.type);
        EXPECT_EQ(check(runtime.type), std::make_pair(false, std::string(runtime.message)));
        const test::LoadedModule module(test::fakeModule("runtimes", runtime.module));
        ASSERT_TRUE(module.loaded());
        EXPECT_EQ(check(runtime.type), std::make_pair(true, std::string(runtime.message)))
            << "the text stays where the runtime is there";
    }
}

// The moment that a trace line names in local time.
std::time_t momentOf(const std::string& line) {
    std::tm time = {};
    std::sscanf(line.c_str(), "Driver File Modified Time : %d: %d: %d: %d:%d:%d", &time.tm_year, &time.tm_mon,
                &time.tm_mday, &time.tm_hour, &time.tm_min, &time.tm_sec);
    time.tm_year -= 1900;
    time.tm_mon -= 1;
    time.tm_isdst = -1;
    return std::mktime(&time);
}

// The runtime is loaded from a copy, whose date is then changed.
TEST_F(CameraBrand, DahengRuntimeMustNotBeOlderThanApril2019) {
    const test::TemporaryFolder folder;
    constexpr bool kNamesAreUtf8 = sizeof FAKE_PREFIX > 1;  // on POSIX; traces show them as they are written
    const std::string place = kNamesAreUtf8 ? "相机" : "camera";
    fs::create_directory(folder / place);
    const std::string copy =
        folder / (place + "/" + std::string(FAKE_PREFIX) + FAKE_RUNTIME_13 + FAKE_SUFFIX);
    fs::copy_file(test::fakeModule("runtimes", FAKE_RUNTIME_13), copy);
    EXPECT_EQ(check(kDaheng), std::make_pair(false, std::string("未找到大恒相机驱动,请重新安装驱动")));
    const test::LoadedModule module(copy);
    ASSERT_TRUE(module.loaded());
    // The first moment of 2019-04-07 in China is 16:00 the day before in UTC: 17992 days and 16 hours after
    // 1970.
    constexpr std::time_t kFirst = 17992 * 86400 + 16 * 3600;

    std::string text;
    for (const std::time_t moment : {kFirst, kFirst - 1}) {
        SCOPED_TRACE(moment);
        ASSERT_TRUE(test::setModificationTime(copy, moment));
        host_.takeTraces();
        EXPECT_EQ(cams_.CheckCameraDriverValid(kDaheng, &text), moment == kFirst);
        const std::vector<std::string> traces = host_.takeTraces();
        ASSERT_EQ(traces.size(), 3U);
        EXPECT_EQ(traces[0], copy);
        EXPECT_EQ(traces[1], "Driver File Abs Time: " + std::to_string(moment));
        EXPECT_THAT(traces[2], testing::StartsWith("Driver File Modified Time : 2019: 4: "));
        EXPECT_EQ(momentOf(traces[2]), moment);
        EXPECT_EQ(traces[2].back(), '\n');
    }
    EXPECT_EQ(zul::toUtf8(text), "请升级高版本的大恒相机驱动,需要安装2019年4月7日之后的版本驱动!");
    EXPECT_FALSE(cams_.CheckCameraDriverValid(kDaheng, nullptr));
}

}  // namespace
