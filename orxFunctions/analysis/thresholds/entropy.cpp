// The methods that weigh the information in the two classes: maximum entropy, Shanbhag.
#include "orxFunctions/analysis/thresholds/methods.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "orxFunctions/analysis/thresholds/shortlist.h"

namespace orx {
namespace {

using Levels = std::array<double, kLevels>;

// Entropy of the levels [from, to), which hold `count` pixels. The logarithm is single precision, intended.
double classEntropy(const Histogram& histogram, int from, int to, std::int64_t count) {
    double sum = 0;
    for (int i = from; i < to; ++i) {
        const std::uint32_t pixels = histogram[static_cast<std::size_t>(i)];
        if (pixels == 0) continue;
        const double q = static_cast<double>(pixels) / static_cast<double>(count);
        sum += q * static_cast<double>(std::log(static_cast<float>(q)));
    }
    return -sum;
}

// The same from the sum of pixels x ln(pixels), without the roundings of single precision.
double estimatedEntropy(double sumOfLogs, std::int64_t count) {
    if (count == 0) return 0;
    const auto n = static_cast<double>(count);
    return std::log(n) - sumOfLogs / n;
}

// Sums of pixels x ln(pixels) over the levels below each.
std::array<double, kLevels + 1> sumsOfLogs(const Histogram& histogram) {
    std::array<double, kLevels + 1> sums{};
    for (std::size_t i = 0; i < histogram.size(); ++i) {
        const double pixels = histogram[i];
        sums[i + 1] = sums[i] + (pixels > 1 ? pixels * std::log(pixels) : 0.0);
    }
    return sums;
}

// The share of each level, and of the levels up to and above it.
struct Shares {
    Levels own{};
    Levels upTo{};
    Levels above{};

    explicit Shares(const Histogram& histogram) {
        std::int64_t pixels = 0;
        for (const std::uint32_t bin : histogram) pixels += bin;
        double sum = 0;
        for (std::size_t i = 0; i < histogram.size(); ++i) {
            own[i] = static_cast<double>(histogram[i]) / static_cast<double>(pixels);
            sum += own[i];
            upTo[i] = sum;
            above[i] = 1 - sum;
        }
    }
};

// How much the information of the two classes differs when `t` is the last level of the lower one.
double informationGap(const Shares& shares, std::size_t t) {
    const double a = 0.5 / shares.upTo[t];
    double lower = 0;
    for (std::size_t i = 1; i <= t; ++i) lower += shares.own[i] * std::log(1 - a * shares.upTo[i - 1]);
    const double b = 0.5 / shares.above[t];
    double upper = 0;
    for (std::size_t i = t + 1; i < shares.own.size(); ++i) {
        upper += shares.own[i] * std::log(1 - b * shares.above[i]);
    }
    return std::abs(-a * lower - -b * upper);
}

// Estimates of a x (sum of p ln(1 - a s)) for every class that is bounded by 0.5 / a, from running sums of
// the powers of s: the logarithm as its series in a s, which is at most one half.
class LogSeries {
  public:
    static constexpr std::size_t kTerms = 14;
    // What is left out: at most half of sum x^k / k over k > kTerms at x = 1/2.
    static constexpr double kError = 0.5 / (1 << kTerms) / (kTerms + 1);

    // Adds a level of share p with the cumulated share s.
    void add(double p, double s) {
        double term = p;
        for (double& power : powers_) {
            term *= s;
            power += term;
        }
    }

    // -a x (sum of p ln(1 - a s)).
    double information(double a) const {
        double sum = 0;
        for (std::size_t k = kTerms; k > 0; --k) {
            sum = a * (sum + powers_[k - 1] / static_cast<double>(k));
        }
        return a * sum;
    }

  private:
    std::array<double, kTerms> powers_{};
};

constexpr double kNoShare = 2.220446049250313e-16;
// A class of less than this share is scored exactly, its estimate being swamped by rounding.
constexpr double kSmallShare = 1e-6;

bool isSmall(double share) { return !(std::abs(share) >= kSmallShare); }

// A level that holds no pixels scores as the one before it and cannot win.
Shortlist informationShortlist(const Histogram& histogram, const Shares& shares, int first, int last) {
    Levels upper{};
    LogSeries above;
    for (std::size_t t = kLevels - 1; t > 0; --t) {
        upper[t] = above.information(0.5 / shares.above[t]);
        above.add(shares.own[t], shares.above[t]);
    }
    upper[0] = above.information(0.5 / shares.above[0]);

    Shortlist shortlist;
    LogSeries upTo;
    for (int level = 0; level <= last; ++level) {
        const auto t = static_cast<std::size_t>(level);
        if (t > 0) upTo.add(shares.own[t], shares.upTo[t - 1]);
        if (level < first || (level > first && histogram[t] == 0)) continue;
        if (isSmall(shares.upTo[t]) || isSmall(shares.above[t])) {
            shortlist.examine(level);
        } else {
            shortlist.estimate(level, std::abs(upTo.information(0.5 / shares.upTo[t]) - upper[t]));
        }
    }
    return shortlist;
}

}  // namespace

int maxEntropyLevel(const Histogram& histogram) {
    const RunningSums sums(histogram);
    const std::array<double, kLevels + 1> logs = sumsOfLogs(histogram);
    const std::int64_t pixels = sums.count(0, kLastLevel);

    Shortlist shortlist;
    for (int t = 0; t < kLevels; ++t) {
        // Behind an empty level the classes are those of the level before, which would win the tie.
        if (t > 0 && histogram[static_cast<std::size_t>(t) - 1] == 0) continue;
        const std::int64_t below = sums.count(0, t - 1);
        const double lower = logs[static_cast<std::size_t>(t)];
        shortlist.estimate(
            t, -(estimatedEntropy(lower, below) + estimatedEntropy(logs.back() - lower, pixels - below)));
    }
    // Single precision changes a score by less than 1e-5. The largest entropy is sought, above -1.
    return shortlist.winner(1e-4, 1.0, 0, [&](int t) {
        const std::int64_t below = sums.count(0, t - 1);
        return -(classEntropy(histogram, 0, t, below) + classEntropy(histogram, t, kLevels, pixels - below));
    });
}

int shanbhagLevel(const Histogram& histogram) {
    const Shares shares(histogram);
    // Written so that not-a-number, the shares of an empty image, is "not below".
    const auto counts = [](double share) { return !(std::abs(share) < kNoShare); };
    int first = 0;
    while (first < kLevels && !counts(shares.upTo[static_cast<std::size_t>(first)])) ++first;
    if (first == kLevels) first = 0;
    int last = kLastLevel;
    while (last >= first && !counts(shares.above[static_cast<std::size_t>(last)])) --last;
    if (last < first) last = kLastLevel;
    return informationShortlist(histogram, shares, first, last)
        .winner(4 * LogSeries::kError + 1e-9, 1e7, -1,
                [&](int t) { return informationGap(shares, static_cast<std::size_t>(t)); });
}

}  // namespace orx
