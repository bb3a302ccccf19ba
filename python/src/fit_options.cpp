#include "fit_options.h"

#include <cmath>
#include <cstdio>
#include <string>

namespace orxpy {

orx::TFitOptions fitOptionsOf(const FitArguments& arguments) {
    orx::TFitOptions options;
    options.loss = static_cast<orx::TFitLoss>(std::get<0>(arguments));
    options.tuning = std::get<1>(arguments);
    options.scale = std::get<2>(arguments);
    options.deviations = numbersOf(std::get<3>(arguments), "deviations");
    options.absoluteDeviations = std::get<4>(arguments);
    options.noise = static_cast<orx::TPointNoise>(std::get<5>(arguments));
    options.smoothing = std::get<6>(arguments);
    options.maxIterations = std::get<7>(arguments);
    return options;
}

ORXEdge::TMetricContour chainOf(const Argument& points, const Argument& deviation, bool closed) {
    ORXEdge::TMetricContour edge;
    edge.points = pointsOf(points, "points");
    for (const double d : numbersOf(deviation, "deviation")) edge.deviation.push_back(static_cast<float>(d));
    edge.closed = closed;
    return edge;
}

void raiseOption(const char* name, const char* range, double got) {
    char text[200];
    std::snprintf(text, sizeof text, "%s: expected %s, got %g", name, range, got);
    throw py::value_error(text);
}

void raiseUnlessSigma(double sigma) {
    if (!(sigma >= 0.5 && sigma <= 20.0)) raiseOption("sigma", "0.5 to 20", sigma);
}

void raiseFitOption(const orx::TFitOptions& options) {
    const auto within = [](double value, double low, double high) { return value >= low && value <= high; };
    if (options.tuning != 0.0 && !within(options.tuning, 0.1, 100.0))
        raiseOption("tuning", "0 or 0.1 to 100", options.tuning);
    if (!(options.scale >= 0.0) || !std::isfinite(options.scale))
        raiseOption("scale", "0 or more", options.scale);
    if (options.noise == orx::pnEdgeChain && !within(options.smoothing, 0.3, 50.0))
        raiseOption("smoothing", "0.3 to 50", options.smoothing);
    if (!within(options.maxIterations, 1, 1000))
        raiseOption("max_iterations", "1 to 1000", options.maxIterations);
    if (options.absoluteDeviations && options.deviations.empty())
        throw py::value_error("absolute_deviations: expected deviations beside it, got none");
}

void raiseDeviations(const orx::TFitOptions& options, int points) {
    throw py::value_error("deviations: expected one finite number of 0 or more for each of the " +
                          std::to_string(points) + " points, got " +
                          std::to_string(options.deviations.size()) + " numbers");
}

void raiseUnlessNoShape(const orx::TFitReport& report, const orx::TFitOptions& options) {
    switch (report.status) {
        case orx::fsBadOptions:
            raiseFitOption(options);
            break;
        case orx::fsBadDeviations:
            raiseDeviations(options, report.points);
        case orx::fsTooFewPoints:
            throw py::value_error("points: too few points, of " + std::to_string(report.points) + " given");
        default:
            break;
    }
    raiseUnlessNothingFound();
}

}  // namespace orxpy
