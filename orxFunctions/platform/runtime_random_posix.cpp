#include "orxFunctions/platform/runtime_random_internal.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace orx::platform {

// rand() of glibc is random() on a table of 128 bytes, and these are the same functions on a table of one's
// own.
struct RuntimeRandom::State {
    random_data data = {};
    char table[128];
};

RuntimeRandom::State& RuntimeRandom::state() { return *std::launder(reinterpret_cast<State*>(state_)); }

RuntimeRandom::RuntimeRandom() {
    static_assert(sizeof(State) <= sizeof state_);
    State& own = *new (state_) State;
    initstate_r(1, own.table, sizeof own.table, &own.data);
}

RuntimeRandom::~RuntimeRandom() { state().~State(); }

void RuntimeRandom::seedState(unsigned seed) { srandom_r(seed, &state().data); }

int RuntimeRandom::next() {
    std::int32_t number = 0;
    random_r(&state().data, &number);
    return number;
}

}  // namespace orx::platform
