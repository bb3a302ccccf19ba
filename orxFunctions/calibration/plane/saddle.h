// Where two edges cross, to within hundredths of a pixel.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_SADDLE_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_SADDLE_H

#include <opencv2/core.hpp>

namespace orx::plane {

struct Saddle {
    bool found = false;
    cv::Point2d place;
    double deviation = 0.0;  // standard uncertainty in x and in y (root mean square), pixels
};

// Lays two blurred edges that cross, from dark to bright on one side and back on the other, through the grey
// levels (CV_32F) within `radius` of `near`. The edges begin in the directions `along` and `across`. Nothing
// is found where they do not fit or settle far from `near`.
//
// All pixels of the neighbourhood have their say, so that it comes close to what their noise allows; the
// usual way, where gradients point past the corner, counts those across each edge alone and is drawn to the
// middle of its window by noise.
Saddle fitSaddle(const cv::Mat& levels, cv::Point2d near, cv::Point2d along, cv::Point2d across,
                 double radius);

}  // namespace orx::plane

#endif
