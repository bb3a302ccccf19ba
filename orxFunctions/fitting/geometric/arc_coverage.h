// The arc of a circle or ellipse that points cover, as seen from its center.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_ARC_COVERAGE_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_ARC_COVERAGE_H

#include <cmath>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/fitting/kernels/distance.h"

namespace orx::geometric {

using namespace distance_kernels;

// Rises with the angle from 0 to 4 in a turn, by a division: |y| / (|x| + |y|) or its complement, by
// quadrant.
inline double pseudoAngle(double x, double y) {
    const double sum = std::abs(x) + std::abs(y);
    const double part = sum > 0.0 ? std::abs(y) / sum : 0.0;
    const double upper = x < 0.0 ? 2.0 - part : part;
    return y < 0.0 ? 4.0 - upper : upper;
}

struct ArcCoverage {
    double start = 0.0;  // degrees in (-180, 180]; 0 for the whole turn
    double sweep = 0.0;  // degrees: 0 to 356, or 360 where no gap between neighbours reaches 4
};

// The smallest arc that holds all points named by `used` (empty: all). Linear in their number. Without points
// 0, 0.
ArcCoverage arcCoverage(const Columns& points, const std::vector<unsigned char>& used, cv::Point2d center);

}  // namespace orx::geometric

#endif
