// Bounding boxes over stretches of a contour.
#ifndef ORXFUNCTIONS_SEGMENTATION_SPLITTING_CONTOUR_BOXES_H
#define ORXFUNCTIONS_SEGMENTATION_SPLITTING_CONTOUR_BOXES_H

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

namespace orx::splitting {

struct Box {
    int left, top, right, bottom;

    void include(const Box& other);
};

// Level 0 has a box for each 16 points, every further level one for each 16 boxes below it; the last level
// has one. None for an empty contour.
class ContourBoxes {
  public:
    static constexpr std::size_t kFanOut = 16;

    explicit ContourBoxes(const std::vector<cv::Point>& contour);

    const std::vector<std::vector<Box>>& levels() const { return levels_; }

  private:
    std::vector<std::vector<Box>> levels_;
};

}  // namespace orx::splitting

#endif
