// What one grab thread does, turn by turn.
#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "tests/camera/grabbing.h"

namespace {

using test::eventually;
using test::Grabbing;
using test::Message;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Lt;

constexpr const char* kReconnect = "取到的图像为空，请重连相机";
constexpr int kReconnectColor = 4;

class ImageThread : public Grabbing {};

cv::Mat statusImage(const char* text) {
    cv::Mat image(200, 200, CV_8UC3, cv::Scalar(0, 0, 0));
    cv::putText(image, text, cv::Point(0, 100), cv::FONT_HERSHEY_PLAIN, 1.0, cv::Scalar(255, 0, 0), 1, 8);
    return image;
}

bool equal(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}

// What the callback saw.
std::atomic<int> calls{0};
std::atomic<int> lastNumber{0};
std::atomic<int> lastCamera{-1};
void remember(cv::Mat& image, int camera) {
    lastNumber = test::numberOf(image);
    lastCamera = camera;
    ++calls;
}

TEST_F(ImageThread, TracesItsStartAndItsEnd) {
    setReady(false);
    host_.takeTraces();
    start(1);
    const std::vector<std::string> traces = host_.takeTraces();
    EXPECT_THAT(traces, ElementsAre("开启线程取图线程...", "开始设置相机参数...", "开始initView 0...",
                                    "开始线程..."));
    EXPECT_TRUE(equal(manager_.getThreadImage(1), statusImage("camera not open")));
    manager_.closeAllThread();
    EXPECT_THAT(host_.takeTraces(), ElementsAre(test::kEnded));
    manager_.closeAllThread();
    EXPECT_THAT(host_.takeTraces(), IsEmpty()) << "closed already";
    EXPECT_THAT(host_.takeMessages(), IsEmpty());
}

TEST_F(ImageThread, GivesPicturesToTheCallbackAndToPolling) {
    int order[9] = {2, 1, 0, 3, 4, 5, 6, 7, 8};
    cams_.SetSortedCameraIdx(order);
    configs_[0].scaleEnable = true;
    fakeCamera(2).width = 40;
    fakeCamera(2).height = 30;
    start(0);
    calls = 0;
    manager_.setDrawImgCallbackFunc(true, remember, 0);
    ASSERT_TRUE(eventually([] { return calls >= 3; }));
    EXPECT_EQ(lastCamera, 0) << "the logical number";
    EXPECT_EQ(manager_.threadIdx2CameraIdx(0), 0);
    EXPECT_EQ(manager_.getThreadImage(0).size(), cv::Size(20, 15));
    configs_[0].scaleFactor = 4;
    EXPECT_TRUE(eventually([&] { return manager_.getThreadImage(0).size() == cv::Size(10, 7); }));
    configs_[0].scaleEnable = false;
    EXPECT_TRUE(eventually([&] { return manager_.getThreadImage(0).size() == cv::Size(40, 30); }));
    EXPECT_EQ(manager_.getThreadImage(0).at<uchar>(29, 39), fake::sampleOf(2, 39, 29, 0));

    manager_.setDrawImgCallbackFunc(false, remember, 0);
    const int before = calls;
    EXPECT_TRUE(waitForFrames(2, 5));
    EXPECT_EQ(calls, before) << "no call once it has been switched off";
}

TEST_F(ImageThread, WhatACallbackKeepsIsNotTouchedAgain) {
    static std::vector<cv::Mat> kept;
    kept.clear();
    start(0);
    manager_.setDrawImgCallbackFunc(
        true, [](cv::Mat& image, int) { kept.push_back(image); }, 0);
    ASSERT_TRUE(waitForFrames(0, 20));
    manager_.closeAllThread();
    for (std::size_t i = 1; i < kept.size(); ++i) {
        EXPECT_EQ(test::numberOf(kept[i]), test::numberOf(kept[i - 1]) + 1);
        EXPECT_EQ(kept[i].at<uchar>(5, 7), fake::sampleOf(0, 7, 5, 0));
    }
    const cv::Mat latest = manager_.getThreadImage(0);
    kept.back().setTo(0);
    EXPECT_TRUE(equal(manager_.getThreadImage(0), latest)) << "polling has a copy of its own";
    kept.clear();
}

TEST_F(ImageThread, ACallbackMayAskForItsOwnSlot) {
    start(0);
    calls = 0;
    manager_.setDrawImgCallbackFunc(
        true,
        [](cv::Mat&, int camera) {
            orx::imgThreadManager.setDrawImgCallbackFunc(true, remember, camera);
            orx::imgThreadManager.initView(camera, 1);
            orx::imgThreadManager.getThreadImage(camera);
            orx::imgThreadManager.startThread(nullptr, nullptr, camera);
            orx::imgThreadManager.closeAllThread();
        },
        0);
    EXPECT_TRUE(eventually([&] {
        const std::vector<std::string> traces = host_.takeTraces();
        return std::count(traces.begin(), traces.end(), test::kEnded) == 1;
    })) << "asked to end by its own callback";
    EXPECT_THAT(host_.takeMessages(),
                ElementsAre(Message{" TImageThreadManager::startThread in a callback", test::kErrorColor}));
    start(0);
    EXPECT_TRUE(eventually([] { return calls >= 1; }));
}

TEST_F(ImageThread, CallbacksMayAskForEachOthersSlots) {
    static std::atomic<int> asked;
    asked = 0;
    for (const int slot : {0, 1}) {
        start(slot);
        manager_.setDrawImgCallbackFunc(
            true,
            [](cv::Mat&, int camera) {
                std::this_thread::sleep_for(
                    std::chrono::milliseconds(2));  // the other one is in its own by now
                if (!orx::imgThreadManager.getThreadImage(1 - camera).empty()) ++asked;
            },
            slot);
    }
    EXPECT_TRUE(eventually([] { return asked >= 20; }));
    manager_.closeAllThread();
}

TEST_F(ImageThread, ACallbackThatThrowsIsToldAndCountsAsFailure) {
    start(2);
    ASSERT_TRUE(waitForFrames(2, 2));
    manager_.setDrawImgCallbackFunc(
        true, [](cv::Mat&, int) { throw std::runtime_error("no disk"); }, 2);
    ASSERT_TRUE(eventually([] { return !isReady(); }));
    std::vector<Message> wanted(6, {"相机3 的图像回调函数出错: no disk", test::kErrorColor});
    wanted.push_back({kReconnect, kReconnectColor});
    EXPECT_EQ(host_.takeMessages(), wanted);
    manager_.setDrawImgCallbackFunc(
        true, [](cv::Mat&, int) { throw 7; }, 2);
    setReady(true);
    ASSERT_TRUE(eventually([] { return !isReady(); }));
    EXPECT_EQ(host_.takeMessages().size(), 7U);
}

TEST_F(ImageThread, AsksToReconnectAfterSixFailuresInARow) {
    struct Case {
        fake::Picture picture;
        const char* trace;
    };
    start(1);
    ASSERT_TRUE(waitForFrames(1, 2));
    int failed = 0;
    EXPECT_EQ(manager_.getFailedFetches(1), failed);
    for (const Case& c : {Case{fake::Picture::kFailure, "camera getImg fail 1"},
                          Case{fake::Picture::kEmpty, "Get empty image 1"},
                          Case{fake::Picture::kHuge, "Get empty image 1"}}) {
        SCOPED_TRACE(c.trace);
        host_.takeTraces();
        fakeCamera(1).picture = c.picture;
        ASSERT_TRUE(eventually([] { return !isReady(); }));
        EXPECT_THAT(host_.takeMessages(), ElementsAre(Message{kReconnect, kReconnectColor}));
        EXPECT_EQ(host_.takeTraces(), std::vector<std::string>(6, c.trace));
        const int fetches = fakeCamera(1).fetches;
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        EXPECT_EQ(fakeCamera(1).fetches, fetches) << "no fetch until the host has reconnected";
        failed += 6;
        EXPECT_EQ(manager_.getFailedFetches(1), failed);

        fakeCamera(1).picture = fake::Picture::kGood;
        setReady(true);
        ASSERT_TRUE(waitForFrames(1, 2));
        EXPECT_TRUE(isReady());
    }
    manager_.closeAllThread();
    EXPECT_EQ(manager_.getFailedFetches(1), failed) << "to be read after the end";
    start(1);
    EXPECT_EQ(manager_.getFailedFetches(1), 0);
}

TEST_F(ImageThread, FiveFailuresInARowAreForgiven) {
    start(0);
    static std::atomic<int> seen;
    seen = 0;
    // Every good picture is followed by five bad ones.
    static fake::Camera* camera;
    camera = &fakeCamera(0);
    manager_.setDrawImgCallbackFunc(
        true,
        [](cv::Mat&, int) {
            ++seen;
            camera->failures = 5;
        },
        0);
    ASSERT_TRUE(eventually([] { return seen >= 10; }));
    EXPECT_TRUE(isReady());
    EXPECT_THAT(host_.takeMessages(), IsEmpty());
    manager_.closeAllThread();
    EXPECT_GE(fakeCamera(0).fetches, fakeCamera(0).frames + 5 * 9);
}

TEST_F(ImageThread, FetchesOnlyWhenNothingForbidsIt) {
    const auto isFetching = [&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));  // a fetch may be under way
        const int before = fakeCamera(1).fetches;
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        return fakeCamera(1).fetches > before;
    };
    start(1);
    ASSERT_TRUE(waitForFrames(1, 2));
    EXPECT_TRUE(isFetching());

    manager_.setThreadWork(1, false);
    EXPECT_FALSE(isFetching());
    manager_.setThreadWork(1, true);
    EXPECT_TRUE(isFetching());
    EXPECT_THAT(host_.takeMessages(), ElementsAre(Message{"设置相机2 暂停刷图", test::kPlainColor},
                                                  Message{"设置相机2 恢复刷图", test::kPlainColor}));
    manager_.setCamUpdateImg(1, false);
    EXPECT_FALSE(isFetching());
    EXPECT_TRUE(equal(manager_.getThreadImage(1), statusImage("stop update image")));
    manager_.initView(1, 2);
    EXPECT_TRUE(equal(manager_.getThreadImage(1), statusImage("camera not open")));
    manager_.setCamUpdateImg(1, true);
    EXPECT_TRUE(isFetching());
    setReady(false);
    EXPECT_FALSE(isFetching());
    setReady(true);
    cams_.close(1);
    EXPECT_FALSE(isFetching());
    cams_.connectCamera(1, 12);
    EXPECT_TRUE(isFetching());
    EXPECT_THAT(host_.takeMessages(), IsEmpty());
}

