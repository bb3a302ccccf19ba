// From taken points to the ellipse with its report.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_ELLIPSE_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_ELLIPSE_H

#include <cstddef>

#include "orxFunctions/fitting/ellipse_geometric.h"
#include "orxFunctions/fitting/geometric/fit_points.h"
#include "orxFunctions/fitting/geometric/measured_start.h"
#include "orxFunctions/fitting/kernels/foot.h"

namespace orx::geometric {

constexpr std::size_t kFewestEllipsePoints = 6;

// What fitEllipseGeometric promises, for points that were taken with these options; a robust loss leaves
// outliers out of them. Points left out before stay out.
void measureEllipse(const TFitOptions& options, FitPoints& points, TMeasuredEllipse& result);

// The same with a robust loss from an ellipse near the one sought.
void measureFrom(const Start<foot_kernels::Ellipse>& start, const TFitOptions& options, FitPoints& points,
                 TMeasuredEllipse& result);

}  // namespace orx::geometric

#endif
