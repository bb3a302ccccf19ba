#include "orxFunctions/fitting/random_numbers.h"

#include <cstdint>
#include <cstdlib>

#include "orxFunctions/platform/runtime_random_internal.h"

namespace orx {
namespace {

int numberBetween(int lo, int hi, std::int64_t drawn) {
    const std::int64_t count = std::int64_t{hi} - lo + 1;
    return count < 1 ? lo : static_cast<int>(lo + drawn % count);
}

}  // namespace

int getRandNum(int lo, int hi) { return numberBetween(lo, hi, std::rand()); }

int getSrandNum(int lo, int hi, int seed) {
    platform::RuntimeRandom random;
    random.seed(static_cast<unsigned>(seed));
    const int number = numberBetween(lo, hi, random.draw());
    random.leaveToRuntime();
    return number;
}

}  // namespace orx