TEST_F(ImageThread, APauseKeepsItsPictureWhateverIsUnderWay) {
    start(0);
    manager_.setDrawImgCallbackFunc(
        true, [](cv::Mat&, int camera) { orx::imgThreadManager.setCamUpdateImg(camera, false); }, 0);
    ASSERT_TRUE(eventually([] { return orx::cameraStatus(0).state == orx::csPaused; }));
    manager_.setDrawImgCallbackFunc(false, nullptr, 0);  // waits for the callback
    EXPECT_TRUE(equal(manager_.getThreadImage(0), statusImage("stop update image"))) << "paused by itself";

    std::atomic<bool> isOver{false};
    std::vector<std::thread> pollers;
    for (int i = 0; i < 2; ++i) {
        pollers.emplace_back([&] {
            while (!isOver) manager_.getThreadImage(0);
        });
    }
    int lost = 0;
    for (int i = 0; i < 25; ++i) {
        manager_.setCamUpdateImg(0, true);
        EXPECT_TRUE(waitForFrames(0, 1));
        manager_.setCamUpdateImg(0, false);
        std::this_thread::sleep_for(std::chrono::milliseconds(4));
        if (!equal(manager_.getThreadImage(0), statusImage("stop update image"))) ++lost;
    }
    isOver = true;
    for (std::thread& poller : pollers) poller.join();
    EXPECT_EQ(lost, 0);
}

