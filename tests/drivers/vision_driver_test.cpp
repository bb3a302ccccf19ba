// The procedures as a host calls them, with the sources inside the module.
#include "drivers/vision_driver.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace {

void sleepMs(int duration) { std::this_thread::sleep_for(std::chrono::milliseconds(duration)); }

class VisionDriver : public testing::Test {
  protected:
    ~VisionDriver() override {
        VDDestoryCamera();
        setVariable("");
    }

    static void setVariable(const std::filesystem::path& value) {
        test::setVariable("TQVISION_CONFIG", value);
    }
    void configure(const std::string& text) {
        const std::filesystem::path file = folder_.path() / std::filesystem::u8path("相机.ini");
        std::ofstream(file, std::ios::binary) << text;
        setVariable(file);
    }
    static bool opened(int index) {
        int width = 0;
        int height = 0;
        int channels = 0;
        return VDOpen(VD_TYPE_ANY, index) && VDStart(&width, &height, &channels, index);
    }

    // Fetches until a picture has come that is not the black one of the start.
    static bool fetched(int index, VDImage& image) {
        VDFrameInfo info{};
        for (int i = 0; i < 2000; ++i) {
            if (!VDGetImage(&image, index) || !VDGetFrameInfo(&info, index)) return false;
            if (info.number > 0) return true;
        }
        return false;
    }

    test::TemporaryFolder folder_;
};

TEST_F(VisionDriver, ASceneRunsFromOpenToClose) {
    configure("[camera1]\nsource = scene\nwidth = 160\nheight = 120\nchannels = 3\nrate = 200\n");
    ASSERT_TRUE(VDInitCamera(VD_TYPE_ANY, nullptr, false));
    ASSERT_TRUE(VDOpen(VD_TYPE_ANY, 0));
    int width = 0;
    int height = 0;
    int channels = 0;
    ASSERT_TRUE(VDStart(&width, &height, &channels, 0));
    EXPECT_EQ(width, 160);
    EXPECT_EQ(height, 120);
    EXPECT_EQ(channels, 3);
    VDImage image{};
    ASSERT_TRUE(fetched(0, image));
    EXPECT_EQ(image.width, 160);
    EXPECT_EQ(image.height, 120);
    EXPECT_EQ(image.channels, 3);
    const cv::Mat view(120, 160, CV_8UC3, image.data);
    const cv::Mat copy = view.clone();
    double brightest = 0.0;
    cv::minMaxLoc(view.reshape(1), nullptr, &brightest);
    EXPECT_GT(brightest, 180.0) << "the part is in the picture";
    sleepMs(50);
    EXPECT_EQ(cv::norm(view, copy, cv::NORM_INF), 0.0) << "unchanged until the next fetch";
    EXPECT_GE(VDGetParam(0, VD_PARAM_FRAME_NUMBER), 2.0F);
    EXPECT_TRUE(VDStop(0));
    EXPECT_FALSE(VDGetImage(&image, 0));
    EXPECT_TRUE(VDClose(0));
}

// Each call in each state: closed, open, running.
TEST_F(VisionDriver, EveryCallAnswersInEveryState) {
    configure("[camera1]\nsource = scene\nwidth = 64\nheight = 64\n");
    ASSERT_TRUE(VDInitCamera(VD_TYPE_ANY, nullptr, false));
    int width = 0;
    int height = 0;
    int channels = 0;
    VDImage image{};
    VDFrameInfo info{};
    const auto answers = [&] {
        return std::vector<bool>{VDGetImage(&image, 0), VDSetParam(0, VD_PARAM_FRAME_RATE, 30),
                                 !std::isnan(VDGetParam(0, VD_PARAM_FRAME_RATE)), VDGetFrameInfo(&info, 0)};
    };
    EXPECT_EQ(answers(), (std::vector<bool>{false, false, false, false}));
    EXPECT_FALSE(VDStart(&width, &height, &channels, 0));
    EXPECT_FALSE(VDStop(0));
    EXPECT_TRUE(VDClose(0)) << "closing what is closed";

    EXPECT_TRUE(VDOpen(VD_TYPE_ANY, 0));
    EXPECT_TRUE(VDOpen(VD_TYPE_ANY, 0));
    EXPECT_EQ(answers(), (std::vector<bool>{false, true, true, false}));
    EXPECT_TRUE(VDStop(0));

    EXPECT_TRUE(VDStart(&width, &height, &channels, 0));
    EXPECT_TRUE(VDStart(&width, &height, &channels, 0));
    EXPECT_EQ(answers(), (std::vector<bool>{true, true, true, true}));
    EXPECT_TRUE(VDClose(0)) << "without stopping first";
    EXPECT_EQ(answers(), (std::vector<bool>{false, false, false, false}));
    VDDestoryCamera();
    VDDestoryCamera();
    EXPECT_FALSE(VDOpen(VD_TYPE_ANY, 0));
}

