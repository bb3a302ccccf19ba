// The exact point where a condition on a double turns true.
//
// A test such as sqrt(q) - r < t, applied to many q, need not be calculated for each: rounding keeps order,
// so there is one double from which on it fails, and comparing q with that double gives the same answers.
#ifndef ORXFUNCTIONS_FITTING_MONOTONE_BOUND_INTERNAL_H
#define ORXFUNCTIONS_FITTING_MONOTONE_BOUND_INTERNAL_H

#include <cstdint>
#include <cstring>
#include <limits>

namespace orx {

// The smallest value in [0, infinity] for which `reached` holds, infinity when none does below it. `reached`
// must never turn false again as its argument grows. A good guess saves steps and has no other influence.
template <class Condition>
double firstReached(double guess, Condition reached) {
    // The bits of doubles that are not negative are ordered as the doubles are.
    const auto bitsOf = [](double value) {
        std::int64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    };
    const auto valueOf = [](std::int64_t bits) {
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    };
    if (reached(0.0)) return 0.0;
    std::int64_t low = 0;  // not reached
    std::int64_t high = bitsOf(std::numeric_limits<double>::infinity());
    std::int64_t middle =
        guess > 0 && guess < std::numeric_limits<double>::infinity() ? bitsOf(guess) : high / 2;
    // Away from the guess in growing steps until the bound is passed, then halving what is left.
    for (std::uint64_t step = 1;; step *= 2) {
        const bool isReached = reached(valueOf(middle));
        (isReached ? high : low) = middle;
        if (step >= static_cast<std::uint64_t>(isReached ? middle - low : high - middle)) break;
        middle += isReached ? -static_cast<std::int64_t>(step) : static_cast<std::int64_t>(step);
    }
    while (high - low > 1) {
        const std::int64_t half = low + (high - low) / 2;
        (reached(valueOf(half)) ? high : low) = half;
    }
    return valueOf(high);
}

}  // namespace orx

#endif
