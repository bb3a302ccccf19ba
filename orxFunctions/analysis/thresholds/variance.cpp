// The methods that weigh the variances of the two classes: Otsu, minimum error.
#include "orxFunctions/analysis/thresholds/methods.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "orxFunctions/analysis/thresholds/shortlist.h"

namespace orx {
namespace {

// The between-class variance of a split, from the counts and weighted counts of all levels and of class 1.
// Not-a-number when class 2 is empty.
double betweenClassVariance(double count, double weighted, double count1, double weighted1) {
    const double m1 = weighted1 / count1;
    const double m2 = (weighted - weighted1) / (count - count1);
    const double w1 = count1 / count;
    const double w2 = (count - count1) / count;
    return w2 * w1 * ((m1 - m2) * (m1 - m2));
}

// The levels [from, to] of a histogram, with the moments that minimum error needs.
struct ErrorClass {
    double count = 0;
    double squares = 0;  // sum of squared distances from the mean

    ErrorClass(const Histogram& histogram, const RunningSums& sums, int from, int to) {
        count = static_cast<double>(sums.count(from, to));
        const double mean = static_cast<double>(sums.weighted(from, to)) / count;
        for (int i = from; i <= to; ++i) {
            squares += histogram[static_cast<std::size_t>(i)] * ((i - mean) * (i - mean));
        }
    }

    double score() const { return count * std::log(std::sqrt(squares / count) / count); }
};

// Infinite where a class has no spread: such a split is never taken for its score.
double exactError(const Histogram& histogram, const RunningSums& sums, int first, int t) {
    const ErrorClass lower(histogram, sums, first, t);
    const ErrorClass upper(histogram, sums, t + 1, kLastLevel);
    if (lower.squares == 0 || upper.squares == 0) return HUGE_VAL;
    return 1 + 2 * (lower.score() + upper.score());
}

// Running sums from which the score of a class follows in one logarithm.
struct ErrorSums {
    std::uint64_t count = 0;
    std::uint64_t weighted = 0;
    std::uint64_t squared = 0;

    void add(std::uint64_t level, std::uint64_t pixels) {
        count += pixels;
        weighted += level * pixels;
        squared += level * level * pixels;
    }
    friend ErrorSums operator-(const ErrorSums& a, const ErrorSums& b) {
        return {a.count - b.count, a.weighted - b.weighted, a.squared - b.squared};
    }
    // count x (sum of squared distances from the mean), exact up to 2^25 pixels: it is below 2^64 there, and
    // what the products lose by wrapping around cancels.
    std::uint64_t spread() const { return count * squared - weighted * weighted; }
    // 2 count ln(deviation / count), the deviation being sqrt(spread) / count.
    double score() const {
        const auto n = static_cast<double>(count);
        return n * std::log(static_cast<double>(spread()) / (n * n * n * n));
    }
};

constexpr std::uint64_t kMostPixelsOfExactSpread = std::uint64_t{1} << 25;

// Which splits to score: those where both classes have a spread. A split at an empty level equals the one
// before it and cannot win.
Shortlist errorShortlist(const Histogram& histogram, int first) {
    ErrorSums all;
    for (std::size_t i = 0; i < histogram.size(); ++i) all.add(i, histogram[i]);
    Shortlist shortlist;
    ErrorSums lower;
    for (int t = first; t < kLastLevel && lower.count < all.count; ++t) {
        const std::uint32_t pixels = histogram[static_cast<std::size_t>(t)];
        if (pixels == 0) continue;
        lower.add(static_cast<std::uint64_t>(t), pixels);
        const ErrorSums upper = all - lower;
        if (all.count > kMostPixelsOfExactSpread) {
            shortlist.examine(t);
        } else if (lower.spread() > 0 && upper.spread() > 0) {
            shortlist.estimate(t, 1 + lower.score() + upper.score());
        }
    }
    return shortlist;
}

}  // namespace

int otsuLevel(const Histogram& histogram, double& score) {
    score = -1.0;
    const int first = firstLevel(histogram);
    if (first > kLastLevel) return -1;
    if (first == kLastLevel || first + 1 == kLastLevel) return first;
    const RunningSums sums(histogram);
    const auto count = static_cast<double>(sums.count(first, kLastLevel));
    const auto weighted = static_cast<double>(sums.weighted(first, kLastLevel));
    int level = 0;
    for (int t = first; t < kLastLevel; ++t) {
        const double variance =
            betweenClassVariance(count, weighted, static_cast<double>(sums.count(first, t)),
                                 static_cast<double>(sums.weighted(first, t)));
        if (variance > score) {
            score = variance;
            level = t;
        }
    }
    return level;
}

int minErrorLevel(const Histogram& histogram) {
    const int first = firstLevel(histogram);
    if (first > kLastLevel) return -1;
    if (first == kLastLevel || first + 1 == kLastLevel) return first;
    const RunningSums sums(histogram);
    const auto pixels = static_cast<double>(sums.count(first, kLastLevel));
    // Estimate and score differ by less than 1e-12 a pixel. The first split, whose class 1 has no spread, is
    // the answer until a score beats it.
    return errorShortlist(histogram, first).winner(1e-9 * pixels, 1e20, first, [&](int t) {
        return exactError(histogram, sums, first, t);
    });
}

}  // namespace orx
