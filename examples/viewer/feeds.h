// The threads that feed the two boxes.
#ifndef EXAMPLES_VIEWER_FEEDS_H
#define EXAMPLES_VIEWER_FEEDS_H

#include <atomic>
#include <thread>

#include "orxFunctions/orxfunctions.h"
#include "viewer/belt.h"

namespace viewer {

// Feeds a box until it is destroyed: hands each picture of the belt to `show`.
class Feed {
  public:
    Feed(Belt& belt, TPictureBox& box, void (*show)(cv::Mat& picture, TPictureBox& box));
    ~Feed();
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;

  private:
    std::atomic<bool> isEnding_{false};
    std::thread thread_;
};

// With each part framed, and the circle through the outline of a round one; picture and marks go in together.
void showParts(cv::Mat& picture, TPictureBox& box);

// With the grey level in the selected rectangle.
void showLevel(cv::Mat& picture, TPictureBox& box);

}  // namespace viewer

#endif
