// The robust circle by Ceres, on the scene of fit_bench's robust fits. It starts from the mean of the points,
// as a fit does that knows nothing more.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "bench/peers/ceres_circle.h"
#include "tests/support/fit_scenes.h"

namespace {

// Centre and radius of the points' mean and of their mean distance from it.
void guess(const std::vector<cv::Point>& points, double* circle) {
    const auto count = static_cast<double>(points.size());
    circle[0] = circle[1] = circle[2] = 0;
    for (const cv::Point& p : points) {
        circle[0] += p.x / count;
        circle[1] += p.y / count;
    }
    for (const cv::Point& p : points) circle[2] += std::hypot(p.x - circle[0], p.y - circle[1]) / count;
}

void robustCircle(benchmark::State& state) {
    fit_scenes::Random random(5);
    const auto points = fit_scenes::circlePoints({480, 510, 320}, static_cast<int>(state.range(0)),
                                                 {0.5, 0.1, {1000, 1000}}, random);
    double error = 0;
    double iterations = 0;
    for (auto _ : state) {
        double circle[3];
        guess(points, circle);
        const ceres::Solver::Summary summary = ceres_circle::fit(points, 1.5, circle);
        benchmark::DoNotOptimize(circle);
        error = std::hypot(circle[0] - 480, circle[1] - 510);
        iterations = static_cast<double>(summary.iterations.size());
    }
    state.counters["centre_error_px"] = error;
    state.counters["iterations"] = iterations;
}
BENCHMARK(robustCircle)
    ->Name("ceres_circle_huber")
    ->Arg(200)
    ->Arg(2000)
    ->Arg(20000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
