// The line of least orthogonal distances from prepared points, in their units: what the public fit, consensus
// searches and others stand on. Nothing here allocates. Reentrant.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_LINE_STEPS_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_LINE_STEPS_H

#include <opencv2/core.hpp>

#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/fitting/kernels/distance.h"

namespace orx::geometric {

using namespace distance_kernels;

// Through two points. False where they are one.
bool lineThrough(cv::Point2d a, cv::Point2d b, Line& line);

// Through the weighted centroid along the largest moment. False where all weight is in one place.
bool momentsLine(const Moments& moments, Line& line);

struct LineSolution {
    Line line;
    LineSums sums;  // taken where `line` is
    int iterations;
    TFitStatus status;  // fsOk, fsCoincident or fsNotConverged
};

// Passes from `start` to the least sum of the loss with its scale fixed, at most `maxIterations`.
LineSolution refineLine(const Columns& points, const Line& start, const Loss& loss, int maxIterations,
                        double rounding);

// As robustCircle, by samples of two.
bool robustLine(const Columns& points, int maxIterations, double rounding, Line& line, double& scale,
                int& iterations);

// The last part of it: steps with Tukey's loss from there, while the scale follows the inliers.
bool settleLine(const Columns& points, int maxIterations, double rounding, Line& line, double& scale,
                int& iterations);

}  // namespace orx::geometric

#endif
