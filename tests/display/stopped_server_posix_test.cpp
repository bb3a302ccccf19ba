// Picture boxes on an X server that stops answering: a host goes on without it.
#include <algorithm>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>

#include "tests/display/host_window_posix.h"
#include "tests/display/picture_box_fixture.h"
#include "tests/support/private_display_posix.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

// Generous: a sanitizer on a busy machine is slow, but nothing here takes a second by itself.
constexpr milliseconds kAtOnce{1500};
constexpr milliseconds kPatience{3000};  // as the documentation says
// Far more bytes than fit between a client and a server that is stopped.
const cv::Size kWindow(900, 700);

class PictureBoxWithAStoppedServer : public test::HeadlessBox {
  protected:
    void SetUp() override {
        HeadlessBox::SetUp();
        display_ = std::make_unique<test::PrivateDisplay>();
        if (!display_->isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
        host_ = std::make_unique<test::HostWindow>(cv::Rect({}, kWindow));
        box_ = std::make_unique<TPictureBox>(TPictureOf::kBox);
        box_->setHandle(host_->handle(), kWindow.width, kWindow.height);
        box_->setShowFrame(200);
        box_->start();
        show(1);
        ASSERT_TRUE(isSeen(1));
    }
    // Does something that must not wait, in time or not at all: the server goes on before it would wait
    // forever.
    void expectWithin(milliseconds bound, const char* what, const std::function<void()>& action) {
        const auto start = Clock::now();
        auto done = std::async(std::launch::async, action);
        EXPECT_EQ(done.wait_for(bound), std::future_status::ready) << what;
        if (done.wait_for(seconds(0)) != std::future_status::ready) display_->goOn();
        done.wait();
        longest_ = std::max(longest_, Clock::now() - start);
    }
    void show(int level) {
        box_->setImage(colour(kWindow.width, kWindow.height, {10.0 * level, 2, 3}), false);
    }
    // Stops the server while a picture is on its way to it, or waits.
    void stopServer() {
        display_->stop();
        for (int i = 0; i < 5; ++i) {
            expectWithin(kAtOnce, "setImage", [&] { show(2); });
            std::this_thread::sleep_for(milliseconds(20));
        }
    }
    bool isSeen(int level) {
        for (int i = 0; i < 500; ++i) {
            if (host_->pixel(450, 350) == cv::Vec3b(static_cast<uchar>(10 * level), 2, 3)) return true;
            std::this_thread::sleep_for(milliseconds(10));
        }
        return false;
    }

    std::unique_ptr<test::PrivateDisplay> display_;
    std::unique_ptr<test::HostWindow> host_;
    std::unique_ptr<TPictureBox> box_;
    Clock::duration longest_{};
};

TEST_F(PictureBoxWithAStoppedServer, WhatIsHandedInOrAskedForWaitsForNothing) {
    stopServer();
    for (int level = 3; level <= 8; ++level) {
        expectWithin(kAtOnce, "setImage", [&] { show(level); });
        expectWithin(kAtOnce, "setOverlay", [&] { box_->setOverlay({}); });
        expectWithin(kAtOnce, "setCursor", [&] { box_->setCursor(CURSOR_HAND); });
        expectWithin(kAtOnce, "setFunction", [&] { box_->setFunction(FUNC_EDIT_RECT); });
        expectWithin(kAtOnce, "setWindowSize", [&] { box_->setWindowSize(kWindow.width, kWindow.height); });
        expectWithin(kAtOnce, "setHandle, the same", [&] { box_->setHandle(host_->handle()); });
        expectWithin(kAtOnce, "mouseEvent", [&] { box_->mouseEvent(cv::EVENT_MOUSEMOVE, 5, 5, 0); });
        expectWithin(kAtOnce, "getShownImage", [&] {
            cv::Mat shown;
            EXPECT_TRUE(box_->getShownImage(shown));
        });
        expectWithin(kAtOnce, "orig2ShowPoint", [&] {
            EXPECT_EQ(box_->orig2ShowPoint({3, 4}), cv::Point2d(3, 4));
            EXPECT_TRUE(box_->getOverlay().empty());
        });
        std::this_thread::sleep_for(milliseconds(20));
    }
    EXPECT_NE(box_->cvWindow, nullptr);
    display_->goOn();
    EXPECT_TRUE(isSeen(8));
    RecordProperty("longest_ms", static_cast<int>(longest_ / milliseconds(1)));
}

TEST_F(PictureBoxWithAStoppedServer, WhoWantsToSeeWaitsOnceForALimitedTime) {
    test::HostWindow other({0, 0, 50, 50});
    stopServer();
    show(3);
    expectWithin(kPatience + kAtOnce, "showImage", [&] { box_->showImage(); });
    // By now the server has been silent for that long.
    std::this_thread::sleep_for(kPatience / 2);
    expectWithin(kAtOnce, "showImage again", [&] { box_->showImage(); });
    expectWithin(kAtOnce, "showImageLast", [&] { box_->showImageLast(); });
    expectWithin(kAtOnce, "setHandle, another", [&] {
        box_->setHandle(other.handle());
        EXPECT_EQ(orx::lastRefusal().code, orx::rcNoDisplay);
    });
    EXPECT_EQ(trace.countStartingWith("图片框无法显示:"), 1);
    display_->goOn();
    box_->setHandle(host_->handle());
    show(4);
    EXPECT_TRUE(isSeen(4));
}

TEST_F(PictureBoxWithAStoppedServer, ABoxIsDestroyedAndItsWindowGoneWhenTheServerGoesOn) {
    stopServer();
    expectWithin(kPatience + kAtOnce, "the destruction", [&] { box_.reset(); });
    display_->goOn();
    for (int i = 0; i < 500 && !host_->children().empty(); ++i) std::this_thread::sleep_for(milliseconds(10));
    EXPECT_TRUE(host_->children().empty());
}

}  // namespace
