// From taken points to the line with its report.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_LINE_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_LINE_H

#include "orxFunctions/fitting/geometric/fit_points.h"
#include "orxFunctions/fitting/geometric/measured_start.h"
#include "orxFunctions/fitting/geometric_fit.h"
#include "orxFunctions/fitting/kernels/distance.h"

namespace orx::geometric {

// What fitLineGeometric promises, for points that were taken with these options; a robust loss leaves
// outliers out of them. Points left out before stay out.
void measureLine(const TFitOptions& options, FitPoints& points, TMeasuredLine& result);

// The same with a robust loss from a line near the one sought.
void measureFrom(const Start<distance_kernels::Line>& start, const TFitOptions& options, FitPoints& points,
                 TMeasuredLine& result);

}  // namespace orx::geometric

#endif
