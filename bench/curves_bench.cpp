// Polynomial and spline curves; their peers are in peers/curves_peers.cpp. The argument is the number of
// samples.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench/curve_scene.h"

namespace {

using scene::cubicFit;
using scene::curveProfile;
using scene::splineList;

// The sums of a cubic fit alone, seven of powers and four of moments, in the order of the samples as stated:
// their terms are there already, and each addition waits for the one before.
void cubicSumsInOrder(benchmark::State& state) {
    constexpr std::size_t kSums = 12;  // eleven, filled up
    const std::vector<double> terms(kSums * static_cast<std::size_t>(state.range(0)), 1.25);
    for (auto _ : state) {
        double sums[kSums] = {};
        for (std::size_t i = 0; i < terms.size(); i += kSums) {
            for (std::size_t k = 0; k < kSums; ++k) sums[k] += terms[i + k];
        }
        benchmark::DoNotOptimize(sums);
    }
}

void polynomialExtreme(benchmark::State& state) {
    auto samples = curveProfile(100);
    const orx::TPolynomial model(samples, 3);
    for (auto _ : state) {
        benchmark::DoNotOptimize(model.getExtremeValue(0, static_cast<int>(state.range(0)), 1));
    }
}

void splineBuild(benchmark::State& state) {
    const auto samples = curveProfile(state.range(0));
    orx::TSplineCurve curve;
    for (auto _ : state) {
        curve.fit(samples, 3);
        benchmark::DoNotOptimize(curve.segments.data());
    }
}

void splineValue(benchmark::State& state) {
    orx::TSplineCurve curve;
    curve.fit(curveProfile(state.range(0)), 3);
    double x = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(curve.getY(x));
        x = x > 99 ? 0 : x + 0.377;
    }
}

BENCHMARK(cubicFit)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(cubicSumsInOrder)->Name("limit/cubicFit")->Arg(10000);
BENCHMARK(polynomialExtreme)->Arg(100)->Arg(10000);
BENCHMARK(splineBuild)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(splineList)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(splineValue)->Arg(100)->Arg(1000)->Arg(10000);

}  // namespace
