#include "orxFunctions/camera/camera_brands_internal.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <filesystem>

#include "drivers/vision_driver.h"
#include "orxFunctions/camera/camera_driver_internal.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/module_internal.h"

namespace orx {
namespace {

struct Brand {
    int type;
    platform::ModuleName runtime;  // on POSIX the library of the vendor's kit for Linux
    const char* missing;           // UTF-8
};

constexpr std::array<Brand, 6> kBrands = {{
    {VD_TYPE_DAHUA, {"MVSDKmd.dll", "libMVSDK.so"}, "未找到大华相机驱动,请重新安装驱动"},
    {VD_TYPE_BASLER,
     {"PylonBase_MD_VC120_v5_0.dll", "libpylonbase.so"},
     "未找到Basler相机驱动,请重新安装驱动"},
    {VD_TYPE_HIKVISION,
     {"MvCameraControl.dll", "libMvCameraControl.so"},
     "未找到海康相机驱动,请重新安装驱动"},
    {VD_TYPE_DAHENG, {"DxImageProc.dll", "libgxiapi.so"}, "未找到大恒相机驱动,请重新安装驱动"},
    {VD_TYPE_MICROVISION, {"MultiVDMV.dll", "libMultiVDMV.so"}, "未找到微视相机驱动,请重新安装驱动"},
    {VD_TYPE_IMAGING_SOURCE, {"TIS_UDSHL11.dll", "libtcam.so"}, "未找到映美精相机驱动,请重新安装驱动"},
}};

constexpr const char* kDahengTooOld = "请升级高版本的大恒相机驱动,需要安装2019年4月7日之后的版本驱动!";
constexpr std::int64_t kDahengOldest = 1554566400;  // 2019-04-07 00:00 in China

// Where the Hikvision runtime lies when the probe module stands beside the program.
constexpr std::array<const char*, 3> kHikvisionRuntimes = {
    R"(C:\Program Files\Common Files\MVS\Runtime\Win32_i86\MvCameraControl.dll)",
    R"(C:\Program Files (x86)\Common Files\MVS\Runtime\Win64_x64\MvCameraControl.dll)",
    "/opt/MVS/lib/64/libMvCameraControl.so"};

constexpr platform::ModuleName kProbeName = {"LumoCfg.dll"};
constexpr int kNoProbe = -3;

void traceModificationTime(std::int64_t seconds) {
    const auto text = [](int number) { return std::to_string(number); };
    zul::outPutDebugString("Driver File Abs Time: " + std::to_string(seconds));
    const std::tm time = platform::localTime(static_cast<std::time_t>(seconds));
    zul::outPutDebugString("Driver File Modified Time : " + text(time.tm_year + 1900) + ": " +
                           text(time.tm_mon + 1) + ": " + text(time.tm_mday) + ": " + text(time.tm_hour) +
                           ":" + text(time.tm_min) + ":" + text(time.tm_sec) + "\n");
}

// As traces take it: not the bytes of the file system, which are UTF-8 on POSIX.
std::string traceable(const std::filesystem::path& path) { return zul::toAnsi(path.u8string()); }

// A file whose time can't be read counts as too old.
bool isRecentDaheng(platform::ModuleHandle module) {
    const std::filesystem::path file = platform::fileOfModule(module);
    zul::outPutDebugString(traceable(file));
    std::int64_t seconds = 0;
    platform::modificationTime(file, seconds);
    traceModificationTime(seconds);
    return seconds >= kDahengOldest;
}

// The folder in which getCameraType looks for the probe module, traced.
std::filesystem::path probeFolder() {
    const std::filesystem::path program = platform::programFolder();
    const bool hasHikvision = std::any_of(kHikvisionRuntimes.begin(), kHikvisionRuntimes.end(),
                                          [](const char* file) { return zul::dirExists(file); });
    std::filesystem::path folder = hasHikvision ? program : program / "Win32";
    zul::outPutDebugString((hasHikvision ? "Load no win32 dll---" : "Load  win32 dll---") +
                           traceable(folder));
    return folder;
}

int withoutProbe() {
    refuse(rcDriver, "getCameraType", "there is no module LumoCfg that can tell the brand");
    return kNoProbe;
}

}  // namespace

const char* cameraTypeText(int type) {
    switch (type) {
        case VD_TYPE_NONE:
            return "no camera is connected";
        case VD_TYPE_MIXED:
            return "cameras of different brands";
        case kNoProbe:
            return "there is no probe module";
        default:
            return "another brand";
    }
}

bool checkCameraDriver(int type, std::string* message) {
    if (type == VD_TYPE_ANY) return true;
    const auto brand =
        std::find_if(kBrands.begin(), kBrands.end(), [type](const Brand& b) { return b.type == type; });
    if (brand == kBrands.end())
        return refuse(rcOption, "CheckCameraDriverValid", "there is no camera type %d", type);
    const auto explain = [message](const char* text) {
        if (message != nullptr) *message = zul::toAnsi(text);
    };
    explain(brand->missing);
    // Kept loaded: the driver module will need it.
    const platform::ModuleHandle runtime = platform::loadModule(brand->runtime);
    if (runtime == nullptr)
        return refuse(rcDriver, "CheckCameraDriverValid", "the vendor's runtime of type %d is not installed",
                      type);
    if (type != VD_TYPE_DAHENG || isRecentDaheng(runtime)) return true;
    explain(kDahengTooOld);
    return refuse(rcDriver, "CheckCameraDriverValid", "the vendor's runtime of type %d is too old", type);
}

int detectCameraType() {
    const std::filesystem::path folder = probeFolder();
    if (platform::setExtraModuleFolder(folder)) zul::outPutDebugString("SetDllDirectoryA Success");
    const platform::ModuleHandle probe = platform::loadModuleFrom(folder, kProbeName);
    zul::outPutDebugString(traceable(platform::moduleFileIn(folder, kProbeName)));
    if (probe == nullptr) return withoutProbe();
    const auto getType =
        reinterpret_cast<decltype(VDGetCameraType)*>(platform::findProcedure(probe, "VDGetCameraType"));
    int type = kNoProbe;
    if (getType == nullptr || !callModule([&] { type = getType(); })) withoutProbe();
    platform::freeModule(probe);
    return type;
}

}  // namespace orx
