// Picture boxes in windows of a host, seen through the window system: pixels, focus, messages.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <opencv2/highgui.hpp>
#include <thread>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/windows/host_window.h"

namespace {

using test::eventually;
using test::HostWindow;
using test::pixelOf;

constexpr unsigned kRed = 0xFF0000;
constexpr unsigned kGreen = 0x00FF00;
constexpr unsigned kBlue = 0x0000FF;
constexpr unsigned kWhite = 0xFFFFFF;
constexpr unsigned kGrey = 0x808080;

// Red, green / blue, white in equal quarters.
cv::Mat quarters(int width, int height) {
    cv::Mat image(height, width, CV_8UC3);
    const cv::Size half(width / 2, height / 2);
    image(cv::Rect({0, 0}, half)) = cv::Scalar(0, 0, 255);
    image(cv::Rect({half.width, 0}, half)) = cv::Scalar(0, 255, 0);
    image(cv::Rect({0, half.height}, half)) = cv::Scalar(255, 0, 0);
    image(cv::Rect({half.width, half.height}, half)) = cv::Scalar(255, 255, 255);
    return image;
}

// A box made, used and destroyed on its host's thread, as a host's window does.
class HostedBox {
  public:
    HostedBox(int width, int height) : host_(width, height) {
        host_.run([this, width, height] {
            box_ = std::make_unique<TPictureBox>();
            box_->setHandle(host_.handle(), width, height);
            box_->setShowFrame(100);
            box_->start();
        });
    }
    ~HostedBox() { destroy(); }

    TPictureBox& operator*() { return *box_; }
    TPictureBox* operator->() { return box_.get(); }
    HostWindow& host() { return host_; }
    HWND window() const { return static_cast<HWND>(box_->cvWindow.load()); }

    void destroy() {
        host_.run([this] { box_.reset(); });
    }
    bool shows(unsigned colour, int x, int y) const {
        return eventually([&] { return pixelOf(window(), x, y) == colour; });
    }
    void send(UINT message, WPARAM wParam, int x, int y) const {
        SendMessageW(window(), message, wParam, MAKELPARAM(x, y));
    }

  private:
    HostWindow host_;
    std::unique_ptr<TPictureBox> box_;
};

class PictureBoxInAHost : public testing::Test {
  protected:
    void SetUp() override {
        const HostWindow host(50, 50);
        if (host.handle() == nullptr) GTEST_SKIP() << "no window can be opened here: no display";
    }
};

// 200 x 100 in 400 x 300: shown 400 x 200, 50 pixels down.
TEST_F(PictureBoxInAHost, ShowsTheImageWhereTheFitPutsIt) {
    HostedBox box(400, 300);
    EXPECT_EQ(GetParent(box.window()), box.host().handle());
    EXPECT_FALSE(IsWindowVisible(static_cast<HWND>(box->cvFrame.load())));
    EXPECT_TRUE(IsWindowVisible(box.window()));

    cv::Mat image = quarters(200, 100);
    box->setImage(image, false);
    EXPECT_TRUE(box.shows(kRed, 2, 52));
    EXPECT_TRUE(box.shows(kGreen, 397, 52));
    EXPECT_TRUE(box.shows(kBlue, 2, 247));
    EXPECT_TRUE(box.shows(kWhite, 397, 247));
    EXPECT_TRUE(box.shows(kGrey, 200, 47));
    EXPECT_TRUE(box.shows(kGrey, 200, 252));
    // Seen in the host's window, at its top left corner.
    POINT corner = {0, 0};
    MapWindowPoints(box.window(), box.host().handle(), &corner, 1);
    EXPECT_EQ(corner.x, 0);
    EXPECT_EQ(corner.y, 0);
}

// highgui alone would wait for ever here: the display thread changes the size of a window of the host's
// thread.
TEST_F(PictureBoxInAHost, EveryChangeOfSizeIsShownByTheDisplayThread) {
    HostedBox box(400, 300);
    cv::Mat image = quarters(160, 120);
    for (int i = 0; i < 20; ++i) {
        const int width = 200 + 10 * i;
        const int height = width * 3 / 4;
        box->setWindowSize(width, height);
        box->setImage(image, false);
        ASSERT_TRUE(box.shows(kWhite, width - 3, height - 3)) << width;
        RECT rect = {};
        GetClientRect(box.window(), &rect);
        EXPECT_EQ(rect.right, width);
        EXPECT_EQ(rect.bottom, height);
    }
}

TEST_F(PictureBoxInAHost, TheWheelZoomsAboutTheCursorAndADoubleClickResets) {
    HostedBox box(400, 300);
    cv::Mat image = quarters(400, 300);
    box->setImage(image, false);
    ASSERT_TRUE(box.shows(kRed, 190, 140));

    // Wheel messages carry places on the screen. Away from the user, over a corner: the red quarter grows.
    const auto turn = [&](int notches) {
        POINT at = {0, 0};
        ClientToScreen(box.window(), &at);
        SendMessageW(box.window(), WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(notches * WHEEL_DELTA)),
                     MAKELPARAM(at.x, at.y));
    };
    turn(1);
    EXPECT_TRUE(box.shows(kRed, 240, 180));  // 1.25 times 200 is 250
    EXPECT_TRUE(box.shows(kGreen, 255, 180));
    turn(-1);
    EXPECT_TRUE(box.shows(kWhite, 240, 180));
    turn(3);
    EXPECT_TRUE(box.shows(kRed, 380, 280));  // 1.25^3 is 1.95
    box.send(WM_LBUTTONDOWN, MK_LBUTTON, 100, 100);
    box.send(WM_LBUTTONUP, 0, 100, 100);
    box.send(WM_LBUTTONDBLCLK, MK_LBUTTON, 100, 100);
    box.send(WM_LBUTTONUP, 0, 100, 100);
    EXPECT_TRUE(box.shows(kWhite, 240, 180));
}

