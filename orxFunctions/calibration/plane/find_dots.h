// The dots of a grid.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_FIND_DOTS_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_FIND_DOTS_H

#include <string>

#include "orxFunctions/calibration/plane/grid_order.h"

namespace orx::plane {

// As findChessboard; the points are the centres of the dots' outlines.
bool findDots(const cv::Mat& grey, Grid& grid, std::vector<double>& deviations, std::string& problem);

}  // namespace orx::plane

#endif
