// The thread of a picture window on X that talks to the server.
#include "orxFunctions/platform/window/xcb_window_posix.h"

#include <signal.h>

#include <exception>

namespace orx::platform {
namespace {

constexpr std::uint32_t kFrameEvents = XCB_EVENT_MASK_NO_EVENT;
constexpr std::uint32_t kWindowEvents = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
constexpr std::uint32_t kMouseEvents =
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;

// Mouse events that a window does not ask for go to its parent: the host's.
std::uint32_t eventsOf(bool takesMouse) { return kWindowEvents | (takesMouse ? kMouseEvents : 0U); }

void setCursorOf(XcbDisplay& display, xcb_window_t window, TCursorShape shape) {
    const std::uint32_t cursor = display.cursor(shape);
    xcb_change_window_attributes(display.connection(), window, XCB_CW_CURSOR, &cursor);
}

}  // namespace

void XcbWindow::talk(XcbDisplay& display) {
    // The host's signals are not for this thread; nor is that of a server that is gone.
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);

    while (true) {
        Wishes wishes;
        std::uint64_t question = 0;
        {
            const zul::LockGuard lock(lock_);
            while (!isLeaving_ && !wishes_.any()) {
                answers_ = asked_;  // what was taken back, too
                answered_.notify_all();
                wake_.wait(lock_);
            }
            if (isLeaving_) return;
            wishes = std::exchange(wishes_, {});
            question = asked_;
            if (wishes.hasPicture) cv::swap(picture_, sending_);
            busySince_ = std::chrono::steady_clock::now();
        }
        try {
            fulfil(display, wishes);
        } catch (const std::exception&) {  // no memory for a trace
        }
        const zul::LockGuard lock(lock_);
        busySince_.reset();
        answers_ = question;
        answered_.notify_all();
    }
}

void XcbWindow::fulfil(XcbDisplay& display, const Wishes& wishes) {
    xcb_connection_t* const connection = display.connection();
    if (wishes.closedWindow != XCB_NONE) xcb_destroy_window(connection, wishes.closedWindow);
    if (wishes.closedFrame != XCB_NONE) xcb_destroy_window(connection, wishes.closedFrame);
    if (wishes.closedWindow != XCB_NONE || wishes.closedFrame != XCB_NONE) display.synchronise();
    if (wishes.opens || wishes.parent) openWindows(display);
    if (wishes.parent) moveWindow(display, *wishes.parent);

    xcb_window_t window = XCB_NONE;
    TCursorShape cursor = CURSOR_ARROW;
    std::uint32_t events = 0;
    {
        const zul::LockGuard lock(lock_);
        window = window_;
        cursor = cursor_;
        events = eventsOf(takesMouse_);
    }
    if (window != XCB_NONE) {
        if (wishes.hasMouse) xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &events);
        if (wishes.hasCursor) setCursorOf(display, window, cursor);
        if (wishes.hasPicture) sendPicture(display, window);
        if (!wishes.exposed.empty()) sent_.paint(display, window, wishes.exposed);
    }
    xcb_flush(connection);
}

void XcbWindow::openWindows(XcbDisplay& display) {
    xcb_window_t frame = XCB_NONE;
    TCursorShape cursor = CURSOR_ARROW;
    std::uint32_t events = 0;
    {
        const zul::LockGuard lock(lock_);
        if (frame_ != XCB_NONE && window_ != XCB_NONE) return;
        frame = frame_;
        cursor = cursor_;
        events = eventsOf(takesMouse_);
    }
    const xcb_window_t frameBefore = frame;
    if (frame == XCB_NONE) frame = makeWindow(display, display.screen().root, kFrameEvents, true);
    const xcb_window_t window = makeWindow(display, frame, events, false);
    windowSize_ = {1, 1};
    setCursorOf(display, window, cursor);
    // Not seen before its parent is.
    xcb_map_window(display.connection(), window);
    const zul::LockGuard lock(lock_);
    if (frame_ != frameBefore) return;  // closed meanwhile, and with it what is in it
    frame_ = frame;
    window_ = window;
}

// The frame is not managed by a window manager.
xcb_window_t XcbWindow::makeWindow(XcbDisplay& display, xcb_window_t parent, std::uint32_t events,
                                   bool isFrame) {
    const xcb_screen_t& screen = display.screen();
    const xcb_window_t window = xcb_generate_id(display.connection());
    const std::uint32_t mask = XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK;
    const std::uint32_t values[] = {screen.black_pixel, isFrame ? 1U : 0U, events};
    xcb_create_window(display.connection(), screen.root_depth, window, parent, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, mask, values);
    xcb_change_property(display.connection(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME,
                        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(name_.size()), name_.data());
    return window;
}

void XcbWindow::moveWindow(XcbDisplay& display, xcb_window_t parent) {
    xcb_connection_t* const connection = display.connection();
    xcb_window_t window = XCB_NONE;
    {
        const zul::LockGuard lock(lock_);
        window = window_;
        if (parent == XCB_NONE) parent = frame_;
    }
    const XcbReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
    const bool isThere = tree && tree->parent == parent;
    const bool hasMoved =
        isThere || display.succeeded(xcb_reparent_window_checked(connection, window, parent, 0, 0));
    const zul::LockGuard lock(lock_);
    hasMoved_ = hasMoved;
    if (hasMoved)
        hasTraced_ = false;
    else
        traceOnce("宿主窗口不存在");
}

void XcbWindow::sendPicture(XcbDisplay& display, xcb_window_t window) {
    if (!sent_.upload(display, sending_, [this] { noteAnswer(); })) {
        const zul::LockGuard lock(lock_);
        return traceOnce("图像太大");
    }
    if (sent_.size() != windowSize_) {
        windowSize_ = sent_.size();
        const std::uint32_t size[] = {static_cast<std::uint32_t>(windowSize_.width),
                                      static_cast<std::uint32_t>(windowSize_.height)};
        xcb_configure_window(display.connection(), window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                             size);
    }
    sent_.paint(display, window, cv::Rect({}, sent_.size()));
    // The next picture waits for this one: a sender that is faster than the server must not fill its memory.
    display.synchronise();
}

// A large picture may take its time.
void XcbWindow::noteAnswer() {
    const zul::LockGuard lock(lock_);
    busySince_ = std::chrono::steady_clock::now();
}

}  // namespace orx::platform
