// The methods of Prewitt and Mendelsohn: smooth the histogram until two modes are left, then split at their
// mean (intermodes) or at the valley between them (minimum).
#include "orxFunctions/analysis/thresholds/methods.h"

#include <array>
#include <cstddef>
#include <optional>

namespace orx {
namespace {

using Bins = std::array<double, kLevels>;

constexpr std::size_t kLastBin = kLevels - 1;

// Two modes must show after at most this many passes.
constexpr int kMostPasses = 998;

bool isPeak(const Bins& bins, std::size_t k) {
    return static_cast<bool>(static_cast<int>(bins[k] > bins[k - 1]) &
                             static_cast<int>(bins[k] > bins[k + 1]));
}

bool isBimodal(const Bins& bins) {
    int peaks = 0;
    for (std::size_t k = 1; k < kLastBin; ++k) peaks += isPeak(bins, k) ? 1 : 0;
    return peaks == 2;
}

// Bin k after a three-point mean in place, left to right: its left neighbour is already smoothed.
double smoothedBin(const Bins& before, const Bins& after, std::size_t k) {
    if (k == 0) return (2 * before[0] + before[1]) / 3;
    if (k == kLastBin) return (after[k - 1] + 2 * before[k]) / 3;
    return (after[k - 1] + before[k] + before[k + 1]) / 3;
}

// Several smoothing passes at once. In one pass each bin waits for the division of the bin before it; pass
// p + 1 can follow pass p two bins behind, so that the divisions of all passes overlap.
class Smoother {
  public:
    static constexpr std::size_t kPasses = 4;

    explicit Smoother(const Bins& bins) { states_[0] = bins; }

    // The bins after the given number of passes, 0 to kPasses, beyond those of next().
    const Bins& after(std::size_t passes) const { return states_[passes]; }

    // Computes the states after 1 to kPasses further passes.
    void smooth() {
        std::size_t step = 0;
        for (; step <= kLag; ++step) smoothAtEnds(step);
        for (; step < kLastBin; ++step) smoothInside(step);
        for (; step <= kLastBin + kLag; ++step) smoothAtEnds(step);
    }

    void next() { states_[0] = states_[kPasses]; }

  private:
    static constexpr std::size_t kLag = 2 * (kPasses - 1);  // of the last pass behind the first

    // One bin of each pass that has begun and not ended.
    void smoothAtEnds(std::size_t step) {
        for (std::size_t p = 0; p < kPasses && 2 * p <= step; ++p) {
            const std::size_t k = step - 2 * p;
            if (k <= kLastBin) states_[p + 1][k] = smoothedBin(states_[p], states_[p + 1], k);
        }
    }

    // The same while every pass is away from both ends.
    void smoothInside(std::size_t step) {
        for (std::size_t p = 0; p < kPasses; ++p) {
            const std::size_t k = step - 2 * p;
            states_[p + 1][k] = (states_[p + 1][k - 1] + states_[p][k] + states_[p][k + 1]) / 3;
        }
    }

    std::array<Bins, kPasses + 1> states_;
};

// The histogram smoothed as often as two modes need; nothing if they do not show in time.
std::optional<Bins> bimodalBins(const Histogram& histogram) {
    Bins bins{};
    for (std::size_t i = 0; i < bins.size(); ++i) bins[i] = histogram[i];
    if (isBimodal(bins)) return bins;
    Smoother smoother(bins);
    int passes = 0;
    while (true) {
        smoother.smooth();
        for (std::size_t p = 1; p <= Smoother::kPasses; ++p) {
            if (++passes > kMostPasses) return std::nullopt;
            if (isBimodal(smoother.after(p))) return smoother.after(p);
        }
        smoother.next();
    }
}

}  // namespace

int intermodesLevel(const Histogram& histogram) {
    const std::optional<Bins> bins = bimodalBins(histogram);
    if (!bins) return -1;
    std::size_t sumOfPeaks = 0;
    for (std::size_t k = 1; k < kLastBin; ++k) sumOfPeaks += isPeak(*bins, k) ? k : 0;
    return static_cast<int>(sumOfPeaks / 2);
}

int minimumLevel(const Histogram& histogram) {
    const std::optional<Bins> bins = bimodalBins(histogram);
    if (!bins) return -1;
    bool peakSeen = false;
    for (std::size_t k = 1; k < kLastBin; ++k) {
        if (isPeak(*bins, k)) {
            peakSeen = true;
        } else if (peakSeen && (*bins)[k - 1] >= (*bins)[k] && (*bins)[k + 1] >= (*bins)[k]) {
            return static_cast<int>(k) - 1;  // one below the valley, intended
        }
    }
    return -1;
}

}  // namespace orx
