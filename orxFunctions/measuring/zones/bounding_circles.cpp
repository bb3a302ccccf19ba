#include "orxFunctions/measuring/zones/circle_zones.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "orxFunctions/measuring/zones/bisector.h"

namespace orx::zones {
namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

std::pair<int, double> farthestFrom(const Points& points, cv::Point2d center) {
    int farthest = 0;
    double most = -1.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const cv::Point2d arm = points[i] - center;
        const double d2 = arm.dot(arm);
        if (d2 > most) {
            most = d2;
            farthest = static_cast<int>(i);
        }
    }
    return {farthest, std::sqrt(most)};
}

double nearestTo(const Points& points, cv::Point2d center) {
    double least = kInfinite;
    for (const cv::Point2d& p : points) {
        const cv::Point2d arm = p - center;
        least = std::min(least, arm.dot(arm));
    }
    return std::sqrt(least);
}

// The circle around at most four points, the last of which lies on it.
class AroundFew {
  public:
    AroundFew(const Points& points, const std::vector<int>& few) : points_(points), few_(few) {}

    Ring solve() {
        best_.outer = kInfinite;
        const int last = few_.back();
        for (std::size_t a = 0; a + 1 < few_.size(); ++a) {
            const Bisector bisector(at(few_[a]), at(last));
            keep(bisector, 0.0, {few_[a], last});
            for (std::size_t b = a + 1; b + 1 < few_.size(); ++b) {
                const Bisector::Linear d = bisector.distance2(at(few_[b]));
                if (d.slope == 0.0) continue;
                keep(bisector, (bisector.half2() - d.base) / d.slope, {few_[a], few_[b], last});
            }
        }
        return best_;
    }

  private:
    const cv::Point2d& at(int i) const { return points_[static_cast<std::size_t>(i)]; }

    void keep(const Bisector& bisector, double t, const std::vector<int>& contacts) {
        const double radius = bisector.radius(t);
        if (!(radius < best_.outer)) return;
        const cv::Point2d center = bisector.at(t);
        const double reach = radius + roundingAt(center, radius);
        for (const int i : few_) {
            if (cv::norm(at(i) - center) > reach) return;
        }
        best_.center = center;
        best_.outer = radius;
        best_.contacts = contacts;
    }

    const Points& points_;
    const std::vector<int>& few_;
    Ring best_;
};

// Within the hull's corners in their order.
Stretch withinHull(const Bisector& bisector, const Points& corners, Stretch stretch) {
    const cv::Point2d start = bisector.at(0.0);
    const cv::Point2d way = bisector.at(1.0) - start;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const cv::Point2d side = corners[(i + 1) % corners.size()] - corners[i];
        const double height = side.cross(start - corners[i]);  // must be at least 0
        const double rise = side.cross(way);
        if (rise > 0.0) stretch.from = std::max(stretch.from, -height / rise);
        if (rise < 0.0) stretch.to = std::min(stretch.to, -height / rise);
        if (rise == 0.0 && height < 0.0) return {1.0, -1.0};
    }
    return stretch;
}

// Exact for a few points, with the centre within a hull: where three points hold the circle, or two at the
// border of the hull.
class WithinFew {
  public:
    // Circles no larger than `least` are left out.
    WithinFew(const Points& points, const Points& corners, double least)
        : points_(points), corners_(corners) {
        best_.inner = least;
    }

    bool solve(Ring& ring, bool& atBorder) {
        for (std::size_t i = 0; i < points_.size(); ++i) {
            for (std::size_t j = i + 1; j < points_.size(); ++j) tryPair(i, j);
        }
        if (best_.contacts.empty()) return false;
        ring = best_;
        atBorder = atBorder_;
        return true;
    }

  private:
    // Two points of the circle between which it holds no other.
    struct End {
        double t = 0.0;
        int third = -1;  // that ends the stretch
    };

