// The classic estimators: fitting/ransac.h, fitting/wanted_line.h, fitting/fit_factories.h,
// fitting/ellipse_fit.h.
#include <pybind11/pybind11.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/fitting/ellipse_fit.h"
#include "orxFunctions/fitting/fit_factories.h"
#include "orxFunctions/fitting/ransac.h"
#include "orxFunctions/fitting/wanted_line.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using Pixels = std::vector<cv::Point>;

// slope, intercept, inliers
using FoundLine = std::tuple<double, double, ArrayOf<int>>;

std::optional<FoundLine> findLineClassic(const Argument& given, double threshold, int iterations, int cap,
                                         const std::tuple<double, double, int>& angleLimit,
                                         const Argument& seed) {
    const Pixels points = pixelsOf(given, "points");
    const auto start = static_cast<unsigned>(seedOf(seed, "seed"));
    orx::TLine line;
    std::vector<int> inliers;
    const bool found = unlocked([&] {
        orx::TRansacLine search(points, iterations, cap, threshold);
        const auto [lowest, highest, type] = angleLimit;
        search.setAngleLimit(lowest, highest, static_cast<orx::TAngleType>(type));
        search.setSeed(start);
        if (!search.doRansac()) return false;
        line = search.getResultLine();
        search.getIdxList(inliers);
        return true;
    });
    if (found) return FoundLine(line.k, line.b, arrayFrom(std::move(inliers)));
    return nothingFound();
}

// x, y, radius, inliers
using FoundCircle = std::tuple<double, double, double, ArrayOf<int>>;

std::optional<FoundCircle> findCircleClassic(const Argument& given, double threshold, int iterations, int cap,
                                             const std::pair<int, int>& radius, const Argument& seed) {
    const Pixels points = pixelsOf(given, "points");
    const auto start = static_cast<unsigned>(seedOf(seed, "seed"));
    orx::TCircle circle;
    std::vector<int> inliers;
    unlocked([&] {
        orx::TRansacCircle search(points, iterations, cap, threshold);
        search.setRLimit(radius.first, radius.second);
        search.setSeed(start);
        circle = search.doRansac();
        if (circle.valid) search.getCircleIdxList(inliers);
    });
    if (circle.valid) return FoundCircle(circle.x, circle.y, circle.r, arrayFrom(std::move(inliers)));
    return nothingFound();
}

using TwoLists = std::pair<ArrayOf<int>, ArrayOf<int>>;

std::optional<TwoLists> findSideLine(const Argument& given, int side, int minPoints, bool refine) {
    const Pixels points = pixelsOf(given, "points");
    Pixels line, rest;
    const bool found = unlocked([&] {
        return orx::getWantedLine(points, line, rest, static_cast<orx::TWantLineType>(side), minPoints,
                                  refine);
    });
    if (found) return TwoLists(arrayFrom(std::move(line)), arrayFrom(std::move(rest)));
    return nothingFound();
}

// x, y, radius, inlier ratio, mean residual
using FittedCircle = std::optional<std::tuple<double, double, double, double, double>>;

template <class Create>
FittedCircle circleBy(const Argument& given, Create create) {
    const Pixels points = pixelsOf(given, "points");
    const orx::TCircle circle = unlocked([&] {
        orxFit::TCircleFitFactory factory;
        create(factory, points);
        return factory.fitter->fit();
    });
    if (!circle.valid) return nothingFound();
    if (!std::isfinite(circle.x) || !std::isfinite(circle.y) || !std::isfinite(circle.r))
        throw py::value_error("points: fewer than 3, or all on a line: they determine no circle");
    return std::make_tuple(circle.x, circle.y, circle.r, circle.inlierRatio, circle.meanResidual);
}

FittedCircle fitCircleRansac(const Argument& points, double maxRadius, double minRadius, double distance,
                             int iterations, int cap) {
    return circleBy(points, [&](orxFit::TCircleFitFactory& factory, const Pixels& pixels) {
        factory.createFitType_ransacCircle(pixels, maxRadius, minRadius, distance, iterations, cap);
    });
}

FittedCircle fitCircleRobust(const Argument& points, double lossConstant, double stepSize, int loss) {
    return circleBy(points, [&](orxFit::TCircleFitFactory& factory, const Pixels& pixels) {
        factory.createFitType_robustCircle(pixels, lossConstant, stepSize, loss);
    });
}