TEST_F(PictureBoxInAHost, APressTakesTheFocusAndTheMouseUntilTheRelease) {
    HostedBox box(400, 300);
    const auto onTheThread = [&](HWND(WINAPI * which)()) {
        HWND result = nullptr;
        box.host().run([&] { result = which(); });
        return result;
    };
    box.host().run([&] { SetForegroundWindow(box.host().handle()); });
    box.send(WM_LBUTTONDOWN, MK_LBUTTON, 10, 10);
    EXPECT_EQ(onTheThread(&GetFocus), box.window());
    EXPECT_EQ(onTheThread(&GetCapture), box.window());
    box.send(WM_RBUTTONDOWN, MK_LBUTTON | MK_RBUTTON, 10, 10);
    box.send(WM_LBUTTONUP, MK_RBUTTON, 10, 10);
    EXPECT_EQ(onTheThread(&GetCapture), box.window());  // a button is still down
    box.send(WM_RBUTTONUP, 0, 10, 10);
    EXPECT_EQ(onTheThread(&GetCapture), nullptr);
}

TEST_F(PictureBoxInAHost, DraggingSelectsARectangleOfTheImage) {
    HostedBox box(400, 300);
    box->setFunction(FUNC_EDIT_RECT);
    box->selectRect = true;
    cv::Mat image(150, 200, CV_8UC3, cv::Scalar(0, 0, 0));  // shown twice as large
    box->setImage(image, false);
    ASSERT_TRUE(box.shows(0, 200, 150));
    box.send(WM_LBUTTONDOWN, MK_LBUTTON, 40, 60);
    box.send(WM_MOUSEMOVE, MK_LBUTTON, 100, 100);
    box.send(WM_MOUSEMOVE, MK_LBUTTON, 240, 160);
    box.send(WM_LBUTTONUP, 0, 240, 160);
    EXPECT_TRUE(box.shows(kGreen, 140, 60));   // its upper side
    EXPECT_TRUE(box.shows(kGreen, 239, 110));  // its right side
    cv::Rect2d selected;
    ASSERT_TRUE(TPictureBox::getSelectionRect(selected));
    EXPECT_NEAR(selected.x, 20, 0.51);
    EXPECT_NEAR(selected.y, 30, 0.51);
    EXPECT_NEAR(selected.width, 100, 0.51);
    EXPECT_NEAR(selected.height, 50, 0.51);
    TPictureBox::setSelectionRect({});
}

