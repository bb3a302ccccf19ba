// From taken points to the circle with its report.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_CIRCLE_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_CIRCLE_H

#include "orxFunctions/fitting/geometric/fit_points.h"
#include "orxFunctions/fitting/geometric_fit.h"

namespace orx::geometric {

// What fitCircleGeometric promises, for points that were taken with these options; a robust loss leaves
// outliers out of them. Points left out before stay out.
void measureCircle(const TFitOptions& options, FitPoints& points, TMeasuredCircle& result);

}  // namespace orx::geometric

#endif
