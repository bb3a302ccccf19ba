// Relations of measured shapes: measuring/relations.h. What comes in is known by its fields: a measured
// point, line, circle (an arc is one) or ellipse, or a place as a pair of numbers, which counts as exact.
#include "orxFunctions/measuring/relations.h"

#include <pybind11/pybind11.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "fit_options.h"
#include "orxFunctions/measuring/edge_fit.h"
#include "refusals.h"
#include "shapes.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using orx::TMeasuredPoint;
using orx::TMeasuredValue;

enum class Kind { kPoint, kLine, kCircle, kEllipse, kPlace, kNone };

Kind kindOf(const Argument& shape) {
    if (py::hasattr(shape, "position")) return Kind::kPoint;
    if (py::hasattr(shape, "direction")) return Kind::kLine;
    if (py::hasattr(shape, "radius")) return Kind::kCircle;
    if (py::hasattr(shape, "semi_major")) return Kind::kEllipse;
    return isSequence(shape) ? Kind::kPlace : Kind::kNone;
}

orx::TMeasuredLine lineOf(const Argument& shape, const char* name) {
    if (kindOf(shape) != Kind::kLine) refuseType(name, "a measured line", shape);
    return measuredLineOf(shape, name);
}

orx::TMeasuredCircle circleOf(const Argument& shape, const char* name) {
    if (kindOf(shape) != Kind::kCircle) refuseType(name, "a measured circle", shape);
    return measuredCircleOf(shape, name);
}

TMeasuredPoint exactPoint(cv::Point2d place) {
    TMeasuredPoint point;
    point.status = orx::rsOk;
    point.position = place;
    point.degreesOfFreedom = std::numeric_limits<double>::infinity();
    return point;
}

TMeasuredPoint pointOf(const Argument& shape, const char* name) {
    const Kind kind = kindOf(shape);
    if (kind == Kind::kPlace) return exactPoint(placeOf(shape, name));
    if (kind != Kind::kPoint) refuseType(name, "a measured point, or a place (x, y)", shape);
    TMeasuredPoint point =
        exactPoint(placeOf(shape.attr("position"), (std::string(name) + ".position").c_str()));
    point.covariance =
        squareOf<2>(py::getattr(shape, "covariance", py::none()), std::string(name) + ".covariance");
    point.degreesOfFreedom = PyFloat_AsDouble(py::object(shape.attr("degrees_of_freedom")).ptr());
    if (PyErr_Occurred() != nullptr) throw py::error_already_set();
    return point;
}

// value, deviation, degrees of freedom, folded
using ValueTuple = std::tuple<double, double, double, bool>;
// position, covariance, degrees of freedom
using PointTuple = std::tuple<Pair, ArrayOf<double>, double>;

// What shapes of numbers that are none lead to.
void wantFinite(bool finite) {
    if (!finite) throw py::value_error("a shape has a number that is not finite");
}

ValueTuple tupleOf(const TMeasuredValue& told) {
    wantFinite(std::isfinite(told.value) && std::isfinite(told.deviation) &&
               !std::isnan(told.degreesOfFreedom));
    return {told.value, told.deviation, told.degreesOfFreedom, told.folded};
}

PointTuple tupleOf(const TMeasuredPoint& told) {
    wantFinite(std::isfinite(told.position.x) && std::isfinite(told.position.y) &&
               !std::isnan(told.degreesOfFreedom));
    return {pairOf(told.position), arrayFrom(told.covariance), told.degreesOfFreedom};
}

// Relations are sums of a few terms: the lock is not worth its price here.
template <class Call>
auto asked(Call&& call) {
    orx::clearLastRefusal();
    return call();
}

template <class Told>
auto toldBy(const Told& told) -> std::optional<decltype(tupleOf(told))> {
    if (told.valid()) return tupleOf(told);
    return nothingFound();
}

PointTuple centerOf(const Argument& shape) {
    const Kind kind = kindOf(shape);
    if (kind == Kind::kCircle) return tupleOf(orx::centerOf(measuredCircleOf(shape, "shape")));
    if (kind == Kind::kEllipse) return tupleOf(orx::centerOf(measuredEllipseOf(shape, "shape")));
    refuseType("shape", "a measured circle, arc or ellipse", shape);
}

PointTuple pointOn(const Argument& line, double along) {
    return tupleOf(orx::pointOn(lineOf(line, "line"), along));
}

