// Robot poses as homogeneous matrices.
#ifndef ORXFUNCTIONS_CALIBRATION_POSE_H
#define ORXFUNCTIONS_CALIBRATION_POSE_H

#include <opencv2/core.hpp>
#include <string>

#include "ZULLib/zullib.h"
#include "orxFunctions/api.h"

namespace orx {

// Turns a pose (translation, and rotation angles in degrees) into a 4x4 transform. Holds no data. Reentrant.
class ORX_API TPoint6DToMatrix {
  public:
    // [R t; 0 0 0 1] (CV_64F) with R = Rx(rx) * Ry(ry) * Rz(rz) and t = (x, y, z).
    //
    // Warning: angles that are infinite or not a number give no rotation, and end the process: "Euler Angle
    // convert to RotatedMatrix failed..." on standard output and exit code -1 (255 on POSIX). A robot that
    // moved to such a pose would do harm. The translation is not checked.
    cv::Mat Point6D2Matrix44(zul::TPoint6D pose);

  private:
    // The product of the rotations about the axes, in the reverse order of the letters of `sequence` (six
    // permutations of "xyz"): "zyx" is Rx * Ry * Rz. Any other sequence is reported on standard output and
    // ends the process like a broken rotation. An angle row that is not 1x3 raises OpenCV's assertion error.
    cv::Mat eulerAngleToRotateMatrix(const cv::Mat& eulerAngle, const std::string& sequence);
    bool isRotatedMatrix(cv::Mat& rotation);
    cv::Mat R_T2HomogeneousMatrix(const cv::Mat& rotation, const cv::Mat& translation);
};

}  // namespace orx

#endif