TEST_F(VisionDriver, AnyNumberIsAccepted) {
    configure("[camera1]\nsource = scene\nwidth = 64\nheight = 64\n");
    ASSERT_TRUE(VDInitCamera(VD_TYPE_ANY, nullptr, true));
    ASSERT_TRUE(opened(0));
    VDImage image{};
    VDFrameInfo info{};
    int size = 0;
    for (const int index : {INT_MIN, -1, 1, 8, 9, INT_MAX}) {
        SCOPED_TRACE(index);
        EXPECT_FALSE(VDOpen(VD_TYPE_ANY, index));
        EXPECT_FALSE(VDStart(&size, &size, &size, index));
        EXPECT_FALSE(VDStop(index));
        EXPECT_FALSE(VDGetImage(&image, index));
        EXPECT_FALSE(VDGetFrameInfo(&info, index));
        EXPECT_FALSE(VDSetParam(index, VD_PARAM_GAIN, 1));
        EXPECT_TRUE(std::isnan(VDGetParam(index, VD_PARAM_GAIN)));
        EXPECT_FALSE(VDClose(index));
    }
    for (const int id : {INT_MIN, -1, 0, 11, 99, 100, 101, 102, 103, 104, INT_MAX}) {
        SCOPED_TRACE(id);
        EXPECT_FALSE(VDSetParam(0, id, 1));
        EXPECT_EQ(std::isnan(VDGetParam(0, id)), id < 100 || id > 103);
    }
    for (const long value : {LONG_MIN, -1L, LONG_MAX}) {
        for (int id = VD_PARAM_EXPOSURE; id < VD_PARAM_SOFTWARE_TRIGGER; ++id) {
            EXPECT_FALSE(VDSetParam(0, id, value)) << id << " to " << value;
        }
    }
    EXPECT_FALSE(VDGetImage(nullptr, 0));
    EXPECT_FALSE(VDGetFrameInfo(nullptr, 0));
    EXPECT_FALSE(VDStart(nullptr, &size, &size, 0));
    EXPECT_TRUE(VDGetImage(&image, 0)) << "nothing of this harmed the camera";
}

TEST_F(VisionDriver, StartingDoesNotWaitForThePicture) {
    configure("[camera1]\nsource = scene\nwidth = 64\nheight = 64\nrate = 0.4\n");
    ASSERT_TRUE(VDInitCamera(VD_TYPE_ANY, nullptr, false));
    ASSERT_TRUE(VDOpen(VD_TYPE_ANY, 0));
    ASSERT_TRUE(VDSetParam(0, VD_PARAM_TRIGGER_MODE, VD_TRIGGER_SOFTWARE));
    ASSERT_TRUE(opened(0));
    VDImage image{};
    VDFrameInfo info{};
    ASSERT_TRUE(VDGetImage(&image, 0));
    ASSERT_TRUE(VDGetFrameInfo(&info, 0));
    EXPECT_EQ(info.number, 0U);
    EXPECT_EQ(info.newest, 0U);
    EXPECT_EQ(info.flags & VD_FRAME_FIRST_PENDING, 0U) << "it waits for a trigger";
    EXPECT_EQ(cv::norm(cv::Mat(64, 64, CV_8UC1, image.data), cv::NORM_INF), 0.0) << "black";

    ASSERT_TRUE(VDSetParam(0, VD_PARAM_TRIGGER_MODE, VD_TRIGGER_OFF));
    ASSERT_TRUE(fetched(0, image));
    ASSERT_TRUE(VDGetFrameInfo(&info, 0));
    EXPECT_EQ(info.number, 1U);
    EXPECT_EQ(info.flags & VD_FRAME_FIRST_PENDING, 0U);
}

TEST_F(VisionDriver, EveryFrameHasANumber) {
    for (int i = 1; i <= 9; ++i) {  // the sixth can't be read
        const std::string name = std::to_string(i) + ".png";
        if (i == 6) {
            std::ofstream(folder_ / name) << "no picture";
        } else {
            ASSERT_TRUE(cv::imwrite(folder_ / name, cv::Mat(5, 7, CV_8UC1, cv::Scalar(i))));
        }
    }
    configure("[camera1]\nsource = replay\nfolder = .\nloop = no\nrate = 100\n");
    ASSERT_TRUE(VDInitCamera(VD_TYPE_ANY, nullptr, false));
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        ASSERT_TRUE(VDOpen(VD_TYPE_ANY, 0));
        ASSERT_TRUE(VDSetParam(0, VD_PARAM_TRIGGER_MODE, VD_TRIGGER_OFF));
        ASSERT_TRUE(opened(0));
        VDImage image{};
        VDFrameInfo info{};
        unsigned long long last = 0;
        unsigned long long lastTime = 0;
        int skipped = 0;
        while (last < 9) {
            ASSERT_TRUE(VDGetImage(&image, 0));
            ASSERT_TRUE(VDGetFrameInfo(&info, 0));
            if (info.number == 0) continue;
            ASSERT_GE(info.number, last);
            ASSERT_EQ(info.number, image.data[0]) << "the number is that of the picture";
            ASSERT_GE(info.newest, info.number);
            if (info.number != last) {
                EXPECT_GT(info.device_time, lastTime);
                EXPECT_LT(info.age, 1'000'000'000U);
                skipped += static_cast<int>(info.number - last) - 1;
            }
            last = info.number;
            lastTime = info.device_time;
            if (last == 2) sleepMs(35);  // some are overwritten
        }
        EXPECT_GE(skipped, 2);
        EXPECT_EQ(VDGetParam(0, VD_PARAM_FRAME_NUMBER), 8.0F);
        EXPECT_EQ(VDGetParam(0, VD_PARAM_FRAMES_LOST), 1.0F);
        EXPECT_TRUE(VDStop(0));  // the next start counts from 1
    }
}

