// A window of highgui's, made to be the child of the host's.
//
// highgui wants to be called on the thread that created the window: it holds its own lock while it sends
// messages there, so that imshow on another thread and the message loop wait for each other as soon as the
// size changes. The drawing window is therefore subclassed. Whoever has a picture stores it and posts a
// message; the window procedure, on the creating thread, shows it. The same procedure takes the mouse: the
// wheel goes to the window that has the focus, and past highgui once its drawing window has left its frame.
#ifndef ORXFUNCTIONS_PLATFORM_HIGHGUI_WINDOW_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_HIGHGUI_WINDOW_INTERNAL_H

#include <functional>
#include <memory>
#include <string>

#include "orxFunctions/platform/window/native_window.h"

namespace orx::platform {

class HighguiWindow final : public NativeWindow {
  public:
    explicit HighguiWindow(std::string name);
    ~HighguiWindow() override;

    NativeHandle handle() const override;
    NativeHandle frame() const override;
    bool moveInto(NativeHandle newParent) override;
    void show(const cv::Mat& picture) override;
    void waitUntilShown() override {}
    void setCursor(TCursorShape shape) override;
    void setMouseListener(MouseListener* listener) override;
    void close() override;

    // Does what close does, even when this object has gone meanwhile.
    std::function<void()> closer() const;

    class State;  // shared with the window procedure, which may outlive this object

  private:
    std::shared_ptr<State> state_;
};

}  // namespace orx::platform

#endif
