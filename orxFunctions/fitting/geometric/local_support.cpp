#include "orxFunctions/fitting/geometric/local_support.h"

#include <cmath>
#include <limits>
#include <numeric>

namespace orx::geometric {
namespace {

constexpr double kThin = 1.0 / 20.0;

}  // namespace

// Of a bin where most points are, if points fall at random: the mean number of a point's companions.
double LocalSupport::density() const {
    double all = 0.0;
    double companions = 0.0;
    for (const double count : counts_) {
        all += count;
        companions += count * (count - 1.0);
    }
    return all > 0.0 ? companions / all : 0.0;
}

// So many empty bins have a probability of exp(-10).
std::size_t LocalSupport::gapFrom(double density) const {
    constexpr double kImprobable = 10.0;
    if (!(density * static_cast<double>(kBins) > kImprobable)) return kBins;
    return static_cast<std::size_t>(std::max(2.0, std::ceil(kImprobable / density)));
}

bool LocalSupport::hasGap() const {
    const double thin = kThin * density();
    const std::size_t wide = gapFrom(density());
    std::size_t empty = 0;
    for (std::size_t k = 0; k < (closed_ ? 2 * kBins : kBins) && empty < wide; ++k) {
        empty = counts_[k % kBins] > thin ? 0 : empty + 1;
    }
    return wide < kBins && empty >= wide;
}

bool LocalSupport::judge(Keep& keep) const {
    keep.fill(true);
    if (!hasGap()) return false;
    const double thin = kThin * density();
    const std::size_t wide = gapFrom(density());
    double all = 0.0;
    for (const double count : counts_) all += count;

    // Round a closed outline the first filled bin behind a gap begins, so that no group runs across the end.
    std::size_t begin = 0;
    std::size_t empty = 0;
    for (std::size_t k = 0; closed_ && k < 2 * kBins; ++k) {
        const bool filled = counts_[k % kBins] > thin;
        if (filled && empty >= wide) begin = k % kBins;
        empty = filled ? 0 : empty + 1;
    }
    keep.fill(false);
    const auto binAt = [&](std::size_t k) { return (begin + k) % kBins; };
    for (std::size_t first = 0; first < kBins;) {
        if (!(counts_[binAt(first)] > thin)) {
            ++first;
            continue;
        }
        std::size_t last = first;
        double size = 0.0;
        for (std::size_t k = first; k < kBins && k - last <= wide; ++k) {
            if (!(counts_[binAt(k)] > thin)) continue;
            last = k;
            size += counts_[binAt(k)];
        }
        // The neighbours are kept, too: a group may end anywhere in a bin.
        if (size >= kThin * all) {
            for (std::size_t k = first; k <= last; ++k) keep[binAt(k)] = true;
            if (closed_ || first > 0) keep[binAt(first + kBins - 1)] = true;
            if (closed_ || last + 1 < kBins) keep[binAt(last + 1)] = true;
        }
        first = last + 1;
    }
    for (std::size_t bin = 0; bin < kBins; ++bin) {
        if (counts_[bin] > 0.0 && !keep[bin]) return true;
    }
    return false;
}

std::vector<unsigned char> lonePlaces(const std::vector<double>& places, bool closed) {
    constexpr std::size_t kFewest = 8;
    const std::size_t count = places.size();
    if (count < kFewest) return {};
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return places[a] < places[b]; });
    std::vector<double> before(count);  // the gap before each place, in order
    for (std::size_t k = 1; k < count; ++k) before[k] = places[order[k]] - places[order[k - 1]];
    before[0] =
        closed ? 1.0 + places[order[0]] - places[order[count - 1]] : std::numeric_limits<double>::infinity();

    // Even steps, some of them missing, or random ones: those leave 14 medians free with a probability of
    // exp(-10), and their lower quartile is 0.42 medians.
    std::vector<double> gaps = before;
    std::sort(gaps.begin(), gaps.end());
    const double median = gaps[count / 2];
    const double wide = std::max(5.0 * median, median + 23.0 * (median - gaps[count / 4]));
    std::vector<unsigned char> lone(count);
    std::size_t many = 0;
    for (std::size_t k = 0; k < count; ++k) {
        const double after = k + 1 < count || closed ? before[(k + 1) % count] : before[0];
        lone[order[k]] = wide > 0.0 && before[k] > wide && after > wide ? 1 : 0;
        many += lone[order[k]];
    }
    constexpr std::size_t kMostOf = 4;
    if (many == 0 || many * kMostOf > count) return {};
    return lone;
}

}  // namespace orx::geometric
