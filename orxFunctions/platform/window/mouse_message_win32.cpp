#include "orxFunctions/platform/window/mouse_message_win32.h"

#include <opencv2/highgui.hpp>

namespace orx::platform {
namespace {

constexpr int kAnyButton = cv::EVENT_FLAG_LBUTTON | cv::EVENT_FLAG_RBUTTON | cv::EVENT_FLAG_MBUTTON;

int eventOf(UINT message) {
    switch (message) {
        case WM_MOUSEMOVE:
            return cv::EVENT_MOUSEMOVE;
        case WM_LBUTTONDOWN:
            return cv::EVENT_LBUTTONDOWN;
        case WM_RBUTTONDOWN:
            return cv::EVENT_RBUTTONDOWN;
        case WM_MBUTTONDOWN:
            return cv::EVENT_MBUTTONDOWN;
        case WM_LBUTTONUP:
            return cv::EVENT_LBUTTONUP;
        case WM_RBUTTONUP:
            return cv::EVENT_RBUTTONUP;
        case WM_MBUTTONUP:
            return cv::EVENT_MBUTTONUP;
        case WM_LBUTTONDBLCLK:
            return cv::EVENT_LBUTTONDBLCLK;
        case WM_RBUTTONDBLCLK:
            return cv::EVENT_RBUTTONDBLCLK;
        case WM_MBUTTONDBLCLK:
            return cv::EVENT_MBUTTONDBLCLK;
        case WM_MOUSEWHEEL:
            return cv::EVENT_MOUSEWHEEL;
        case WM_MOUSEHWHEEL:
            return cv::EVENT_MOUSEHWHEEL;
        default:
            return -1;
    }
}

int flagsOf(WPARAM keys) {
    const auto when = [](bool set, int flag) { return set ? flag : 0; };
    return when((keys & MK_LBUTTON) != 0, cv::EVENT_FLAG_LBUTTON) |
           when((keys & MK_RBUTTON) != 0, cv::EVENT_FLAG_RBUTTON) |
           when((keys & MK_MBUTTON) != 0, cv::EVENT_FLAG_MBUTTON) |
           when((keys & MK_CONTROL) != 0, cv::EVENT_FLAG_CTRLKEY) |
           when((keys & MK_SHIFT) != 0, cv::EVENT_FLAG_SHIFTKEY) |
           when(GetKeyState(VK_MENU) < 0, cv::EVENT_FLAG_ALTKEY);
}

// Both halves are signed: beside a further screen, coordinates are negative.
int lowHalf(LPARAM value) { return static_cast<short>(LOWORD(value)); }
int highHalf(LPARAM value) { return static_cast<short>(HIWORD(value)); }

}  // namespace

bool toMouseEvent(HWND window, UINT message, WPARAM wParam, LPARAM lParam, MouseEvent& event) {
    event.event = eventOf(message);
    if (event.event < 0) return false;
    POINT at = {lowHalf(lParam), highHalf(lParam)};
    event.flags = flagsOf(LOWORD(wParam));
    if (message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL) {
        ScreenToClient(window, &at);
        event.flags |= static_cast<int>(static_cast<unsigned>(HIWORD(wParam)) << 16);
    }
    event.x = at.x;
    event.y = at.y;
    return true;
}

bool isPress(const MouseEvent& event) {
    switch (event.event) {
        case cv::EVENT_LBUTTONDOWN:
        case cv::EVENT_RBUTTONDOWN:
        case cv::EVENT_MBUTTONDOWN:
        case cv::EVENT_LBUTTONDBLCLK:
        case cv::EVENT_RBUTTONDBLCLK:
        case cv::EVENT_MBUTTONDBLCLK:
            return true;
        default:
            return false;
    }
}

bool isRelease(const MouseEvent& event) {
    return event.event == cv::EVENT_LBUTTONUP || event.event == cv::EVENT_RBUTTONUP ||
           event.event == cv::EVENT_MBUTTONUP;
}

bool hasButtonDown(const MouseEvent& event) { return (event.flags & kAnyButton) != 0; }

}  // namespace orx::platform
