// A host's window with a thread of its own that runs its messages.
#ifndef ORX_TESTS_WINDOWS_HOST_WINDOW_H
#define ORX_TESTS_WINDOWS_HOST_WINDOW_H

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <functional>
#include <thread>

namespace test {

class HostWindow {
  public:
    HostWindow(int width, int height);
    ~HostWindow();
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    // nullptr when windows can't be opened.
    HWND handle() const { return window_; }

    // Runs it on the window's thread, and waits.
    void run(const std::function<void()>& body) const;

    // Destroys the window; its thread runs on.
    void destroy();

  private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void open(int width, int height);

    HWND window_ = nullptr;
    HWND messages_ = nullptr;  // stays when the window goes
    std::thread thread_;
};

// The colour of a pixel of a window as 0xRRGGBB; kNoPixel outside of what is seen of it.
constexpr unsigned kNoPixel = 0xFFFFFFFF;
unsigned pixelOf(HWND window, int x, int y);

// Waits up to ten seconds.
bool eventually(const std::function<bool()>& condition);

}  // namespace test

#endif
