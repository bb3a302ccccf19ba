// Huang and Wang: the level at which the image is least fuzzy.
#include "orxFunctions/analysis/thresholds/methods.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "orxFunctions/platform/simd/vectors.h"

namespace orx {
namespace {

namespace simd = ORX_SIMD;

// The last level above `first` that occurs; 255 when none does.
int lastLevelAbove(const Histogram& histogram, int first) {
    int last = kLastLevel;
    while (last > first && histogram[static_cast<std::size_t>(last)] == 0) --last;
    return last > first ? last : kLastLevel;
}

// The fuzziness of the pixels of each level, given the mean grey level of their class.
class Fuzziness {
  public:
    Fuzziness(const Histogram& histogram, int first, int last) {
        for (std::size_t i = 0; i < pixels_.size(); ++i) pixels_[i] = histogram[i];
        const double range = last - first;
        double* centre = entropy_.data() + kCentre;
        for (int d = 1; d <= last - first; ++d) {
            const double x = 1 / (d / range + 1);
            const double entropy = -x * std::log(x) - (1 - x) * std::log(1 - x);
            centre[d] = entropy;
            centre[-d] = entropy;
        }
    }

    // Of one level: entropy times pixels, rounded to an integer.
    double of(int level, int mean) const { return sum(level, level, mean); }

    // Of the levels [from, to], each rounded before it is added. Exact in any order, being sums of integers.
    double sum(int from, int to, int mean) const {
        const double* entropy = entropy_.data() + (kCentre - mean);
        simd::VecD total = simd::VecD::all(0);
        int i = from;
        for (; i + kLanes - 1 <= to; i += kLanes) {
            total = total + rounded(simd::VecD::load(entropy + i) * simd::VecD::load(pixels_.data() + i));
        }
        std::array<double, simd::VecD::kLanes> lanes{};
        total.store(lanes.data());
        double result = 0;
        for (const double lane : lanes) result += lane;
        for (; i <= to; ++i) result += rounded(entropy[i] * pixels_[static_cast<std::size_t>(i)]);
        return result;
    }

  private:
    static constexpr int kCentre = kLastLevel;
    static constexpr int kLanes = static_cast<int>(simd::VecD::kLanes);
    // Adding it leaves no bits behind the point, which rounds to nearest, ties to even.
    static constexpr double kRounder = 6755399441055744.0;  // 1.5 x 2^52

    static double rounded(double x) { return (x + kRounder) - kRounder; }
    static simd::VecD rounded(simd::VecD x) {
        return (x + simd::VecD::all(kRounder)) - simd::VecD::all(kRounder);
    }

    std::array<double, kLevels> pixels_;
    std::array<double, 2 * kCentre + 1> entropy_{};  // by the distance from the mean, from -255 to 255
};

// The mean of a class, rounded half away from zero. Its sums are 32-bit, intended: the weighted one wraps
// above 2^24 bright pixels. Only where even the count has wrapped could the mean leave the grey levels.
int roundedMean(std::uint32_t weighted, std::uint32_t count) {
    return static_cast<int>(std::min<double>(std::round(static_cast<double>(weighted) / count), kLastLevel));
}

// The fuzziness of a class that gains or loses a level at a time: summed anew only when its mean moves.
class ClassFuzziness {
  public:
    explicit ClassFuzziness(const Fuzziness& fuzziness) : fuzziness_(fuzziness) {}

    // The class is [from, to] now; it was the same but for `level`, which it gained (+1) or lost (-1).
    double update(int from, int to, int level, double sign, std::uint32_t weighted, std::uint32_t count) {
        if (count == 0) return 0;
        const int mean = roundedMean(weighted, count);
        if (mean == mean_) {
            sum_ += sign * fuzziness_.of(level, mean);
        } else {
            sum_ = fuzziness_.sum(from, to, mean);
            mean_ = mean;
        }
        return sum_;
    }

  private:
    const Fuzziness& fuzziness_;
    int mean_ = -1;
    double sum_ = 0;
};

}  // namespace

int huangLevel(const Histogram& histogram) {
    const int first = firstLevel(histogram);
    if (first > kLastLevel) return -1;
    const int last = lastLevelAbove(histogram, first);
    if (last == first || last == first + 1) return first;

    std::uint32_t allPixels = 0;
    std::uint32_t allWeighted = 0;
    for (int i = first; i <= last; ++i) {
        const std::uint32_t pixels = histogram[static_cast<std::size_t>(i)];
        allPixels += pixels;
        allWeighted += static_cast<std::uint32_t>(i) * pixels;
    }

    const Fuzziness fuzziness(histogram, first, last);
    ClassFuzziness lower(fuzziness);
    ClassFuzziness upper(fuzziness);
    std::uint32_t pixels = 0;
    std::uint32_t weighted = 0;
    double best = 1.79e308;
    int level = -1;
    for (int t = first; t <= last; ++t) {
        const std::uint32_t added = histogram[static_cast<std::size_t>(t)];
        pixels += added;
        weighted += static_cast<std::uint32_t>(t) * added;
        const double cost = lower.update(first, t, t, +1, weighted, pixels) +
                            upper.update(t + 1, last, t, -1, allWeighted - weighted, allPixels - pixels);
        if (cost < best) {
            best = cost;
            level = t;
        }
    }
    return level;
}

}  // namespace orx
