// The event thread of a picture window on X.
#include "orxFunctions/platform/window/xcb_window_posix.h"

#include <signal.h>

#include <exception>

namespace orx::platform {
namespace {

constexpr std::uint8_t kSentByClient = 0x80;

using Event = XcbReply<xcb_generic_event_t>;

int typeOf(const xcb_generic_event_t& event) { return event.response_type & ~kSentByClient; }

// An event is read as what its type says.
template <class Specific>
const Specific& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Specific&>(event);
}

// Of movements that wait one after the other the last says all; what follows them is left in `next`.
Event lastMovement(xcb_connection_t* connection, Event movement, Event& next) {
    for (next = Event(xcb_poll_for_queued_event(connection)); next && typeOf(*next) == XCB_MOTION_NOTIFY;
         next = Event(xcb_poll_for_queued_event(connection)))
        movement = std::move(next);
    return movement;
}

// What finds no memory is one event that is lost, and not the process.
template <typename Handle>
void handleSafely(const Handle& handle) {
    try {
        handle();
    } catch (const std::exception&) {
    }
}

}  // namespace

void XcbWindow::takeEvents(xcb_connection_t* connection) {
    // The host's signals are not for this thread.
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);

    Event next;
    while (!isLeaving_) {
        Event event = next ? std::move(next) : Event(xcb_wait_for_event(connection));
        if (!event) break;
        if (typeOf(*event) == XCB_MOTION_NOTIFY) event = lastMovement(connection, std::move(event), next);
        handleSafely([&] { handleEvent(*event); });
    }
    if (!isLeaving_) handleSafely([this] { connectionIsGone(); });
}

// Errors of requests come here too, with type 0: a window that went meanwhile, which another event tells.
void XcbWindow::handleEvent(const xcb_generic_event_t& event) {
    switch (typeOf(event)) {
        case XCB_EXPOSE:
            return repaint(as<xcb_expose_event_t>(event));
        case XCB_DESTROY_NOTIFY:
            return windowIsGone(as<xcb_destroy_notify_event_t>(event).window);
        case XCB_BUTTON_PRESS:
            return tell(mouse_.pressed(as<xcb_button_press_event_t>(event)));
        case XCB_BUTTON_RELEASE:
            return tell(mouse_.released(as<xcb_button_release_event_t>(event)));
        case XCB_MOTION_NOTIFY:
            return tell(XcbMouse::moved(as<xcb_motion_notify_event_t>(event)));
        default:
            return;
    }
}

void XcbWindow::repaint(const xcb_expose_event_t& event) {
    const zul::LockGuard lock(lock_);
    if (event.window != window_) return;
    wishes_.exposed |= cv::Rect(event.x, event.y, event.width, event.height);
    ask();
}

void XcbWindow::windowIsGone(xcb_window_t window) {
    {
        const zul::LockGuard lock(lock_);
        if (window == window_) {
            window_ = XCB_NONE;
            traceOnce("宿主窗口已关闭");
        }
    }
    tell(mouse_.lost());
}

void XcbWindow::connectionIsGone() {
    {
        const zul::LockGuard lock(lock_);
        traceOnce("与显示器的连接已断开");
    }
    tell(mouse_.lost());
}

void XcbWindow::tell(const std::optional<MouseEvent>& event) {
    if (!event) return;
    const zul::LockGuard lock(listenerLock_);
    if (listener_ != nullptr) listener_->onMouse(*event);
}

}  // namespace orx::platform
