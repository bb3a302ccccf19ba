// Outliers that lie near a shape by chance, away from the stretch that its points cover: far from it they
// weigh more than all the others, so a robust fit takes their say away.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRIC_LOCAL_SUPPORT_H
#define ORXFUNCTIONS_FITTING_GEOMETRIC_LOCAL_SUPPORT_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "orxFunctions/fitting/geometric/fit_points.h"

namespace orx::geometric {

// Counts points in bins along an outline, then tells which bins to keep.
class LocalSupport {
  public:
    static constexpr std::size_t kBins = 128;
    using Keep = std::array<bool, kBins>;

    // `closed`: the last bin is followed by the first.
    explicit LocalSupport(bool closed) : closed_(closed) {}

    // A point's place along the outline, 0 to 1.
    static std::size_t binOf(double place) {
        return place > 0.0 ? std::min(kBins - 1, static_cast<std::size_t>(place * kBins)) : 0;
    }
    void add(std::size_t bin) { counts_[bin] += 1.0; }

    // Whether bins are empty (or nearly) for so long that points as dense as most would hardly leave them so.
    bool hasGap() const;
    // Groups between gaps that hold less than a twentieth of all points are dropped. True where points are.
    bool judge(Keep& keep) const;

  private:
    double density() const;
    std::size_t gapFrom(double density) const;

    std::array<double, kBins> counts_{};
    bool closed_;
};

// Takes the say of outliers away: of points whose weight times squared distance is beyond `reach2`, and of
// those in dropped bins. `placeOf(p)` gives a point's place along the outline.
template <class PlaceOf>
bool leaveOutOutliers(const std::vector<double>& distances, double reach2, bool closed, PlaceOf placeOf,
                      FitPoints& points) {
    const std::size_t count = points.size();
    std::vector<unsigned char> keep(count);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < count; ++i) {
        keep[i] = points.weight(i) * distances[i] * distances[i] <= reach2 ? 1 : 0;
        kept += keep[i];
    }
    const auto binOf = [&](std::size_t i) { return LocalSupport::binOf(placeOf(points.at(i))); };
    const auto supportOfEvery = [&](std::size_t stride) {
        LocalSupport support(closed);
        for (std::size_t i = 0; i < count; i += stride) {
            if (keep[i] != 0 && points.weight(i) > 0.0) support.add(binOf(i));
        }
        return support;
    };
    // A few hundred points, evenly chosen, show whether there are gaps at all.
    constexpr std::size_t kSome = 512;
    LocalSupport::Keep bins;
    const bool dropped =
        (count <= 2 * kSome || supportOfEvery(count / kSome).hasGap()) && supportOfEvery(1).judge(bins);
    if (dropped) {
        for (std::size_t i = 0; i < count; ++i) keep[i] = keep[i] != 0 && bins[binOf(i)] ? 1 : 0;
    }
    if (dropped || kept < count) points.leaveOut(keep);
    return dropped;
}

}  // namespace orx::geometric

#endif
