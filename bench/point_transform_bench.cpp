// Rigid motions between point lists, beside OpenCV's closed form.
#include <benchmark/benchmark.h>

#include <opencv2/calib3d.hpp>

#include "bench/point_pairs.h"
#include "orxFunctions/orxfunctions.h"

namespace {

void rigidMotion(benchmark::State& state) {
    const bench::PointPairs lists(state.range(0));
    cv::Mat result;
    for (auto _ : state) benchmark::DoNotOptimize(orx::calcAXequalsB(lists.a, lists.b, result));
}
BENCHMARK(rigidMotion)->Name("rigid_motion")->Arg(4)->Arg(10)->Arg(100)->Arg(1000);

void rotationOnly(benchmark::State& state) {
    const bench::PointPairs lists(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(orx::cpuTrsfMat(lists.floatA, lists.floatB).data);
}
BENCHMARK(rotationOnly)->Name("rotation_only")->Arg(4)->Arg(10)->Arg(100)->Arg(1000);

void openCvClosedForm(benchmark::State& state) {
    const bench::PointPairs lists(state.range(0));
    double scale = 1;
    for (auto _ : state) benchmark::DoNotOptimize(cv::estimateAffine3D(lists.a, lists.b, &scale, true).data);
}
BENCHMARK(openCvClosedForm)->Name("opencv/rigid_motion")->Arg(4)->Arg(10)->Arg(100)->Arg(1000);

}  // namespace
