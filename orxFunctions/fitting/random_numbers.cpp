#include "orxFunctions/fitting/random_numbers.h"

#include <cstdint>
#include <cstdlib>

namespace orx {

int getRandNum(int lo, int hi) {
    const std::int64_t drawn = std::rand();
    const std::int64_t count = std::int64_t{hi} - lo + 1;
    return count < 1 ? lo : static_cast<int>(lo + drawn % count);
}

int getSrandNum(int lo, int hi, int seed) {
    std::srand(static_cast<unsigned>(seed));
    return getRandNum(lo, hi);
}

}  // namespace orx
