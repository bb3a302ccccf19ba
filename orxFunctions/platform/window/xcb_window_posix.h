// A picture window on X: an own connection, a frame that is never mapped, the drawing window inside it, and a
// thread that takes the events.
#ifndef ORXFUNCTIONS_PLATFORM_XCB_WINDOW_POSIX_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_XCB_WINDOW_POSIX_INTERNAL_H

#include <xcb/xcb.h>

#include <atomic>
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
    NativeHandle parent() const override;
    bool moveInto(NativeHandle newParent) override;
    void show(const cv::Mat& picture) override;
    void setCursor(TCursorShape shape) override;
    void setMouseListener(MouseListener* listener) override;
    void close() override;

  private:
    // Connecting and opening; the connection lock serialises them.
    bool connect() ZUL_REQUIRES(connectionLock_);
    void disconnect() ZUL_REQUIRES(connectionLock_);
    bool isUsable() const ZUL_REQUIRES(lock_);
    void openWindows() ZUL_REQUIRES(lock_);
    std::uint32_t windowEvents() const ZUL_REQUIRES(lock_);
    xcb_window_t makeWindow(xcb_window_t parent, std::uint32_t events, bool isFrame) ZUL_REQUIRES(lock_);
    void traceOnce(const char* utf8Reason) ZUL_REQUIRES(lock_);

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
    std::atomic<bool> isLeaving_{false};  // the event thread shall end

    mutable zul::Mutex lock_;
    std::unique_ptr<XcbDisplay> display_ ZUL_GUARDED_BY(lock_);  // nullptr: never connected, or given up
    xcb_window_t frame_ ZUL_GUARDED_BY(lock_) = XCB_NONE;
    xcb_window_t window_ ZUL_GUARDED_BY(lock_) = XCB_NONE;
    cv::Size windowSize_ ZUL_GUARDED_BY(lock_);
    XcbPicture picture_ ZUL_GUARDED_BY(lock_);
    TCursorShape cursor_ ZUL_GUARDED_BY(lock_) = CURSOR_ARROW;
    bool takesMouse_ ZUL_GUARDED_BY(lock_) = false;  // else the host's window does
    bool hasTraced_ ZUL_GUARDED_BY(lock_) = false;

    zul::RecursiveMutex listenerLock_;  // held while the listener is told, who may replace itself
    MouseListener* listener_ ZUL_GUARDED_BY(listenerLock_) = nullptr;

    XcbMouse mouse_;  // the event thread's
};

}  // namespace orx::platform

#endif
