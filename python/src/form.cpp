// Roundness and straightness: measuring/form.h.
#include "orxFunctions/measuring/form.h"

#include <pybind11/pybind11.h>

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

// The library says of options that one is out of range, but not which.
orx::TFormOptions optionsOf(double noise, int pointNoise, double smoothing, std::uint64_t seed) {
    if (!(noise >= 0.0 && std::isfinite(noise)))
        throw py::value_error("noise is " + std::string(py::str(py::float_(noise))) + "; 0 or more is taken");
    if (pointNoise == orx::pnEdgeChain && !(smoothing >= 0.3 && smoothing <= 50.0)) {
        throw py::value_error("smoothing is " + std::string(py::str(py::float_(smoothing))) +
                              "; 0.3 to 50 is taken");
    }
    orx::TFormOptions options;
    options.noise = noise;
    options.pointNoise = static_cast<orx::TPointNoise>(pointNoise);
    options.smoothing = smoothing;
    options.seed = seed;
    return options;
}

// value, freed, deviation, contacts; centre, inner and outer radius, both freed, their deviations
using Roundness =
    std::tuple<double, double, double, ArrayOf<int>, Pair, double, double, double, double, double, double>;
// value, freed, deviation, contacts; point, direction, angle, from, to
using Straightness = std::tuple<double, double, double, ArrayOf<int>, Pair, Pair, double, double, double>;

enum Zone : int { zMinimum = 0, zCircumscribed = 1, zInscribed = 2 };

orx::TRoundness zoneOf(const std::vector<cv::Point2d>& points, int zone, const orx::TFormOptions& options) {
    if (zone == zCircumscribed) return orx::minimumCircumscribedCircle(points, options);
    if (zone == zInscribed) return orx::maximumInscribedCircle(points, options);
    return orx::minimumZoneCircle(points, options);
}

std::optional<Roundness> roundness(const Argument& points, int zone, double noise, int pointNoise,
                                   double smoothing, std::uint64_t seed) {
    const std::vector<cv::Point2d> given = precisePointsOf(points, "points");
    const orx::TFormOptions options = optionsOf(noise, pointNoise, smoothing, seed);
    orx::TRoundness found = unlocked([&] { return zoneOf(given, zone, options); });
    if (!found.valid()) return nothingFound();
    return Roundness(found.value, found.freed, found.deviation, arrayFrom(std::move(found.contacts)),
                     pairOf(found.center), found.innerRadius, found.outerRadius, found.freedInner,
                     found.freedOuter, found.innerDeviation, found.outerDeviation);
}

std::optional<Straightness> straightness(const Argument& points, double noise, int pointNoise,
                                         double smoothing, std::uint64_t seed) {
    const std::vector<cv::Point2d> given = precisePointsOf(points, "points");
    const orx::TFormOptions options = optionsOf(noise, pointNoise, smoothing, seed);
    orx::TStraightness found = unlocked([&] { return orx::minimumZoneLine(given, options); });
    if (!found.valid()) return nothingFound();
    return Straightness(found.value, found.freed, found.deviation, arrayFrom(std::move(found.contacts)),
                        pairOf(found.point), pairOf(found.direction), found.angle, found.from, found.to);
}

}  // namespace

void bindForm(py::module_& core) {
    core.def("roundness", &roundness, py::arg("points"), py::arg("zone"), py::arg("noise"),
             py::arg("point_noise"), py::arg("smoothing"), py::arg("seed"));
    core.def("straightness", &straightness, py::arg("points"), py::arg("noise"), py::arg("point_noise"),
             py::arg("smoothing"), py::arg("seed"));
}

}  // namespace orxpy
