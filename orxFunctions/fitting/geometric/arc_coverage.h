// The arc of a circle or ellipse that points cover, as seen from its center.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_ARC_COVERAGE_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_ARC_COVERAGE_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/fitting/kernels/geometric_kernels.h"

namespace orx::geometric {

struct ArcCoverage {
    double start = 0.0;  // degrees in (-180, 180]; 0 for the whole turn
    double sweep = 0.0;  // degrees: 0 to 356, or 360 where no gap between neighbours reaches 4
};

// The smallest arc that holds all points named by `used` (empty: all). Linear in their number. Without points
// 0, 0.
ArcCoverage arcCoverage(const Columns& points, const std::vector<unsigned char>& used, cv::Point2d center);

}  // namespace orx::geometric

#endif
