// The methods that balance a level between the class means: iterative intermeans, IsoData; and moments.
#include "orxFunctions/analysis/thresholds/methods.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace orx {
namespace {

// The mean level of [from, to], towards zero; 0 for an empty class.
std::int64_t meanLevel(const RunningSums& sums, int from, int to) {
    const std::int64_t count = sums.count(from, to);
    return count == 0 ? 0 : sums.weighted(from, to) / count;
}

// The share of object pixels in the two-level image that has the first three moments of the given one.
// Not-a-number for images of a single level and for empty ones.
double objectFraction(const Histogram& histogram) {
    double m0 = 0;
    double m1 = 0;
    double m2 = 0;
    double m3 = 0;
    for (std::size_t i = 0; i < histogram.size(); ++i) {
        const auto level = static_cast<double>(i);
        const double pixels = histogram[i];
        m0 += pixels;
        m1 += level * pixels;
        m2 += level * level * pixels;
        m3 += level * level * level * pixels;
    }
    const double cd = m2 * m0 - m1 * m1;
    const double c1 = (m2 * m1 - m3 * m0) / cd;
    const double c0 = (m1 * m3 - m2 * m2) / cd;
    return 0.5 - (m1 / m0 + c1 / 2) / std::sqrt(c1 * c1 - 4 * c0);
}

}  // namespace

int iterativeLevel(const Histogram& histogram) {
    constexpr int kMostUpdates = 1000;
    const int first = firstLevel(histogram);
    if (first == kLastLevel || first + 1 == kLastLevel) return first;
    const RunningSums sums(histogram);
    int previous = first;
    int level = (first + kLastLevel) / 2;
    for (int updates = 0; level != previous; ++updates) {
        const bool upperClassEmpty = sums.count(level + 1, kLastLevel) == 0;
        if (upperClassEmpty || updates == kMostUpdates) return -1;
        previous = level;
        level =
            static_cast<int>((meanLevel(sums, first, level) + meanLevel(sums, level + 1, kLastLevel)) / 2);
    }
    return level;
}

int isoDataLevel(const Histogram& histogram) {
    const RunningSums sums(histogram);
    int level = 1;
    while (level < kLevels && histogram[static_cast<std::size_t>(level)] == 0) ++level;
    level = level < kLevels ? level + 1 : 0;
    for (; level < kLastLevel; ++level) {
        // The bin of the level itself belongs to neither class, intended.
        if (sums.count(0, level - 1) == 0 || sums.count(level + 1, kLastLevel) == 0) continue;
        const std::int64_t lower = meanLevel(sums, 0, level - 1);
        const std::int64_t upper = meanLevel(sums, level + 1, kLastLevel);
        if (level == std::lround(static_cast<double>(lower + upper) * 0.5)) return level;
    }
    return 0;
}

int momentsLevel(const Histogram& histogram) {
    const RunningSums sums(histogram);
    const auto pixels = static_cast<double>(sums.count(0, kLastLevel));
    const double wanted = objectFraction(histogram);
    double nearest = 10000000.0;
    int level = 0;
    for (int i = 0; i < kLevels; ++i) {
        const double distance = std::abs(static_cast<double>(sums.count(0, i)) / pixels - wanted);
        if (distance < nearest) {
            nearest = distance;
            level = i;
        }
    }
    return level;
}

}  // namespace orx
