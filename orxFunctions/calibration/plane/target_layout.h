// What is printed for a target: dark rectangles and disks, and a line to check the print by.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_TARGET_LAYOUT_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_TARGET_LAYOUT_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/calibration/plane_target.h"

namespace orx::plane {

// Millimetres from the page's upper left corner.
struct Layout {
    std::vector<cv::Rect2d> squares;
    std::vector<cv::Point2d> dots;
    double dotRadius = 0.0;
    std::vector<cv::Rect2d> scaleBar;  // a line and the ticks at its ends; none without room for it
    cv::Point2d textPlace;             // of the text's left end, on its base line
    std::string text;
    double textHeight = 0.0;
};

// False where options are outside of their ranges or the target does not fit: rcOption, refused in the name
// of the public function.
bool layOut(const TTarget& target, const TTargetPage& page, Layout& layout, const char* function);

}  // namespace orx::plane

#endif
