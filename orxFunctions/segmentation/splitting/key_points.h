// The polygon that approximates a contour.
#ifndef ORXFUNCTIONS_SEGMENTATION_SPLITTING_KEY_POINTS_H
#define ORXFUNCTIONS_SEGMENTATION_SPLITTING_KEY_POINTS_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/segmentation/splitting/work.h"

namespace orx::splitting {

// What cv::approxPolyDP gives for the contour, which is not empty, and an accuracy from 0 to below 1e30. That
// one looks at every point between two key points for each of them, which is quadratic where a contour runs
// to and fro; here boxes of points that can't hold the farthest one are passed over. Where the work becomes
// too much, what was found so far is of no use. Reentrant.
std::vector<cv::Point> keyPointsOf(const std::vector<cv::Point>& contour, double epsilon, bool closed,
                                   Work& work);

}  // namespace orx::splitting

#endif
