// What a widget of any toolkit is held to, in a real program of that toolkit on a display of the test's own.
#ifndef ORX_TESTS_DISPLAY_TOOLKIT_HOST_H
#define ORX_TESTS_DISPLAY_TOOLKIT_HOST_H

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <opencv2/highgui.hpp>
#include <thread>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/display/host_window_posix.h"

namespace test {

// Where the tests put the widget on the screen.
const cv::Rect kWidgetPlace(100, 80, 400, 300);

// Lets the toolkit work until that is true, up to ten seconds.
inline bool becomesTrue(const std::function<void()>& work, const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < end) {
        work();
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

// `Widget` is an adaptor, shown at kWidgetPlace; `work` handles what waits in the toolkit.
template <class Widget>
void expectAPictureThatTellsOfTheMouse(Widget& widget, const std::function<void()>& work) {
    HostWindow screen({0, 0, 1, 1});  // its coordinates are the screen's
    const auto at = [](int x, int y) { return cv::Point(kWidgetPlace.x + x, kWidgetPlace.y + y); };
    const auto seen = [&](cv::Point p) { return screen.pixel(p.x, p.y); };

    // 400 x 200 of it is seen, from row 50 on.
    const cv::Mat image(400, 800, CV_8UC3, cv::Scalar(10, 20, 30));
    TOverlay overlay;
    overlay.setStyle({{0, 0, 255}, 1, 1.0}).disc({600, 200}, 40.0);
    ASSERT_TRUE(widget.box().setPicture(image, overlay));
    EXPECT_TRUE(becomesTrue(work, [&] { return seen(at(300, 150)) == cv::Vec3b(0, 0, 255); }));
    EXPECT_EQ(seen(at(5, 55)), cv::Vec3b(10, 20, 30));
    EXPECT_EQ(seen(at(5, 45)), cv::Vec3b(128, 128, 128));
    EXPECT_EQ(widget.box().windowWidth, kWidgetPlace.width);
    EXPECT_EQ(widget.box().windowHeight, kWidgetPlace.height);

    const std::thread::id here = std::this_thread::get_id();
    std::vector<TPicturePlace> places;
    std::vector<TPictureClick> clicks;
    std::vector<TSelectionChange> changes;
    bool isElsewhere = false;
    widget.onCursor([&](const TPicturePlace& place) {
        isElsewhere |= std::this_thread::get_id() != here;
        places.push_back(place);
    });
    widget.onClick([&](const TPictureClick& click) {
        isElsewhere |= std::this_thread::get_id() != here;
        clicks.push_back(click);
    });
    widget.onSelectionChanged([&](const TSelectionChange& change) {
        isElsewhere |= std::this_thread::get_id() != here;
        changes.push_back(change);
    });
    widget.box().setFunction(FUNC_EDIT_RECT);
    screen.moveMouse(at(100, 100).x, at(100, 100).y);
    screen.click(3);
    EXPECT_TRUE(becomesTrue(work, [&] { return !clicks.empty() && !places.empty(); }));
    ASSERT_FALSE(clicks.empty());
    EXPECT_EQ(clicks[0].button, cv::EVENT_FLAG_RBUTTON);
    EXPECT_EQ(clicks[0].place.value, cv::Scalar(10, 20, 30));
    EXPECT_NEAR(clicks[0].place.point.x, 200, 1.0);
    EXPECT_NEAR(clicks[0].place.point.y, 100, 1.0);
    screen.press(1);
    screen.moveMouse(at(200, 150).x, at(200, 150).y);
    screen.release(1);
    EXPECT_TRUE(becomesTrue(work, [&] { return !changes.empty() && !changes.back().isDragging; }));
    ASSERT_FALSE(changes.empty());
    EXPECT_EQ(changes.back().rect, cv::Rect2d(200, 100, 200, 100));
    EXPECT_FALSE(isElsewhere);
    widget.onCursor({});
    widget.onClick({});
    widget.onSelectionChanged({});
}

// What was told, but not handed on when the widget goes, must not reach the host after it.
template <class Widget>
void leaveSomethingUntold(Widget& widget, bool& wasTold) {
    widget.onCursor([&wasTold](const TPicturePlace&) { wasTold = true; });
    widget.box().mouseEvent(cv::EVENT_MOUSEMOVE, 100, 100, 0);
}

}  // namespace test

#endif
