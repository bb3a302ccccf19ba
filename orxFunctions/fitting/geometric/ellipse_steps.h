// The ellipse of least orthogonal distances from prepared points, in their units: what the public fit,
// consensus searches and others stand on. Nothing here allocates. Reentrant.
//
// Fast signed distances to an ellipse: foot_kernels::Kernels::nearDistances; exact ones:
// foot_kernels::Kernels::distances.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_ELLIPSE_STEPS_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_ELLIPSE_STEPS_H

#include <cstddef>
#include <opencv2/core.hpp>

#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/fitting/kernels/foot.h"

namespace orx::geometric {

using namespace foot_kernels;

using EllipseVector = cv::Vec<double, kEllipseParameters>;
using EllipseMatrix = cv::Matx<double, kEllipseParameters, kEllipseParameters>;

// Through five of the points. False where their conic is no ellipse, or they have none alone.
bool ellipseThrough(const Columns& points, const std::size_t* indices, Ellipse& ellipse);

// The direct fit of R. Halir and J. Flusser: an ellipse from any points, small where they are noisy.
// fsCollinear or fsTooFewPoints where they are on a line or in fewer than five places (either, where rounding
// leaves it open), fsNotThatShape where they are on a parabola.
TFitStatus directEllipse(const Columns& points, Ellipse& ellipse);

struct EllipseSolution {
    Ellipse ellipse;
    EllipseSums
        sums;  // of the last pass, taken where `ellipse` is but for the last step, too small to matter
    int iterations;
    TFitStatus status;  // fsOk, fsCollinear, fsNotThatShape (an axis without end) or fsNotConverged
};

// Steps from `start` to the least sum of the loss with its scale fixed, at most `maxIterations` passes.
// `rounding`: distances below tell nothing (FitPoints::rounding).
EllipseSolution refineEllipse(const Columns& points, const Ellipse& start, const Loss& loss,
                              int maxIterations, double rounding);

// Of the sums of a pass: w row row' over the points.
EllipseMatrix normalMatrix(const EllipseSums& sums);

// The row of a point (kernels/foot.h), and its signed distance.
double ellipseRow(const Ellipse& ellipse, cv::Point2d point, EllipseVector& row);

// As robustCircle, by samples of five.
bool robustEllipse(const Columns& points, int maxIterations, double rounding, Ellipse& ellipse, double& scale,
                   int& iterations);

// As settleCircle.
bool settleEllipse(const Columns& points, int maxIterations, double rounding, Ellipse& ellipse, double& scale,
                   int& iterations);

}  // namespace orx::geometric

#endif
