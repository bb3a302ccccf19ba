// Contrast edges along a direction: analysis/caliper.h.
#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/analysis/caliper.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

// sigma, min_contrast, polarity, selection
using Options = std::tuple<double, double, int, int>;
// position, distance, contrast, blur, caliper
using EdgeArrays =
    std::tuple<ArrayOf<double>, ArrayOf<double>, ArrayOf<double>, ArrayOf<double>, ArrayOf<int>>;

orx::TCaliperOptions optionsOf(const Options& values) {
    orx::TCaliperOptions options;
    options.sigma = std::get<0>(values);
    options.minContrast = std::get<1>(values);
    options.polarity = static_cast<orx::TEdgePolarity>(std::get<2>(values));
    options.selection = static_cast<orx::TEdgeSelection>(std::get<3>(values));
    return options;
}

EdgeArrays arraysOf(const std::vector<orx::TContrastEdge>& edges) {
    if (edges.empty()) raiseUnlessNothingFound();
    std::vector<cv::Point2d> position;
    std::vector<double> distance, contrast, blur;
    std::vector<int> caliper;
    for (const orx::TContrastEdge& edge : edges) {
        position.push_back(edge.position);
        distance.push_back(edge.distance);
        contrast.push_back(edge.contrast);
        blur.push_back(edge.blur);
        caliper.push_back(edge.caliper);
    }
    return {arrayFrom(std::move(position)), arrayFrom(std::move(distance)), arrayFrom(std::move(contrast)),
            arrayFrom(std::move(blur)), arrayFrom(std::move(caliper))};
}

EdgeArrays caliper(const Argument& image, const Argument& start, const Argument& end, double width,
                   const Options& options) {
    const Image picture = imageOf(image, "image", ikAny);
    const cv::Point2d from = placeOf(start, "start"), to = placeOf(end, "end");
    return arraysOf(
        unlocked([&] { return orx::getContrastEdges(picture.mat, from, to, width, optionsOf(options)); }));
}

EdgeArrays caliperBox(const Argument& image, const std::tuple<int, int, int, int>& box, int direction,
                      const Options& options) {
    const Image picture = imageOf(image, "image", ikAny);
    const auto [x, y, width, height] = box;
    const cv::Rect rect(x, y, width, height);
    return arraysOf(unlocked([&] {
        return orx::getContrastEdges(picture.mat, rect, static_cast<orx::TScanDirection>(direction),
                                     optionsOf(options));
    }));
}

EdgeArrays caliperRotated(const Argument& image, const Argument& center, const Argument& size, double angle,
                          const Options& options) {
    const Image picture = imageOf(image, "image", ikAny);
    const cv::Point2d middle = placeOf(center, "center"), extent = placeOf(size, "size");
    const cv::RotatedRect rect(cv::Point2f(middle), cv::Size2f(cv::Size2d(extent.x, extent.y)),
                               static_cast<float>(angle));
    return arraysOf(unlocked([&] { return orx::getContrastEdges(picture.mat, rect, optionsOf(options)); }));
}

// count, search_length, width, direction, start_angle, sweep, compensate_blur
using Fan = std::tuple<int, double, double, int, double, double, bool>;

EdgeArrays circleCaliper(const Argument& image, const Argument& center, double radius, const Fan& fan,
                         const Options& edge) {
    const Image picture = imageOf(image, "image", ikAny);
    const cv::Point2d middle = placeOf(center, "center");
    orx::TCircleCaliperOptions options;
    options.edge = optionsOf(edge);
    int direction = 0;
    std::tie(options.count, options.searchLength, options.width, direction, options.startAngle, options.sweep,
             options.compensateBlur) = fan;
    options.direction = static_cast<orx::TRadialDirection>(direction);
    return arraysOf(unlocked([&] { return orx::getCircleEdges(picture.mat, middle, radius, options); }));
}

}  // namespace

void bindCalipers(py::module_& core) {
    core.def("caliper", &caliper, py::arg("image"), py::arg("start"), py::arg("end"), py::arg("width"),
             py::arg("options"));
    core.def("caliper_box", &caliperBox, py::arg("image"), py::arg("box"), py::arg("direction"),
             py::arg("options"));
    core.def("caliper_rotated", &caliperRotated, py::arg("image"), py::arg("center"), py::arg("size"),
             py::arg("angle"), py::arg("options"));
    core.def("circle_caliper", &circleCaliper, py::arg("image"), py::arg("center"), py::arg("radius"),
             py::arg("fan"), py::arg("options"));
}

}  // namespace orxpy
