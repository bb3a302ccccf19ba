// The algebraic circle by Eigen, on the scene of fit_bench: the least-squares solution of
// 2 x cx + 2 y cy + c = x^2 + y^2 by Householder QR.
#include <benchmark/benchmark.h>

#include <Eigen/Dense>
#include <cmath>

#include "tests/support/fit_scenes.h"

namespace {

void circleQr(benchmark::State& state) {
    fit_scenes::Random random(5);
    const auto points = fit_scenes::circlePoints({480, 510, 320}, static_cast<int>(state.range(0)),
                                                 {0.5, 0, {1000, 1000}}, random);
    const auto count = static_cast<Eigen::Index>(points.size());
    Eigen::MatrixX3d rows(count, 3);
    Eigen::VectorXd squares(count);
    for (auto _ : state) {
        for (Eigen::Index i = 0; i < count; ++i) {
            const cv::Point& p = points[static_cast<std::size_t>(i)];
            rows.row(i) << 2.0 * p.x, 2.0 * p.y, 1.0;
            squares(i) = static_cast<double>(p.x) * p.x + static_cast<double>(p.y) * p.y;
        }
        const Eigen::Vector3d solution = rows.householderQr().solve(squares);
        benchmark::DoNotOptimize(solution);
    }
}
BENCHMARK(circleQr)->Name("eigen_circle_qr")->Arg(200)->Arg(2000)->Arg(20000)->Unit(benchmark::kMicrosecond);

}  // namespace
