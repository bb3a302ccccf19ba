// The searches for measuring: fitting/consensus_fit.h.
#include <pybind11/pybind11.h>

#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "fit_options.h"
#include "orxFunctions/fitting/consensus_fit.h"
#include "orxFunctions/measuring/edge_fit.h"
#include "refusals.h"
#include "shapes.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

template <class Shape>
using MeasuredFields = decltype(measuredTuple(std::declval<Shape>()));

// tolerance, confidence, max_trials, seed, min_support, min_points, min_radius, max_radius, angle,
// angle_tolerance
using SearchArguments =
    std::tuple<double, double, int, Argument, double, int, double, double, double, double>;
// deviation, closed, sigma of an edge whose points are searched
using EdgeArguments = std::optional<std::tuple<Argument, bool, double>>;

orx::TConsensusOptions searchOptionsOf(const Argument& points, const EdgeArguments& edge,
                                       const SearchArguments& search, const FitArguments& fit) {
    orx::TConsensusOptions options;
    options.tolerance = std::get<0>(search);
    options.confidence = std::get<1>(search);
    options.maxTrials = std::get<2>(search);
    options.seed = seedOf(std::get<3>(search), "seed");
    options.minSupport = std::get<4>(search);
    options.minPoints = std::get<5>(search);
    options.minRadius = std::get<6>(search);
    options.maxRadius = std::get<7>(search);
    options.angle = std::get<8>(search);
    options.angleTolerance = std::get<9>(search);
    options.fit = fitOptionsOf(fit);
    if (edge.has_value()) {
        const auto& [deviation, closed, sigma] = *edge;
        raiseUnlessSigma(sigma);
        options.fit = orx::edgeFitOptions(chainOf(points, deviation, closed), sigma, options.fit);
    }
    return options;
}

void raiseSearchOption(const orx::TConsensusOptions& options) {
    if (!(options.tolerance > 0.0) || !std::isfinite(options.tolerance))
        raiseOption("tolerance", "more than 0", options.tolerance);
    if (!(options.confidence > 0.0 && options.confidence < 1.0))
        raiseOption("confidence", "more than 0 and less than 1", options.confidence);
    if (options.maxTrials < 1 || options.maxTrials > 10000000)
        raiseOption("max_trials", "1 to 10000000", options.maxTrials);
    if (!(options.minSupport >= 0.0 && options.minSupport <= 1.0))
        raiseOption("min_support", "0 to 1", options.minSupport);
    if (options.minPoints < 0) raiseOption("min_points", "0 or more", options.minPoints);
    if (!(options.minRadius >= 0.0) || !std::isfinite(options.minRadius))
        raiseOption("min_radius", "0 or more", options.minRadius);
    if (!(options.maxRadius >= options.minRadius))
        raiseOption("max_radius", "min_radius or more", options.maxRadius);
    if (!std::isfinite(options.angle)) raiseOption("angle", "a finite number", options.angle);
    if (!(options.angleTolerance >= 0.0 && options.angleTolerance <= 90.0))
        raiseOption("angle_tolerance", "0 to 90", options.angleTolerance);
    raiseFitOption(options.fit);
}

// Returns where nothing is found, and where no sample makes such a shape: a search finds none then.
void raiseUnlessNoneFound(const orx::TConsensusOptions& options, std::size_t points) {
    const orx::TRefusalCode code = orx::lastRefusal().code;
    if (code == orx::rcDegenerate) return;
    if (code == orx::rcOption) {
        raiseSearchOption(options);
        raiseDeviations(options.fit, static_cast<int>(points));
    }
    raiseUnlessNothingFound();
}

template <class Shape, class Find>
auto findOne(Find find) {
    return [find](const Argument& given, const EdgeArguments& edge, const SearchArguments& search,
                  const FitArguments& fit) -> std::optional<MeasuredFields<Shape>> {
        const std::vector<cv::Point2d> points = precisePointsOf(given, "points");
        const orx::TConsensusOptions options = searchOptionsOf(given, edge, search, fit);
        Shape shape = unlocked([&] { return find(points, options); });
        if (shape.valid()) return measuredTuple(std::move(shape));
        raiseUnlessNoneFound(options, points.size());
        return std::nullopt;
    };
}

template <class Shape, class Find>
auto findAll(Find find) {
    return [find](const Argument& given, const EdgeArguments& edge, const SearchArguments& search,
                  const FitArguments& fit, int most) {
        const std::vector<cv::Point2d> points = precisePointsOf(given, "points");
        const orx::TConsensusOptions options = searchOptionsOf(given, edge, search, fit);
        if (most < 0) raiseOption("most", "0 or more", most);
        std::vector<Shape> shapes = unlocked([&] { return find(points, options, most); });
        if (shapes.empty()) raiseUnlessNoneFound(options, points.size());
        std::vector<MeasuredFields<Shape>> fields;
        fields.reserve(shapes.size());
        for (Shape& shape : shapes) fields.push_back(measuredTuple(std::move(shape)));
        return fields;
    };
}

template <class Find>
void bindFinder(py::module_& core, const char* name, Find find) {
    core.def(name, find, py::arg("points"), py::arg("edge"), py::arg("search"), py::arg("fit"));
}

template <class Find>
void bindFinderOfAll(py::module_& core, const char* name, Find find) {
    core.def(name, find, py::arg("points"), py::arg("edge"), py::arg("search"), py::arg("fit"),
             py::arg("most"));
}

}  // namespace

void bindFinders(py::module_& core) {
    const auto line = [](const auto&... a) { return orx::findLine(a...); };
    const auto circle = [](const auto&... a) { return orx::findCircle(a...); };
    const auto ellipse = [](const auto&... a) { return orx::findEllipse(a...); };
    const auto lines = [](const auto&... a) { return orx::findLines(a...); };
    const auto circles = [](const auto&... a) { return orx::findCircles(a...); };
    bindFinder(core, "find_line", findOne<orx::TMeasuredLine>(line));
    bindFinder(core, "find_circle", findOne<orx::TMeasuredCircle>(circle));
    bindFinder(core, "find_ellipse", findOne<orx::TMeasuredEllipse>(ellipse));
    bindFinderOfAll(core, "find_lines", findAll<orx::TMeasuredLine>(lines));
    bindFinderOfAll(core, "find_circles", findAll<orx::TMeasuredCircle>(circles));
}

}  // namespace orxpy
