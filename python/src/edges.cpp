// Edges between the pixels: analysis/subpixel_edges_metric.h, analysis/subpixel_edges.h.
#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/analysis/subpixel_edges.h"
#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

// Chains one behind the other; chain i is what lies from offsets[i] to offsets[i + 1].
template <typename Contour>
std::vector<int> offsetsOf(const std::vector<Contour>& contours) {
    std::vector<int> offsets = {0};
    offsets.reserve(contours.size() + 1);
    for (const Contour& contour : contours)
        offsets.push_back(offsets.back() + static_cast<int>(contour.points.size()));
    return offsets;
}

template <typename Contour, typename T>
std::vector<T> joined(const std::vector<Contour>& contours, std::vector<T> Contour::*member, int count) {
    std::vector<T> all;
    all.reserve(static_cast<std::size_t>(count));
    for (const Contour& contour : contours)
        all.insert(all.end(), (contour.*member).begin(), (contour.*member).end());
    return all;
}

struct JoinedMetric {
    std::vector<cv::Point2f> points;
    std::vector<float> direction, contrast, deviation;
    std::vector<int> offsets;
    std::vector<unsigned char> closed;
};

using MetricArrays =
    std::tuple<ArrayOf<float>, ArrayOf<float>, ArrayOf<float>, ArrayOf<float>, ArrayOf<int>, ArrayOf<bool>>;

MetricArrays edges(const Argument& image, double sigma,
                   const std::optional<std::pair<double, double>>& thresholds, int mode, double noise,
                   int minPoints) {
    using Contour = ORXEdge::TMetricContour;
    const Image grey = imageOf(image, "image", ikGrey);
    ORXEdge::TMetricOptions options;
    options.sigma = sigma;
    options.automaticThresholds = !thresholds.has_value();
    if (thresholds) std::tie(options.low, options.high) = *thresholds;
    options.mode = mode;
    options.noise = noise;
    options.minPoints = minPoints;
    JoinedMetric all;
    const bool done = unlocked([&] {
        std::vector<Contour> contours;
        if (!ORXEdge::edgesSubPixMetric(grey.mat, contours, options)) return false;
        all.offsets = offsetsOf(contours);
        const int count = all.offsets.back();
        all.points = joined(contours, &Contour::points, count);
        all.direction = joined(contours, &Contour::direction, count);
        all.contrast = joined(contours, &Contour::contrast, count);
        all.deviation = joined(contours, &Contour::deviation, count);
        for (const Contour& contour : contours) all.closed.push_back(contour.closed ? 1 : 0);
        return true;
    });
    if (!done) raiseRefusal();
    return {arrayFrom(std::move(all.points)),   arrayFrom(std::move(all.direction)),
            arrayFrom(std::move(all.contrast)), arrayFrom(std::move(all.deviation)),
            arrayFrom(std::move(all.offsets)),  truthsFrom(std::move(all.closed))};
}

using ClassicArrays = std::tuple<ArrayOf<float>, ArrayOf<float>, ArrayOf<float>, ArrayOf<int>>;

ClassicArrays edgesClassic(const Argument& image, int mode, int low, int high, double alpha) {
    using Contour = ORXEdge::TContour;
    const Image grey = imageOf(image, "image", ikGrey);
    std::vector<cv::Point2f> points;
    std::vector<float> direction, response;
    std::vector<int> offsets;
    const bool done = unlocked([&] {
        std::vector<Contour> contours;
        if (!ORXEdge::EdgesSubPix(std::as_const(grey.mat), contours, cv::noArray(), mode, low, high, alpha))
            return false;
        offsets = offsetsOf(contours);
        points = joined(contours, &Contour::points, offsets.back());
        direction = joined(contours, &Contour::direction, offsets.back());
        response = joined(contours, &Contour::response, offsets.back());
        return true;
    });
    if (!done) raiseRefusal();
    return {arrayFrom(std::move(points)), arrayFrom(std::move(direction)), arrayFrom(std::move(response)),
            arrayFrom(std::move(offsets))};
}

}  // namespace

void bindEdges(py::module_& core) {
    core.def("edges", &edges, py::arg("image"), py::arg("sigma"), py::arg("thresholds"), py::arg("mode"),
             py::arg("noise"), py::arg("min_points"));
    core.def("edges_classic", &edgesClassic, py::arg("image"), py::arg("mode"), py::arg("low"),
             py::arg("high"), py::arg("alpha"));
}

}  // namespace orxpy
