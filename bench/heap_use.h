// What a call takes from the heap: every block that the program, its libraries and OpenCV's matrices ask for.
#ifndef BENCH_HEAP_USE_H
#define BENCH_HEAP_USE_H

#include <cstdint>

namespace bench {

struct HeapUse {
    std::int64_t blocks = 0;  // asked for
    std::int64_t bytes = 0;   // in them, as the heap hands them out
    std::int64_t peak = 0;    // bytes held at once, beyond what was held before
};

// Whether this build can count: not under a sanitizer, which has a heap of its own, nor without glibc.
bool heapIsCounted();

// Counting is process-wide, on all threads; one count at a time.
void startHeapCount();
HeapUse endHeapCount();

template <class Call>
HeapUse heapUseOf(Call call) {
    startHeapCount();
    call();
    return endHeapCount();
}

}  // namespace bench

#endif
