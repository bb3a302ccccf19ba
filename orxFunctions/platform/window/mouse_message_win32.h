// Mouse messages of Windows as OpenCV's mouse events.
#ifndef ORXFUNCTIONS_PLATFORM_MOUSE_MESSAGE_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_MOUSE_MESSAGE_INTERNAL_H

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "orxFunctions/platform/window/native_window.h"

namespace orx::platform {

// False for messages that are not of the mouse.
bool toMouseEvent(HWND window, UINT message, WPARAM wParam, LPARAM lParam, MouseEvent& event);

bool isPress(const MouseEvent& event);
bool isRelease(const MouseEvent& event);
bool hasButtonDown(const MouseEvent& event);

}  // namespace orx::platform

#endif
