#include "tests/gige/gige_test.h"

namespace gige {
namespace {

TEST_F(GigeTest, TheBrandModuleTellsWhoseCamerasAreConnected) {
    EXPECT_EQ(modules_.getCameraType(), VD_TYPE_NONE);
    CameraOptions options;
    options.vendor = "Some Optics";
    SoftwareCamera& unknown = addCamera(options);
    EXPECT_EQ(modules_.getCameraType(), VD_TYPE_ANY);
    unknown.kill();
    for (const char* const address : {"127.0.0.3", "127.0.0.4"}) {
        options.address = address;
        options.serial = address;
        options.vendor = "HIKROBOT";
        addCamera(options);
    }
    EXPECT_EQ(modules_.getCameraType(), VD_TYPE_HIKVISION);
    options.address = "127.0.0.5";
    options.serial = "other";
    options.vendor = "Basler AG";
    addCamera(options);
    EXPECT_EQ(modules_.getCameraType(), VD_TYPE_MIXED);
}

TEST_F(GigeTest, ATypeFindsItsBrandOnlyAndTheSettingsPinSerialNumbers) {
    CameraOptions options;
    options.serial = "H2";
    addCamera(options);
    options.address = "127.0.0.3";
    options.serial = "B1";
    options.vendor = "Basler";
    options.width = 80;
    addCamera(options);
    int width = 0;
    int height = 0;
    int channels = 0;

    EXPECT_FALSE(modules_.initCamera(VD_TYPE_DAHENG, nullptr, false));
    ASSERT_TRUE(found(VD_TYPE_HIKVISION));
    EXPECT_TRUE(modules_.open(VD_TYPE_HIKVISION, 0));
    EXPECT_FALSE(modules_.open(VD_TYPE_HIKVISION, 1));
    ASSERT_TRUE(modules_.start(&width, &height, &channels, 0));
    EXPECT_EQ(width, 64);

    // By serial number B1 would be the first.
    configure(
        "[camera1]\nsource = device\nserial = H2\n[camera2]\nsource = device\nserial = B1\n"
        "[camera3]\nsource = device\nserial = nowhere\n[camera4]\nsource = scene\n");
    ASSERT_TRUE(found(VD_TYPE_ANY));
    EXPECT_TRUE(modules_.open(VD_TYPE_ANY, 0));
    EXPECT_TRUE(modules_.open(VD_TYPE_ANY, 1));
    EXPECT_FALSE(modules_.open(VD_TYPE_ANY, 2)) << "it is not connected";
    EXPECT_TRUE(modules_.open(VD_TYPE_ANY, 3));
    ASSERT_TRUE(modules_.start(&width, &height, &channels, 1));
    EXPECT_EQ(width, 80);
    EXPECT_EQ(height, 48);
    EXPECT_EQ(channels, 1);
}

}  // namespace
}  // namespace gige
