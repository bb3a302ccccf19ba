#include "orxFunctions/platform/window/xcb_window_posix.h"

#include <exception>
#include <utility>

#include "ZULLib/zullib.h"
#include "orxFunctions/platform/window/native_window_list.h"

namespace orx::platform {
namespace {

using Clock = std::chrono::steady_clock;

// How long the server is waited for: as long as the thread of a window is on Windows.
constexpr std::chrono::seconds kPatience{3};

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
    wishes_.opens = true;
    ask();
    await();
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
    bool hasThreads = false;
    if (display->problem() == nullptr) {
        try {
            isLeaving_ = false;
            events_ = std::thread([this, connection = display->connection()] { takeEvents(connection); });
            talking_ = std::thread([this, &display = *display] { talk(display); });
            hasThreads = true;
        } catch (const std::exception&) {  // or no memory for what they begin with
        }
    }
    if (!hasThreads && events_.joinable()) {
        isLeaving_ = true;
        display->hangUp();
        events_.join();
    }
    const zul::LockGuard lock(lock_);
    if (!hasThreads) {
        traceOnce(display->problem() != nullptr ? display->problem() : "没有线程可用");
        return false;
    }
    display_ = std::move(display);
    return true;
}

// A thread that waits for the server, or for events, returns when the connection ends.
void XcbWindow::disconnect() {
    {
        const zul::LockGuard lock(lock_);
        isLeaving_ = true;
        wake_.notify_all();
        if (display_ != nullptr) display_->hangUp();
    }
    if (events_.joinable()) events_.join();
    if (talking_.joinable()) talking_.join();
    const zul::LockGuard lock(lock_);
    frame_ = XCB_NONE;
    window_ = XCB_NONE;
    wishes_ = {};
    answers_ = asked_;
    sent_.forget();
    display_.reset();
}

bool XcbWindow::isUsable() const { return display_ != nullptr && display_->isAlive(); }

void XcbWindow::ask() {
    ++asked_;
    wake_.notify_all();
}

// A server that was silent for that long already is not waited for at all.
bool XcbWindow::await() {
    const std::uint64_t question = asked_;
    while (answers_ < question && isUsable()) {
        const auto end = busySince_.value_or(Clock::now()) + kPatience;
        if (Clock::now() >= end) break;
        answered_.wait_until(lock_, end);
    }
    return answers_ >= question;
}

NativeHandle XcbWindow::handle() const {
    const zul::LockGuard lock(lock_);
    return isUsable() ? toHandle(window_) : nullptr;
}

NativeHandle XcbWindow::frame() const {
    const zul::LockGuard lock(lock_);
    return isUsable() ? toHandle(frame_) : nullptr;
}

bool XcbWindow::moveInto(NativeHandle newParent) {
    const NoPipeSignal noSignal;
    const zul::LockGuard connectionLock(connectionLock_);
    bool isConnected = false;
    {
        const zul::LockGuard lock(lock_);
        isConnected = isUsable();
        // Nobody's: back where it is not seen, if there is a window at all.
        if (newParent == nullptr && (!isConnected || window_ == XCB_NONE)) return false;
    }
    if (!isConnected) {
        disconnect();
        if (!connect()) return false;
    }
    const zul::LockGuard lock(lock_);
    wishes_.parent = toWindow(newParent);
    hasMoved_ = false;
    ask();
    if (await()) return hasMoved_;
    wishes_.parent.reset();
    traceOnce("显示器没有应答");
    return false;
}

void XcbWindow::show(const cv::Mat& picture) {
    const zul::LockGuard lock(lock_);
    if (!isUsable() || window_ == XCB_NONE) return;
    wishes_.hasPicture = false;  // what finds no memory leaves half of it
    XcbPicture::convert(picture, picture_);
    wishes_.hasPicture = true;
    ask();
}

void XcbWindow::waitUntilShown() {
    const zul::LockGuard lock(lock_);
    await();
}

void XcbWindow::setCursor(TCursorShape shape) {
    const zul::LockGuard lock(lock_);
    cursor_ = shape;
    if (!isUsable() || window_ == XCB_NONE) return;
    wishes_.hasCursor = true;
    ask();
}

void XcbWindow::setMouseListener(MouseListener* listener) {
    const zul::LockGuard listenerLock(listenerLock_);
    listener_ = listener;
    const zul::LockGuard lock(lock_);
    takesMouse_ = listener != nullptr;
    if (!isUsable() || window_ == XCB_NONE) return;
    wishes_.hasMouse = true;
    ask();
}

// New windows are only made when the closed ones have been taken from the wishes: there is room for them.
void XcbWindow::close() {
    const zul::LockGuard lock(lock_);
    const xcb_window_t window = std::exchange(window_, XCB_NONE);
    const xcb_window_t frame = std::exchange(frame_, XCB_NONE);
    if (!isUsable() || (window == XCB_NONE && frame == XCB_NONE)) return;
    wishes_ = {};
    wishes_.closedWindow = window;
    wishes_.closedFrame = frame;
    ask();
    await();
}

void XcbWindow::traceOnce(const char* utf8Reason) {
    if (std::exchange(hasTraced_, true)) return;
    zul::outPutDebugString(zul::toAnsi("图片框无法显示:"), zul::toAnsi(utf8Reason));
}

}  // namespace orx::platform
