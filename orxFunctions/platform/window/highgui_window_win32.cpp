#include "orxFunctions/platform/window/highgui_window_win32.h"

#include "orxFunctions/platform/window/mouse_message_win32.h"

#include <opencv2/highgui/highgui_c.h>
#include <atomic>
#include <exception>
#include <memory>
#include <opencv2/highgui.hpp>
#include <utility>

#include "ZULLib/sync_internal.h"
#include "ZULLib/zullib.h"
#include "orxFunctions/platform/window/native_window_list.h"

namespace orx::platform {
namespace {

constexpr UINT kShowMessage = WM_APP + 1;
constexpr UINT kCloseMessage = WM_APP + 2;
constexpr UINT kMilliseconds = 3000;  // that another thread is given to close its window
constexpr const wchar_t* kStateProperty = L"orxFunctions.window";

HCURSOR systemCursor(TCursorShape shape) {
    const auto load = [](const wchar_t* name) { return LoadCursorW(nullptr, name); };
    switch (shape) {
        case CURSOR_HAND:
            return load(MAKEINTRESOURCEW(32649));
        case CURSOR_SIZEALL:
            return load(MAKEINTRESOURCEW(32646));
        case CURSOR_APPSTARTING:
            return load(MAKEINTRESOURCEW(32650));
        default:
            return load(MAKEINTRESOURCEW(32512));
    }
}

}  // namespace

// What the window procedure needs. It holds a reference until the window is gone.
class HighguiWindow::State : public std::enable_shared_from_this<State> {
  public:
    explicit State(std::string name) : name_(std::move(name)) {}

    bool openIfClosed();
    bool moveInto(HWND newParent);
    void show(const cv::Mat& picture);
    void close();
    void setCursor(TCursorShape shape);
    void setListener(MouseListener* listener) {
        const zul::LockGuard lock(listenerLock_);
        listener_ = listener;
    }
    HWND window() const {
        const zul::LockGuard lock(lock_);
        return IsWindow(window_) != FALSE ? window_ : nullptr;
    }
    HWND frame() const {
        const zul::LockGuard lock(lock_);
        return IsWindow(frame_) != FALSE ? frame_ : nullptr;
    }

  private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    bool open();
    bool subclass(HWND window);
    void showStored();
    void showHere(const cv::Mat& picture);
    void destroy();
    void forgetWindow();
    void forgetFrame(HWND frame);
    bool takeMouse(HWND window, const MouseEvent& event);
    bool isOwnedByThisThread(HWND window) const {
        return GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId();
    }
    void traceOnce(const char* utf8Reason);

    const std::string name_;
    std::atomic<bool> isOpening_{false};
    WNDPROC highguiProcedure_ = nullptr;  // written before the window is known to anybody

    mutable zul::Mutex lock_;
    HWND window_ ZUL_GUARDED_BY(lock_) = nullptr;
    HWND frame_ ZUL_GUARDED_BY(lock_) = nullptr;
    TCursorShape cursor_ ZUL_GUARDED_BY(lock_) = CURSOR_ARROW;
    cv::Mat picture_ ZUL_GUARDED_BY(lock_);  // waits to be shown when hasPicture_
    cv::Mat shown_;                          // the creating thread's; the buffers change places
    bool hasPicture_ ZUL_GUARDED_BY(lock_) = false;
    bool hasTraced_ ZUL_GUARDED_BY(lock_) = false;

