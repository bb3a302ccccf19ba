// Real numbers to 32-bit integers, for any number: what lies outside the integers becomes the nearest one,
// and what is no number 0. Reentrant.
#ifndef ORXFUNCTIONS_FOUNDATION_ROUNDING_INTERNAL_H
#define ORXFUNCTIONS_FOUNDATION_ROUNDING_INTERNAL_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace orx {

inline double withinInt(double value) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(value)) return 0.0;
    return std::clamp(value, static_cast<double>(Limits::min()), static_cast<double>(Limits::max()));
}

// Ties to even.
inline std::int32_t roundedInt(double value) {
    return static_cast<std::int32_t>(std::lrint(withinInt(value)));
}

// Ties away from zero.
inline std::int32_t roundedAwayInt(double value) {
    return static_cast<std::int32_t>(std::lround(withinInt(value)));
}

}  // namespace orx

#endif
