#include "orxFunctions/platform/runtime_random_internal.h"

#include <cstdlib>

namespace orx::platform {

void RuntimeRandom::leaveToRuntime() const {
    if (!seeded_) return;
    std::srand(seed_);
    for (std::size_t i = 0; i < drawn_; ++i) std::rand();
}

}  // namespace orx::platform
