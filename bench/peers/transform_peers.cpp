// The closed form of a rigid motion by Eigen, for the lists of point_transform_bench.
#include <benchmark/benchmark.h>

#include <Eigen/Dense>

#include "bench/point_pairs.h"

namespace {

void rigidMotion(benchmark::State& state) {
    const bench::PointPairs pairs(state.range(0));
    const auto count = static_cast<Eigen::Index>(pairs.a.size());
    // The lists as they are; Eigen takes them where they lie.
    const Eigen::Map<const Eigen::Matrix3Xd> a(&pairs.a[0].x, 3, count);
    const Eigen::Map<const Eigen::Matrix3Xd> b(&pairs.b[0].x, 3, count);
    for (auto _ : state) {
        const Eigen::Matrix4d motion = Eigen::umeyama(a, b, false);
        benchmark::DoNotOptimize(motion.data());
    }
}
BENCHMARK(rigidMotion)->Name("eigen_umeyama")->Arg(4)->Arg(10)->Arg(100)->Arg(1000);

}  // namespace