void endProcessInCallback(orx::TImageThreadManager& manager) {
    manager.setDrawImgCallbackFunc(
        true, [](cv::Mat&, int) { std::exit(7); }, 0);
    std::this_thread::sleep_for(std::chrono::seconds(20));
}

TEST_F(ImageThread, ACallbackMayEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    start(0);  // alone: the fake driver's own destructors run while other threads might call it
    EXPECT_EXIT(endProcessInCallback(manager_), testing::ExitedWithCode(7), "");
}

// A box without a display takes everything but shows nothing.
TEST_F(ImageThread, FeedsThePictureBoxThatHasAWindow) {
    TPictureBox box;
    manager_.startThread(&cams_, configs_.data(), &box, 0);
    ASSERT_TRUE(waitForFrames(0, 2));
    EXPECT_EQ(box.origWidth, 0.0) << "no window of the host";
    manager_.closeAllThread();

    int window = 0;
    box.setHandle(&window, 64, 64);
    setReady(false);
    manager_.startThread(&cams_, configs_.data(), &box, 0);
    EXPECT_EQ(box.origWidth, 200.0) << "the status picture";
    EXPECT_FALSE(box.redraw) << "shown at once, not by the box's thread";
    setReady(true);
    EXPECT_TRUE(eventually([&] { return box.origWidth == 8.0 && box.origHeight == 6.0 && box.redraw; }));
    manager_.setCamUpdateImg(0, false);
    EXPECT_EQ(box.origWidth, 200.0);
    manager_.closeAllThread();
    box.origWidth = 0.0;
    manager_.initView(0, 0);
    EXPECT_EQ(box.origWidth, 0.0) << "the box was borrowed while the thread ran";
    box.start();  // or its destruction would end the process
}

