#include "orxFunctions/platform/window/xcb_window_posix.h"

#include <exception>
#include <utility>

#include "ZULLib/zullib.h"
#include "orxFunctions/platform/window/native_window_list.h"

namespace orx::platform {
namespace {

constexpr std::uint32_t kFrameEvents = XCB_EVENT_MASK_NO_EVENT;
constexpr std::uint32_t kWindowEvents = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
constexpr std::uint32_t kMouseEvents =
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;

NativeHandle toHandle(xcb_window_t window) {
    return reinterpret_cast<NativeHandle>(static_cast<std::uintptr_t>(window));
}

xcb_window_t toWindow(NativeHandle handle) {
    return static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(handle));
}

}  // namespace

XcbWindow::XcbWindow(std::string name) : name_(std::move(name)) {
    nativeWindows.add(this);
    const NoPipeSignal noSignal;
    const zul::LockGuard connectionLock(connectionLock_);
    if (!connect()) return;
    const zul::LockGuard lock(lock_);
    openWindows();
}

XcbWindow::~XcbWindow() {
    nativeWindows.remove(this);
    close();
    const NoPipeSignal noSignal;
    const zul::LockGuard connectionLock(connectionLock_);
    disconnect();
}

bool XcbWindow::connect() {
    auto display = std::make_unique<XcbDisplay>();
    const zul::LockGuard lock(lock_);
    if (display->problem() != nullptr) {
        traceOnce(display->problem());
        return false;
    }
    try {
        isLeaving_ = false;
        events_ = std::thread([this, connection = display->connection()] { takeEvents(connection); });
    } catch (const std::exception&) {  // or no memory for what it begins with
        traceOnce("没有线程可用");
        return false;
    }
    display_ = std::move(display);
    return true;
}

// The event thread waits for events: it is woken by one. On a dead connection it has ended already.
void XcbWindow::disconnect() {
    isLeaving_ = true;
    {
        const zul::LockGuard lock(lock_);
        if (display_ != nullptr) {
            xcb_client_message_event_t wakeUp{};
            wakeUp.response_type = XCB_CLIENT_MESSAGE;
            wakeUp.format = 32;
            // An event for a window without any event mask goes to whoever made the window; if that is gone,
            // the error that comes back wakes as well.
            const xcb_window_t own = makeWindow(display_->screen().root, kFrameEvents, true);
            xcb_send_event(display_->connection(), 0, own, XCB_EVENT_MASK_NO_EVENT,
                           reinterpret_cast<const char*>(&wakeUp));
            xcb_flush(display_->connection());
        }
    }
    if (events_.joinable()) events_.join();
    const zul::LockGuard lock(lock_);
    frame_ = XCB_NONE;
    window_ = XCB_NONE;
    picture_.forget();
    display_.reset();
}

bool XcbWindow::isUsable() const { return display_ != nullptr && display_->isAlive(); }

void XcbWindow::openWindows() {
    if (frame_ == XCB_NONE) frame_ = makeWindow(display_->screen().root, kFrameEvents, true);
    if (window_ == XCB_NONE) {
        window_ = makeWindow(frame_, windowEvents(), false);
        windowSize_ = {1, 1};
        const std::uint32_t cursor = display_->cursor(cursor_);
        xcb_change_window_attributes(display_->connection(), window_, XCB_CW_CURSOR, &cursor);
        // Not seen before its parent is.
        xcb_map_window(display_->connection(), window_);
    }
    xcb_flush(display_->connection());
}

// Mouse events that a window does not ask for go to its parent: the host's.
std::uint32_t XcbWindow::windowEvents() const { return kWindowEvents | (takesMouse_ ? kMouseEvents : 0U); }

