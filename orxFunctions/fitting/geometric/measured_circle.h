// From taken points to the circle with its report.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_CIRCLE_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_CIRCLE_H

#include "orxFunctions/fitting/geometric/fit_points.h"
#include "orxFunctions/fitting/geometric/measured_start.h"
#include "orxFunctions/fitting/geometric_fit.h"
#include "orxFunctions/fitting/kernels/distance.h"

namespace orx::geometric {

// What fitCircleGeometric promises, for points that were taken with these options; a robust loss leaves
// outliers out of them. Points left out before stay out.
void measureCircle(const TFitOptions& options, FitPoints& points, TMeasuredCircle& result);

// The same with a robust loss from a circle near the one sought.
void measureFrom(const Start<distance_kernels::Circle>& start, const TFitOptions& options, FitPoints& points,
                 TMeasuredCircle& result);

}  // namespace orx::geometric

#endif
