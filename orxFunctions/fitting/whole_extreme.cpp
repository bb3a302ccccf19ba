#include "orxFunctions/fitting/whole_extreme_internal.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "orxFunctions/fitting/curve_sampling_internal.h"

namespace orx {
namespace {

struct Range {
    double low;
    double high;
};

// What is known of the values of a stretch: all are at most `most`, or none of them is a number.
struct Bound {
    double most;
    bool noNumber;
};

constexpr double kInfinity = std::numeric_limits<double>::infinity();

class WholeSearch {
  public:
    WholeSearch(const double* coefficients, std::size_t count, bool maximum)
        : coefficients_(coefficients), count_(count), sign_(maximum ? 1.0 : -1.0) {}

    bool run(std::int64_t low, std::int64_t high) {
        offer(low);
        seed(low, high);
        if (low >= 0 || high < 0) return search(low, high);
        return search(low, -1) && search(0, high);
    }

    cv::Point2d best() const { return {bestX_, sign_ * bestScore_}; }

  private:
    // Stretches up to this length are looked at number by number.
    static constexpr std::int64_t kShort = 64;

    void offer(std::int64_t at) {
        const auto x = static_cast<double>(at);
        const double score = sign_ * evaluatePolynomial(coefficients_, count_, x);
        spent_ += static_cast<double>(count_ + 1);
        if (any_ && !isBetter(x, score)) return;
        bestX_ = x;
        bestScore_ = score;
        any_ = true;
    }

    bool isBetter(double x, double score) const {
        if (std::isnan(bestScore_)) return !std::isnan(score) || x < bestX_;
        return score > bestScore_ || (score == bestScore_ && x < bestX_);
    }

    // A good value early lets most stretches be passed over: coarse samples, then finer ones about their
    // best.
    void seed(std::int64_t low, std::int64_t high) {
        constexpr std::int64_t kSamples = 256;
        std::int64_t from = low;
        std::int64_t to = high;
        while (to - from > kSamples) {
            const std::int64_t step = (to - from) / kSamples;
            for (std::int64_t x = from; x <= to; x += step) offer(x);
            const auto middle = static_cast<std::int64_t>(bestX_);
            from = std::max(low, middle - step);
            to = std::min(high, middle + step);
        }
    }

    // Both of one sign.
    bool search(std::int64_t low, std::int64_t high) {
        if (spent_ > kMostSearchedTerms) return false;
        if (high - low < kShort) {
            for (std::int64_t x = low; x <= high; ++x) offer(x);
            return true;
        }
        if (isHopeless(low, high)) return true;
        const std::int64_t middle = low + (high - low) / 2;
        return search(low, middle) && search(middle + 1, high);
    }

    bool isHopeless(std::int64_t low, std::int64_t high) {
        const Bound bound = boundOf(low, high);
        if (bound.noNumber) return true;
        if (std::isnan(bestScore_)) return false;
        return bound.most < bestScore_ || (bound.most == bestScore_ && static_cast<double>(low) > bestX_);
    }

    // Rounding keeps order: what evaluatePolynomial computes anywhere in the stretch lies between what the
    // same operations give for the ends of each power.
    Bound boundOf(std::int64_t low, std::int64_t high) {
        spent_ += static_cast<double>(2 * count_);
        const bool negative = high < 0;
        const auto nearEnd = static_cast<double>(negative ? -high : low);
        const auto farEnd = static_cast<double>(negative ? -low : high);
        Range power{1, 1};
        Range sum{0, 0};
        for (std::size_t i = 0; i < count_; ++i) {
            const bool turned = negative && i % 2 == 1;
            Range term{coefficients_[i] * (turned ? -power.high : power.low),
                       coefficients_[i] * (turned ? -power.low : power.high)};
            if (std::isnan(term.low) && std::isnan(term.high)) return {0, true};
            if (std::isnan(term.low) || std::isnan(term.high)) return {kInfinity, false};
            if (term.low > term.high) std::swap(term.low, term.high);
            if (sum.low == kInfinity && term.high == -kInfinity) return {0, true};
            if (sum.high == -kInfinity && term.low == kInfinity) return {0, true};
            sum = {sum.low + term.low, sum.high + term.high};
            if (std::isnan(sum.low) || std::isnan(sum.high)) return {kInfinity, false};
            power = {power.low * nearEnd, power.high * farEnd};
        }
        return {sign_ > 0 ? sum.high : -sum.low, false};
    }

    const double* coefficients_;
    std::size_t count_;
    double sign_;
    double bestX_ = 0;
    double bestScore_ = 0;  // the value, with its sign changed where the least is sought
    bool any_ = false;
    double spent_ = 0;  // terms
};

}  // namespace

bool extremeOfWholeNumbers(const double* coefficients, std::size_t count, int low, int high, bool maximum,
                           cv::Point2d& best) {
    WholeSearch search(coefficients, count, maximum);
    if (!search.run(low, high)) return false;
    best = search.best();
    return true;
}

}  // namespace orx