    void tryPair(std::size_t i, std::size_t j) {
        const Bisector bisector(points_[i], points_[j]);
        if (bisector.isPoint()) return;
        Stretch stretch{-kFarthestCenter, kFarthestCenter};
        int from = -1;
        int to = -1;
        for (std::size_t k = 0; k < points_.size(); ++k) {
            if (k == i || k == j) continue;
            const Stretch before = stretch;
            bisector.cut(points_[k], -1.0, stretch);
            if (stretch.from != before.from) from = static_cast<int>(k);
            if (stretch.to != before.to) to = static_cast<int>(k);
            if (stretch.beyondHealing()) return;
            const double most = std::max(std::abs(stretch.from), std::abs(stretch.to));
            if (bisector.half2() + most * most <= best_.inner * best_.inner) return;
        }
        stretch.heal();
        if (stretch.empty()) return;
        const Stretch within = withinHull(bisector, corners_, stretch);
        if (within.empty()) return;
        keep(bisector, {within.from, within.from == stretch.from ? from : -1}, i, j);
        keep(bisector, {within.to, within.to == stretch.to ? to : -1}, i, j);
    }

    void keep(const Bisector& bisector, const End& end, std::size_t i, std::size_t j) {
        const double radius = bisector.radius(end.t);
        if (!(radius > best_.inner)) return;
        best_.inner = radius;
        best_.center = bisector.at(end.t);
        best_.contacts = {static_cast<int>(i), static_cast<int>(j)};
        atBorder_ = end.third < 0;
        if (!atBorder_) best_.contacts.push_back(end.third);
    }

    const Points& points_;
    const Points& corners_;
    Ring best_;
    bool atBorder_ = false;
};

// Evenly chosen: what finely curved hulls lose reaches less than 1e-4 of them inwards.
Points someCorners(const Points& points, const std::vector<int>& hull) {
    constexpr std::size_t kMost = 256;
    const std::size_t count = std::min(hull.size(), kMost);
    std::vector<int> some;
    for (std::size_t i = 0; i < count; ++i) some.push_back(hull[i * hull.size() / count]);
    return pick(points, some);
}

}  // namespace

TFitStatus smallestAround(const Points& points, Ring& ring) {
    const int first = farthestFrom(points, points[0]).first;
    const int second = farthestFrom(points, points[static_cast<std::size_t>(first)]).first;
    ring = AroundFew(points, {first, second}).solve();
    for (;;) {
        const auto [farthest, distance] = farthestFrom(points, ring.center);
        if (distance <= ring.outer + roundingAt(ring.center, ring.outer)) break;
        std::vector<int> few = ring.contacts;
        few.push_back(farthest);
        const Ring larger = AroundFew(points, few).solve();
        // Only rounding makes a circle around more points no larger.
        if (!(larger.outer > ring.outer) || !std::isfinite(larger.outer)) break;
        ring = larger;
    }
    ring.inner = nearestTo(points, ring.center);
    ring.width = std::max(0.0, ring.outer - ring.inner);
    return fsOk;
}

TFitStatus largestWithin(const Points& points, Ring& ring) {
    const std::vector<int> hull = hullOf(points);
    if (hull.size() < 3) return fsCollinear;
    const Points corners = someCorners(points, hull);
    std::vector<int> chosen;
    std::vector<unsigned char> isChosen(points.size());
    choose(SectorExtremes(points, {0.0, 0.0}).beyond(kInfinite, kInfinite), isChosen, chosen);
    choose(hull.size() <= 3 ? hull : std::vector<int>{hull[0], hull[hull.size() / 2]}, isChosen, chosen);
    // Along a wide gap each further point only shifts the circle at the border a little.
    constexpr int kEnough = 12;
    int roundsAtBorder = 0;
    bool atBorder = false;
    double least = 0.0;  // a circle of all points is at least so large
    while (roundsAtBorder < kEnough) {
        if (!WithinFew(pick(points, chosen), corners, least * (1.0 - 1e-9)).solve(ring, atBorder))
            return fsCollinear;
        roundsAtBorder = atBorder ? roundsAtBorder + 1 : 0;
        least = std::max(least, nearestTo(points, ring.center));
        const double rounding = roundingAt(ring.center, ring.inner);
        const SectorExtremes extremes(points, ring.center);
        if (!choose(extremes.beyond(kInfinite, ring.inner - rounding), isChosen, chosen)) break;
    }
    if (atBorder) return fsArcTooShort;
    for (int& i : ring.contacts) i = chosen[static_cast<std::size_t>(i)];
    ring.outer = farthestFrom(points, ring.center).second;
    ring.width = std::max(0.0, ring.outer - ring.inner);
    return fsOk;
}

}  // namespace orx::zones
