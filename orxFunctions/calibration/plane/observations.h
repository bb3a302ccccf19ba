// What views tell about a camera: points of the plane and where they were seen, with their weights.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_OBSERVATIONS_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_OBSERVATIONS_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/calibration/plane_calibration.h"

namespace orx::plane {

struct Observation {
    std::vector<cv::Point2d> plane;
    std::vector<cv::Point2d> pixels;
    std::vector<double> weights;  // of the squared distance; 1 for a point of mean variance
    double variance = 1.0;        // of a point of weight 1, as the finder states it, square pixels
    double dotDiameter = 0.0;
};

// A view's points; false, with what is wrong, where they are of no use.
bool observe(const TTargetView& view, Observation& observation, std::string& problem);

// Where the centres of the dots' outlines lie beside the pictures of their centres, for each point: found
// pixels less these are what a camera projects. Nothing for corners.
std::vector<cv::Point2d> outlineShifts(const TPlaneCalibration& calibration, const Observation& observation);

// The share of a picture that lies within the hulls of what the views show.
double coverageOf(const std::vector<Observation>& observations, cv::Size imageSize);

}  // namespace orx::plane

#endif
