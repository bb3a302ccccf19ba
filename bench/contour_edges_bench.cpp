// Edges across a nominal circle: points a second (millions: points a microsecond) by the number of probes.
// The picture is a noisy disk of 2000 x 2000 pixels; fewer probes lie on a smaller disk, a pixel apart, more
// than 5,000 closer.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/edge_scene.h"

namespace {

const cv::Point2d kCenter{1000.3, 999.6};

// Probes, and a picture of their disk.
struct Scene {
    cv::Mat image;
    std::vector<orx::TEdgeProbe> probes;

    explicit Scene(int count) {
        const double radius = std::min(count / (2 * CV_PI), 900.0);
        image = edge_scene::sharpDisk({2000, 2000}, kCenter, radius + 0.3, {40, 200, 0.8, 3});
        probes = orx::probesAlongCircle(kCenter, radius, 2 * CV_PI * radius / count);
    }
};

// `kNoise` is that of the picture, told; 0 has it measured with each call.
template <int kNoise>
void across(benchmark::State& state) {
    const Scene scene(static_cast<int>(state.range(0)));
    orx::TContourEdgeOptions options;
    options.noise = kNoise;
    std::vector<orx::TContourEdge> edges;
    for (auto _ : state) {
        edges = orx::edgesAcross(scene.image, scene.probes, options);
        benchmark::DoNotOptimize(edges.data());
    }
    const auto found = std::count_if(edges.begin(), edges.end(), [](const auto& e) { return e.found; });
    state.counters["found"] = static_cast<double>(found) / static_cast<double>(scene.probes.size());
    state.counters["points"] = benchmark::Counter(static_cast<double>(scene.probes.size()),
                                                  benchmark::Counter::kIsIterationInvariantRate);
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK_TEMPLATE(across, 3)->Name("edges_across")->Apply(sizes);
BENCHMARK_TEMPLATE(across, 0)->Name("edges_across_noise_measured")->Apply(sizes);

}  // namespace
