#include "drivers/devices/brands.h"

#include <gtest/gtest.h>

#include "drivers/vision_driver.h"

namespace {

using vision::brandOf;
using vision::commonBrand;

TEST(Brands, AreFoundInVendorNames) {
    EXPECT_EQ(brandOf("Basler AG"), VD_TYPE_BASLER);
    EXPECT_EQ(brandOf("BASLER"), VD_TYPE_BASLER);
    EXPECT_EQ(brandOf("Hikrobot"), VD_TYPE_HIKVISION);
    EXPECT_EQ(brandOf("HangZhou Hikvision Co."), VD_TYPE_HIKVISION);
    EXPECT_EQ(brandOf("Daheng Imaging"), VD_TYPE_DAHENG);
    EXPECT_EQ(brandOf("Dahua Technology"), VD_TYPE_DAHUA);
    EXPECT_EQ(brandOf("Huaray Technology"), VD_TYPE_DAHUA);
    EXPECT_EQ(brandOf("MicroVision"), VD_TYPE_MICROVISION);
    EXPECT_EQ(brandOf("The Imaging Source Europe GmbH"), VD_TYPE_IMAGING_SOURCE);
    for (const char* const other : {"", "Aravis", "Basl", "Imaging Source"})
        EXPECT_EQ(brandOf(other), VD_TYPE_ANY);
}

TEST(Brands, SeveralCamerasHaveOneBrandOrNone) {
    EXPECT_EQ(commonBrand({}), VD_TYPE_NONE);
    EXPECT_EQ(commonBrand({"Dahua", "Huaray"}), VD_TYPE_DAHUA);
    EXPECT_EQ(commonBrand({"Basler", "Dahua"}), VD_TYPE_MIXED);
    EXPECT_EQ(commonBrand({"Aravis", "Another"}), VD_TYPE_ANY);
    EXPECT_EQ(commonBrand({"Basler", "Aravis"}), VD_TYPE_MIXED);
}

}  // namespace
