#include "orxFunctions/platform/runtime_random_internal.h"

#include <cstdlib>

namespace orx::platform {

void RuntimeRandom::seed(unsigned seed) {
    seedState(seed);
    seed_ = seed;
    seeded_ = true;
    drawn_ = 0;
}

int RuntimeRandom::draw() {
    ++drawn_;
    return next();
}

void RuntimeRandom::leaveToRuntime() const {
    if (!seeded_) return;
    std::srand(seed_);
    for (std::size_t i = 0; i < drawn_; ++i) std::rand();
}

}  // namespace orx::platform