TEST_F(VisionDriver, SlotsAreWhatTheSettingsName) {
    ASSERT_TRUE(cv::imwrite(folder_ / "one.png", cv::Mat(5, 7, CV_8UC1, cv::Scalar(123))));
    configure(
        "[camera1]\nsource = scene\nwidth = 64\nheight = 64\n"
        "[camera3]\nsource = replay\nfolder = .\nloop = no\nrate = 500\n"
        "[camera4]\nsource = replay\nfolder = nowhere\n");
    ASSERT_TRUE(VDInitCamera(VD_TYPE_ANY, nullptr, false));
    EXPECT_TRUE(opened(0));
    EXPECT_FALSE(VDOpen(VD_TYPE_ANY, 1)) << "there is none";
    ASSERT_TRUE(opened(2));
    EXPECT_FALSE(VDOpen(VD_TYPE_ANY, 3)) << "it has no pictures";
    sleepMs(1200);
    VDImage image{};
    ASSERT_TRUE(VDGetImage(&image, 2)) << "played once, the last picture stays";
    EXPECT_EQ(image.width, 7);
    EXPECT_EQ(image.height, 5);
    EXPECT_EQ(image.data[34], 123);
    EXPECT_EQ(VDGetParam(2, VD_PARAM_FRAME_NUMBER), 1.0F);
}

TEST_F(VisionDriver, WithoutUsableSettingsItDoesNotPretend) {
    setVariable(folder_ / "missing.ini");
    EXPECT_FALSE(VDInitCamera(VD_TYPE_ANY, nullptr, false));
    setVariable(folder_.name());
    EXPECT_FALSE(VDInitCamera(VD_TYPE_ANY, nullptr, false)) << "a folder is no settings file";
    configure("[camera1]\nsource = replay\nfolder = nowhere\n");
    EXPECT_FALSE(VDInitCamera(VD_TYPE_ANY, nullptr, false)) << "no camera is available";
    EXPECT_FALSE(VDOpen(VD_TYPE_ANY, 0));
    configure("[camera1]\nsource = scene\n");
    EXPECT_FALSE(VDInitCamera(VD_TYPE_DAHUA, nullptr, false)) << "a scene is of no brand";
    EXPECT_FALSE(VDInitCamera(0, nullptr, false)) << "no such type";
}

// A host that mixes up its threads gets refusals, no crash: run under ThreadSanitizer.
TEST_F(VisionDriver, ThreadsMayCollide) {
    configure(
        "[camera1]\nsource = scene\nwidth = 64\nheight = 64\nrate = 1000\n"
        "[camera2]\nsource = scene\nwidth = 64\nheight = 64\nrate = 1000\n");
    ASSERT_TRUE(VDInitCamera(VD_TYPE_ANY, nullptr, false));
    std::atomic<bool> stop{false};
    std::atomic<int> pictures{0};
    std::vector<std::thread> threads;
    for (int index = 0; index < 2; ++index) {
        threads.emplace_back([&stop, &pictures, index] {
            VDImage image{};
            while (!stop) {
                opened(index);
                for (int i = 0; i < 5; ++i) pictures += VDGetImage(&image, index) ? 1 : 0;
                VDSetParam(index, VD_PARAM_EXPOSURE, 5000);
                VDGetParam(index, VD_PARAM_FRAME_AGE);
            }
        });
        threads.emplace_back([&stop, index] {
            while (!stop) {
                VDStop(index);
                sleepMs(5);
                VDClose(index);
            }
        });
    }
    for (int round = 0; round < 10; ++round) {
        sleepMs(20);
        EXPECT_TRUE(VDInitCamera(VD_TYPE_ANY, nullptr, false));
    }
    stop = true;
    for (std::thread& thread : threads) thread.join();
    EXPECT_GT(pictures, 0);
}

}  // namespace
