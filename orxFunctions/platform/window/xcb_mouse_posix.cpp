#include "orxFunctions/platform/window/xcb_mouse_posix.h"

#include <cstdint>
#include <cstdlib>
#include <opencv2/highgui.hpp>

namespace orx::platform {
namespace {

// As on Windows.
constexpr xcb_timestamp_t kDoubleClickTime = 500;  // milliseconds
constexpr int kDoubleClickWay = 4;                 // pixels

constexpr int kWheelNotch = 120;

enum Button : int { kLeft = 1, kMiddle, kRight, kWheelUp, kWheelDown, kWheelLeft, kWheelRight };

int flagOf(int button) {
    switch (button) {
        case kLeft:
            return cv::EVENT_FLAG_LBUTTON;
        case kMiddle:
            return cv::EVENT_FLAG_MBUTTON;
        case kRight:
            return cv::EVENT_FLAG_RBUTTON;
        default:
            return 0;
    }
}

// X reports the state before the event.
int flagsOf(unsigned state) {
    int flags = 0;
    if ((state & XCB_BUTTON_MASK_1) != 0) flags |= cv::EVENT_FLAG_LBUTTON;
    if ((state & XCB_BUTTON_MASK_2) != 0) flags |= cv::EVENT_FLAG_MBUTTON;
    if ((state & XCB_BUTTON_MASK_3) != 0) flags |= cv::EVENT_FLAG_RBUTTON;
    if ((state & XCB_MOD_MASK_SHIFT) != 0) flags |= cv::EVENT_FLAG_SHIFTKEY;
    if ((state & XCB_MOD_MASK_CONTROL) != 0) flags |= cv::EVENT_FLAG_CTRLKEY;
    if ((state & XCB_MOD_MASK_1) != 0) flags |= cv::EVENT_FLAG_ALTKEY;
    return flags;
}

struct ButtonEvents {
    int down;
    int up;
    int doubleClick;
};

std::optional<ButtonEvents> eventsOf(int button) {
    switch (button) {
        case kLeft:
            return ButtonEvents{cv::EVENT_LBUTTONDOWN, cv::EVENT_LBUTTONUP, cv::EVENT_LBUTTONDBLCLK};
        case kMiddle:
            return ButtonEvents{cv::EVENT_MBUTTONDOWN, cv::EVENT_MBUTTONUP, cv::EVENT_MBUTTONDBLCLK};
        case kRight:
            return ButtonEvents{cv::EVENT_RBUTTONDOWN, cv::EVENT_RBUTTONUP, cv::EVENT_RBUTTONDBLCLK};
        default:
            return std::nullopt;
    }
}

// The turn lies in the upper half of the flags.
int withTurn(int flags, int turn) {
    const auto upper = static_cast<std::uint32_t>(static_cast<std::uint16_t>(turn)) << 16U;
    return static_cast<int>(static_cast<std::uint32_t>(flags) | upper);
}

std::optional<MouseEvent> wheelEvent(const xcb_button_press_event_t& event) {
    const int flags = flagsOf(event.state);
    switch (event.detail) {
        case kWheelUp:
        case kWheelDown: {
            const int turn = event.detail == kWheelUp ? kWheelNotch : -kWheelNotch;
            return MouseEvent{cv::EVENT_MOUSEWHEEL, event.event_x, event.event_y, withTurn(flags, turn)};
        }
        case kWheelLeft:
        case kWheelRight: {
            const int turn = event.detail == kWheelRight ? kWheelNotch : -kWheelNotch;
            return MouseEvent{cv::EVENT_MOUSEHWHEEL, event.event_x, event.event_y, withTurn(flags, turn)};
        }
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<MouseEvent> XcbMouse::pressed(const xcb_button_press_event_t& event) {
    const auto events = eventsOf(event.detail);
    if (!events) return wheelEvent(event);
    const Press now{event.detail, event.time, event.event_x, event.event_y};
    const bool isSecond =
        last_ && last_->button == now.button && now.time - last_->time <= kDoubleClickTime &&
        std::abs(now.x - last_->x) <= kDoubleClickWay && std::abs(now.y - last_->y) <= kDoubleClickWay;
    last_ = isSecond ? std::nullopt : std::optional<Press>(now);
    if (event.detail == kLeft) isLeftDown_ = true;
    return MouseEvent{isSecond ? events->doubleClick : events->down, now.x, now.y,
                      flagsOf(event.state) | flagOf(event.detail)};
}

std::optional<MouseEvent> XcbMouse::released(const xcb_button_release_event_t& event) {
    const auto events = eventsOf(event.detail);
    if (!events) return std::nullopt;
    if (event.detail == kLeft) isLeftDown_ = false;
    return MouseEvent{events->up, event.event_x, event.event_y, flagsOf(event.state) & ~flagOf(event.detail)};
}

MouseEvent XcbMouse::moved(const xcb_motion_notify_event_t& event) {
    return {cv::EVENT_MOUSEMOVE, event.event_x, event.event_y, flagsOf(event.state)};
}

std::optional<MouseEvent> XcbMouse::lost() {
    last_.reset();
    if (!isLeftDown_) return std::nullopt;
    isLeftDown_ = false;
    return MouseEvent{cv::EVENT_LBUTTONUP, 0, 0, 0};
}

}  // namespace orx::platform
