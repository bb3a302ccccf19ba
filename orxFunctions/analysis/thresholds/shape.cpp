// The methods that read the level off the shape of the histogram: triangle, required number.
#include "orxFunctions/analysis/thresholds/methods.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace orx {
namespace {

// The last level of 1..255 that occurs; 0 when none does.
int lastLevelAboveZero(const Histogram& histogram) {
    int last = kLastLevel;
    while (last > 0 && histogram[static_cast<std::size_t>(last)] == 0) --last;
    return last;
}

}  // namespace

int triangleLevel(Histogram histogram) {
    const int first = firstLevel(histogram);
    int low = first > kLastLevel ? 0 : std::max(first - 1, 0);
    const int high = std::min(lastLevelAboveZero(histogram) + 1, kLastLevel);
    int peak = static_cast<int>(std::max_element(histogram.begin(), histogram.end()) - histogram.begin());
    const std::int64_t most = histogram[static_cast<std::size_t>(peak)];
    const bool inverted = peak - low < high - peak;
    if (inverted) {
        std::reverse(histogram.begin(), histogram.end());
        low = kLastLevel - high;
        peak = kLastLevel - peak;
    }
    int split = low;
    std::int64_t farthest = 0;
    const std::int64_t slope = low - peak;
    for (int i = low + 1; i <= peak; ++i) {
        const std::int64_t distance = histogram[static_cast<std::size_t>(i)] * slope + i * most;
        if (distance > farthest) {
            farthest = distance;
            split = i;
        }
    }
    return inverted ? kLevels - split : split - 1;
}

int requiredNumberLevel(const Histogram& histogram, int required) {
    std::int64_t count = 0;
    for (int t = kLastLevel; t >= 0; --t) {
        count += histogram[static_cast<std::size_t>(t)];
        if (count > required) return t;
    }
    return -1;
}

}  // namespace orx
