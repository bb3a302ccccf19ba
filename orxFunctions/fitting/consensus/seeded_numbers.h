// Random numbers from a seed: the same everywhere, whatever else draws numbers.
#ifndef ORXFUNCTIONS_FITTING_CONSENSUS_SEEDED_NUMBERS_H
#define ORXFUNCTIONS_FITTING_CONSENSUS_SEEDED_NUMBERS_H

#include <cstddef>
#include <cstdint>

namespace orx::consensus {

// SplitMix64 (G. L. Steele, D. Lea and C. H. Flood, "Fast splittable pseudorandom number generators", OOPSLA
// 2014): each seed starts a sequence of its own of 2^64 numbers, neighbouring seeds included.
class SeededNumbers {
  public:
    explicit SeededNumbers(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        state_ += 0x9e3779b97f4a7c15U;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
        return z ^ (z >> 31);
    }

    // Below `count`, which is at most 2^32; the numbers' chances differ by less than count / 2^32.
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(((next() >> 32) * count) >> 32); }

  private:
    std::uint64_t state_;
};

}  // namespace orx::consensus

#endif
