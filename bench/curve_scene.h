// The profile that the curve benchmarks share, and those of our own calls that stand beside the peers. The
// argument of each is the number of samples.
#ifndef BENCH_CURVE_SCENE_H
#define BENCH_CURVE_SCENE_H

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace scene {

// `count` samples of a noisy wave over x = 0 .. 100.
inline std::vector<cv::Point2d> curveProfile(std::int64_t count) {
    std::mt19937 random(11);
    std::normal_distribution<double> noise(0, 0.1);
    std::vector<cv::Point2d> samples;
    for (std::int64_t i = 0; i < count; ++i) {
        const double x = 100.0 * static_cast<double>(i) / static_cast<double>(count - 1);
        samples.emplace_back(x, 20 * std::sin(x / 17) + noise(random));
    }
    return samples;
}

inline void cubicFit(benchmark::State& state) {
    auto samples = curveProfile(state.range(0));
    orx::TPolynomial model;
    for (auto _ : state) benchmark::DoNotOptimize(model.fit(samples, 3));
}

// 10,000 values over the chain, whose x range is 100.
inline void splineList(benchmark::State& state) {
    orx::TSplineCurve curve;
    curve.fit(curveProfile(state.range(0)), 3);
    std::vector<cv::Point2d> list;
    for (auto _ : state) {
        curve.getSplineList(list, 2);
        benchmark::DoNotOptimize(list.data());
    }
}

}  // namespace scene

#endif
