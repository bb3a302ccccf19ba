// What a run on cameras shows in its window.
#ifndef EXAMPLES_INSPECTION_LIVE_LIVE_VIEW_H
#define EXAMPLES_INSPECTION_LIVE_LIVE_VIEW_H

#include <chrono>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "inspection/run/picture_window.h"
#include "orxFunctions/orxfunctions.h"

namespace inspection {

// The newest measured picture of each camera, side by side, its verdict and counts below each. Drawn no more
// often than people see.
class LiveView {
  public:
    LiveView(int cameras, std::string title)
        : pictures_(static_cast<std::size_t>(cameras)), title_(std::move(title)) {}

    // False when there is no display.
    bool open();
    // Whether it is time for a new picture of this camera.
    bool isDue(int camera) const;
    void show(int camera, const cv::Mat& drawn, const std::string& line, orx::TVerdict verdict);
    // Answers the user; false once the window was closed.
    bool goesOn();

  private:
    struct Shown {
        cv::Mat picture;
        std::chrono::steady_clock::time_point at;
    };

    std::vector<Shown> pictures_;
    std::string title_;
    LiveWindow window_;
};

// Pictures beside one another, as many in a row as make about a square, each in a cell of the largest's size.
cv::Mat sideBySide(const std::vector<cv::Mat>& pictures);

}  // namespace inspection

#endif