// The frame is not managed by a window manager.
xcb_window_t XcbWindow::makeWindow(xcb_window_t parent, std::uint32_t events, bool isFrame) {
    const xcb_screen_t& screen = display_->screen();
    const xcb_window_t window = xcb_generate_id(display_->connection());
    const std::uint32_t mask = XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK;
    const std::uint32_t values[] = {screen.black_pixel, isFrame ? 1U : 0U, events};
    xcb_create_window(display_->connection(), screen.root_depth, window, parent, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, mask, values);
    xcb_change_property(display_->connection(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME,
                        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(name_.size()), name_.data());
    return window;
}

NativeHandle XcbWindow::handle() const {
    const zul::LockGuard lock(lock_);
    return isUsable() ? toHandle(window_) : nullptr;
}

NativeHandle XcbWindow::frame() const {
    const zul::LockGuard lock(lock_);
    return isUsable() ? toHandle(frame_) : nullptr;
}

NativeHandle XcbWindow::parent() const {
    const NoPipeSignal noSignal;
    const zul::LockGuard lock(lock_);
    if (!isUsable() || window_ == XCB_NONE) return nullptr;
    const XcbReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(
        display_->connection(), xcb_query_tree(display_->connection(), window_), nullptr));
    return tree ? toHandle(tree->parent) : nullptr;
}

bool XcbWindow::moveInto(NativeHandle newParent) {
    const NoPipeSignal noSignal;
    const zul::LockGuard connectionLock(connectionLock_);
    bool isConnected = false;
    {
        const zul::LockGuard lock(lock_);
        isConnected = isUsable();
        // Nobody's: back where it is not seen, if there is a window at all.
        if (newParent == nullptr) {
            if (!isConnected || window_ == XCB_NONE) return false;
            newParent = toHandle(frame_);
        }
    }
    if (!isConnected) {
        disconnect();
        if (!connect()) return false;
    }
    const zul::LockGuard lock(lock_);
    openWindows();
    const bool moved = display_->succeeded(
        xcb_reparent_window_checked(display_->connection(), window_, toWindow(newParent), 0, 0));
    if (moved)
        hasTraced_ = false;
    else
        traceOnce("宿主窗口不存在");
    return moved;
}

void XcbWindow::show(const cv::Mat& picture) {
    const NoPipeSignal noSignal;
    const zul::LockGuard lock(lock_);
    if (!isUsable() || window_ == XCB_NONE) return;
    if (!picture_.upload(*display_, picture)) return traceOnce("图像太大");
    if (picture_.size() != windowSize_) {
        windowSize_ = picture_.size();
        const std::uint32_t size[] = {static_cast<std::uint32_t>(windowSize_.width),
                                      static_cast<std::uint32_t>(windowSize_.height)};
        xcb_configure_window(display_->connection(), window_,
                             XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
    }
    picture_.paint(*display_, window_, cv::Rect({}, picture_.size()));
    // The next picture waits for this one: a sender that is faster than the server must not fill its memory.
    display_->synchronise();
}

void XcbWindow::setCursor(TCursorShape shape) {
    const NoPipeSignal noSignal;
    const zul::LockGuard lock(lock_);
    cursor_ = shape;
    if (!isUsable() || window_ == XCB_NONE) return;
    const std::uint32_t cursor = display_->cursor(shape);
    xcb_change_window_attributes(display_->connection(), window_, XCB_CW_CURSOR, &cursor);
    xcb_flush(display_->connection());
}

void XcbWindow::setMouseListener(MouseListener* listener) {
    const NoPipeSignal noSignal;
    const zul::LockGuard listenerLock(listenerLock_);
    listener_ = listener;
    const zul::LockGuard lock(lock_);
    takesMouse_ = listener != nullptr;
    if (!isUsable() || window_ == XCB_NONE) return;
    const std::uint32_t events = windowEvents();
    xcb_change_window_attributes(display_->connection(), window_, XCB_CW_EVENT_MASK, &events);
    xcb_flush(display_->connection());
}

void XcbWindow::close() {
    const NoPipeSignal noSignal;
    const zul::LockGuard lock(lock_);
    if (!isUsable()) return;
    if (window_ != XCB_NONE) xcb_destroy_window(display_->connection(), window_);
    if (frame_ != XCB_NONE) xcb_destroy_window(display_->connection(), frame_);
    window_ = XCB_NONE;
    frame_ = XCB_NONE;
    display_->synchronise();
}

void XcbWindow::traceOnce(const char* utf8Reason) {
    if (std::exchange(hasTraced_, true)) return;
    zul::outPutDebugString(zul::toAnsi("图片框无法显示:"), zul::toAnsi(utf8Reason));
}

}  // namespace orx::platform
