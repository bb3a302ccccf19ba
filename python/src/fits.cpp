// Fits for measuring: fitting/geometric_fit.h, fitting/ellipse_geometric.h, measuring/edge_fit.h.
#include <pybind11/pybind11.h>

#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "fit_options.h"
#include "orxFunctions/fitting/ellipse_geometric.h"
#include "orxFunctions/fitting/geometric_fit.h"
#include "orxFunctions/measuring/edge_fit.h"
#include "refusals.h"
#include "shapes.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

template <class Shape>
using Measured = std::optional<decltype(measuredTuple(std::declval<Shape>()))>;

template <class Shape, class Fit>
Measured<Shape> fitPoints(const Argument& given, const FitArguments& arguments, Fit fit) {
    const std::vector<cv::Point2d> points = precisePointsOf(given, "points");
    const orx::TFitOptions options = fitOptionsOf(arguments);
    Shape shape = unlocked([&] { return fit(points, options); });
    if (shape.valid()) return measuredTuple(std::move(shape));
    raiseUnlessNoShape(shape, options);
    return std::nullopt;
}

// points, deviation, closed, sigma
using EdgeArguments = std::tuple<Argument, Argument, bool, double>;

template <class Shape, class Fit>
Measured<Shape> fitEdge(const EdgeArguments& given, const FitArguments& arguments, Fit fit) {
    const auto& [points, deviation, closed, sigma] = given;
    const ORXEdge::TMetricContour edge = chainOf(points, deviation, closed);
    const orx::TFitOptions options = fitOptionsOf(arguments);
    raiseUnlessSigma(sigma);
    Shape shape = unlocked([&, width = sigma] { return fit(edge, width, options); });
    if (shape.valid()) return measuredTuple(std::move(shape));
    raiseUnlessNoShape(shape, orx::edgeFitOptions(edge, sigma, options));
    return std::nullopt;
}

// The same fit under one name, for points and for an edge.
template <class Shape, class Fit>
void bindFit(py::module_& core, const std::string& name, Fit fit) {
    core.def(
        name.c_str(),
        [fit](const Argument& points, const FitArguments& options) {
            return fitPoints<Shape>(points, options, fit);
        },
        py::arg("points"), py::arg("options"));
    core.def((name + "_edge").c_str(),
             [fit](const EdgeArguments& edge, const FitArguments& options) {
                 return fitEdge<Shape>(edge, options, fit);
             },
             py::arg("edge"), py::arg("options"));
}

// center x and y, half axes, angle
using Outline = std::tuple<double, double, double, double, double>;

orx::TMeasuredEllipse ellipseOf(const Outline& outline) {
    orx::TMeasuredEllipse ellipse;
    std::tie(ellipse.center.x, ellipse.center.y, ellipse.semiMajor, ellipse.semiMinor, ellipse.angle) =
        outline;
    ellipse.status = orx::fsOk;
    return ellipse;
}

ArrayOf<double> ellipseDistances(const Outline& outline, const Argument& given) {
    const std::vector<cv::Point2d> points = precisePointsOf(given, "points");
    std::vector<double> distances(points.size());
    unlocked([&] {
        const orx::TMeasuredEllipse ellipse = ellipseOf(outline);
        for (std::size_t i = 0; i < points.size(); ++i) distances[i] = ellipse.signedDistance(points[i]);
    });
    return arrayFrom(std::move(distances));
}

ArrayOf<double> ellipseNearest(const Outline& outline, const Argument& given) {
    std::vector<cv::Point2d> points = precisePointsOf(given, "points");
    unlocked([&] {
        const orx::TMeasuredEllipse ellipse = ellipseOf(outline);
        for (cv::Point2d& point : points) point = ellipse.nearest(point);
    });
    return arrayFrom(std::move(points));
}

double coverageFactor(double probability, double degreesOfFreedom) {
    const double factor = unlocked([&] { return orx::coverageFactor(probability, degreesOfFreedom); });
    if (std::isnan(factor)) raiseRefusal();
    return factor;
}

}  // namespace

void bindFits(py::module_& core) {
    bindFit<orx::TMeasuredLine>(core, "fit_line",
                                [](const auto&... a) { return orx::fitLineGeometric(a...); });
    bindFit<orx::TMeasuredCircle>(core, "fit_circle",
                                  [](const auto&... a) { return orx::fitCircleGeometric(a...); });
    bindFit<orx::TMeasuredArc>(core, "fit_arc", [](const auto&... a) { return orx::fitArcGeometric(a...); });
    bindFit<orx::TMeasuredEllipse>(core, "fit_ellipse",
                                   [](const auto&... a) { return orx::fitEllipseGeometric(a...); });
    core.def("ellipse_distances", &ellipseDistances, py::arg("outline"), py::arg("points"));
    core.def("ellipse_nearest", &ellipseNearest, py::arg("outline"), py::arg("points"));
    core.def("coverage_factor", &coverageFactor, py::arg("probability"), py::arg("degrees_of_freedom"));
}

}  // namespace orxpy
