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

// The same for few points, whose places along the outline leave bins empty anyway: which of them stand alone,
// with gaps on both sides that places as dense as most would hardly leave. Empty where none does, or too many
// to be there by chance.
std::vector<unsigned char> lonePlaces(const std::vector<double>& places, bool closed);

// Forgets those of the kept points that stand alone among outliers. True where there are any.
template <class PlaceOf>
bool leaveOutLonePoints(bool closed, std::size_t kept, PlaceOf placeOf, const FitPoints& points,
                        std::vector<unsigned char>& keep) {
    std::vector<double> places;
    std::vector<std::size_t> at;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (keep[i] == 0 || !(points.weight(i) > 0.0)) continue;
        places.push_back(placeOf(points.at(i)));
        at.push_back(i);
    }
    const std::vector<unsigned char> lone = lonePlaces(places, closed);
    // Among fewer outliers so many would hardly lie near the outline by chance.
    const auto many = static_cast<std::size_t>(std::count(lone.begin(), lone.end(), 1));
    if (many == 0 || many > points.size() - kept + points.others()) return false;
    for (std::size_t k = 0; k < at.size(); ++k) keep[at[k]] = lone[k] != 0 ? 0 : 1;
    return true;
}

// Takes the say of outliers away: of points whose weight times squared distance is beyond `reach2`, and of
// those in dropped bins or alone. `placeOf(p)` gives a point's place along the outline.
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
    constexpr std::size_t kFew = LocalSupport::kBins / 2;
    if (kept <= kFew) {
        const bool dropped = leaveOutLonePoints(closed, kept, placeOf, points, keep);
        if (dropped || kept < count) points.leaveOut(keep);
        return dropped;
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
