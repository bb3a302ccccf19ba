// Zones of form, and how their time grows with the number of points.
//
//     build/bench/bin/form_bench --benchmark_filter=zone_circle
//
// The circle has five lobes of a fifth of a pixel and noise of a twentieth, as an edge chain of a turned part
// has; the line is bent by as much. Arcs cover 60 degrees. A pass is what every zone needs at least once: the
// nearest and the farthest point from a centre.
#include <benchmark/benchmark.h>

#include <algorithm>

#include "bench/form_parts.h"
#include "orxFunctions/measuring/form.h"

namespace {

using form_parts::Points;
using form_parts::roundPart;
using form_parts::straightPart;

template <class Zone>
void measure(benchmark::State& state, const Points& points, Zone zone) {
    double sum = 0;
    for (auto _ : state) sum += zone(points).value;
    state.counters["value"] = sum / static_cast<double>(state.iterations());
}

void zone_circle(benchmark::State& state) {
    measure(state, roundPart(state.range(0)), [](const Points& p) { return orx::minimumZoneCircle(p); });
}

void zone_arc(benchmark::State& state) {
    measure(state, roundPart(state.range(0), CV_PI / 3),
            [](const Points& p) { return orx::minimumZoneCircle(p); });
}

void circumscribed_circle(benchmark::State& state) {
    measure(state, roundPart(state.range(0)),
            [](const Points& p) { return orx::minimumCircumscribedCircle(p); });
}

void inscribed_circle(benchmark::State& state) {
    measure(state, roundPart(state.range(0)), [](const Points& p) { return orx::maximumInscribedCircle(p); });
}

void zone_line(benchmark::State& state) {
    measure(state, straightPart(state.range(0)), [](const Points& p) { return orx::minimumZoneLine(p); });
}

void freed_circle(benchmark::State& state) {
    measure(state, roundPart(state.range(0)),
            [](const Points& p) { return orx::minimumZoneCircle(p, {0.05}); });
}

void pass(benchmark::State& state) {
    const Points points = roundPart(state.range(0));
    for (auto _ : state) {
        double least = 1e300;
        double most = 0;
        for (const cv::Point2d& p : points) {
            const double d2 = (p.x - 1000) * (p.x - 1000) + (p.y - 800) * (p.y - 800);
            least = std::min(least, d2);
            most = std::max(most, d2);
        }
        benchmark::DoNotOptimize(least);
        benchmark::DoNotOptimize(most);
    }
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(zone_circle)->Apply(sizes);
BENCHMARK(zone_arc)->Apply(sizes);
BENCHMARK(circumscribed_circle)->Apply(sizes);
BENCHMARK(inscribed_circle)->Apply(sizes);
BENCHMARK(zone_line)->Apply(sizes);
BENCHMARK(freed_circle)->Apply(sizes);
BENCHMARK(pass)->Apply(sizes);

}  // namespace
