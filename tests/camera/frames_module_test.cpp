// Frames of the module that comes with the library: none is lost or seen twice unnoticed, although the host
// takes half of what the sources send.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <thread>

#include "drivers/vision_driver.h"
#include "orxFunctions/orxfunctions.h"
#include "tests/support/environment.h"
#include "tests/support/loaded_module.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr int kCameras = 4;
constexpr int kPictures = 97;  // of the replayed folder
constexpr int kRate = 400;
constexpr std::chrono::milliseconds kHostPause{1000 / (kRate / 2)};

class ModuleFrames : public testing::Test {
  protected:
    ModuleFrames() {
        for (int i = 0; i < kPictures; ++i) {
            const std::string name = "picture" + std::to_string(1000 + i) + ".png";
            EXPECT_TRUE(cv::imwrite(folder_ / name, cv::Mat(16, 24, CV_8UC1, cv::Scalar(i))));
        }
        std::ofstream settings(folder_ / "settings.ini");
        const std::string rate = "rate = " + std::to_string(kRate) + "\n";
        settings << "[camera1]\nsource = scene\nwidth = 64\nheight = 64\n" << rate;
        settings << "[camera2]\nsource = replay\nfolder = .\n" << rate;
        settings << "[camera3]\nsource = scene\nwidth = 64\nheight = 64\n" << rate;
        settings << "[camera4]\nsource = replay\nfolder = .\n" << rate;
        settings.close();
        test::setVariable("TQVISION_CONFIG", folder_.path() / "settings.ini");
        EXPECT_TRUE(cams_.InitCamera(VD_TYPE_ANY, nullptr, false, false));
        cams_.setCameraNumber(kCameras);
        for (orx::TCameraConfig& config : configs_) config.frameRate = kRate;
    }
    ~ModuleFrames() override {
        orx::imgThreadManager.closeAllThread();
        for (int i = 0; i < kCameras; ++i) orx::closeFrames(i);
        cams_.DestoryCamera();
        cams_.freeDll();
        test::setVariable("TQVISION_CONFIG", "");
    }
    // What the module says that it had.
    std::uint64_t sent(int camera) {
        return static_cast<std::uint64_t>(cams_.GetParam(camera, VD_PARAM_FRAME_NUMBER) +
                                          cams_.GetParam(camera, VD_PARAM_FRAMES_LOST));
    }
    bool isAllFetched(int camera) {
        for (int i = 0; i < 2000; ++i) {
            if (orx::frameCounts(camera).delivered == sent(camera)) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return false;
    }

    const test::LoadedModule module_{ORX_DRIVER_MODULE};  // on Windows it does not lie beside this program
    test::TemporaryFolder folder_;
    orx::TMultiCamera cams_;
    std::array<orx::TCameraConfig, kCameras> configs_;
};

// Holds each frame to the one before it.
class Follower {
  public:
    void follow(const orx::TFrame& frame) {
        EXPECT_EQ(frame.number, last_ + 1 + frame.lostBefore + frame.droppedBefore);
        last_ = frame.number;
        missing_ += frame.lostBefore + frame.droppedBefore;
        ++taken_;
    }
    std::uint64_t last() const { return last_; }
    std::uint64_t taken() const { return taken_; }
    std::uint64_t missing() const { return missing_; }