std::optional<ValueTuple> distance(const Argument& a, const Argument& b) {
    const Kind first = kindOf(a), second = kindOf(b);
    if (first == Kind::kCircle && second == Kind::kCircle) {
        return toldBy(
            asked([&] { return orx::distance(measuredCircleOf(a, "a"), measuredCircleOf(b, "b")); }));
    }
    if (first == Kind::kLine && second == Kind::kLine)
        refuseType("b", "a point (line_distance is for two lines)", b);
    if (second == Kind::kLine)
        return toldBy(asked([&] { return orx::distance(pointOf(a, "a"), measuredLineOf(b, "b")); }));
    if (first == Kind::kLine)
        return toldBy(asked([&] { return orx::distance(pointOf(b, "b"), measuredLineOf(a, "a")); }));
    return toldBy(asked([&] { return orx::distance(pointOf(a, "a"), pointOf(b, "b")); }));
}

std::optional<ValueTuple> signedDistance(const Argument& point, const Argument& line) {
    return toldBy(asked([&] { return orx::signedDistance(pointOf(point, "point"), lineOf(line, "line")); }));
}

std::optional<std::tuple<ValueTuple, ValueTuple, ValueTuple>> lineDistance(const Argument& a,
                                                                           const Argument& b) {
    const orx::TLineDistance told = asked([&] { return orx::distance(lineOf(a, "a"), lineOf(b, "b")); });
    if (!told.middle.valid()) return nothingFound();
    return std::make_tuple(tupleOf(told.middle), tupleOf(told.least), tupleOf(told.largest));
}

template <TMeasuredValue (*Relation)(const orx::TMeasuredLine&, const orx::TMeasuredLine&)>
std::optional<ValueTuple> ofLines(const Argument& a, const Argument& b) {
    return toldBy(asked([&] { return Relation(lineOf(a, "a"), lineOf(b, "b")); }));
}

template <TMeasuredValue (*Relation)(const orx::TMeasuredCircle&, const orx::TMeasuredCircle&)>
std::optional<ValueTuple> ofCircles(const Argument& a, const Argument& b) {
    return toldBy(asked([&] { return Relation(circleOf(a, "a"), circleOf(b, "b")); }));
}

std::optional<PointTuple> intersection(const Argument& a, const Argument& b) {
    return toldBy(asked([&] { return orx::intersection(lineOf(a, "a"), lineOf(b, "b")); }));
}

orx::TIntersections intersectionsOf(const Argument& a, const Argument& b) {
    const Kind first = kindOf(a), second = kindOf(b);
    if (first == Kind::kLine) return orx::intersections(measuredLineOf(a, "a"), circleOf(b, "b"));
    if (second == Kind::kLine) return orx::intersections(measuredLineOf(b, "b"), circleOf(a, "a"));
    return orx::intersections(circleOf(a, "a"), circleOf(b, "b"));
}

std::vector<PointTuple> intersections(const Argument& a, const Argument& b) {
    const orx::TIntersections told = asked([&] { return intersectionsOf(a, b); });
    if (!told.valid()) raiseUnlessNothingFound();
    std::vector<PointTuple> points;
    for (const TMeasuredPoint& point : told.points) points.push_back(tupleOf(point));
    return points;
}

double chainSmoothing(double sigma) {
    raiseUnlessSigma(sigma);
    return orx::chainSmoothing(sigma);
}

}  // namespace

void bindRelations(py::module_& core) {
    const auto a = py::arg("a"), b = py::arg("b");
    core.def("center_of", &centerOf, py::arg("shape"));
    core.def("point_on", &pointOn, py::arg("line"), py::arg("along"));
    core.def("distance", &distance, a, b);
    core.def("signed_distance", &signedDistance, py::arg("point"), py::arg("line"));
    core.def("line_distance", &lineDistance, a, b);
    core.def("gap", &ofCircles<&orx::gap>, a, b);
    core.def("angle", &ofLines<&orx::angle>, a, b);
    core.def("signed_angle", &ofLines<&orx::signedAngle>, a, b);
    core.def("parallelism", &ofLines<&orx::parallelism>, a, b);
    core.def("perpendicularity", &ofLines<&orx::perpendicularity>, a, b);
    core.def("concentricity", &ofCircles<&orx::concentricity>, a, b);
    core.def("intersection", &intersection, a, b);
    core.def("intersections", &intersections, a, b);
    core.def("chain_smoothing", &chainSmoothing, py::arg("sigma"));
}

}  // namespace orxpy
