// Outlines of objects, their centres, and where they really pass: analysis/contours.h, contour_center.h,
// contour_edges.h, clean_up.h.
#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/analysis/clean_up.h"
#include "orxFunctions/analysis/contour_center.h"
#include "orxFunctions/analysis/contour_edges.h"
#include "orxFunctions/analysis/contours.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using Contours = std::vector<std::vector<cv::Point>>;

std::vector<ArrayOf<int>> arraysOf(Contours&& contours) {
    std::vector<ArrayOf<int>> arrays;
    arrays.reserve(contours.size());
    for (std::vector<cv::Point>& contour : contours) arrays.push_back(arrayFrom(std::move(contour)));
    return arrays;
}

std::vector<ArrayOf<int>> contours(const Argument& image, int type, double minLength, double minArea,
                                   double maxArea, int points) {
    const Image binary = imageOf(image, "image", ikBinary);
    const orx::TContourOptions options{minLength, minArea, maxArea, static_cast<orx::TContourPoints>(points)};
    Contours found =
        unlocked([&] { return orx::getContours(binary.mat, static_cast<orx::TContourType>(type), options); });
    if (found.empty()) raiseUnlessNothingFound();
    return arraysOf(std::move(found));
}

std::pair<double, double> contourCenter(const Argument& contour, int mode) {
    const std::vector<cv::Point> points = pixelsOf(contour, "contour");
    const cv::Point2d center = unlocked([&] { return orx::getContourCenterSubPix(points, mode); });
    if (points.empty()) raiseRefusal();
    return {center.x, center.y};
}

std::vector<ArrayOf<int>> removeSmallContours(const Argument& contours, double minArea, double minLength) {
    Contours kept = contoursOf(contours, "contours");
    unlocked([&] { orx::removeSmallContours(kept, minArea, minLength); });
    return arraysOf(std::move(kept));
}

// points, normals, curvature
using ProbeArrays = std::tuple<ArrayOf<double>, ArrayOf<double>, ArrayOf<double>>;

ProbeArrays arraysOf(const std::vector<orx::TEdgeProbe>& probes) {
    if (probes.empty()) raiseRefusal();
    std::vector<cv::Point2d> points, normals;
    std::vector<double> curvature;
    for (const orx::TEdgeProbe& probe : probes) {
        points.push_back(probe.point);
        normals.push_back(probe.normal);
        curvature.push_back(probe.curvature);
    }
    return {arrayFrom(std::move(points)), arrayFrom(std::move(normals)), arrayFrom(std::move(curvature))};
}

ProbeArrays probesAlongContour(const Argument& contour) {
    const std::vector<cv::Point> points = pixelsOf(contour, "contour");
    return arraysOf(unlocked([&] { return orx::probesAlongContour(points); }));
}

ProbeArrays probesAlongLine(const Argument& start, const Argument& end, double spacing) {
    const cv::Point2d from = placeOf(start, "start"), to = placeOf(end, "end");
    return arraysOf(unlocked([&] { return orx::probesAlongLine(from, to, spacing); }));
}

ProbeArrays probesAlongCircle(const Argument& center, double radius, double spacing, double startAngle,
                              double sweep) {
    const cv::Point2d middle = placeOf(center, "center");
    return arraysOf(
        unlocked([&] { return orx::probesAlongCircle(middle, radius, spacing, startAngle, sweep); }));
}

ProbeArrays probesAlongEllipse(const Argument& center, const Argument& size, double angle, double spacing) {
    const cv::Point2d middle = placeOf(center, "center"), extent = placeOf(size, "size");
    const cv::RotatedRect ellipse(cv::Point2f(middle), cv::Size2f(cv::Size2d(extent.x, extent.y)),
                                  static_cast<float>(angle));
    return arraysOf(unlocked([&] { return orx::probesAlongEllipse(ellipse, spacing); }));
}

std::vector<orx::TEdgeProbe> probesOf(const Argument& points, const Argument& normals,
                                      const Argument& curvature) {
    const std::vector<cv::Point2d> places = precisePointsOf(points, "points"),
                                   across = precisePointsOf(normals, "normals");
    const std::vector<double> bends = numbersOf(curvature, "curvature");
    if (across.size() != places.size() || (!bends.empty() && bends.size() != places.size())) {
        throw py::value_error("points, normals and curvature: expected as many of each, got " +
                              describe(points) + ", " + describe(normals) + " and " + describe(curvature));
    }
    std::vector<orx::TEdgeProbe> probes(places.size());
    for (std::size_t i = 0; i < probes.size(); ++i) {
        probes[i] = {places[i], across[i], bends.empty() ? 0.0 : bends[i]};
    }
    return probes;
}

// found, position, offset, contrast, deviation
using OutlineArrays =
    std::tuple<ArrayOf<bool>, ArrayOf<double>, ArrayOf<double>, ArrayOf<double>, ArrayOf<double>>;

OutlineArrays edgesAcross(const Argument& image, const Argument& points, const Argument& normals,
                          const Argument& curvature, double reach, double minContrast, int polarity,
                          double noise) {
    const Image picture = imageOf(image, "image", ikAny);
    const std::vector<orx::TEdgeProbe> probes = probesOf(points, normals, curvature);
    const orx::TContourEdgeOptions options{reach, minContrast, static_cast<orx::TEdgePolarity>(polarity),
                                           noise};
    const std::vector<orx::TContourEdge> edges =
        unlocked([&] { return orx::edgesAcross(picture.mat, probes, options); });
    if (edges.empty()) raiseRefusal();
    std::vector<unsigned char> found;
    std::vector<cv::Point2d> position;
    std::vector<double> offset, contrast, deviation;
    for (const orx::TContourEdge& edge : edges) {
        found.push_back(edge.found ? 1 : 0);
        position.push_back(edge.position);
        offset.push_back(edge.offset);
        contrast.push_back(edge.contrast);
        deviation.push_back(edge.deviation);
    }
    return {truthsFrom(std::move(found)), arrayFrom(std::move(position)), arrayFrom(std::move(offset)),
            arrayFrom(std::move(contrast)), arrayFrom(std::move(deviation))};
}

}  // namespace

void bindOutlines(py::module_& core) {
    core.def("contours", &contours, py::arg("image"), py::arg("type"), py::arg("min_length"),
             py::arg("min_area"), py::arg("max_area"), py::arg("points"));
    core.def("contour_center", &contourCenter, py::arg("contour"), py::arg("mode"));
    core.def("remove_small_contours", &removeSmallContours, py::arg("contours"), py::arg("min_area"),
             py::arg("min_length"));
    core.def("probes_along_contour", &probesAlongContour, py::arg("contour"));
    core.def("probes_along_line", &probesAlongLine, py::arg("start"), py::arg("end"), py::arg("spacing"));
    core.def("probes_along_circle", &probesAlongCircle, py::arg("center"), py::arg("radius"),
             py::arg("spacing"), py::arg("start_angle"), py::arg("sweep"));
    core.def("probes_along_ellipse", &probesAlongEllipse, py::arg("center"), py::arg("size"),
             py::arg("angle"), py::arg("spacing"));
    core.def("edges_across", &edgesAcross, py::arg("image"), py::arg("points"), py::arg("normals"),
             py::arg("curvature"), py::arg("reach"), py::arg("min_contrast"), py::arg("polarity"),
             py::arg("noise"));
    core.attr("CONTOUR_EDGE_SMOOTHING") = orx::kContourEdgeSmoothing;
}

}  // namespace orxpy