    zul::RecursiveMutex listenerLock_;  // a message may be sent while another one is handled
    MouseListener* listener_ ZUL_GUARDED_BY(listenerLock_) = nullptr;
};

// Of threads that come at once, one opens the window; the others have none yet.
bool HighguiWindow::State::openIfClosed() {
    if (window() != nullptr) return true;
    if (isOpening_.exchange(true)) return false;
    const bool isOpen = window() != nullptr || open();
    isOpening_ = false;
    return isOpen;
}

bool HighguiWindow::State::open() {
    try {
        cv::namedWindow(name_, cv::WINDOW_AUTOSIZE);
        cv::resizeWindow(name_, 0, 0);
        const HWND window = static_cast<HWND>(cvGetWindowHandle(name_.c_str()));
        if (IsWindow(window) == FALSE) {
            traceOnce("窗口已经失效");
            return false;
        }
        if (!subclass(window)) {
            traceOnce("无法创建窗口");
            return false;
        }
        const HWND frame = GetParent(window);
        if (frame != nullptr) ShowWindow(frame, SW_HIDE);
        cv::setWindowProperty(name_, cv::WND_PROP_FULLSCREEN, cv::WINDOW_NORMAL);
        TCursorShape cursor = CURSOR_ARROW;
        {
            const zul::LockGuard lock(lock_);
            cursor = cursor_;
            frame_ = frame;
            window_ = window;
            hasPicture_ = false;  // the message that an older one posted is gone with the window before this
        }
        setCursor(cursor);
        return true;
    } catch (const std::exception&) {  // highgui's, when the system gives it no window
        traceOnce("无法创建窗口");
        return false;
    }
}

// False for a window that is another box's: boxes may have the same name.
bool HighguiWindow::State::subclass(HWND window) {
    if (const auto* owner = static_cast<std::shared_ptr<State>*>(GetPropW(window, kStateProperty))) {
        return owner->get() == this;
    }
    auto* const reference = new std::shared_ptr<State>(shared_from_this());
    highguiProcedure_ = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
    if (SetPropW(window, kStateProperty, reference) == FALSE) {
        delete reference;
        return false;
    }
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&State::procedure));
    return true;
}

LRESULT CALLBACK HighguiWindow::State::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* const reference = static_cast<std::shared_ptr<State>*>(GetPropW(window, kStateProperty));
    if (reference == nullptr) return DefWindowProcW(window, message, wParam, lParam);
    const std::shared_ptr<State> self = *reference;
    MouseEvent event;
    if (message == kShowMessage) {
        self->showStored();
        return 0;
    }
    if (message == kCloseMessage) {
        self->destroy();
        return 0;
    }
    if (toMouseEvent(window, message, wParam, lParam, event) && self->takeMouse(window, event)) return 0;
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(self->highguiProcedure_));
        RemovePropW(window, kStateProperty);
        delete reference;
        self->forgetWindow();
    }
    return CallWindowProcW(self->highguiProcedure_, window, message, wParam, lParam);
}

// True when the message is done with. Messages that nobody listens to stay highgui's, and so its own mouse
// callback's.
bool HighguiWindow::State::takeMouse(HWND window, const MouseEvent& event) {
    const zul::LockGuard lock(listenerLock_);
    if (isPress(event)) SetFocus(window);  // the wheel goes where the focus is
    if (listener_ == nullptr) return false;
    if (isPress(event)) SetCapture(window);
    if (isRelease(event) && !hasButtonDown(event)) ReleaseCapture();
    try {
        listener_->onMouse(event);
    } catch (const std::exception& error) {  // it must not pass through the system
        zul::outPutDebugString("onMouse", error.what());
    }
    return true;
}

bool HighguiWindow::State::moveInto(HWND newParent) {
    if (!openIfClosed()) return false;
    const HWND moved = window();
    const HWND parent = newParent != nullptr ? newParent : frame();
    if (IsWindow(parent) == FALSE || (GetParent(moved) != parent && SetParent(moved, parent) == nullptr)) {
        traceOnce("宿主窗口不存在");
        return false;
    }
    const zul::LockGuard lock(lock_);
    hasTraced_ = false;
    return true;
}

void HighguiWindow::State::show(const cv::Mat& picture) {
    const HWND target = window();
    if (target == nullptr) return;
    if (isOwnedByThisThread(target)) {
        {
            const zul::LockGuard lock(lock_);
            hasPicture_ = false;  // an older one
        }
        showHere(picture);
        return;
    }
    bool mustPost = false;
    {
        const zul::LockGuard lock(lock_);
        picture.copyTo(picture_);
        mustPost = !std::exchange(hasPicture_, true);
    }
    if (mustPost && PostMessageW(target, kShowMessage, 0, 0) == FALSE) {
        const zul::LockGuard lock(lock_);
        hasPicture_ = false;  // the queue is full: the next picture posts again
    }
}

