// How the points of a measuring fit err: TFitOptions (fitting/fit_report.h) out of plain arguments.
#ifndef ORXFUNCTIONS_PYTHON_FIT_OPTIONS_H
#define ORXFUNCTIONS_PYTHON_FIT_OPTIONS_H

#include <tuple>

#include "arrays.h"
#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/fitting/fit_report.h"
#include "refusals.h"

namespace orxpy {

// loss, tuning, scale, deviations, absolute_deviations, noise, smoothing, max_iterations
using FitArguments = std::tuple<int, double, double, Argument, bool, int, double, int>;
orx::TFitOptions fitOptionsOf(const FitArguments& arguments);

// An edge chain, as far as fits need it.
ORXEdge::TMetricContour chainOf(const Argument& points, const Argument& deviation, bool closed);

// For a fit that has answered with this status: returns where the points were sound and follow no such shape
// (None in Python), else raises in the words of Python: which option is out of its range, how many points
// there are.
void raiseUnlessNoShape(const orx::TFitReport& report, const orx::TFitOptions& options);
// Raises where an option of `options` is out of its range.
void raiseFitOption(const orx::TFitOptions& options);

// For deviations that do not fit the points.
[[noreturn]] void raiseDeviations(const orx::TFitOptions& options, int points);
[[noreturn]] void raiseOption(const char* name, const char* range, double got);
// Raises where this is no width of smoothing that edges are found at.
void raiseUnlessSigma(double sigma);

}  // namespace orxpy

#endif
