// A window of the system's own kind with panes side by side, as a host has it: no toolkit, nothing of the
// library.
#ifndef EXAMPLES_SUPPORT_HOST_WINDOW_H
#define EXAMPLES_SUPPORT_HOST_WINDOW_H

#include <memory>
#include <opencv2/core.hpp>
#include <string>

namespace host {

// One thread at a time, always the same.
class HostWindow {
  public:
    HostWindow() = default;
    virtual ~HostWindow() = default;  // closes it
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    // The native handle of a pane, from the left, and the size of each.
    virtual void* pane(int index) const = 0;
    virtual cv::Size paneSize() const = 0;

    // Handles what the user did, waiting up to so many milliseconds for it. False once the user has closed
    // the window, which then still stands, once somebody destroyed it, or the display is lost.
    virtual bool handleEvents(int milliseconds) = 0;

    // True when the display went away, and the window with it.
    virtual bool isDisplayLost() const = 0;

    // What is seen in the window, as BGR; empty when that can't be had.
    virtual cv::Mat capture() const = 0;
};

// Opens a window with panes of that size; the user may change the window's size, which is shared out evenly.
// nullptr when there is no display.
std::unique_ptr<HostWindow> openHostWindow(const std::string& title, int panes, cv::Size paneSize);

}  // namespace host

#endif
