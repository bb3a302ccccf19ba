// From taken points to the ellipse with its report.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_ELLIPSE_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_MEASURED_ELLIPSE_H

#include <cstddef>

#include "orxFunctions/fitting/ellipse_geometric.h"
#include "orxFunctions/fitting/geometric/fit_points.h"

namespace orx::geometric {

constexpr std::size_t kFewestEllipsePoints = 6;

// What fitEllipseGeometric promises, for points that were taken with these options; a robust loss leaves
// outliers out of them. Points left out before stay out.
void measureEllipse(const TFitOptions& options, FitPoints& points, TMeasuredEllipse& result);

}  // namespace orx::geometric

#endif
