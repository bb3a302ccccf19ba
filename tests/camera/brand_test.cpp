// Which brand's runtime is installed, and which brand is connected.
#include <gmock/gmock.h>

#include "tests/camera/brand.h"

namespace {

using test::CameraBrand;
using test::Message;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(CameraBrand, TypesWithoutRuntimeLeaveTheText) {
    EXPECT_EQ(check(12), std::make_pair(true, std::string()));
    for (const int type : {-2147483647, -1, 0, 6, 8, 9, 16, 2147483647}) {
        EXPECT_EQ(check(type), std::make_pair(false, std::string())) << type;
    }
}

TEST_F(CameraBrand, WithoutProbeNoBrandIsConnectedAndAnyCameraWillDo) {
    EXPECT_EQ(cams_.getCameraType(), -3);
    orx::TCamera camera(0);
    host_.takeTraces();
    EXPECT_TRUE(camera.CheckCameraType(12));
    EXPECT_THAT(host_.takeTraces(), IsEmpty()) << "the probe was not even looked for";
    EXPECT_THAT(host_.takeMessages(), IsEmpty());
    EXPECT_FALSE(camera.CheckCameraType(11));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(Message{"CurrrentCameraType:-3", test::kPlainColor},
                                                  Message{test::kWrongBrand, test::kErrorColor}));

    const test::LoadedModule mute(test::fakeModule("mute_probe", "LumoCfg"));
    EXPECT_EQ(cams_.getCameraType(), -3) << "a probe that can't answer";
}

TEST_F(CameraBrand, IsCheckedAtOpeningWhenInitCameraSaidSo) {
    ASSERT_TRUE(cams_.InitCamera(11, nullptr, false, true));
    EXPECT_FALSE(cams_.open(0, 11));
    EXPECT_EQ(host_.takeMessages().size(), 2U);
    EXPECT_TRUE(cams_.open(0, 12));
    ASSERT_TRUE(cams_.InitCamera(11, nullptr, false, false));
    EXPECT_TRUE(cams_.open(1, 11));
    EXPECT_THAT(host_.takeMessages(), IsEmpty());
}

}  // namespace
