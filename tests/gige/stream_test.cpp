// Pictures through the network: exact, each from its camera, none that is incomplete.
#include <opencv2/core.hpp>
#include <set>

#include "drivers/TQVisionDriver/frame_conversion.h"
#include "tests/gige/gige_test.h"
#include "tests/gige/test_pattern.h"

namespace gige {
namespace {

constexpr std::uint32_t kExposure = 12345;
constexpr std::uint32_t kGain = 60;

TEST_F(GigeTest, PixelsAreExactInEveryFormat) {
    addCamera({});
    openCameras(VD_TYPE_HIKVISION, 1);
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_EXPOSURE, kExposure));
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_GAIN, kGain));
    for (int format = VD_PIXEL_MONO8; format <= VD_PIXEL_BGR8; ++format) {
        SCOPED_TRACE(format);
        EXPECT_FALSE(modules_.setParam(0, VD_PARAM_PIXEL_FORMAT, format)) << "while it acquires";
        ASSERT_TRUE(modules_.stop(0));
        ASSERT_TRUE(modules_.setParam(0, VD_PARAM_PIXEL_FORMAT, format));
        EXPECT_EQ(value(0, VD_PARAM_PIXEL_FORMAT), static_cast<float>(format));
        ASSERT_TRUE(start(0));
        const std::uint32_t code = vision::pixelCodes(format).front();
        std::set<int> patterns;
        for (int i = 0; i < 3; ++i) patterns.insert(patternOf(fetchNew(0), code, kExposure, kGain));
        EXPECT_EQ(patterns.count(-1), 0U) << "a picture that the camera did not send";
        EXPECT_GE(patterns.size(), 2U) << "the same picture again and again";
    }
    EXPECT_EQ(value(0, VD_PARAM_FRAMES_LOST), 0.0F);
}

TEST_F(GigeTest, AFormatThatCannotBeShownIsRefused) {
    CameraOptions options;
    options.format = 0x0210001F;  // YUV 4:2:2
    addCamera(options);
    ASSERT_TRUE(found(VD_TYPE_ANY));
    ASSERT_TRUE(modules_.open(VD_TYPE_ANY, 0));
    EXPECT_FALSE(start(0));
    EXPECT_TRUE(modules_.close(0));
}

TEST_F(GigeTest, FourCamerasOfDifferentSizeRunAtOnce) {
    constexpr int kCameras = 4;
    for (int i = 0; i < kCameras; ++i) {
        CameraOptions options;
        // Found in any order; sorted by serial number, slot i has the width 64 + 32 i.
        options.address = "127.0.0." + std::to_string(9 - i);
        options.serial = "S" + std::to_string(i);
        options.width = 64 + 32 * i;
        options.rate = 60.0;
        addCamera(options);
    }
    openCameras(VD_TYPE_HIKVISION, kCameras);
    for (int i = 0; i < kCameras; ++i) {
        ASSERT_TRUE(eventually(3000, [&] { return value(i, VD_PARAM_FRAME_NUMBER) > 0.0F; }));
        ASSERT_TRUE(modules_.setParam(i, VD_PARAM_EXPOSURE, 1000 + i));
        ASSERT_TRUE(modules_.setParam(i, VD_PARAM_GAIN, i));
    }
    sleepMs(300);
    for (int round = 0; round < 25; ++round) {
        for (int i = 0; i < kCameras; ++i) {
            const cv::Mat picture = fetch(i);
            ASSERT_EQ(picture.size(), cv::Size(64 + 32 * i, 48)) << "camera " << i;
            EXPECT_NE(patternOf(picture, vision::kMono8, static_cast<std::uint32_t>(1000 + i),
                                static_cast<std::uint32_t>(i)),
                      -1)
                << "camera " << i << " in round " << round;
        }
    }
    for (int i = 0; i < kCameras; ++i) EXPECT_GE(value(i, VD_PARAM_FRAME_NUMBER), 10.0F);
}

class Loss : public GigeTest, public testing::WithParamInterface<const char*> {};

TEST_P(Loss, IsCountedAndNeverShown) {
    // About 40 packets a frame: a third of the frames come whole.
    configure(std::string("[devices]\npacket_size = 576\n") + GetParam());
    CameraOptions options;
    options.width = 160;
    options.height = 128;
    options.loss = 0.025;
    options.rate = 60.0;
    addCamera(options);
    openCameras(VD_TYPE_ANY, 1);
    const auto exposure = static_cast<std::uint32_t>(value(0, VD_PARAM_EXPOSURE));
    int whole = 0;
    for (int i = 0; i < 150; ++i) {
        const cv::Mat picture = fetch(0);
        // Before the first whole frame there is a black picture, and after a second without one there is
        // none.
        if (picture.empty() || value(0, VD_PARAM_FRAME_NUMBER) == 0.0F) {
            sleepMs(10);
            continue;
        }
        ASSERT_NE(patternOf(picture, vision::kMono8, exposure, 0), -1);
        ++whole;
        sleepMs(10);
    }
    EXPECT_GE(whole, 10);
    EXPECT_GE(value(0, VD_PARAM_FRAMES_LOST), 5.0F);
    EXPECT_EQ(value(0, VD_PARAM_BYTES_RECEIVED), 160.0F * 128.0F * value(0, VD_PARAM_FRAME_NUMBER));
}

INSTANTIATE_TEST_SUITE_P(OverBothSockets, Loss,
                         testing::Values("packet_socket = yes\n", "packet_socket = no\n"),
                         [](const auto& instance) {
                             return instance.index == 0 ? "PacketSocket" : "PlainSocket";
                         });

TEST_F(GigeTest, ASlowHostGetsTheNewestPicture) {
    CameraOptions options;
    options.rate = 100.0;
    addCamera(options);
    openCameras(VD_TYPE_HIKVISION, 1);
    float before = value(0, VD_PARAM_FRAME_NUMBER);
    for (int i = 0; i < 3; ++i) {
        sleepMs(400);
        ASSERT_FALSE(fetch(0).empty());
        EXPECT_LT(value(0, VD_PARAM_FRAME_AGE), 200.0F) << "an old picture";
        const float number = value(0, VD_PARAM_FRAME_NUMBER);
        EXPECT_GE(number, before + 10.0F) << "the camera was held up";
        before = number;
    }
}

}  // namespace
}  // namespace gige
