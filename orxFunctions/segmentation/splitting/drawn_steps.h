// For developing the splitter: contours split with every step drawn.
#ifndef ORXFUNCTIONS_SEGMENTATION_SPLITTING_DRAWN_STEPS_H
#define ORXFUNCTIONS_SEGMENTATION_SPLITTING_DRAWN_STEPS_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/segmentation/segment_contour.h"
#include "orxFunctions/segmentation/splitting/splitter.h"

namespace orx::splitting {

// The steps of the last pass, each drawn into a copy of the background image.
struct DrawnSteps {
    cv::Mat keyPoints;  // with their indices
    cv::Mat lines;
    cv::Mat circles;
};

// The parameters that a development run asks for with four numbers. A radius limit other than 0 replaces the
// largest radius, and one of exactly 5.0 switches the arcs off (a sentinel, intended); a second flag of 0.0
// switches the second pass off.
TSegemetParams developmentParams(int smoothSize, double epsilon, double secondFlag, double radiusLimit);

// What split gives for each contour that is not empty; the drawings replace `steps` at every pass.
std::vector<Pieces> splitDrawn(const std::vector<std::vector<cv::Point>>& contours,
                               const TSegemetParams& params, const cv::Mat& background, DrawnSteps& steps);

}  // namespace orx::splitting

#endif
