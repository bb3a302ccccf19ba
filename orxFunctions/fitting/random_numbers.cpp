#include "orxFunctions/fitting/random_numbers.h"

#include <cstdlib>

namespace orx {

int getRandNum(int lo, int hi) { return lo + std::rand() % (hi - lo + 1); }

int getSrandNum(int lo, int hi, int seed) {
    std::srand(static_cast<unsigned>(seed));
    return getRandNum(lo, hi);
}

}  // namespace orx
