// The loop of benchmarks that tell what a call takes from the heap beside its time.
#ifndef BENCH_STEADY_H
#define BENCH_STEADY_H

#include <benchmark/benchmark.h>

#include "bench/heap_use.h"

namespace bench {

// Times a call that is made again and again with the same input, and counts the third one's blocks: what is
// made once and kept is there by then.
template <class Call>
void steady(benchmark::State& state, Call call) {
    call();
    call();
    if (heapIsCounted()) {
        const HeapUse use = heapUseOf(call);
        state.counters["heap_blocks"] = static_cast<double>(use.blocks);
        state.counters["heap_bytes"] = static_cast<double>(use.bytes);
        state.counters["heap_peak"] = static_cast<double>(use.peak);
    }
    for (auto _ : state) call();
}

}  // namespace bench

#endif
