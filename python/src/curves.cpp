// Profiles y = f(x): fitting/polynomial.h, fitting/spline_curve.h.
#include <pybind11/pybind11.h>

#include <cmath>
#include <memory>
#include <opencv2/core.hpp>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/fitting/polynomial.h"
#include "orxFunctions/fitting/spline_curve.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

template <class ValueAt>
ArrayOf<double> valuesAt(const Argument& given, ValueAt valueAt) {
    std::vector<double> values = numbersOf(given, "x");
    unlocked([&] {
        for (double& value : values) value = valueAt(value);
    });
    return arrayFrom(std::move(values));
}

// Whatever a search over a stretch refuses has told so; a place that was found has not.
template <class Search>
Pair extremeOf(Search search) {
    const cv::Point2d place = unlocked(search);
    if (orx::lastRefusal().code != orx::rcNone) raiseRefusal();
    return {place.x, place.y};
}

template <class List>
ArrayOf<double> listOf(List list) {
    std::vector<cv::Point2d> points;
    unlocked([&] { list(points); });
    if (points.empty() && orx::lastRefusal().code != orx::rcNone) raiseRefusal();
    return arrayFrom(std::move(points));
}

std::unique_ptr<orx::TPolynomial> polynomial(const Argument& given, int order) {
    const std::vector<cv::Point2d> points = precisePointsOf(given, "points");
    auto model = std::make_unique<orx::TPolynomial>();
    if (!unlocked([&] { return model->fit(points, order); })) raiseRefusal();
    return model;
}

void bindPolynomial(py::module_& core) {
    py::class_<orx::TPolynomial>(core, "Polynomial")
        .def(py::init(&polynomial), py::arg("points"), py::arg("order"))
        .def("coefficients",
             [](const orx::TPolynomial& model) {
                 std::vector<double> coefficients;
                 if (!unlocked([&] { return model.getFitParas(coefficients); })) raiseRefusal();
                 return arrayFrom(std::move(coefficients));
             })
        .def(
            "values",
            [](const orx::TPolynomial& model, const Argument& x) {
                return valuesAt(x, [&](double at) { return model.getY(at); });
            },
            py::arg("x"))
        .def(
            "slopes",
            [](const orx::TPolynomial& model, const Argument& x) {
                return valuesAt(x, [&](double at) { return model.getSlope(at); });
            },
            py::arg("x"))
        .def("errors",
             [](const orx::TPolynomial& model) {
                 double sse = 0.0, rmse = 0.0, r2 = 0.0;
                 unlocked([&] { model.getError(sse, rmse, r2); });
                 return std::make_tuple(sse, rmse, r2);
             })
        .def(
            "extreme",
            [](const orx::TPolynomial& model, int low, int high, int mode) {
                return extremeOf([&] { return model.getExtremeValue(low, high, mode); });
            },
            py::arg("low"), py::arg("high"), py::arg("mode"))
        .def(
            "samples",
            [](const orx::TPolynomial& model, int digits) {
                return listOf([&](auto& list) { model.getPloyList(list, digits); });
            },
            py::arg("digits"))
        .def(
            "slope_samples",
            [](const orx::TPolynomial& model, int digits) {
                return listOf([&](auto& list) { model.getPloySlopeList(list, digits); });
            },
            py::arg("digits"));
}

std::unique_ptr<orx::TSplineCurve> splineCurve(const Argument& given, int order) {
    const std::vector<cv::Point2d> points = precisePointsOf(given, "points");
    auto curve = std::make_unique<orx::TSplineCurve>();
    unlocked([&] { curve->fit(points, order); });
    if (curve->segments.empty()) raiseRefusal();
    return curve;
}

// (m, 2): where each segment starts and ends; (m, n + 1): its coefficients.
std::pair<ArrayOf<double>, ArrayOf<double>> segmentsOf(const orx::TSplineCurve& curve) {
    std::vector<double> ends, coefficients;
    for (const orx::TSplineSegment& segment : curve.segments) {
        ends.insert(ends.end(), {segment.startX, segment.endX});
        coefficients.insert(coefficients.end(), segment.paraList.begin(), segment.paraList.end());
    }
    const auto count = static_cast<py::ssize_t>(curve.segments.size());
    const py::ssize_t terms = static_cast<py::ssize_t>(coefficients.size()) / count;
    return {arrayFrom(std::move(ends), {count, 2}), arrayFrom(std::move(coefficients), {count, terms})};
}

void bindSplineCurve(py::module_& core) {
    py::class_<orx::TSplineCurve>(core, "SplineCurve")
        .def(py::init(&splineCurve), py::arg("points"), py::arg("order"))
        .def("segments", &segmentsOf)
        .def(
            "values",
            [](const orx::TSplineCurve& curve, const Argument& x) {
                return valuesAt(x, [&](double at) { return curve.getY(at); });
            },
            py::arg("x"))
        .def(
            "extreme",
            [](const orx::TSplineCurve& curve, double low, double high, int mode) {
                return extremeOf([&] { return curve.getExtremeValue(low, high, mode); });
            },
            py::arg("low"), py::arg("high"), py::arg("mode"))
        .def(
            "samples",
            [](const orx::TSplineCurve& curve, int digits) {
                return listOf([&](auto& list) { curve.getSplineList(list, digits); });
            },
            py::arg("digits"));
}

}  // namespace

void bindCurves(py::module_& core) {
    bindPolynomial(core);
    bindSplineCurve(core);
}

}  // namespace orxpy
