// A host that grabs.
#ifndef ORX_TESTS_CAMERA_GRABBING_H
#define ORX_TESTS_CAMERA_GRABBING_H

#include <cstring>

#include "tests/camera/host.h"

namespace test {

constexpr const char* kEnded = "线程已经关闭";

// Cameras that are open, and configurations that let their threads run as fast as they can (1 ms pause).
class Grabbing : public CameraTest {
  protected:
    explicit Grabbing(int number = 3) : CameraTest(number) {
        for (int i = 0; i < number; ++i) EXPECT_TRUE(cams_.open(i, 12));
        for (orx::TCameraConfig& config : configs_) config.frameRate = 1000;
        setReady(true);
    }
    ~Grabbing() override {
        orx::imgThreadManager.closeAllThread();
        for (int slot = 0; slot < 9; ++slot) {  // as it was before the first start
            if (!manager_.getThreadImage(slot).empty()) {
                manager_.setDrawImgCallbackFunc(false, nullptr, slot);
                manager_.setThreadWork(slot, true);
                manager_.setCamUpdateImg(slot, true);
            }
        }
    }

    static void setReady(bool ready) { orx::APPaddOrSetParamBool("cameraReady", ready); }
    static bool isReady() { return orx::APPgetParamBool("cameraReady"); }

    void start(int slot) { manager_.startThread(&cams_, &configs_[static_cast<std::size_t>(slot)], slot); }

    bool waitForFrames(int slot, int more) {
        const int wanted = fakeCamera(slot).frames + more;
        return eventually([&] { return fakeCamera(slot).frames >= wanted; });
    }

    orx::TImageThreadManager& manager_ = orx::imgThreadManager;
    std::array<orx::TCameraConfig, 9> configs_;
};

// The number that the fake driver wrote into a picture.
inline int numberOf(const cv::Mat& image) {
    std::int32_t number = 0;
    std::memcpy(&number, image.data, sizeof number);
    return number;
}

}  // namespace test

#endif
