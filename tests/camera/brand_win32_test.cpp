// The connected brand, asked of the probe module in the folder Win32 beside the program.
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/camera/brand.h"

namespace {

namespace fs = std::filesystem;
using test::CameraBrand;
using test::Message;
using testing::ElementsAre;

// The modules that a test puts there, while it lives.
class ProbeFolder {
  public:
    ProbeFolder() : path_(fs::path(zul::getExeFileName()).parent_path() / "Win32") {
        fs::create_directory(path_);
    }
    ~ProbeFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    ProbeFolder(const ProbeFolder&) = delete;
    ProbeFolder& operator=(const ProbeFolder&) = delete;

    std::string name() const { return path_.string(); }
    std::string copy(const std::string& variant, const std::string& module) const {
        const fs::path file = path_ / (module + FAKE_SUFFIX);
        fs::copy_file(test::fakeModule(variant, module), file);
        return file.string();
    }

  private:
    fs::path path_;
};

TEST_F(CameraBrand, ConnectedBrandIsAskedOfTheProbe) {
    const ProbeFolder folder;
    const std::string file = folder.copy("probe", "LumoCfg");
    const test::LoadedModule module(file);
    ASSERT_TRUE(module.loaded());
    const auto setType = reinterpret_cast<void (*)(int)>(module.function("setCameraType"));
    host_.takeTraces();
    setType(11);
    EXPECT_EQ(cams_.getCameraType(), 11);
    EXPECT_THAT(host_.takeTraces(),
                ElementsAre("Load  win32 dll---" + folder.name(), "SetDllDirectoryA Success", file));
    EXPECT_TRUE(orx::TCamera(0).CheckCameraType(11));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(Message{"CurrrentCameraType:11", test::kPlainColor}));
    setType(-2);
    EXPECT_FALSE(orx::TCamera(0).CheckCameraType(11));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(Message{"CurrrentCameraType:-2", test::kPlainColor},
                                                  Message{test::kMixedBrands, test::kErrorColor}));
}

// From then on modules are searched for there, too, the driver among them.
TEST(ProbeFolder, StaysAFolderOfModulesOfTheProcess) {
    test::Host host;
    const ProbeFolder folder;
    folder.copy("no_optional", "TQVisionDriver");
    EXPECT_EQ(orx::TCamera(0).getCameraType(), -3) << "a folder without a probe";
    orx::TMultiCamera cams;
    EXPECT_EQ(cams.dllLoaded, 1);
    cams.freeDll();
}

}  // namespace
