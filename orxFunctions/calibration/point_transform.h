// Rigid motions between two lists of corresponding 3-D points, for example the same marks measured by a
// camera and by a robot.
//
// Both functions are the least-squares rotation from the singular value decomposition of the 3x3
// cross-covariance, with a guard against reflections: W. Kabsch, "A solution for the best rotation to relate
// two sets of vectors", Acta Cryst. A32 (1976); K. S. Arun, T. S. Huang, S. D. Blostein, "Least-squares
// fitting of two 3-D point sets", IEEE PAMI 9 (1987). Degenerate lists (points on one line, or all equal)
// give some proper rotation that fits; not-a-number or infinite coordinates give a matrix of such values.
// Neither throws. Reentrant.
#ifndef ORXFUNCTIONS_CALIBRATION_POINT_TRANSFORM_H
#define ORXFUNCTIONS_CALIBRATION_POINT_TRANSFORM_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

// The 4x4 transform [R t; 0 0 0 1] (CV_64F) with b_i = R * a_i + t as nearly as possible. The choice for
// calibration, where the translation counts. False for lists of different length (rcSizesDiffer) or of fewer
// than 4 points (rcTooFew), each with a message to the user in colour 1; `result` is then untouched.
ORX_API bool calcAXequalsB(const std::vector<cv::Point3d>& listA, const std::vector<cv::Point3d>& listB,
                           cv::Mat& result);

// The 3x3 rotation (CV_64F) alone, between the lists moved to their centroids; sums are doubles. An empty
// matrix for lists of different length (rcSizesDiffer) or of fewer than 3 points (rcTooFew); no message.
ORX_API cv::Mat cpuTrsfMat(std::vector<cv::Point3f> list1, std::vector<cv::Point3f> list2);

}  // namespace orx

#endif
