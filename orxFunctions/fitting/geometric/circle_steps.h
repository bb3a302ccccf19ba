// The circle of least orthogonal distances from prepared points, in their units: what the public fit,
// consensus searches and others stand on. Nothing here allocates. Reentrant.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_CIRCLE_STEPS_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_CIRCLE_STEPS_H

#include <opencv2/core.hpp>

#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/fitting/kernels/distance.h"

namespace orx::geometric {

using namespace distance_kernels;

// Through three points. False where they are on a line (or nearly: a radius beyond 1e7 of the columns' unit).
bool circleThrough(cv::Point2d a, cv::Point2d b, cv::Point2d c, Circle& circle);

// The algebraic circle of G. Taubin from the points' weighted moments. False where the points are collinear.
bool taubinCircle(const Moments& moments, Circle& circle);

struct CircleSolution {
    Circle circle;
    CircleSums sums;  // taken where `circle` is, but for a last step too small to matter
    int iterations;
    TFitStatus status;  // fsOk, fsCollinear or fsNotConverged
};

// Steps from `start` to the least sum of the loss with its scale fixed, at most `maxIterations` passes.
// `rounding`: distances below tell nothing (FitPoints::rounding).
CircleSolution refineCircle(const Columns& points, const Circle& start, const Loss& loss, int maxIterations,
                            double rounding);

// The step to the least sum of squares that the sums of one pass tell, and the fall of that sum expected of
// it. `damping` 0 for Gauss-Newton. False where the points do not tell the circle.
bool circleStep(const CircleSums& sums, double damping, Circle& step, double& fall);

// The circle after so many times a step from where the sums were taken, in parameters that move evenly for
// short arcs, too: through a line to the other side as well. False, and `next` as it was, where it is a line.
bool movedCircle(const Circle& circle, const CircleSums& sums, const Circle& step, double factor,
                 Circle& next);

// Finds a circle that at least half of the points follow, whatever the others do, by the least median of
// squares over samples of three, always the same, and steps with Tukey's loss. `scale` becomes the noise of
// those points; above 0 it is known, and stays. False where no three points tell a circle.
bool robustCircle(const Columns& points, int maxIterations, double rounding, Circle& circle, double& scale,
                  int& iterations);

// The last part of it: steps with Tukey's loss from there, while the scale follows the inliers.
bool settleCircle(const Columns& points, int maxIterations, double rounding, Circle& circle, double& scale,
                  int& iterations);

}  // namespace orx::geometric

#endif