TEST_F(ImageThread, WithoutCamerasEveryTurnTellsTheUser) {
    manager_.startThread(nullptr, nullptr, 0);
    ASSERT_TRUE(eventually([&] {
        const std::vector<Message> messages = host_.takeMessages();
        EXPECT_THAT(messages, Each(Message{"FCameras==NULL", test::kErrorColor}));
        return !messages.empty();
    }));
    start(0);
    EXPECT_TRUE(waitForFrames(0, 2)) << "a start ends the thread that runs";
}

TEST_F(ImageThread, SlotsAreChecked) {
    struct Case {
        int slot;
        const char* text;
    };
    orx::TImageThreadManager manager;  // of its own: no slot was ever started
    const int unused = 7;
    for (const Case& c : {Case{-1, " TImageThreadManager::checkValid idx < 0"},
                          Case{9, " TImageThreadManager::checkValid idx > MAXCameraNum - 1"},
                          Case{unused, " TImageThreadManager::checkValid imageThread[idx] == NULL"}}) {
        SCOPED_TRACE(c.slot);
        manager.initView(c.slot, 0);
        manager.setThreadWork(c.slot, true);
        manager.setCamUpdateImg(c.slot, false);
        manager.setDrawImgCallbackFunc(true, remember, c.slot);
        EXPECT_TRUE(manager.getThreadImage(c.slot).empty());
        EXPECT_EQ(manager.getCurrentFrameRate(c.slot), 0);
        EXPECT_EQ(host_.takeMessages(), std::vector<Message>(6, {c.text, test::kErrorColor}));
        EXPECT_EQ(manager.threadIdx2CameraIdx(c.slot), 0);
        EXPECT_THAT(host_.takeMessages(), IsEmpty());
    }
    for (const int slot : {-1, 9}) {
        manager.startThread(&cams_, configs_.data(), slot);
        EXPECT_EQ(host_.takeMessages().size(), 1U);
    }
}

TEST_F(ImageThread, ThreadsFollowTheNumberOfCameras) {
    for (int slot = 0; slot < 3; ++slot) start(slot);
    for (int slot = 0; slot < 3; ++slot) ASSERT_TRUE(waitForFrames(slot, 1));
    host_.takeTraces();
    manager_.setCameraCntSame2ThreadCnt(1);
    EXPECT_THAT(host_.takeTraces(), AllOf(testing::SizeIs(2), Each(test::kEnded)));
    EXPECT_TRUE(waitForFrames(0, 2));
    manager_.setCameraCntSame2ThreadCnt(12);
    EXPECT_TRUE(waitForFrames(0, 2));
    manager_.setCameraCntSame2ThreadCnt(-1);
    EXPECT_THAT(host_.takeTraces(), ElementsAre(test::kEnded));
}

// Pacing. The driver notes when each fetch begins. A pause is never shorter than asked for; a busy machine
// stretches it, so that a pause is judged by the shortest of several, in the best of several runs.

class Pacing : public Grabbing {
  protected:
    using Times = std::vector<std::chrono::steady_clock::time_point>;

