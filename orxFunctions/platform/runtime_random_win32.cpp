#include "orxFunctions/platform/runtime_random_internal.h"

#include <cstdint>
#include <new>

namespace orx::platform {

// A linear congruential generator of 32 bits, in every one of Microsoft's runtimes, of which 15 bits are
// given.
struct RuntimeRandom::State {
    std::uint32_t value = 1;
};

RuntimeRandom::State& RuntimeRandom::state() { return *std::launder(reinterpret_cast<State*>(state_)); }

RuntimeRandom::RuntimeRandom() {
    static_assert(sizeof(State) <= sizeof state_);
    new (state_) State;
}

RuntimeRandom::~RuntimeRandom() { state().~State(); }

void RuntimeRandom::seedState(unsigned seed) { state().value = seed; }

int RuntimeRandom::next() {
    State& own = state();
    own.value = own.value * 214013U + 2531011U;
    return static_cast<int>((own.value >> 16U) & 0x7FFFU);
}

}  // namespace orx::platform
