// The inner corners of a chessboard.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_FIND_CHESSBOARD_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_FIND_CHESSBOARD_H

#include <string>

#include "orxFunctions/calibration/plane/grid_order.h"

namespace orx::plane {

// `grey` is of one channel, 8 or 16 bits. Fills the grid's points and their deviations; else says why not.
bool findChessboard(const cv::Mat& grey, Grid& grid, std::vector<double>& deviations, std::string& problem);

}  // namespace orx::plane

#endif
