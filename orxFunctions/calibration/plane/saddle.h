// Where two edges cross, to within hundredths of a pixel.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_SADDLE_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_SADDLE_H

#include <opencv2/core.hpp>

namespace orx::plane {

// How an edge runs near its crossing: its direction, and how it bends towards the normal that is the
// direction turned from x to y, 1 / pixels.
struct EdgeCourse {
    cv::Point2d direction;
    double curvature = 0.0;
};

struct Saddle {
    bool found = false;
    cv::Point2d place;
    double deviation = 0.0;  // standard uncertainty in x and in y (root mean square), pixels
};

// Lays two blurred edges that cross, from dark to bright on one side and back on the other, through the grey
// levels (CV_32F) within `radius` of `near`. The edges begin in the directions that are given; their
// curvature stays, since the levels of so small a place hardly tell it from a shift. Nothing is found where
// they do not fit or settle far from `near`.
//
// All pixels of the neighbourhood have their say, so that it comes close to what their noise allows; the
// usual way, where gradients point past the corner, counts those across each edge alone and is drawn to the
// middle of its window by noise.
Saddle fitSaddle(const cv::Mat& levels, cv::Point2d near, const EdgeCourse& along, const EdgeCourse& across,
                 double radius);

}  // namespace orx::plane

#endif