    // Grabs that many pictures, the first of which brings the frame rate.
    Times grab(int frameRate, int pictures) {
        configs_[0].frameRate = frameRate == 1000 ? 999 : 1000;
        start(0);
        EXPECT_TRUE(waitForFrames(0, 1));
        manager_.closeAllThread();
        configs_[0].frameRate = frameRate;
        driver_->takeFetchTimes();
        start(0);
        EXPECT_TRUE(waitForFrames(0, pictures));
        manager_.closeAllThread();
        return driver_->takeFetchTimes();
    }

    static double milliseconds(const Times& times, std::size_t from, std::size_t to) {
        return std::chrono::duration<double, std::milli>(times[to] - times[from]).count();
    }
    static double shortestGap(const Times& times, std::size_t from, std::size_t to) {
        double shortest = milliseconds(times, from, from + 1);
        for (std::size_t i = from + 1; i < to; ++i)
            shortest = std::min(shortest, milliseconds(times, i, i + 1));
        return shortest;
    }
    // True when in one run every gap is as long as wanted, and at most 2 ms longer.
    template <typename Run>
    static bool inTheBestOfSeveral(const Run& run) {
        for (int i = 0; i < 20; ++i) {
            bool isRight = true;
            for (const auto& [gap, wanted] : run()) {
                isRight = isRight && gap >= wanted && gap < wanted + 2.0;
            }
            if (isRight) return true;
        }
        return false;
    }
    using Gaps = std::vector<std::pair<double, double>>;  // measured and wanted
};

TEST_F(Pacing, TargetIsTakenFromTheConfigurationAndMeasured) {
    configs_[0].frameRate = 0;
    start(0);
    host_.takeTraces();
    std::vector<std::string> traces;
    const auto collectTraces = [&] {
        for (const std::string& line : host_.takeTraces()) traces.push_back(line);
    };
    ASSERT_TRUE(eventually([&] {
        collectTraces();
        return traces.size() >= 2;
    })) << "at every picture, since 0 is never reached";
    EXPECT_EQ(manager_.getCurrentFrameRate(0), 1);
    configs_[0].frameRate = 40;  // counts from the next picture on, one second later
    ASSERT_TRUE(waitForFrames(0, 9));
    manager_.closeAllThread();
    collectTraces();
    EXPECT_EQ(traces.back(), test::kEnded);
    traces.pop_back();
    EXPECT_THAT(traces, AllOf(testing::SizeIs(Ge(3U)), Each("camera: 1 frame rate changed")));
    const Times times = driver_->takeFetchTimes();
    EXPECT_GE(milliseconds(times, 0, 1), 1000.0) << "0 counts as 1 a second";
    // The picture that brings a rate starts no measurement: the first eight are counted from an older
    // picture, if there ever was one, and so take more than the pause of a second.
    EXPECT_LT(manager_.getCurrentFrameRate(0), 7);
}

TEST_F(Pacing, PauseGrowsByATenthWhenTheTargetIsMet) {
    EXPECT_TRUE(inTheBestOfSeveral([&] {
        const Times times = grab(50, 24);
        // The first picture brings the rate and starts no measurement: pictures 1 to 8 are found too slow.
        // Pictures 9 to 16 lie 18 ms and a little apart, up to 56 a second, as round(7000 / elapsed).
        const bool isMet = milliseconds(times, 8, 15) < 7000.0 / 49.5 - 0.1;
        return Gaps{{shortestGap(times, 0, 7), 20.0},
                    {shortestGap(times, 8, 15), 18.0},
                    {shortestGap(times, 16, 23), isMet ? 20.0 : 16.0}};
    }));
}

TEST_F(Pacing, PauseShrinksByATenthWhileTheTargetIsMissed) {
    fakeCamera(0).fetchMs = 12;  // can never be 100 a second
    EXPECT_TRUE(inTheBestOfSeveral([&] {
        const Times times = grab(100, 8 * 8);
        // The pause of 10 ms goes 9, 8, 7, 6, 5 and stays at 5: 5 * 0.9 = 4.5 rounds to 5, half away from
        // zero.
        return Gaps{{shortestGap(times, 1, 7), 22.0},
                    {shortestGap(times, 8, 15), 21.0},
                    {shortestGap(times, 48, 62), 17.0}};
    }));
    EXPECT_THAT(manager_.getCurrentFrameRate(0), AllOf(Ge(1), Lt(60))) << "17 ms and more";
}

}  // namespace
