// Picture boxes inside real windows, on an X server of the test's own.
#include <chrono>
#include <filesystem>
#include <functional>
#include <iterator>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "tests/display/host_window_posix.h"
#include "tests/display/picture_box_fixture.h"
#include "tests/support/private_display_posix.h"

namespace {

using test::HostWindow;
using test::kBackground;
using test::kGreen;

bool becomesTrue(const std::function<bool()>& condition) {
    for (int i = 0; i < 500; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

class PictureBoxWithoutDisplay : public test::HeadlessBox {};

TEST_F(PictureBoxWithoutDisplay, SaysSoOnceAndWorksOn) {
    TPictureBox box;
    int window = 0;
    box.setHandle(&window, 100, 50);
    box.setHandle(&window);
    EXPECT_EQ(trace.countStartingWith("图片框无法显示:"), 1);
    EXPECT_EQ(box.getParentHand(), &window);
    EXPECT_EQ(box.cvWindow, nullptr);
    box.setCursor(CURSOR_HAND);
    cv::Mat image = colour(100, 50, {1, 2, 3});
    box.setImage(image, false);
    box.showImage();
    EXPECT_EQ(cv::norm(box.display, image, cv::NORM_INF), 0.0);
}

class PictureBoxWindow : public test::HeadlessBox {
  protected:
    void SetUp() override {
        HeadlessBox::SetUp();
        display = std::make_unique<test::PrivateDisplay>();
        if (!display->isRunning()) GTEST_SKIP() << "Xvfb can't be started: is the package xvfb installed?";
    }
    void TearDown() override {
        display.reset();
        // No zoom for the next.
        TPictureBox box;
        cv::Mat image = grey(2, 2, 0);
        box.setImage(image, false);
        box.showImageLast();
    }

    // All over the host's window of 400 x 300.
    static void showIn(const HostWindow& host, TPictureBox& box, cv::Mat& image) {
        box.setHandle(host.handle(), 400, 300);
        box.setImage(image, false);
        box.showImage();
    }

    // An image of 400 x 200 with a colour in each corner.
    static cv::Mat corners() {
        cv::Mat image = colour(400, 200, {});
        image(cv::Rect(0, 0, 40, 40)).setTo(cv::Scalar(255, 0, 0));
        image(cv::Rect(360, 0, 40, 40)).setTo(cv::Scalar(0, 255, 0));
        image(cv::Rect(0, 160, 40, 40)).setTo(cv::Scalar(0, 0, 255));
        image(cv::Rect(360, 160, 40, 40)).setTo(cv::Scalar(255, 255, 255));
        return image;
    }

    std::unique_ptr<test::PrivateDisplay> display;
};

TEST_F(PictureBoxWindow, TheImageIsSeenWhereTheFitPutsIt) {
    HostWindow host({100, 50, 400, 300});
    TPictureBox box;
    EXPECT_NE(box.cvWindow, nullptr);
    EXPECT_NE(box.cvFrame, nullptr);
    EXPECT_NE(box.cvWindow, box.cvFrame);
    box.setHandle(host.handle(), 300, 250);
    cv::Mat image = corners();
    box.setImage(image, false);
    box.showImage();
    // 300 x 150 at (0, 50).
    EXPECT_EQ(host.pixel(1, 49), kBackground);
    EXPECT_EQ(host.pixel(0, 50), cv::Vec3b(255, 0, 0));
    EXPECT_EQ(host.pixel(299, 50), cv::Vec3b(0, 255, 0));
    EXPECT_EQ(host.pixel(0, 199), cv::Vec3b(0, 0, 255));
    EXPECT_EQ(host.pixel(299, 199), cv::Vec3b(255, 255, 255));
    EXPECT_EQ(host.pixel(150, 200), kBackground);
    EXPECT_EQ(host.pixel(299, 249), kBackground);
    // Beside the box the host's own background.
    EXPECT_EQ(host.pixel(300, 100), cv::Vec3b(0x00, 0x55, 0xAA));
    EXPECT_EQ(host.pixel(100, 250), cv::Vec3b(0x00, 0x55, 0xAA));
}

TEST_F(PictureBoxWindow, EveryKindOfPixelIsSeen) {
    HostWindow host({0, 0, 200, 200});
    TPictureBox box;
    box.setHandle(host.handle());
    cv::Mat level = grey(120, 90, 33);
    box.setImage(level, false);
    box.showImage();  // without a size: as it is
    EXPECT_EQ(host.pixel(119, 89), cv::Vec3b(33, 33, 33));
    EXPECT_EQ(host.pixel(120, 89), cv::Vec3b(0x00, 0x55, 0xAA));
    cv::Mat deep(50, 60, CV_16UC1, cv::Scalar(200 * 256));
    box.setImage(deep, false);
    box.showImage();
    EXPECT_EQ(host.pixel(59, 49), cv::Vec3b(200, 200, 200));
    EXPECT_EQ(host.pixel(60, 49), cv::Vec3b(0x00, 0x55, 0xAA));
    cv::Mat alpha(50, 60, CV_16UC4, cv::Scalar(256, 512, 768, 0));
    box.setImage(alpha, false);
    box.showImageLast();
    EXPECT_EQ(host.pixel(30, 30), cv::Vec3b(1, 2, 3));
}

TEST_F(PictureBoxWindow, ALargePictureIsSentInPieces) {
    HostWindow host({0, 0, 1000, 700});
    TPictureBox box;
    box.setHandle(host.handle());
    // 64 MB of pixels, four times what a request carries; the row tells the colour.
    cv::Mat image(16000, 1000, CV_8UC3);
    for (int y = 0; y < image.rows; ++y) {
        const int high = y / 256;
        image.row(y).setTo(cv::Scalar(y % 256, high, 7));
    }
    box.setImage(image, false);
    box.showImage();
    EXPECT_EQ(host.pixel(999, 650), cv::Vec3b(650 % 256, 650 / 256, 7));
    // The window is moved up under its host, so that its end is seen.
    const auto window = static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(box.cvWindow.load()));
    const std::int32_t y = -15300;
    xcb_configure_window(host.connection(), window, XCB_CONFIG_WINDOW_Y, &y);
    host.synchronise();
    EXPECT_TRUE(becomesTrue([&] { return host.pixel(500, 600) == cv::Vec3b(15900 % 256, 15900 / 256, 7); }));
}

TEST_F(PictureBoxWindow, WhatWasCoveredIsSeenAgain) {
    HostWindow host({0, 0, 300, 300});
    TPictureBox box;
    box.setHandle(host.handle(), 300, 300);
    cv::Mat image = colour(300, 300, {10, 20, 30});
    box.setImage(image, false);
    box.showImage();
    {
        HostWindow cover({50, 50, 100, 100});
        EXPECT_EQ(host.pixel(100, 100), cv::Vec3b(0x00, 0x55, 0xAA));
    }
    EXPECT_TRUE(becomesTrue([&] { return host.pixel(100, 100) == cv::Vec3b(10, 20, 30); }));
}

TEST_F(PictureBoxWindow, TwoBoxesInTwoHostsShowTheSameImage) {
    HostWindow left({0, 0, 300, 300});
    HostWindow right({400, 0, 300, 300});
    TPictureBox first;
    TPictureBox second;
    first.setHandle(left.handle(), 300, 300);
    second.setHandle(right.handle(), 200, 100);
    first.setShowFrame(200);
    second.setShowFrame(200);
    first.start();
    second.start();
    cv::Mat image = corners();
    first.setImage(image, false);
    second.setImage(image, false);
    EXPECT_TRUE(becomesTrue([&] { return left.pixel(299, 75) == cv::Vec3b(0, 255, 0); }));
    EXPECT_TRUE(becomesTrue([&] { return right.pixel(199, 99) == cv::Vec3b(255, 255, 255); }));
    // Into the other's host, and back into none.
    first.setHandle(right.handle());
    EXPECT_TRUE(left.children().empty());
    EXPECT_EQ(right.children().size(), 2U);
    first.setHandle(nullptr);
    EXPECT_EQ(right.children().size(), 1U);
}

TEST_F(PictureBoxWindow, ABoxThatEndsClosesTheWindowsOfAll) {
    HostWindow host({0, 0, 300, 300});
    TPictureBox second;
    {
        TPictureBox first;
        first.setHandle(host.handle(), 100, 100);
        second.setHandle(host.handle(), 100, 100);
        EXPECT_EQ(host.children().size(), 2U);
    }
    EXPECT_TRUE(host.children().empty());
    // The other one works on, and comes back.
    cv::Mat image = colour(100, 100, {1, 2, 3});
    second.setImage(image, false);
    second.showImage();
    EXPECT_EQ(second.cvWindow, nullptr);
    second.setHandle(host.handle());
    second.showImage();
    EXPECT_EQ(host.pixel(50, 50), cv::Vec3b(1, 2, 3));
}

TEST_F(PictureBoxWindow, ABoxWithItsOwnPictureClosesItsOwnWindowAlone) {
    HostWindow host({0, 0, 300, 300});
    TPictureBox shared;
    shared.setHandle(host.handle(), 100, 100);
    {
        TPictureBox own(TPictureOf::kBox);
        own.setHandle(host.handle(), 50, 50);
        EXPECT_EQ(host.children().size(), 2U);
    }
    EXPECT_EQ(host.children().size(), 1U);
    cv::Mat image = colour(100, 100, {1, 2, 3});
    shared.setImage(image, false);
    shared.showImage();
    EXPECT_EQ(host.pixel(50, 50), cv::Vec3b(1, 2, 3));
}

TEST_F(PictureBoxWindow, TheMouseZoomsPansAndResets) {
    HostWindow host({200, 100, 400, 300});
    TPictureBox box;
    cv::Mat image = corners();
    showIn(host, box, image);
    host.moveMouse(200, 150);
    host.click(4);
    host.click(4);
    const double zoom = 1.25 * 1.25;
    EXPECT_TRUE(becomesTrue([&] { return box.orig2ShowPoint({0, 0}).x < -100.0; }));
    EXPECT_NEAR(box.orig2ShowPoint({0, 0}).x, 200.0 - 200.0 * zoom, 1e-9);
    host.press(1);
    host.moveMouse(230, 160);
    host.moveMouse(250, 170);
    host.release(1);
    EXPECT_TRUE(becomesTrue([&] {
        return std::abs(box.orig2ShowPoint({0, 0}).x - (250.0 - 200.0 * zoom)) < 1e-9;
    }));
    std::this_thread::sleep_for(std::chrono::milliseconds(600));  // no double click of the next two
    host.click(1);
    host.click(1);
    EXPECT_TRUE(becomesTrue([&] { return box.orig2ShowPoint({0, 0}) == cv::Point2d(0, 50); }));
    EXPECT_TRUE(becomesTrue([&] { return host.pixel(0, 50) == cv::Vec3b(255, 0, 0); }));
    host.click(5);  // can't be smaller
    EXPECT_EQ(box.orig2ShowPoint({0, 0}), cv::Point2d(0, 50));
}

TEST_F(PictureBoxWindow, TheMouseDrawsARectangleBeyondTheWindow) {
    HostWindow host({200, 100, 400, 300});
    TPictureBox box;
    box.setHandle(host.handle(), 400, 300);
    box.setFunction(FUNC_EDIT_RECT);
    box.selectRect = true;
    cv::Mat image = corners();
    box.setImage(image, false);
    box.showImage();
    host.moveMouse(100, 100);
    host.press(1);
    host.moveMouse(200, 150);
    EXPECT_TRUE(becomesTrue([&] { return host.pixel(150, 100) == kGreen; }));
    host.moveMouse(500, 350);  // outside: the drag goes on
    host.release(1);
    cv::Rect2d rect;
    EXPECT_TRUE(becomesTrue([&] { return TPictureBox::getSelectionRect(rect); }));
    EXPECT_EQ(rect, cv::Rect2d(100, 50, 300, 150));
    EXPECT_TRUE(becomesTrue([&] { return host.pixel(100, 200) == kGreen; }));
}

TEST_F(PictureBoxWindow, TheMouseIsTheHostsWhereTheBoxLeavesItToIt) {
    HostWindow host({200, 100, 400, 300});
    TPictureBox box;
    cv::Mat image = corners();
    showIn(host, box, image);
    host.moveMouse(200, 150);
    host.click(4);
    EXPECT_TRUE(becomesTrue([&] { return box.orig2ShowPoint({0, 0}).x < 0.0; }));
    EXPECT_EQ(host.received(XCB_BUTTON_PRESS), 0);
    const cv::Point2d zoomed = box.orig2ShowPoint({0, 0});
    box.setFunction(FUNC_NONE);
    EXPECT_TRUE(becomesTrue([&] {
        host.click(1);
        return host.received(XCB_BUTTON_PRESS) > 0;
    }));
    host.click(4);
    EXPECT_EQ(host.received(XCB_BUTTON_RELEASE), 1);
    EXPECT_EQ(box.orig2ShowPoint({0, 0}), zoomed);
    // In a new window, too; and back.
    box.setFunction(FUNC_NONE);
    HostWindow other({650, 100, 200, 200});
    host.destroy();
    EXPECT_TRUE(becomesTrue([&] { return box.cvWindow == nullptr || (box.showImage(), false); }));
    box.setHandle(other.handle(), 200, 200);
    box.showImage();
    other.moveMouse(100, 100);
    other.click(1);
    EXPECT_EQ(other.received(XCB_BUTTON_PRESS), 1);
    box.setFunction(FUNC_ZOOM_PAN);
    EXPECT_TRUE(becomesTrue([&] {
        other.click(1);
        return other.received(XCB_BUTTON_PRESS) == 0;
    }));
}

TEST_F(PictureBoxWindow, ClicksAreToldAndMayChangeTheMode) {
    HostWindow host({200, 100, 400, 300});
    std::mutex mutex;
    std::vector<TPictureClick> clicks;
    TPictureBox box(TPictureOf::kBox);
    cv::Mat image = corners();
    showIn(host, box, image);
    box.onClick([&](const TPictureClick& click) {
        const std::lock_guard<std::mutex> lock(mutex);
        clicks.push_back(click);
        box.setFunction(FUNC_NONE);  // on the window's own thread
    });
    host.moveMouse(20, 60);
    host.click(3);
    EXPECT_TRUE(becomesTrue([&] { return box.function == FUNC_NONE; }));
    EXPECT_TRUE(becomesTrue([&] {
        host.click(3);
        return host.received(XCB_BUTTON_RELEASE) > 0;
    }));
    const std::lock_guard<std::mutex> lock(mutex);
    ASSERT_EQ(clicks.size(), 1U);
    EXPECT_EQ(clicks[0].button, cv::EVENT_FLAG_RBUTTON);
    // The fit puts the image 50 rows down, at its own scale.
    EXPECT_EQ(clicks[0].place.pixel, cv::Point(20, 10));
    EXPECT_EQ(clicks[0].place.value, cv::Scalar(255, 0, 0));
}

TEST_F(PictureBoxWindow, EachOfThreeButtonsClicksAndNothingElseDoes) {
    HostWindow host({200, 100, 400, 300});
    std::mutex mutex;
    std::vector<std::pair<int, bool>> clicks;
    TPictureBox box(TPictureOf::kBox);
    cv::Mat image = corners();
    showIn(host, box, image);
    box.onClick([&](const TPictureClick& click) {
        const std::lock_guard<std::mutex> lock(mutex);
        clicks.emplace_back(click.button, click.isDouble);
    });
    host.moveMouse(20, 60);
    for (const int button : {1, 2, 3}) {
        host.click(button);
        host.click(button);
    }
    for (const int other : {6, 7, 8, 9}) host.click(other);  // the wheel to the sides, and buttons beside
    host.press(2);
    host.moveMouse(90, 120);
    host.release(2);
    const cv::Point2d corner = box.orig2ShowPoint({0, 0});
    host.click(2);
    const std::vector<std::pair<int, bool>> expected{
        {cv::EVENT_FLAG_LBUTTON, false}, {cv::EVENT_FLAG_LBUTTON, true},  {cv::EVENT_FLAG_MBUTTON, false},
        {cv::EVENT_FLAG_MBUTTON, true},  {cv::EVENT_FLAG_RBUTTON, false}, {cv::EVENT_FLAG_RBUTTON, true},
        {cv::EVENT_FLAG_MBUTTON, false}};
    EXPECT_TRUE(becomesTrue([&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return clicks == expected;
    }));
    EXPECT_EQ(box.orig2ShowPoint({0, 0}), corner);
    EXPECT_EQ(corner, cv::Point2d(0, 50)) << "the wheel to the side does not zoom";
}

TEST_F(PictureBoxWindow, CursorsHaveTheirShapes) {
    HostWindow host({0, 0, 200, 200});
    HostWindow reference({300, 0, 100, 100});
    TPictureBox box;
    box.setHandle(host.handle(), 100, 100);
    cv::Mat image = grey(100, 100, 1);
    box.setImage(image, false);
    box.showImage();
    const std::pair<int, std::uint16_t> shapes[] = {
        {-1, 68}, {CURSOR_ARROW, 68}, {CURSOR_HAND, 60}, {CURSOR_SIZEALL, 52}, {CURSOR_APPSTARTING, 150},
        {99, 68}};
    std::vector<std::uint32_t> before;
    std::uint16_t beforeGlyph = 0;
    for (const auto& [shape, glyph] : shapes) {
        SCOPED_TRACE(shape);
        if (shape >= 0) box.setCursor(static_cast<TCursorShape>(shape));  // else the first one
        reference.setCursor(glyph);
        reference.moveMouse(50, 50);
        const auto expected = reference.cursorPixels();
        ASSERT_FALSE(expected.empty());
        host.moveMouse(50, 50);
        EXPECT_TRUE(becomesTrue([&] { return host.cursorPixels() == expected; }));
        EXPECT_EQ(expected == before, glyph == beforeGlyph);
        before = expected;
        beforeGlyph = glyph;
    }
}

TEST_F(PictureBoxWindow, AHostThatGoesFirstTakesTheWindowAndAnotherBringsItBack) {
    auto host = std::make_unique<HostWindow>(cv::Rect(0, 0, 200, 200));
    TPictureBox box;
    box.setHandle(host->handle(), 200, 200);
    box.setShowFrame(200);
    box.start();
    cv::Mat image = colour(200, 200, {7, 8, 9});
    box.setImage(image, false);
    EXPECT_TRUE(becomesTrue([&] { return host->pixel(100, 100) == cv::Vec3b(7, 8, 9); }));
    // With the button down: the drag ends, too.
    host->moveMouse(50, 50);
    host->press(1);
    host->synchronise();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    host->destroy();
    EXPECT_TRUE(becomesTrue([&] {
        box.setImage(image, false);
        return box.cvWindow == nullptr;
    }));
    EXPECT_EQ(trace.countStartingWith("图片框无法显示:"), 1);
    host.reset();
    // A window that does not exist is refused; then a living one.
    box.setHandle(reinterpret_cast<void*>(std::uintptr_t{0x7654321}));
    HostWindow other({300, 0, 200, 200});
    other.release(1);
    box.setHandle(other.handle());
    EXPECT_NE(box.cvWindow, nullptr);
    EXPECT_TRUE(becomesTrue([&] { return other.pixel(100, 100) == cv::Vec3b(7, 8, 9); }));
}

TEST_F(PictureBoxWindow, AServerThatIsKilledLeavesTheBoxWorking) {
    TPictureBox box;
    TPictureBox other;
    HostWindow host({0, 0, 200, 200});
    box.setHandle(host.handle(), 200, 200);
    box.setShowFrame(1000);
    box.calShowFrame();
    box.start();
    std::thread feeder([&] {
        cv::Mat image = grey(300, 200, 5);
        for (int i = 0; i < 300; ++i) {
            box.setImage(image, false);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    display->kill();
    feeder.join();
    box.showImage();
    EXPECT_EQ(box.cvWindow, nullptr);
    // 200 x 133 at (0, 33).
    EXPECT_EQ(box.orig2ShowPoint({150, 100}), cv::Point2d(100, 99.5));
    box.setCursor(CURSOR_HAND);
    box.setHandle(nullptr);
    EXPECT_GE(trace.countStartingWith("图片框无法显示:"), 1);
    // A new server, and all is well again.
    display.reset();
    display = std::make_unique<test::PrivateDisplay>();
    ASSERT_TRUE(display->isRunning());
    HostWindow next({0, 0, 200, 200});
    box.setHandle(next.handle());
    EXPECT_NE(box.cvWindow, nullptr);
    EXPECT_TRUE(becomesTrue([&] { return next.pixel(100, 100) == cv::Vec3b(5, 5, 5); }));
}

auto entriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

TEST_F(PictureBoxWindow, TwoHundredBoxesLeaveNothingBehind) {
    HostWindow host({0, 0, 200, 200});
    cv::Mat image = grey(300, 200, 5);
    const auto cycle = [&] {
        TPictureBox box;
        box.setHandle(host.handle(), 200, 200);
        box.start();
        box.setImage(image, false);
        box.showImage();
    };
    cycle();
    const auto files = entriesOf("/proc/self/fd");
    const auto threads = entriesOf("/proc/self/task");
    for (int i = 0; i < 200; ++i) cycle();
    EXPECT_EQ(entriesOf("/proc/self/fd"), files);
    EXPECT_EQ(entriesOf("/proc/self/task"), threads);
    EXPECT_TRUE(host.children().empty());
}

}  // namespace
