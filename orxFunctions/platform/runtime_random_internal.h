// The numbers of the C runtime's rand(), from a generator of one's own.
//
// Some searches are stated as srand(seed) and what rand() then gives. The runtime's own generator belongs to
// the whole process (glibc) or to the thread (Windows): where it is shared, a draw on another thread between
// two of a search would change what the search finds. An object of this class gives the very same numbers,
// and nobody else draws from it. A lock would not do: the draws of a host ask for none.
//
// One thread at a time.
#ifndef ORXFUNCTIONS_PLATFORM_RUNTIME_RANDOM_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_RUNTIME_RANDOM_INTERNAL_H

#include <cstddef>

namespace orx::platform {

class RuntimeRandom {
  public:
    // As after srand(1), with which every program starts.
    RuntimeRandom();
    ~RuntimeRandom();
    RuntimeRandom(const RuntimeRandom&) = delete;
    RuntimeRandom& operator=(const RuntimeRandom&) = delete;

    // What srand() and rand() do.
    void seed(unsigned seed);
    int draw();

    // Brings the runtime's generator to where this one is, by srand() and as many rand() as were drawn since:
    // what a host draws next is what it would be had the draws been the runtime's. Nothing before the first
    // seed().
    void leaveToRuntime() const;

  private:
    struct State;
    State& state();
    void seedState(unsigned seed);
    int next();

    alignas(std::max_align_t) unsigned char state_[192];  // room for either platform's
    unsigned seed_ = 1;
    bool seeded_ = false;
    std::size_t drawn_ = 0;
};

}  // namespace orx::platform

#endif
