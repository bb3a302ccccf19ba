// A picture window on X: an own connection, a frame that is never mapped, the drawing window inside it, a
// thread that takes the events, and one that talks to the server.
//
// A server may stop answering for any time (a debugger, a suspended machine, a line that hangs). Nobody else
// must stop with it: a host's thread leaves what it wants with the talking thread, and where it needs the
// answer waits for a limited time.
#ifndef ORXFUNCTIONS_PLATFORM_XCB_WINDOW_POSIX_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_XCB_WINDOW_POSIX_INTERNAL_H

#include <xcb/xcb.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <thread>

#include "ZULLib/sync_internal.h"
#include "orxFunctions/platform/window/native_window.h"
#include "orxFunctions/platform/window/xcb_display_posix.h"
#include "orxFunctions/platform/window/xcb_mouse_posix.h"
#include "orxFunctions/platform/window/xcb_picture_posix.h"

namespace orx::platform {

class XcbWindow final : public NativeWindow {
  public:
    explicit XcbWindow(std::string name);
    ~XcbWindow() override;

    NativeHandle handle() const override;
    NativeHandle frame() const override;
    bool moveInto(NativeHandle newParent) override;
    void show(const cv::Mat& picture) override;
    void waitUntilShown() override;
    void setCursor(TCursorShape shape) override;
    void setMouseListener(MouseListener* listener) override;
    void close() override;

  private:
    // What is left to the talking thread, which does it in this order.
    struct Wishes {
        xcb_window_t closedWindow = XCB_NONE;
        xcb_window_t closedFrame = XCB_NONE;
        bool opens = false;
        std::optional<xcb_window_t> parent;  // XCB_NONE: the frame
        bool hasMouse = false;               // whether it is taken has changed
        bool hasCursor = false;
        bool hasPicture = false;
        cv::Rect exposed;

        bool any() const {
            return closedWindow != XCB_NONE || closedFrame != XCB_NONE || opens || parent || hasMouse ||
                   hasCursor || hasPicture || !exposed.empty();
        }
    };

    // Connecting and opening; the connection lock serialises them.
    bool connect() ZUL_REQUIRES(connectionLock_);
    void disconnect() ZUL_REQUIRES(connectionLock_);
    bool isUsable() const ZUL_REQUIRES(lock_);
    void traceOnce(const char* utf8Reason) ZUL_REQUIRES(lock_);

    // The wishes have changed. Who then awaits has them fulfilled, or false.
    void ask() ZUL_REQUIRES(lock_);
    bool await() ZUL_REQUIRES(lock_);

    // The talking thread; it holds no lock while it talks.
    void talk(XcbDisplay& display);
    void fulfil(XcbDisplay& display, const Wishes& wishes);
    void openWindows(XcbDisplay& display);
    xcb_window_t makeWindow(XcbDisplay& display, xcb_window_t parent, std::uint32_t events, bool isFrame);
    void moveWindow(XcbDisplay& display, xcb_window_t parent);
    void sendPicture(XcbDisplay& display, xcb_window_t window);
    void noteAnswer();

    // The event thread.
    void takeEvents(xcb_connection_t* connection);
    void handleEvent(const xcb_generic_event_t& event);
    void repaint(const xcb_expose_event_t& event);
    void windowIsGone(xcb_window_t window);
    void connectionIsGone();
    void tell(const std::optional<MouseEvent>& event);

    const std::string name_;

    // Locks, in the order in which they are taken: connection or listener, state.
    zul::Mutex connectionLock_;
    std::thread events_ ZUL_GUARDED_BY(connectionLock_);
    std::thread talking_ ZUL_GUARDED_BY(connectionLock_);
    std::atomic<bool> isLeaving_{false};  // both threads shall end

    mutable zul::Mutex lock_;  // nobody waits for the server under it
    std::condition_variable_any wake_;
    std::condition_variable_any answered_;
    std::unique_ptr<XcbDisplay> display_ ZUL_GUARDED_BY(lock_);  // nullptr: never connected, or given up
    xcb_window_t frame_ ZUL_GUARDED_BY(lock_) = XCB_NONE;
    xcb_window_t window_ ZUL_GUARDED_BY(lock_) = XCB_NONE;
    cv::Mat picture_ ZUL_GUARDED_BY(lock_);  // that waits, as the server takes it
    TCursorShape cursor_ ZUL_GUARDED_BY(lock_) = CURSOR_ARROW;
    bool takesMouse_ ZUL_GUARDED_BY(lock_) = false;  // else the host's window does
    bool hasTraced_ ZUL_GUARDED_BY(lock_) = false;
    Wishes wishes_ ZUL_GUARDED_BY(lock_);
    std::uint64_t asked_ ZUL_GUARDED_BY(lock_) = 0;    // how often
    std::uint64_t answers_ ZUL_GUARDED_BY(lock_) = 0;  // up to which question all is done
    bool hasMoved_ ZUL_GUARDED_BY(lock_) = false;      // the last move came off
    // Since when the server has been talked to without an answer; nothing while it is not.
    std::optional<std::chrono::steady_clock::time_point> busySince_ ZUL_GUARDED_BY(lock_);

    zul::RecursiveMutex listenerLock_;  // held while the listener is told, who may replace itself
    MouseListener* listener_ ZUL_GUARDED_BY(listenerLock_) = nullptr;

    // The talking thread's, and disconnect's when that has ended.
    XcbPicture sent_;
    cv::Mat sending_;  // the buffers change places
    cv::Size windowSize_;

    XcbMouse mouse_;  // the event thread's
};

}  // namespace orx::platform

#endif
