#include "orxFunctions/measuring/zones/circle_zones.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/measuring/zones/bisector.h"
#include "orxFunctions/measuring/zones/strip_zone.h"

namespace orx::zones {
namespace {

// Exact for a few points. A ring of least width touches two points outside and two inside: its centre lies
// on an edge of the outer points' farthest-point diagram, where the nearest point changes.
class RingOfFew {
  public:
    explicit RingOfFew(const Points& points) : points_(points), hull_(hullOf(points)) {}

    bool solve(Ring& ring) {
        best_.width = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < hull_.size(); ++i) {
            for (std::size_t j = i + 1; j < hull_.size(); ++j) tryPair(hull_[i], hull_[j]);
        }
        if (!std::isfinite(best_.width)) return false;
        ring = best_;
        return true;
    }

  private:
    const cv::Point2d& at(int i) const { return points_[static_cast<std::size_t>(i)]; }

    void tryPair(int i, int j) {
        const Bisector bisector(at(i), at(j));
        if (bisector.isPoint()) return;
        Stretch stretch{-kFarthestCenter, kFarthestCenter};
        for (const int k : hull_) {
            if (k == i || k == j) continue;
            bisector.cut(at(k), 1.0, stretch);
            if (stretch.beyondHealing()) return;
        }
        stretch.heal();
        if (!stretch.empty()) walk(bisector, i, j, stretch);
    }

    // Along the lower envelope of the points' distances.
    void walk(const Bisector& bisector, int i, int j, const Stretch& stretch) {
        lines_.clear();
        for (const cv::Point2d& p : points_) lines_.push_back(bisector.distance2(p));
        double t = stretch.from;
        std::size_t nearest = 0;
        for (std::size_t k = 1; k < lines_.size(); ++k) {
            if (lines_[k].at(t) < lines_[nearest].at(t)) nearest = k;
        }
        keep(bisector, i, j, t, nearest, nearest);
        for (;;) {
            double next = stretch.to;
            std::size_t other = nearest;
            for (std::size_t k = 0; k < lines_.size(); ++k) {
                const double fall = lines_[nearest].slope - lines_[k].slope;
                if (!(fall > 0.0)) continue;
                const double crossing = std::max(t, (lines_[k].base - lines_[nearest].base) / fall);
                const bool steeper = crossing == next && lines_[k].slope < lines_[other].slope;
                if (crossing < next || steeper) {
                    next = crossing;
                    other = k;
                }
            }
            t = next;
            keep(bisector, i, j, t, nearest, other);
            if (other == nearest) return;
            nearest = other;
        }
    }

    void keep(const Bisector& bisector, int i, int j, double t, std::size_t first, std::size_t second) {
        const double outer = bisector.radius(t);
        const double inner2 = std::max(0.0, t * t + lines_[first].at(t));
        const double inner = std::sqrt(inner2);
        const double width = std::max(0.0, (bisector.half2() - lines_[first].at(t)) / (outer + inner));
        if (!(width < best_.width)) return;
        best_ = {bisector.at(t), outer - width, outer, width, {i, j, static_cast<int>(first)}};
        if (second != first) best_.contacts.push_back(static_cast<int>(second));
    }

    const Points& points_;
    std::vector<int> hull_;
    std::vector<Bisector::Linear> lines_;
    Ring best_;
};

}  // namespace

TFitStatus narrowestRing(const Points& points, Ring& ring) {
    std::vector<int> chosen;
    std::vector<unsigned char> isChosen(points.size());
    choose(SectorExtremes(points, {0.0, 0.0}).beyond(0.0, std::numeric_limits<double>::infinity()), isChosen,
           chosen);
    for (;;) {
        const Points few = pick(points, chosen);
        if (!RingOfFew(few).solve(ring)) return fsCollinear;
        const double rounding = roundingAt(ring.center, ring.outer);
        const SectorExtremes extremes(points, ring.center);
        if (!choose(extremes.beyond(ring.outer + rounding, ring.inner - rounding), isChosen, chosen)) break;
    }
    for (int& i : ring.contacts) i = chosen[static_cast<std::size_t>(i)];
    if (cv::norm(ring.center) > 0.9 * kFarthestCenter) {
        constexpr double kStraight = 1e-12;
        return narrowestStrip(pick(points, chosen)).width < kStraight ? fsCollinear : fsArcTooShort;
    }
    return fsOk;
}

}  // namespace orx::zones
