// Looking at the annotated pictures on the screen.
#ifndef EXAMPLES_INSPECTION_PICTURE_WINDOW_H
#define EXAMPLES_INSPECTION_PICTURE_WINDOW_H

#include <memory>
#include <opencv2/core.hpp>
#include <string>

namespace inspection {

// Shows the picture in a picture box in a window of its own, until the user closes it or (unless that is 0)
// so many seconds have passed: the wheel zooms, dragging pans, a double click shows all. False when there is
// no display. One picture at a time, as all picture boxes show one image.
bool showInWindow(const cv::Mat& picture, const std::string& utf8Title, double seconds);

// A window that stays open while its picture changes. One thread at a time; one window at a time.
class LiveWindow {
  public:
    LiveWindow();
    ~LiveWindow();
    LiveWindow(const LiveWindow&) = delete;
    LiveWindow& operator=(const LiveWindow&) = delete;

    // False when there is no display.
    bool open(const std::string& utf8Title, cv::Size size);
    // False once the user has closed it.
    bool show(const cv::Mat& picture);
    bool handleEvents();

  private:
    struct Shown;
    std::unique_ptr<Shown> shown_;
};

}  // namespace inspection

#endif
