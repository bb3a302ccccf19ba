// X pointer events as the mouse events of a picture window.
#ifndef ORXFUNCTIONS_PLATFORM_XCB_MOUSE_POSIX_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_XCB_MOUSE_POSIX_INTERNAL_H

#include <xcb/xcb.h>

#include <optional>

#include "orxFunctions/platform/window/native_window.h"

namespace orx::platform {

// Recognises double clicks, so it sees every press of its window. One thread at a time.
class XcbMouse {
  public:
    std::optional<MouseEvent> pressed(const xcb_button_press_event_t& event);
    std::optional<MouseEvent> released(const xcb_button_release_event_t& event);
    static MouseEvent moved(const xcb_motion_notify_event_t& event);

    // The window is gone: the release that nobody will report, if the left button is down.
    std::optional<MouseEvent> lost();

  private:
    struct Press {
        xcb_button_t button;
        xcb_timestamp_t time;
        int x;
        int y;
    };

    std::optional<Press> last_;  // which the next press may make a double click
    bool isLeftDown_ = false;
};

}  // namespace orx::platform

#endif
