// The functions of the heap, put before those of the C library: operator new, std::vector and OpenCV's
// matrices all come by here.
#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

#include "bench/heap_use.h"

// NOLINTBEGIN(bugprone-reserved-identifier): glibc's own names of its heap
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::atomic<bool> counting{false};
std::atomic<std::int64_t> blocks{0};
std::atomic<std::int64_t> bytes{0};
std::atomic<std::int64_t> held{0};
std::atomic<std::int64_t> peak{0};

void* taken(void* block) {
    if (block == nullptr || !counting.load(std::memory_order_relaxed)) return block;
    const auto size = static_cast<std::int64_t>(malloc_usable_size(block));
    blocks.fetch_add(1, std::memory_order_relaxed);
    bytes.fetch_add(size, std::memory_order_relaxed);
    const std::int64_t now = held.fetch_add(size, std::memory_order_relaxed) + size;
    std::int64_t highest = peak.load(std::memory_order_relaxed);
    while (highest < now && !peak.compare_exchange_weak(highest, now, std::memory_order_relaxed)) {
    }
    return block;
}

void givenBack(void* block) {
    if (block != nullptr && counting.load(std::memory_order_relaxed))
        held.fetch_sub(static_cast<std::int64_t>(malloc_usable_size(block)), std::memory_order_relaxed);
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept { return taken(__libc_malloc(size)); }

void* calloc(std::size_t count, std::size_t size) noexcept { return taken(__libc_calloc(count, size)); }

// Counted as a new block and the old one given back, also where it only grew.
void* realloc(void* block, std::size_t size) noexcept {
    givenBack(block);
    return taken(__libc_realloc(block, size));
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return taken(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return taken(__libc_memalign(alignment, size));
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    void* const made = __libc_memalign(alignment, size);
    if (made == nullptr) return ENOMEM;
    *block = taken(made);
    return 0;
}

void free(void* block) noexcept {
    givenBack(block);
    __libc_free(block);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace bench {

bool heapIsCounted() { return true; }

void startHeapCount() {
    blocks = bytes = held = peak = 0;
    counting = true;
}

HeapUse endHeapCount() {
    counting = false;
    return {blocks, bytes, peak};
}

}  // namespace bench
