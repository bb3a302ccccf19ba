// How well points lie on an ellipse, measured along the rays from its centre.
#ifndef ORXFUNCTIONS_FITTING_ELLIPSE_GRADING_INTERNAL_H
#define ORXFUNCTIONS_FITTING_ELLIPSE_GRADING_INTERNAL_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/fitting/kernels/ellipse.h"

namespace orx {

struct EllipseGrade {
    double meanError;   // pixels
    float inlierRatio;  // points with an error below the threshold
};

// Grades by all points; there is at least one. False as soon as the mean error is known to exceed
// `worstMean`; `out` is then untouched.
bool gradeEllipse(const ellipse_kernels::CentredConic& conic, const std::vector<cv::Point2f>& points,
                  float threshold, double worstMean, EllipseGrade& out);

}  // namespace orx

#endif
