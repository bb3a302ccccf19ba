// Cameras that lack features, or describe them otherwise: each is refused where it must be, and told about.
#include <cmath>
#include <ostream>

#include "drivers/TQVisionDriver/frame_conversion.h"
#include "tests/gige/control_socket.h"
#include "tests/gige/gige_test.h"
#include "tests/support/trace_log.h"

namespace gige {
namespace {

struct Lack {
    const char* name;
    const char* change;
    bool opens;
    const char* told;  // how the line begins; "" for none
};

std::ostream& operator<<(std::ostream& out, const Lack& lack) { return out << lack.name; }

class WrongCamera : public GigeTest, public testing::WithParamInterface<Lack> {};

TEST_P(WrongCamera, IsRefusedAndToldAbout) {
    CameraOptions options;
    options.changes = {GetParam().change};
    addCamera(options);
    ASSERT_TRUE(found(VD_TYPE_HIKVISION));
    const test::TraceLog log;
    ASSERT_EQ(modules_.open(VD_TYPE_HIKVISION, 0), GetParam().opens);
    EXPECT_FALSE(start(0));
    EXPECT_TRUE(fetch(0).empty());
    if (*GetParam().told != 0) {
        EXPECT_EQ(log.countStartingWith(std::string("TQVisionDriver: ") + GetParam().told), 1);
    }
    EXPECT_EQ(modules_.close(0), true);
    // The next one of that name is taken.
    options.changes.clear();
    options.address = "127.0.0.3";
    options.serial = "S2";
    addCamera(options);
    ASSERT_TRUE(eventually(5000, [this] {
        return found(VD_TYPE_HIKVISION) && modules_.open(VD_TYPE_HIKVISION, 1) && start(1);
    }));
    EXPECT_FALSE(fetchNew(1).empty());
}

INSTANTIATE_TEST_SUITE_P(
    Lacking, WrongCamera,
    testing::Values(Lack{"ADescription", "<?xml=>no description", false, "camera S1 at 127.0.0.2: "},
                    Lack{"AWidth", "Integer Name=\"Width\"=>Integer Name=\"Breadth\"", true, ""},
                    Lack{"APixelFormat", "Enumeration Name=\"PixelFormat\"=>Enumeration Name=\"Format\"",
                         true, "pixel format 0 can't be converted"},
                    Lack{"APictureSize", "Name=\"PayloadSize\"=>Name=\"Payload\"", true, "no picture size: "},
                    Lack{"AStart", "Command Name=\"AcquisitionStart\"=>Command Name=\"Begin\"", true,
                         "the camera does not start: "}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(GigeTest, ACameraWithoutTriggersHasNoTriggerMode) {
    CameraOptions options;
    options.changes = {"Enumeration Name=\"TriggerMode\"=>Enumeration Name=\"Mode\""};
    addCamera(options);
    openCameras(VD_TYPE_HIKVISION, 1);
    EXPECT_TRUE(std::isnan(value(0, VD_PARAM_TRIGGER_MODE)));
    EXPECT_FALSE(modules_.setParam(0, VD_PARAM_SOFTWARE_TRIGGER, 1));
    EXPECT_FALSE(fetchNew(0).empty());
}

TEST_F(GigeTest, ATriggerThatTheInterfaceDoesNotKnowHasNoMode) {
    CameraOptions options;
    options.changes = {"\"Line0\" NameSpace=\"Standard\">=>\"Timer\" NameSpace=\"Standard\">"};
    addCamera(options);
    openCameras(VD_TYPE_HIKVISION, 1);
    EXPECT_FALSE(modules_.setParam(0, VD_PARAM_TRIGGER_MODE, VD_TRIGGER_LINE_2)) << "there is one line";
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_TRIGGER_MODE, VD_TRIGGER_LINE_1));
    EXPECT_EQ(value(0, VD_PARAM_TRIGGER_MODE), static_cast<float>(VD_TRIGGER_LINE_1));
    const ControlSocket camera("127.0.0.2");
    EXPECT_EQ(camera.read(0x304), 2) << "the value of Line1, for the start of a frame";
}

TEST_F(GigeTest, ARegionInStepsTakesWholeSteps) {
    CameraOptions options;
    options.changes = {
        "<pMax>SensorWidth</pMax>\n\t\t<Inc>1</Inc>\n\t</Integer>\n\n\t<IntReg "
        "Name=\"WidthRegister\"=><pMax>SensorWidth</pMax>\n\t\t<Inc>8</Inc>\n\t</Integer>\n\n\t"
        "<IntReg Name=\"WidthRegister\""};
    addCamera(options);
    ASSERT_TRUE(found(VD_TYPE_HIKVISION));
    ASSERT_TRUE(modules_.open(VD_TYPE_HIKVISION, 0));
    EXPECT_TRUE(modules_.setParam(0, VD_PARAM_WIDTH, 41)) << "1 and five steps";
    for (const long wrong : {0L, 40L, 42L, 1L << 20})
        EXPECT_FALSE(modules_.setParam(0, VD_PARAM_WIDTH, wrong));
    EXPECT_EQ(value(0, VD_PARAM_WIDTH), 41.0F);
}

// A camera refuses to be set by hand what it adjusts by itself.
TEST_F(GigeTest, WhatACameraAdjustsByItselfIsSetByHandAfterwards) {
    constexpr std::uint32_t kGainAuto = 0x114;
    addCamera({});
    const ControlSocket registers("127.0.0.2");
    ASSERT_TRUE(registers.write(kGainAuto, 2)) << "continuously";
    openCameras(VD_TYPE_HIKVISION, 1);
    ASSERT_EQ(registers.read(kGainAuto), 2);
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_GAIN, 30));
    EXPECT_EQ(registers.read(kGainAuto), 1) << "off";
    EXPECT_EQ(value(0, VD_PARAM_GAIN), 30.0F);
}

TEST_F(GigeTest, ASettingThatTheCameraNoLongerTakesIsToldWhenItIsBack) {
    SoftwareCamera& camera = addCamera({});
    openCameras(VD_TYPE_HIKVISION, 1);
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_GAIN, 230));
    camera.kill();
    const test::TraceLog log;
    CameraOptions weaker;
    weaker.changes = {"<Max>24.0</Max>=><Max>12.0</Max>"};
    addCamera(weaker);
    EXPECT_TRUE(
        eventually(10000, [&] { return log.count("TQVisionDriver: camera S1 at 127.0.0.2 is back") > 0; }));
    EXPECT_EQ(log.countStartingWith("TQVisionDriver: parameter 2 could not be restored to 230"), 1);
    EXPECT_FALSE(fetchNew(0).empty());
    EXPECT_EQ(value(0, VD_PARAM_GAIN), 0.0F);
}

TEST_F(GigeTest, ABrandTakesThePinnedCamerasAndNoOtherSources) {
    addCamera({});
    configure(
        "[camera1]\nsource = scene\n[camera2]\nsource = device\nserial = S1\n"
        "[camera3]\nsource = device\nserial = nowhere\n");
    ASSERT_TRUE(found(VD_TYPE_HIKVISION));
    EXPECT_FALSE(modules_.open(VD_TYPE_HIKVISION, 0)) << "a scene is of no brand";
    EXPECT_TRUE(modules_.open(VD_TYPE_HIKVISION, 1));
    EXPECT_FALSE(modules_.open(VD_TYPE_HIKVISION, 2));
    ASSERT_TRUE(start(1));
    EXPECT_FALSE(fetchNew(1).empty());
}

}  // namespace
}  // namespace gige