void HighguiWindow::State::showStored() {
    {
        const zul::LockGuard lock(lock_);
        if (!std::exchange(hasPicture_, false)) return;
        cv::swap(picture_, shown_);
    }
    showHere(shown_);
}

// On the creating thread. imshow would open a new window in the place of one that is gone.
void HighguiWindow::State::showHere(const cv::Mat& picture) {
    if (window() == nullptr) return;
    try {
        cv::imshow(name_, picture);
    } catch (const std::exception& error) {
        zul::outPutDebugString("imshow", error.what());
    }
}

void HighguiWindow::State::setCursor(TCursorShape shape) {
    {
        const zul::LockGuard lock(lock_);
        cursor_ = shape;
    }
    if (const HWND target = window()) {
        SetClassLongPtrW(target, GCLP_HCURSOR, reinterpret_cast<LONG_PTR>(systemCursor(shape)));
    }
}

// Only the creating thread can destroy a window. One that does not answer does it when it comes to it.
void HighguiWindow::State::close() {
    HWND target = window();
    UINT message = kCloseMessage;
    if (target == nullptr) {  // the host took the drawing window with it
        target = frame();
        message = WM_CLOSE;
    }
    if (target == nullptr) return;
    DWORD_PTR ignored = 0;
    if (isOwnedByThisThread(target)) {
        destroy();
    } else if (SendMessageTimeoutW(target, message, 0, 0, SMTO_NORMAL, kMilliseconds, &ignored) == 0) {
        PostMessageW(target, message, 0, 0);
    } else if (message == WM_CLOSE) {
        forgetFrame(target);
    }
}

void HighguiWindow::State::destroy() {
    const HWND frameWindow = frame();
    // First home: a host's window that is told of its child's end may be another thread's.
    if (const HWND target = window();
        target != nullptr && frameWindow != nullptr && GetParent(target) != frameWindow) {
        SetParent(target, frameWindow);
    }
    try {
        cv::destroyWindow(name_);
    } catch (const std::exception&) {  // closed already, by another box's destroyAllWindows
    }
    if (IsWindow(frameWindow) != FALSE) DestroyWindow(frameWindow);
    forgetFrame(frameWindow);
}

void HighguiWindow::State::forgetWindow() {
    const zul::LockGuard lock(lock_);
    window_ = nullptr;
    hasPicture_ = false;
}

// Its number may become another window's.
void HighguiWindow::State::forgetFrame(HWND frame) {
    const zul::LockGuard lock(lock_);
    if (frame_ == frame) frame_ = nullptr;
}

void HighguiWindow::State::traceOnce(const char* utf8Reason) {
    {
        const zul::LockGuard lock(lock_);
        if (std::exchange(hasTraced_, true)) return;
    }
    zul::outPutDebugString(zul::toAnsi("图片框无法显示:"), zul::toAnsi(utf8Reason));
}

HighguiWindow::HighguiWindow(std::string name) : state_(std::make_shared<State>(std::move(name))) {
    nativeWindows.add(this);
    state_->openIfClosed();
}

HighguiWindow::~HighguiWindow() {
    nativeWindows.remove(this);
    state_->setListener(nullptr);
    state_->close();
}

NativeHandle HighguiWindow::handle() const { return state_->window(); }

NativeHandle HighguiWindow::frame() const { return state_->window() != nullptr ? state_->frame() : nullptr; }

bool HighguiWindow::moveInto(NativeHandle newParent) {
    return state_->moveInto(static_cast<HWND>(newParent));
}
void HighguiWindow::show(const cv::Mat& picture) { state_->show(picture); }
void HighguiWindow::setCursor(TCursorShape shape) { state_->setCursor(shape); }
void HighguiWindow::setMouseListener(MouseListener* listener) { state_->setListener(listener); }
void HighguiWindow::close() { state_->close(); }
std::function<void()> HighguiWindow::closer() const {
    return [state = state_] { state->close(); };
}

}  // namespace orx::platform
