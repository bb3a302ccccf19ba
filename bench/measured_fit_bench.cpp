// The fits for measuring, all in: report, mask, covered arc, covariance. On the scenes of fit_bench, whose
// whole pixels they take as Point2d: no outliers for least squares, 10 % for the robust losses.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/fit_scenes.h"

namespace {

using Points = std::vector<cv::Point2d>;

Points circle(const benchmark::State& state, double outliers) {
    fit_scenes::Random random(5);
    const auto pixels = fit_scenes::circlePoints({480, 510, 320}, static_cast<int>(state.range(0)),
                                                 {0.5, outliers, {1000, 1000}}, random);
    return {pixels.begin(), pixels.end()};
}

Points line(const benchmark::State& state, double outliers) {
    fit_scenes::Random random(5);
    const auto pixels = fit_scenes::linePoints(0.31, 200, static_cast<int>(state.range(0)),
                                               {0.5, outliers, {1000, 1000}}, random);
    return {pixels.begin(), pixels.end()};
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(200)->Arg(2000)->Arg(20000)->Unit(benchmark::kMicrosecond);
}

template <orx::TFitLoss kLoss>
void circleFit(benchmark::State& state) {
    const Points points = circle(state, kLoss == orx::flLeastSquares ? 0.0 : 0.1);
    orx::TFitOptions options;
    options.loss = kLoss;
    orx::TMeasuredCircle fit;
    for (auto _ : state) {
        fit = fitCircleGeometric(points, options);
        benchmark::DoNotOptimize(fit.radius);
    }
    state.counters["center_error_px"] = cv::norm(fit.center - cv::Point2d(480, 510));
    state.counters["iterations"] = fit.iterations;
}
BENCHMARK_TEMPLATE(circleFit, orx::flLeastSquares)->Name("measured_circle")->Apply(sizes);
BENCHMARK_TEMPLATE(circleFit, orx::flHuber)->Name("measured_circle_huber")->Apply(sizes);
BENCHMARK_TEMPLATE(circleFit, orx::flTukey)->Name("measured_circle_tukey")->Apply(sizes);

// In order along the outline, about a point a pixel.
void circleChain(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    fit_scenes::Random random(5);
    Points points;
    for (int i = 0; i < count; ++i) {
        const double radius = count / (2 * fit_scenes::kPi) + random.normal(0.02);
        const double angle = 2 * fit_scenes::kPi * i / count;
        points.emplace_back(500 + radius * std::cos(angle), 500 + radius * std::sin(angle));
    }
    orx::TFitOptions options;
    options.noise = orx::pnEdgeChain;
    for (auto _ : state) benchmark::DoNotOptimize(fitCircleGeometric(points, options).radius);
}
BENCHMARK(circleChain)->Name("measured_circle_chain")->Apply(sizes);

template <orx::TFitLoss kLoss>
void lineFit(benchmark::State& state) {
    const Points points = line(state, kLoss == orx::flLeastSquares ? 0.0 : 0.1);
    orx::TFitOptions options;
    options.loss = kLoss;
    for (auto _ : state) benchmark::DoNotOptimize(fitLineGeometric(points, options).angle);
}
BENCHMARK_TEMPLATE(lineFit, orx::flLeastSquares)->Name("measured_line")->Apply(sizes);
BENCHMARK_TEMPLATE(lineFit, orx::flHuber)->Name("measured_line_huber")->Apply(sizes);

}  // namespace