  private:
    std::uint64_t last_ = 0;
    std::uint64_t taken_ = 0;
    std::uint64_t missing_ = 0;
};

void check(int camera, Follower& follower, const orx::TFrame& frame) {
    follower.follow(frame);
    EXPECT_TRUE(frame.isNumbered);
    if (camera % 2 == 0) return;
    EXPECT_EQ(frame.image.at<uchar>(15, 23), (frame.number - 1) % kPictures) << "the number is the picture's";
}

TEST_F(ModuleFrames, AddUpAtTwiceTheRateThatTheHostTakes) {
    std::array<Follower, kCameras> followers;
    std::array<std::thread, kCameras> hosts;
    std::atomic<bool> isOver{false};
    for (int i = 0; i < kCameras; ++i) {
        orx::openFrames(i, i < 2 ? orx::TFrameOptions{orx::fpEveryOne, 8} : orx::TFrameOptions{});
        ASSERT_TRUE(cams_.open(i, VD_TYPE_ANY));
        orx::imgThreadManager.startThread(&cams_, &configs_[static_cast<std::size_t>(i)], i);
    }
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);
    for (int i = 0; i < kCameras; ++i) {
        hosts[static_cast<std::size_t>(i)] = std::thread([&, i] {
            orx::TFrame frame;
            while (!isOver) {
                if (orx::takeFrame(i, frame, 20)) check(i, followers[static_cast<std::size_t>(i)], frame);
                std::this_thread::sleep_for(kHostPause);
            }
        });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    for (int i = 0; i < kCameras; ++i) {  // the sources rest
        EXPECT_TRUE(cams_.SetParam(i, VD_TRIGGER_SOFTWARE, VD_PARAM_TRIGGER_MODE));
    }
    isOver = true;
    for (std::thread& host : hosts) host.join();
    for (int i = 0; i < kCameras; ++i) {
        SCOPED_TRACE(i);
        EXPECT_TRUE(isAllFetched(i));
        Follower& follower = followers[static_cast<std::size_t>(i)];
        orx::TFrame frame;
        while (orx::takeFrame(i, frame, 0)) check(i, follower, frame);
        const orx::TFrameCounts counts = orx::frameCounts(i);
        EXPECT_EQ(follower.last(), sent(i));
        EXPECT_EQ(follower.taken(), counts.taken);
        EXPECT_EQ(follower.missing(), counts.dropped + counts.lost);
        EXPECT_EQ(counts.waiting, 0U);
        EXPECT_EQ(counts.delivered, counts.taken + counts.dropped + counts.lost);
        EXPECT_GT(counts.dropped + counts.lost, 0U) << "the host was not too slow";
        RecordProperty("camera" + std::to_string(i), std::to_string(counts.delivered) + " delivered, " +
                                                         std::to_string(counts.taken) + " taken, " +
                                                         std::to_string(counts.dropped) + " dropped, " +
                                                         std::to_string(counts.lost) + " lost");
    }
}

// Opening one camera does not hold up the other: the slow source needs its first picture for long.
TEST_F(ModuleFrames, GoOnWhileAnotherCameraIsOpened) {
    orx::openFrames(0, {orx::fpEveryOne, 64});
    ASSERT_TRUE(cams_.open(0, VD_TYPE_ANY));
    ASSERT_TRUE(cams_.SetParam(0, 100, VD_PARAM_FRAME_RATE));
    orx::imgThreadManager.startThread(&cams_, configs_.data(), 0);
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);
    orx::TFrame frame;
    ASSERT_TRUE(orx::takeFrame(0, frame, 5000));
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_TRUE(cams_.open(1, VD_TYPE_ANY));
    cv::Mat image;
    ASSERT_TRUE(cams_.GetImage(image, 1, false, 0));
    EXPECT_EQ(image.size(), cv::Size(24, 16));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    EXPECT_TRUE(orx::takeFrame(0, frame, 5000));
}

void endProcessInCallback() {
    orx::setFrameCallback(
        1,
        [](const orx::TFrame& frame, void*) {
            if (frame.number >= 5) std::exit(7);
        },
        nullptr);
    orx::APPaddOrSetParamBool(orx::kCameraReady, true);
    std::this_thread::sleep_for(std::chrono::seconds(20));
}

// The other threads still fetch when the module's static objects are gone.
TEST_F(ModuleFrames, AllowACallbackToEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (int i = 0; i < kCameras; ++i) {
        ASSERT_TRUE(cams_.open(i, VD_TYPE_ANY));
        orx::imgThreadManager.startThread(&cams_, &configs_[static_cast<std::size_t>(i)], i);
    }
    EXPECT_EXIT(endProcessInCallback(), testing::ExitedWithCode(7), "");
}

}  // namespace
