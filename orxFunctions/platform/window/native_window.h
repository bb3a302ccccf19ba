// The one place that knows a window system.
#ifndef ORXFUNCTIONS_PLATFORM_NATIVE_WINDOW_H
#define ORXFUNCTIONS_PLATFORM_NATIVE_WINDOW_H

#include <memory>
#include <opencv2/core.hpp>
#include <string>

#include "orxFunctions/foundation/enumerations.h"

namespace orx::platform {

// True when a window can be opened now. Every path to a window asks first: some toolkits end the process when
// no display can be opened. Thread-safe.
bool displayIsAvailable();

// A window of the window system: HWND on Windows, the number of the X window on POSIX. nullptr is none.
using NativeHandle = void*;

// What the mouse did in a window. The numbers are OpenCV's: `event` is one of cv::MouseEventTypes, `flags`
// holds cv::MouseEventFlags, where the flag of a button that was just released is clear; of a wheel event the
// upper half of `flags` is the turn, 120 a notch, positive away from the user. x and y are pixels of the
// window and may lie outside of it while a button is held.
struct MouseEvent {
    int event = 0;
    int x = 0;
    int y = 0;
    int flags = 0;
};

// Receives mouse events, one at a time, on a thread that the window system chooses.
class MouseListener {
  public:
    virtual void onMouse(const MouseEvent& event) = 0;

  protected:
    ~MouseListener() = default;
};

// A window that shows pictures and is made to be the child of somebody else's window: a drawing window inside
// a frame which is never seen. Thread-safe, but for the destructor.
//
// A window system that does not answer holds up nobody for more than three seconds, and then only who opens,
// moves, closes or destroys a window, or wants to see a picture. What it was asked for is done when it goes
// on.
//
// A window may be or become headless: there is no display, the display is lost, the host's window took this
// one with it when it was destroyed, or the window was closed. Everything then still works and shows nothing,
// the reason is traced once, and moving it into a living window brings it back.
class NativeWindow {
  public:
    NativeWindow() = default;
    virtual ~NativeWindow() = default;
    NativeWindow(const NativeWindow&) = delete;
    NativeWindow& operator=(const NativeWindow&) = delete;

    // The drawing window, and the frame that was its first parent; nullptr when headless.
    virtual NativeHandle handle() const = 0;
    virtual NativeHandle frame() const = 0;

    // Makes the drawing window the child of another one, at its top left corner, and shows it; one that is
    // its child already stays as it is. False when that can't be, or the window system does not answer.
    virtual bool moveInto(NativeHandle newParent) = 0;

    // Shows a picture of 8-bit pixels with 1, 3 or 4 channels (grey, BGR, BGRA without its alpha); the
    // drawing window takes the picture's size. The pixels are not needed after the call, which does not wait
    // for the window system: of pictures that come faster than it takes them the last is seen.
    virtual void show(const cv::Mat& picture) = 0;
    // Returns when the last picture is seen, or when the window system does not answer; on Windows at once.
    virtual void waitUntilShown() = 0;

    virtual void setCursor(TCursorShape shape) = 0;

    // Who receives the mouse events; with nullptr they are the parent window's (on Windows highgui's). When
    // the call returns, the former listener is not being called any more, unless it calls this itself.
    virtual void setMouseListener(MouseListener* listener) = 0;

    // Makes the window headless; moveInto opens it again. Doing it twice is harmless.
    virtual void close() = 0;
};

// A window of that name, which is headless when no display can be opened. Never nullptr.
std::unique_ptr<NativeWindow> createNativeWindow(const std::string& name);

// Closes every window that createNativeWindow made in this process. Thread-safe.
void destroyAllNativeWindows();

}  // namespace orx::platform

#endif
