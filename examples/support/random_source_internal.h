// Random numbers that are the same on every platform: the standard's generator, but not its distributions,
// whose results each library chooses for itself.
#ifndef EXAMPLES_SUPPORT_RANDOM_SOURCE_INTERNAL_H
#define EXAMPLES_SUPPORT_RANDOM_SOURCE_INTERNAL_H

#include <cmath>
#include <cstdint>
#include <random>

#include "support/angles.h"

namespace scenes {

class RandomSource {
  public:
    explicit RandomSource(std::uint64_t seed) : generator_(seed) {}

    double uniform(double low, double high) {
        return low + (high - low) * static_cast<double>(generator_() >> 11) * 0x1p-53;
    }

    // Mean 0, deviation 1 (Box and Muller 1958).
    double normal() {
        const double radius = std::sqrt(-2.0 * std::log(1.0 - uniform(0.0, 1.0)));
        return radius * std::cos(uniform(0.0, 2.0 * kPi));
    }

  private:
    std::mt19937_64 generator_;
};

}  // namespace scenes

#endif
