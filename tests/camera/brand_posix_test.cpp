// The connected brand, asked of a probe module that is found by its name once it is loaded.
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/camera/brand.h"
#include "tests/support/refusal_check.h"

namespace {

namespace fs = std::filesystem;
using test::CameraBrand;
using test::Message;
using testing::ElementsAre;

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
    setType(1000);  // it throws
    EXPECT_TRUE(orx::test::refusedWith(orx::rcDriver, "getCameraType",
                                       [&] { EXPECT_EQ(cams_.getCameraType(), -3); }));
}

}  // namespace
