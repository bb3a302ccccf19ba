// Frames of software cameras through the grab threads: the counts add up, with loss on the way, too.
#include "orxFunctions/camera/frames.h"

#include <array>
#include <string>
#include <thread>

#include "orxFunctions/orxfunctions.h"
#include "tests/gige/gige_test.h"

namespace gige {
namespace {

constexpr int kCameras = 2;

class GigeFrames : public GigeTest {
  protected:
    GigeFrames() { cams_.setCameraNumber(kCameras); }
    ~GigeFrames() override {
        orx::imgThreadManager.closeAllThread();
        for (int i = 0; i < kCameras; ++i) orx::closeFrames(i);
        cams_.DestoryCamera();
        cams_.freeDll();
    }
    std::uint64_t sent(int camera) {
        return static_cast<std::uint64_t>(cams_.GetParam(camera, VD_PARAM_FRAME_NUMBER) +
                                          cams_.GetParam(camera, VD_PARAM_FRAMES_LOST));
    }

    orx::TMultiCamera cams_;
    std::array<orx::TCameraConfig, kCameras> configs_;
};

TEST_F(GigeFrames, AddUpAtTwiceTheRateThatTheHostTakes) {
    configure("[devices]\npacket_size = 576\n");
    for (int i = 0; i < kCameras; ++i) {
        CameraOptions options;
        options.address = "127.0.0." + std::to_string(2 + i);
        options.serial = "S" + std::to_string(i);
        options.rate = 100.0;
        options.loss = i == 0 ? 0.0 : 0.005;
        addCamera(options);
    }
    bool isFound = false;
    for (int i = 0; !isFound && i < 3; ++i)
        isFound = cams_.InitCamera(VD_TYPE_HIKVISION, nullptr, false, false);
    ASSERT_TRUE(isFound);
    for (int i = 0; i < kCameras; ++i) {
        orx::openFrames(i, i == 0 ? orx::TFrameOptions{orx::fpEveryOne, 4} : orx::TFrameOptions{});
        configs_[static_cast<std::size_t>(i)].frameRate = 100;
        ASSERT_TRUE(cams_.open(i, VD_TYPE_HIKVISION));
        orx::imgThreadManager.startThread(&cams_, &configs_[static_cast<std::size_t>(i)], i);
    }
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);
    std::array<std::uint64_t, kCameras> last{};
    const auto takeOne = [&](int i) {
        orx::TFrame frame;
        if (!orx::takeFrame(i, frame, 0)) return false;
        std::uint64_t& before = last[static_cast<std::size_t>(i)];
        EXPECT_EQ(frame.number, before + 1 + frame.lostBefore + frame.droppedBefore);
        EXPECT_NE(frame.deviceTime, 0);
        before = frame.number;
        return true;
    };
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (std::chrono::steady_clock::now() < end) {
        for (int i = 0; i < kCameras; ++i) takeOne(i);
        sleepMs(20);  // 50 a second of 100
    }
    for (int i = 0; i < kCameras; ++i) {
        SCOPED_TRACE(i);
        EXPECT_TRUE(cams_.SetParam(i, VD_TRIGGER_SOFTWARE, VD_PARAM_TRIGGER_MODE));
        // The last ones on their way may come incomplete, which shows with the next complete one alone.
        const auto isComplete = [&] { return orx::frameCounts(i).delivered == sent(i); };
        EXPECT_TRUE(eventually(5000, [&] {
            sleepMs(100);
            if (!isComplete()) cams_.SetParam(i, 1, VD_PARAM_SOFTWARE_TRIGGER);
            return isComplete();
        }));
        while (takeOne(i)) {
        }
        const orx::TFrameCounts counts = orx::frameCounts(i);
        EXPECT_EQ(counts.delivered, counts.taken + counts.dropped + counts.lost);
        EXPECT_EQ(last[static_cast<std::size_t>(i)], counts.delivered);
        EXPECT_GE(counts.taken, 20U);
        EXPECT_GT(counts.dropped + counts.lost, 0U) << "the host was not too slow";
        RecordProperty("camera" + std::to_string(i), std::to_string(counts.delivered) + " delivered, " +
                                                         std::to_string(counts.taken) + " taken, " +
                                                         std::to_string(counts.dropped) + " dropped, " +
                                                         std::to_string(counts.lost) + " lost");
    }
}

TEST_F(GigeFrames, ALostCameraComesBackAndTheOtherNeverNotices) {
    SoftwareCamera* cameras[kCameras] = {};
    for (int i = 0; i < kCameras; ++i) {
        CameraOptions options;
        options.address = "127.0.0." + std::to_string(2 + i);
        options.serial = "S" + std::to_string(i);
        cameras[i] = &addCamera(options);
    }
    bool isFound = false;
    for (int i = 0; !isFound && i < 3; ++i)
        isFound = cams_.InitCamera(VD_TYPE_HIKVISION, nullptr, false, false);
    ASSERT_TRUE(isFound);
    for (int i = 0; i < kCameras; ++i) {
        orx::setReconnect(i, {orx::lpReconnect, 50, 200});
        orx::openFrames(i, {orx::fpEveryOne, 16});
        configs_[static_cast<std::size_t>(i)].frameRate = 50;
        ASSERT_TRUE(cams_.open(i, VD_TYPE_HIKVISION));
        ASSERT_TRUE(cams_.SetParam(i, 4321, VD_PARAM_EXPOSURE));
        orx::imgThreadManager.startThread(&cams_, &configs_[static_cast<std::size_t>(i)], i);
    }
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);
    const auto isState = [](int i, orx::TCameraState state) { return orx::cameraStatus(i).state == state; };
    const auto isFetched = [](int i) {
        orx::TFrame frame;
        return orx::takeFrame(i, frame, 2000);
    };
    for (int i = 0; i < kCameras; ++i) ASSERT_TRUE(isFetched(i));
    cameras[1]->kill();
    EXPECT_TRUE(eventually(5000, [&] { return isState(1, orx::csReconnecting); }));
    const std::uint64_t change = orx::cameraStatus(0).change;
    EXPECT_TRUE(isFetched(0));
    cameras[1]->start();
    ASSERT_EQ(cameras[1]->problem(), "");
    EXPECT_TRUE(eventually(10000, [&] { return isState(1, orx::csGrabbing); }));
    EXPECT_EQ(orx::cameraStatus(1).reason, orx::crReturned);
    orx::openFrames(1, {});
    EXPECT_TRUE(isFetched(1));
    EXPECT_EQ(cams_.GetParam(1, VD_PARAM_EXPOSURE), 4321.0F) << "set as it was";
    EXPECT_TRUE(orx::APPgetParamBool(orx::kCameraReady));
    EXPECT_EQ(orx::cameraStatus(0).change, change);
    EXPECT_EQ(orx::imgThreadManager.getFailedFetches(0), 0);
    for (int i = 0; i < kCameras; ++i) orx::setReconnect(i, {});
}

}  // namespace
}  // namespace gige
