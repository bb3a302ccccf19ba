// The threads that feed the two boxes.
#ifndef EXAMPLES_VIEWER_FEEDS_H
#define EXAMPLES_VIEWER_FEEDS_H

#include <atomic>
#include <thread>

#include "orxFunctions/orxfunctions.h"
#include "viewer/belt.h"

namespace viewer {

// Feeds a box until it is destroyed. All boxes of a process show one image, so both feeds take theirs from
// one belt; each draws in its own box.
class Feed {
  public:
    Feed(Belt& belt, TPictureBox& box, void (*draw)(const cv::Mat& picture, TPictureBox& box));
    ~Feed();
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;

  private:
    std::atomic<bool> isEnding_{false};
    std::thread thread_;
};

// Frames each part, and draws the circle through the outline of a round one.
void drawParts(const cv::Mat& picture, TPictureBox& box);

// Writes the grey level in the selected rectangle.
void drawLevel(const cv::Mat& picture, TPictureBox& box);

}  // namespace viewer

#endif
