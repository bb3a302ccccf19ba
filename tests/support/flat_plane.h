// A plane calibration without a lens, as small as one that can be written and read again.
#ifndef ORXFUNCTIONS_TESTS_SUPPORT_FLAT_PLANE_H
#define ORXFUNCTIONS_TESTS_SUPPORT_FLAT_PLANE_H

#include "orxFunctions/calibration/plane_calibration.h"

namespace test {

inline orx::TPlaneCalibration flatPlane(cv::Size imageSize = {640, 480},
                                        const cv::Matx33d& homography = cv::Matx33d::eye()) {
    orx::TPlaneCalibration plane;
    plane.status = orx::plOk;
    plane.lens = false;
    plane.imageSize = imageSize;
    plane.homography = homography;
    plane.degreesOfFreedom = 10;
    plane.views = 1;
    return plane;
}

}  // namespace test

#endif
