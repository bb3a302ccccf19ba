// Parameters of the estimators: lists of doubles, of which some stand for integers.
#ifndef ORXFUNCTIONS_FITTING_FIT_PARAMETERS_INTERNAL_H
#define ORXFUNCTIONS_FITTING_FIT_PARAMETERS_INTERNAL_H

#include <cstddef>
#include <cstdint>
#include <limits>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {

// Whether setParams was given as many values as its class states. Keeps the refusal.
inline bool takesParameters(std::size_t given, std::size_t wanted) noexcept {
    return given == wanted || refuse(rcSizesDiffer, "setParams", "%zu values; %zu are taken", given, wanted);
}

// Why a consensus search among so many points found nothing; answers false.
inline bool refuseConsensus(std::size_t points, std::size_t fewest, int trials) noexcept {
    if (points < fewest) return refuse(rcTooFew, "fit", "%zu points; at least %zu are taken", points, fewest);
    if (trials < 1) return refuse(rcOption, "fit", "%d trials; at least 1 is taken", trials);
    return refuse(rcNoResult, "fit", "no sample of %d has the support asked for", trials);
}

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
