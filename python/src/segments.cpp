// Contours as straight pieces and arcs: segmentation/segment_contour.h.
#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/segmentation/segment_contour.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using Place = std::pair<int, int>;
using Coefficients = std::tuple<double, double, double>;
// start, end, fit_start, fit_end, chord, line, points, fit_points, max_dist
using LineFields =
    std::tuple<Place, Place, Place, Place, Coefficients, Coefficients, ArrayOf<int>, ArrayOf<int>, double>;
// center, radius, start_angle, end_angle, fit_error, points
using ArcFields = std::tuple<std::pair<double, double>, double, double, double, double, ArrayOf<int>>;

Place placeFrom(cv::Vec2i p) { return {p[0], p[1]}; }
Place placeFrom(cv::Point p) { return {p.x, p.y}; }

LineFields fieldsOf(orx::TSegemetLine& line) {
    return {placeFrom(line.startPoint),
            placeFrom(line.endPoint),
            placeFrom(line.fitStartPoint),
            placeFrom(line.fitEndPoint),
            Coefficients(line.chordA, line.chordB, line.chordC),
            Coefficients(line.fitA, line.fitB, line.fitC),
            arrayFrom(std::move(line.points)),
            arrayFrom(std::move(line.fitPoints)),
            line.maxDist};
}

ArcFields fieldsOf(orx::TSegemetCircle& arc) {
    return {{arc.center.x, arc.center.y},    arc.radius, arc.startAngle, arc.endAngle, arc.fitError,
            arrayFrom(std::move(arc.points))};
}

// first_epsilon, second_epsilon, max_radius, min_radius, merge_center_dist, err_threshold
using Lengths = std::tuple<double, double, double, double, double, double>;

std::pair<std::vector<LineFields>, std::vector<ArcFields>> segmentContour(const Argument& given,
                                                                          const Lengths& lengths,
                                                                          bool useSecondPass,
                                                                          bool useCircles) {
    const std::vector<cv::Point> contour = pixelsOf(given, "contour");
    orx::TSegemetParams params;
    std::tie(params.firstEpsilon, params.secondEpsilon, params.maxRadius, params.minRadius,
             params.mergeCenterDist, params.errThreshold) = lengths;
    params.useSecondPass = useSecondPass;
    params.useCircles = useCircles;
    auto pieces = unlocked([&] {
        orx::TSegmentContour segmenter;
        return segmenter.segmentContour(contour, params);
    });
    if (pieces.first.empty() && pieces.second.empty()) raiseUnlessNothingFound();
    std::pair<std::vector<LineFields>, std::vector<ArcFields>> fields;
    for (orx::TSegemetLine& line : pieces.first) fields.first.push_back(fieldsOf(line));
    for (orx::TSegemetCircle& arc : pieces.second) fields.second.push_back(fieldsOf(arc));
    return fields;
}

}  // namespace

void bindSegments(py::module_& core) {
    core.def("segment_contour", &segmentContour, py::arg("contour"), py::arg("lengths"),
             py::arg("use_second_pass"), py::arg("use_circles"));
}

}  // namespace orxpy