// A handler of the host's own, through highgui: the box leaves the mouse to it.
TEST_F(PictureBoxInAHost, WithoutAFunctionTheMouseIsTheHosts) {
    HostedBox box(400, 300);
    std::vector<int> events;
    box.host().run([&] {
        cv::setMouseCallback(
            box->getCvWinName(),
            [](int event, int x, int y, int, void* list) {
                static_cast<std::vector<int>*>(list)->insert(static_cast<std::vector<int>*>(list)->end(),
                                                             {event, x, y});
            },
            &events);
    });
    box.send(WM_LBUTTONDOWN, MK_LBUTTON, 7, 9);
    EXPECT_TRUE(events.empty());
    box.send(WM_LBUTTONUP, 0, 7, 9);
    box->setFunction(FUNC_NONE);
    box.send(WM_RBUTTONDOWN, MK_RBUTTON, 7, 9);
    EXPECT_EQ(events, (std::vector<int>{cv::EVENT_RBUTTONDOWN, 7, 9}));
    box.send(WM_RBUTTONUP, 0, 7, 9);
}

TEST_F(PictureBoxInAHost, CursorsAreThoseOfTheSystem) {
    HostedBox box(400, 300);
    const auto cursor = [&] {
        return reinterpret_cast<HCURSOR>(GetClassLongPtrW(box.window(), GCLP_HCURSOR));
    };
    const auto system = [](int number) { return LoadCursorW(nullptr, MAKEINTRESOURCEW(number)); };
    EXPECT_EQ(cursor(), system(32512));
    box->setCursor(CURSOR_HAND);
    EXPECT_EQ(cursor(), system(32649));
    box->setCursor(CURSOR_SIZEALL);
    EXPECT_EQ(cursor(), system(32646));
    box->setCursor(CURSOR_APPSTARTING);
    EXPECT_EQ(cursor(), system(32650));
    box->setCursor(static_cast<TCursorShape>(77));
    EXPECT_EQ(cursor(), system(32512));
}

