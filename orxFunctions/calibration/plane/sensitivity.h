// How pictures of the plane's points move with the parameters of the calibration.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_SENSITIVITY_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_SENSITIVITY_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/calibration/plane_calibration.h"

namespace orx::plane {

// Derivatives of planeToImage by the parameters in the order of TPlaneCalibration::covariance: 2n x 15;
// and those pictures, where asked for. The status is not looked at, nor on which side a place lies.
cv::Mat imageSensitivity(const TPlaneCalibration& calibration, const std::vector<cv::Point2d>& places,
                         std::vector<cv::Point2d>* pixels = nullptr);

}  // namespace orx::plane

#endif
