#include "orxFunctions/fitting/geometric/arc_coverage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::geometric {
namespace {

// Sectors of equal pseudo-angle are 1.79 to 3.59 degrees wide.
constexpr std::size_t kSectors = 128;
constexpr double kSmallestGap = 4.0;
constexpr double kWideApart = 0.03;  // in pseudo-angles, below any gap of 4 degrees (0.0349)

// Degrees in [0, 360).
double angleOf(double pseudo) {
    const double quadrant = std::min(3.0, std::floor(pseudo));
    const double part = pseudo - quadrant;
    return 90.0 * quadrant + degrees(std::atan2(part, 1.0 - part));
}

class Sectors {
  public:
    Sectors() {
        least_.fill(5.0);
        largest_.fill(-1.0);
    }

    void add(double pseudo) {
        const auto sector = std::min(kSectors - 1, static_cast<std::size_t>(pseudo * (kSectors / 4.0)));
        least_[sector] = std::min(least_[sector], pseudo);
        largest_[sector] = std::max(largest_[sector], pseudo);
    }

    bool allFilled() const {
        return std::none_of(largest_.begin(), largest_.end(), [](double l) { return l < 0.0; });
    }

    ArcCoverage coverage() const {
        std::size_t first = 0;
        while (first < kSectors && largest_[first] < 0.0) ++first;
        if (first == kSectors) return {};
        double end = largest_[first];  // the last point before the gap in question
        double gap = -1.0;
        double start = 0.0;
        for (std::size_t k = 1; k <= kSectors; ++k) {
            const std::size_t sector = (first + k) % kSectors;
            if (largest_[sector] < 0.0) continue;
            const double apart = least_[sector] - end + (k == kSectors ? 4.0 : 0.0);
            if (apart > kWideApart) {
                const double next = angleOf(least_[sector]);
                const double between = next - angleOf(end) + (k == kSectors ? 360.0 : 0.0);
                if (between > gap) {
                    gap = between;
                    start = next;
                }
            }
            end = largest_[sector];
        }
        if (gap < kSmallestGap) return {0.0, 360.0};
        return {start > 180.0 ? start - 360.0 : start, std::max(0.0, 360.0 - gap)};
    }

  private:
    std::array<double, kSectors> least_;
    std::array<double, kSectors> largest_;
};

void addEvery(std::size_t stride, const Columns& points, const std::vector<unsigned char>& used,
              cv::Point2d center, Sectors& sectors) {
    for (std::size_t i = 0; i < points.count; i += stride) {
        if (!used.empty() && used[i] == 0) continue;
        sectors.add(pseudoAngle(points.x[i] - center.x, points.y[i] - center.y));
    }
}

}  // namespace

ArcCoverage arcCoverage(const Columns& points, const std::vector<unsigned char>& used, cv::Point2d center) {
    // A few hundred points, evenly chosen, mostly fill all sectors of a whole circle.
    constexpr std::size_t kSome = 512;
    Sectors sectors;
    if (points.count > 2 * kSome) {
        addEvery(points.count / kSome, points, used, center, sectors);
        if (sectors.allFilled()) return {0.0, 360.0};
    }
    addEvery(1, points, used, center, sectors);
    return sectors.coverage();
}

}  // namespace orx::geometric
