// Measured shapes (fitting/geometric_fit.h, fitting/ellipse_geometric.h) as tuples in the order of the fields
// of orxfunctions.fitting's MeasuredLine, MeasuredCircle, MeasuredArc and MeasuredEllipse, and back out of
// objects that have these fields.
#ifndef ORXFUNCTIONS_PYTHON_SHAPES_H
#define ORXFUNCTIONS_PYTHON_SHAPES_H

#include <pybind11/pybind11.h>

#include <tuple>
#include <utility>

#include "arrays.h"
#include "orxFunctions/fitting/ellipse_geometric.h"
#include "orxFunctions/fitting/geometric_fit.h"

namespace orxpy {

// FitReport: points, used_points, effective_points, degrees_of_freedom, noise, rms, peak_to_valley,
// iterations, used.
using ReportTuple = std::tuple<int, int, double, double, double, double, double, int, ArrayOf<bool>>;
// point, direction, angle, from_, to, covariance, offset_deviation, angle_deviation
using LineTuple = std::tuple<Pair, Pair, double, double, double, ArrayOf<double>, double, double>;
// center, radius, start_angle, sweep, covariance, x_deviation, y_deviation, radius_deviation
using CircleTuple = std::tuple<Pair, double, double, double, ArrayOf<double>, double, double, double>;
// The circle's, then start, middle, end, length.
using ArcTuple = std::tuple<Pair, double, double, double, ArrayOf<double>, double, double, double, Pair, Pair,
                            Pair, double>;
// center, semi_major, semi_minor, angle, angle_told, start_angle, sweep, covariance, x_deviation,
// y_deviation, semi_major_deviation, semi_minor_deviation, angle_deviation
using EllipseTuple = std::tuple<Pair, double, double, double, bool, double, double, ArrayOf<double>, double,
                                double, double, double, double>;

ReportTuple reportTuple(orx::TFitReport&& report);
LineTuple shapeTuple(const orx::TMeasuredLine& line);
CircleTuple shapeTuple(const orx::TMeasuredCircle& circle);
ArcTuple shapeTuple(const orx::TMeasuredArc& arc);
EllipseTuple shapeTuple(const orx::TMeasuredEllipse& ellipse);

// A shape with its report: what a fit answers with.
template <class Shape>
auto measuredTuple(Shape&& shape) {
    auto fields = shapeTuple(shape);
    return std::make_pair(std::move(fields), reportTuple(std::move(shape)));
}

// Objects with the fields above and a `report`; TypeError that names the argument and the field where one is
// missing or of another kind. `status` is fsOk.
orx::TMeasuredLine measuredLineOf(const Argument& argument, const char* name);
orx::TMeasuredCircle measuredCircleOf(const Argument& argument, const char* name);
orx::TMeasuredArc measuredArcOf(const Argument& argument, const char* name);
orx::TMeasuredEllipse measuredEllipseOf(const Argument& argument, const char* name);

}  // namespace orxpy

#endif
