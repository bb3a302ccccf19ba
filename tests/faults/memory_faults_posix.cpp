#include "tests/faults/memory_faults_posix.h"

#include <link.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

using test::memory::Length;

struct Plan {
    std::atomic<bool> isArmed{false};
    std::atomic<bool> lasts{false};
    std::atomic<long> n{0};
    std::atomic<long> seen{0};
    std::atomic<long> failed{0};
};

// What is asked for while the loader works must find these made: neither has a constructor that runs.
Plan plan;
std::atomic<long> live{0};
std::atomic<bool> isElsewhere{false};
thread_local bool isOwner = false;  // of the plan

bool fails() {
    if (!plan.isArmed.load(std::memory_order_relaxed) ||
        isOwner == isElsewhere.load(std::memory_order_relaxed))
        return false;
    const long number = plan.seen.fetch_add(1) + 1;
    const long n = plan.n;
    if (n == 0 || number < n || (number > n && !plan.lasts)) return false;
    ++plan.failed;
    return true;
}

// OpenCV loses the pixels of a matrix where it finds no memory for the few bytes that count its users. So
// only the memory of its pixels, which is not asked for by operator new, ever fails.
struct Range {
    std::uintptr_t first;
    std::uintptr_t last;
};
std::array<Range, 64> openCv;
std::size_t openCvRanges = 0;

int addRanges(dl_phdr_info* module, std::size_t, void*) {
    if (std::strstr(module->dlpi_name, "libopencv_") == nullptr) return 0;
    for (int i = 0; i < module->dlpi_phnum && openCvRanges < openCv.size(); ++i) {
        const auto& segment = module->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0) continue;
        const std::uintptr_t first = module->dlpi_addr + segment.p_vaddr;
        openCv[openCvRanges++] = {first, first + segment.p_memsz};
    }
    return 0;
}

bool isOpenCv(const void* place) {
    const auto address = reinterpret_cast<std::uintptr_t>(place);
    for (std::size_t i = 0; i < openCvRanges; ++i) {
        if (address >= openCv[i].first && address < openCv[i].last) return true;
    }
    return false;
}

void arm(long n, Length length, bool elsewhere) {
    if (openCvRanges == 0) dl_iterate_phdr(addRanges, nullptr);
    isOwner = true;
    isElsewhere = elsewhere;
    plan.n = n;
    plan.lasts = length == Length::kLasting;
    plan.seen = 0;
    plan.failed = 0;
    plan.isArmed = true;
}

void disarm() {
    plan.isArmed = false;
    isOwner = false;
}

void* counted(void* block) {
    if (block != nullptr) live.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void discount(const void* block) {
    if (block != nullptr) live.fetch_sub(1, std::memory_order_relaxed);
}

void* none() {
    errno = ENOMEM;
    return nullptr;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORX_NEW_ALONE
void* plainBlock(std::size_t size) { return std::malloc(size); }
void freePlainBlock(void* block) { std::free(block); }
#else
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void __libc_free(void* block);
void* plainBlock(std::size_t size) { return __libc_malloc(size); }
void freePlainBlock(void* block) { __libc_free(block); }
#endif

void* taken(std::size_t size, const void* caller) {
    if (plan.isArmed.load(std::memory_order_relaxed) && !isOpenCv(caller) && fails()) return none();
    return counted(plainBlock(size == 0 ? 1 : size));
}

void returned(void* block) {
    discount(block);
    freePlainBlock(block);
}

}  // namespace

namespace test::memory {

Fault::Fault(long n, Length length) { arm(n, length, false); }
Fault::~Fault() { disarm(); }
FaultElsewhere::FaultElsewhere(long n, Length length) { arm(n, length, true); }
FaultElsewhere::~FaultElsewhere() { disarm(); }

long allocationsSeen() { return plan.seen; }
long allocationsFailed() { return plan.failed; }
long liveBlocks() { return live; }

}  // namespace test::memory

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return taken(size, __builtin_return_address(0));
}
void* operator new(std::size_t size) {
    void* const block = taken(size, __builtin_return_address(0));
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept { returned(block); }
void operator delete(void* block, std::size_t) noexcept { returned(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { returned(block); }

#if !defined(ORX_NEW_ALONE)

extern "C" {

void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) { return fails() ? none() : counted(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) {
    return fails() ? none() : counted(__libc_calloc(count, size));
}
void* memalign(std::size_t alignment, std::size_t size) {
    return fails() ? none() : counted(__libc_memalign(alignment, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    void* const taken = memalign(alignment, size);
    if (taken == nullptr) return ENOMEM;
    *block = taken;
    return 0;
}
void* realloc(void* block, std::size_t size) {
    if (block == nullptr) return malloc(size);
    if (size != 0) return fails() ? none() : __libc_realloc(block, size);
    free(block);
    return nullptr;
}
void free(void* block) {
    discount(block);
    __libc_free(block);
}

}  // extern "C"

#endif
