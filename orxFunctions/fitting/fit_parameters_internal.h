// Parameters of the estimators: lists of doubles, of which some stand for integers.
#ifndef ORXFUNCTIONS_FITTING_FIT_PARAMETERS_INTERNAL_H
#define ORXFUNCTIONS_FITTING_FIT_PARAMETERS_INTERNAL_H

#include <cstdint>
#include <limits>

namespace orx {

// The integer part: 5.9 gives 5, -5.9 gives -5. Beyond 32 bits the nearest limit, for not-a-number 0: a
// plain conversion is undefined there.
inline std::int32_t truncated(double value) {
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::lowest();
    constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
    if (value >= kHighest) return kHighest;
    if (value <= kLowest) return kLowest;
    return value == value ? static_cast<std::int32_t>(value) : 0;
}

}  // namespace orx

#endif
