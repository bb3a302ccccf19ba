// Memory that runs out where a test says: the n-th allocation of a thread fails.
//
// The test program's own malloc and its kin stand in for those of the C library, in every library of the
// process, and so operator new fails with them. Under a sanitizer, which has its own, operator new alone is
// replaced.
#ifndef ORX_TESTS_FAULTS_MEMORY_FAULTS_POSIX_H
#define ORX_TESTS_FAULTS_MEMORY_FAULTS_POSIX_H

namespace test::memory {

// Under a sanitizer: blocks that are taken in other ways never fail.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kNewAlone = true;
#else
constexpr bool kNewAlone = false;
#endif

enum class Length { kOnce, kLasting };  // the n-th alone, or it and all that follow

// The calling thread's allocations, while it lives. `n` counts from 1; 0 fails none.
class Fault {
  public:
    Fault(long n, Length length);
    ~Fault();
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;
};

// The same of all other threads together.
class FaultElsewhere {
  public:
    FaultElsewhere(long n, Length length);
    ~FaultElsewhere();
    FaultElsewhere(const FaultElsewhere&) = delete;
    FaultElsewhere& operator=(const FaultElsewhere&) = delete;
};

// How many allocations the last fault saw, and how many of them failed.
long allocationsSeen();
long allocationsFailed();

// Blocks of all threads that are not freed yet.
long liveBlocks();

}  // namespace test::memory

#endif
