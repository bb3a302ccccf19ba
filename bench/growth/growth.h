// How the time of each operator grows with its input, and what a call takes from the heap: rows
// growth/OPERATOR/SIZE, the sizes pixels or points. bench/report reads the exponent from four of them.
#ifndef BENCH_GROWTH_GROWTH_H
#define BENCH_GROWTH_GROWTH_H

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "bench/steady.h"

namespace growth {

// `prepare` makes the input of a size; what it returns is called and timed.
template <class Prepare>
void add(const std::string& name, const std::vector<std::int64_t>& sizes, Prepare prepare) {
    auto* bench = benchmark::RegisterBenchmark(
        ("growth/" + name).c_str(),
        [prepare](benchmark::State& state) { bench::steady(state, prepare(state.range(0))); });
    for (const std::int64_t size : sizes) bench->Arg(size);
    bench->Unit(benchmark::kMicrosecond);
}

void addPictureOperators();
void addListOperators();
void addFits();

}  // namespace growth

#endif