// Fed by two threads; the image is shared, the sizes are not.
TEST_F(PictureBoxInAHost, TwoBoxesInTwoHostsShowTheSharedImage) {
    HostedBox left(400, 300);
    HostedBox right(200, 150);
    std::atomic<bool> stop{false};
    cv::Mat image = quarters(200, 150);
    const auto feed = [&](TPictureBox& box) {
        while (!stop) {
            cv::Mat mine = image;
            box.setImage(mine, false);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    };
    std::thread first(feed, std::ref(*left));
    std::thread second(feed, std::ref(*right));
    const bool leftShows = left.shows(kWhite, 397, 297) && left.shows(kRed, 2, 2);
    const bool rightShows = right.shows(kWhite, 197, 147) && right.shows(kRed, 2, 2);
    stop = true;
    first.join();
    second.join();
    EXPECT_TRUE(leftShows);
    EXPECT_TRUE(rightShows);
}

TEST_F(PictureBoxInAHost, DestroyingABoxClosesTheWindowsOfTheOthers) {
    HostedBox kept(400, 300);
    HostedBox gone(200, 150);
    const HWND window = kept.window();
    ASSERT_TRUE(IsWindow(window));
    gone.destroy();
    EXPECT_TRUE(eventually([&] { return !IsWindow(window); }));
    // It goes on without one, and comes back in a living window.
    cv::Mat image = quarters(400, 300);
    kept->setImage(image, false);
    kept.host().run([&] { kept->setHandle(kept.host().handle()); });
    EXPECT_TRUE(kept.shows(kWhite, 397, 297));
}

// Boxes are numbered by how many there are, so that a number may be given twice.
TEST_F(PictureBoxInAHost, ABoxWithTheNameOfAnotherShowsNothingAndHarmsNobody) {
    HostedBox first(100, 80);
    HostedBox kept(200, 150);
    first.destroy();
    HostedBox namesake(400, 300);
    ASSERT_EQ(namesake->getCvWinName(), kept->getCvWinName());
    kept.host().run([&] { kept->setHandle(kept.host().handle()); });
    EXPECT_EQ(kept.window(), nullptr);
    cv::Mat image = quarters(400, 300);
    namesake->setImage(image, false);
    EXPECT_TRUE(namesake.shows(kWhite, 397, 297));
    kept.destroy();
    EXPECT_TRUE(eventually([&] { return !IsWindow(namesake.window()); }));  // as that of any other
}

// Calls both at once, each on the thread of its host.
template <typename First, typename Second>
void runAtOnce(const HostWindow& firstHost, const First& first, const HostWindow& secondHost,
               const Second& second) {
    std::atomic<int> arrived{0};
    const auto meet = [&arrived] {
        ++arrived;
        while (arrived < 2) std::this_thread::yield();
    };
    std::thread other([&] {
        secondHost.run([&] {
            meet();
            second();
        });
    });
    firstHost.run([&] {
        meet();
        first();
    });
    other.join();
}

TEST_F(PictureBoxInAHost, TwoThreadsMayReopenABoxAtOnce) {
    HostedBox box(400, 300);
    const HostWindow another(400, 300);
    cv::Mat image = quarters(400, 300);
    box->setImage(image, false);
    for (int i = 0; i < 20; ++i) {
        const HWND window = box.window();
        HostedBox(100, 80).destroy();  // closes all
        ASSERT_TRUE(eventually([&] { return !IsWindow(window); }));
        runAtOnce(
            box.host(), [&] { box->setHandle(box.host().handle()); }, another,
            [&] { box->setHandle(another.handle()); });
    }
    box.host().run([&] { box->setHandle(box.host().handle()); });
    EXPECT_TRUE(box.shows(kWhite, 397, 297));
}

// The thread of the second host can't close its other box while it destroys the first one.
TEST_F(PictureBoxInAHost, TwoThreadsMayDestroyBoxesAtOnce) {
    using Clock = std::chrono::steady_clock;
    Clock::duration longest{0};
    for (int i = 0; i < 10; ++i) {
        HostedBox left(100, 80);
        HostedBox right(100, 80);
        std::unique_ptr<TPictureBox> otherRight;
        right.host().run([&] { otherRight = std::make_unique<TPictureBox>(); });
        const auto start = Clock::now();
        runAtOnce(
            left.host(), [&] { left.destroy(); }, right.host(), [&] { right.destroy(); });
        longest = std::max(longest, Clock::now() - start);
        right.host().run([&] { otherRight.reset(); });
    }
    EXPECT_LT(longest, std::chrono::milliseconds(2500));  // a window that does not answer is given 3 s
}

TEST_F(PictureBoxInAHost, AHostThatGoesFirstLeavesABoxThatShowsNothing) {
    HostedBox box(400, 300);
    cv::Mat image = quarters(400, 300);
    box->setImage(image, false);
    ASSERT_TRUE(box.shows(kRed, 2, 2));
    const HWND window = box.window();
    box.host().destroy();
    EXPECT_FALSE(IsWindow(window));
    box->setImage(image, false);
    EXPECT_TRUE(eventually([&] { return box->cvWindow == nullptr; }));
    EXPECT_EQ(box->orig2ShowPoint({200, 150}), cv::Point2d(200, 150));
    HostWindow another(400, 300);
    another.run([&] { box->setHandle(another.handle()); });
    EXPECT_TRUE(box.shows(kRed, 2, 2));
}

TEST_F(PictureBoxInAHost, ManyBoxesLeaveNoHandlesBehind) {
    const auto handles = [] {
        DWORD count = 0;
        GetProcessHandleCount(GetCurrentProcess(), &count);
        return count;
    };
    const auto cycle = [] {
        HostedBox box(100, 80);
        cv::Mat image = quarters(50, 40);
        box->setImage(image, false);
    };
    for (int i = 0; i < 5; ++i) cycle();
    const DWORD before = handles();
    for (int i = 0; i < 200; ++i) cycle();
    EXPECT_LE(handles(), before + 5);
    EXPECT_EQ(TPictureBox::mCount, 0);
}

}  // namespace
