// Rigid motions between point lists, beside OpenCV's closed form.
#include <benchmark/benchmark.h>

#include <opencv2/calib3d.hpp>
#include <random>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

struct Lists {
    explicit Lists(std::int64_t count) {
        std::mt19937 generator(1);
        std::uniform_real_distribution<double> coordinate(-500, 500);
        std::normal_distribution<double> noise(0, 0.1);
        for (std::int64_t i = 0; i < count; ++i) {
            const cv::Point3d p(coordinate(generator), coordinate(generator), coordinate(generator));
            a.push_back(p);
            b.emplace_back(-p.y + 10 + noise(generator), p.x - 20 + noise(generator),
                           p.z + 30 + noise(generator));
            floatA.emplace_back(p);
            floatB.emplace_back(b.back());
        }
    }

    std::vector<cv::Point3d> a;
    std::vector<cv::Point3d> b;
    std::vector<cv::Point3f> floatA;
    std::vector<cv::Point3f> floatB;
};

void rigidMotion(benchmark::State& state) {
    const Lists lists(state.range(0));
    cv::Mat result;
    for (auto _ : state) benchmark::DoNotOptimize(orx::calcAXequalsB(lists.a, lists.b, result));
}
BENCHMARK(rigidMotion)->Name("rigid_motion")->Arg(4)->Arg(10)->Arg(100)->Arg(1000);

void rotationOnly(benchmark::State& state) {
    const Lists lists(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(orx::cpuTrsfMat(lists.floatA, lists.floatB).data);
}
BENCHMARK(rotationOnly)->Name("rotation_only")->Arg(4)->Arg(10)->Arg(100)->Arg(1000);

void openCvClosedForm(benchmark::State& state) {
    const Lists lists(state.range(0));
    double scale = 1;
    for (auto _ : state) benchmark::DoNotOptimize(cv::estimateAffine3D(lists.a, lists.b, &scale, true).data);
}
BENCHMARK(openCvClosedForm)->Name("opencv/rigid_motion")->Arg(4)->Arg(10)->Arg(100)->Arg(1000);

}  // namespace
