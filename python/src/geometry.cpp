// Primitives on whole pixels: fitting/geometry.h.
#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <string>
#include <tuple>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/fitting/geometry.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using CircleTuple = std::tuple<double, double, double>;

CircleTuple tupleOf(const cv::Point3d& circle) { return {circle.x, circle.y, circle.z}; }

std::vector<cv::Point> someOf(const Argument& argument, const char* name, std::size_t count) {
    std::vector<cv::Point> points = pixelsOf(argument, name);
    if (points.size() != count)
        throw py::value_error(std::string(name) + ": expected " + std::to_string(count) + " points, got " +
                              std::to_string(points.size()));
    return points;
}

CircleTuple circleThrough(const Argument& given) {
    const std::vector<cv::Point> points = someOf(given, "points", 3);
    cv::Point3d circle;
    if (!unlocked([&] { return orx::threePoints2circle2(points[0], points[1], points[2], circle); }))
        raiseRefusal();
    return tupleOf(circle);
}

double angleOf(const Argument& given, int range) {
    const std::vector<cv::Point> points = someOf(given, "points", 2);
    return orx::angleFrom2Points(points[0], points[1], static_cast<orx::TAngleType>(range));
}

ArrayOf<double> distanceToLine(const Argument& given, const Argument& ends) {
    const std::vector<cv::Point> points = pixelsOf(given, "points");
    const std::vector<cv::Point> line = someOf(ends, "line", 2);
    std::vector<double> distances(points.size());
    unlocked([&] {
        for (std::size_t i = 0; i < points.size(); ++i)
            distances[i] = orx::pointDistance2Line(points[i], line[0], line[1]);
    });
    return arrayFrom(std::move(distances));
}

}  // namespace

void bindGeometry(py::module_& core) {
    core.def("circle_through", &circleThrough, py::arg("points"));
    core.def("angle_of", &angleOf, py::arg("points"), py::arg("range"));
    core.def("distance_to_line", &distanceToLine, py::arg("points"), py::arg("line"));
}

}  // namespace orxpy
