#include "inspection/run/picture_window.h"

#include <algorithm>
#include <chrono>

#include "orxFunctions/orxfunctions.h"
#include "support/host_window.h"

namespace inspection {
namespace {

constexpr double kWidest = 1200.0;  // of a window when it opens
constexpr double kHighest = 800.0;

cv::Size windowSizeFor(cv::Size picture) {
    const double scale = std::min({1.0, kWidest / picture.width, kHighest / picture.height});
    return {std::max(200, cvRound(scale * picture.width)), std::max(150, cvRound(scale * picture.height))};
}

}  // namespace

bool showInWindow(const cv::Mat& picture, const std::string& utf8Title, double seconds) {
    if (picture.empty()) return true;
    const auto window = host::openHostWindow(utf8Title, 1, windowSizeFor(picture.size()));
    if (!window) return false;
    cv::Mat shown = picture;
    TPictureBox box;
    box.setHandle(window->pane(0));
    box.start();
    const auto start = std::chrono::steady_clock::now();
    cv::Size size;
    while (window->handleEvents(20)) {
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        if (seconds > 0.0 && time.count() > seconds) break;
        if (size == window->paneSize()) continue;
        size = window->paneSize();
        box.setWindowSize(size.width, size.height);
        box.setImage(shown, false);
    }
    return true;
}

struct LiveWindow::Shown {
    std::unique_ptr<host::HostWindow> window;
    cv::Mat picture;  // that the box shows, which is gone first
    TPictureBox box;
};

LiveWindow::LiveWindow() = default;
LiveWindow::~LiveWindow() = default;

bool LiveWindow::open(const std::string& utf8Title, cv::Size size) {
    auto window = host::openHostWindow(utf8Title, 1, windowSizeFor(size));
    if (!window) return false;
    shown_ = std::make_unique<Shown>();
    shown_->window = std::move(window);
    shown_->box.setHandle(shown_->window->pane(0));
    shown_->box.start();
    return true;
}

bool LiveWindow::show(const cv::Mat& picture) {
    const cv::Size pane = shown_->window->paneSize();
    shown_->box.setWindowSize(pane.width, pane.height);
    cv::Mat next = picture;
    shown_->box.setImage(next, false);
    shown_->picture = next;
    return handleEvents();
}

bool LiveWindow::handleEvents() { return shown_->window->handleEvents(0); }

}  // namespace inspection