FittedCircle fitCircleWeighted(const Argument& points, int weight, double parameter) {
    return circleBy(points, [&](orxFit::TCircleFitFactory& factory, const Pixels& pixels) {
        factory.createFitType_weightedLeastSquares(pixels, weight, parameter);
    });
}

using FittedLine = std::optional<std::pair<double, double>>;

template <class Create>
FittedLine lineBy(const Argument& given, Create create) {
    const Pixels points = pixelsOf(given, "points");
    const orx::TLine line = unlocked([&] {
        orxFit::TLineFitFactory factory;
        create(factory, points);
        return factory.fitter->fit();
    });
    if (line.valid) return std::make_pair(line.k, line.b);
    return nothingFound();
}

FittedLine fitLineRansac(const Argument& points, double angle, double distance, int sample,
                         double tolerance) {
    return lineBy(points, [&](orxFit::TLineFitFactory& factory, const Pixels& pixels) {
        factory.createFitType_ransacLine(pixels, angle, distance, sample, tolerance);
    });
}

FittedLine fitLineRobust(const Argument& points, int weight, double parameter) {
    return lineBy(points, [&](orxFit::TLineFitFactory& factory, const Pixels& pixels) {
        factory.createFitType_robustLine(pixels, weight, parameter);
    });
}

// x, y, width, height, angle, conic A to F, inlier ratio, mean error
using ConicTuple = std::tuple<double, double, double, double, double, double>;
using FittedEllipse =
    std::optional<std::tuple<double, double, double, double, double, ConicTuple, double, double>>;

FittedEllipse fitEllipseClassic(const Argument& given, double iterations, double errorThreshold,
                                double minInlierRatio, const std::pair<double, double>& minAxis,
                                const std::pair<double, double>& maxAxis, bool ransac) {
    const std::vector<cv::Point2f> points = pointsOf(given, "points");
    const orx::TEllipse e = unlocked([&] {
        return ransac ? orxFit::fitEllipseRansac(points, errorThreshold, iterations, minInlierRatio,
                                                 minAxis.first, minAxis.second, maxAxis.first, maxAxis.second)
                      : orxFit::fitEllipseNorm(points, errorThreshold, minInlierRatio, minAxis.first,
                                               minAxis.second, maxAxis.first, maxAxis.second);
    });
    if (e.valid == 0) return nothingFound();
    return std::make_tuple(e.x, e.y, e.width, e.height, e.angle, ConicTuple(e.A, e.B, e.C, e.D, e.E, e.F),
                           e.inlierRatio, e.meanError);
}

}  // namespace

void bindClassicFits(py::module_& core) {
    core.def("find_line_classic", &findLineClassic, py::arg("points"), py::arg("threshold"),
             py::arg("iterations"), py::arg("cap"), py::arg("angle_limit"), py::arg("seed"));
    core.def("find_circle_classic", &findCircleClassic, py::arg("points"), py::arg("threshold"),
             py::arg("iterations"), py::arg("cap"), py::arg("radius"), py::arg("seed"));
    core.def("find_side_line", &findSideLine, py::arg("points"), py::arg("side"), py::arg("min_points"),
             py::arg("refine"));
    core.def("fit_circle_ransac", &fitCircleRansac, py::arg("points"), py::arg("max_radius"),
             py::arg("min_radius"), py::arg("inlier_distance"), py::arg("iterations"), py::arg("set_cap"));
    core.def("fit_circle_robust", &fitCircleRobust, py::arg("points"), py::arg("loss_constant"),
             py::arg("step_size"), py::arg("loss"));
    core.def("fit_circle_weighted", &fitCircleWeighted, py::arg("points"), py::arg("weight"),
             py::arg("weight_parameter"));
    core.def("fit_line_ransac", &fitLineRansac, py::arg("points"), py::arg("target_angle"),
             py::arg("inlier_distance"), py::arg("sample_size"), py::arg("angle_tolerance"));
    core.def("fit_line_robust", &fitLineRobust, py::arg("points"), py::arg("weight"),
             py::arg("weight_parameter"));
    core.def("fit_ellipse_classic", &fitEllipseClassic, py::arg("points"), py::arg("iterations"),
             py::arg("error_threshold"), py::arg("min_inlier_ratio"), py::arg("min_axis"),
             py::arg("max_axis"), py::arg("ransac"));
}

}  // namespace orxpy
