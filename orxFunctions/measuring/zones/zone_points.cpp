#include "orxFunctions/measuring/zones/zone_points.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace orx::zones {
namespace {

constexpr std::size_t kMostPoints = 20'000'000;
constexpr double kLargestCoordinate = 1e9;

// In [0, 4), growing with the angle.
double pseudoAngle(cv::Point2d arm) {
    const double sum = std::abs(arm.x) + std::abs(arm.y);
    if (!(sum > 0.0)) return 0.0;
    const double part = arm.x / sum;
    return arm.y >= 0.0 ? 1.0 - part : 3.0 + part;
}

}  // namespace

template <class Point>
TFitStatus take(const std::vector<Point>& given, std::size_t least, ZonePoints& taken) {
    if (given.size() > kMostPoints) return fsTooLarge;
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    cv::Point2d low(kInfinite, kInfinite);
    cv::Point2d high = -low;
    for (const cv::Point2d p : given) {
        if (!std::isfinite(p.x) || !std::isfinite(p.y)) return fsNotFinite;
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    if (given.size() < least) return fsTooFewPoints;
    if (std::max({-low.x, -low.y, high.x, high.y}) > kLargestCoordinate) return fsTooLarge;
    const double reach = std::max(high.x - low.x, high.y - low.y) / 2.0;
    constexpr double kOnePlace = 1e-100;
    if (reach < kOnePlace) return fsCoincident;
    int exponent = 0;
    std::frexp(reach, &exponent);
    taken.scale = std::ldexp(1.0, exponent);
    taken.center = (low + high) / 2.0;
    taken.points.resize(given.size());
    for (std::size_t i = 0; i < given.size(); ++i) taken.points[i] = taken.fromPixels(given[i]);
    return fsOk;
}

template TFitStatus take(const std::vector<cv::Point2d>&, std::size_t, ZonePoints&);
template TFitStatus take(const std::vector<cv::Point2f>&, std::size_t, ZonePoints&);

// A. M. Andrew's chain (Information Processing Letters 9 (1979)).
std::vector<int> hullOf(const Points& points) {
    struct Corner {
        cv::Point2d at;
        int index;
    };
    std::vector<Corner> sorted(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) sorted[i] = {points[i], static_cast<int>(i)};
    std::sort(sorted.begin(), sorted.end(), [](const Corner& a, const Corner& b) {
        if (a.at.x != b.at.x) return a.at.x < b.at.x;
        return a.at.y != b.at.y ? a.at.y < b.at.y : a.index < b.index;
    });
    std::vector<Corner> chain;
    const auto add = [&](const Corner& next, std::size_t start) {
        while (chain.size() >= start + 2) {
            const cv::Point2d side = chain.back().at - chain[chain.size() - 2].at;
            if (side.cross(next.at - chain[chain.size() - 2].at) > 0.0) break;
            chain.pop_back();
        }
        if (chain.empty() || chain.back().at != next.at) chain.push_back(next);
    };
    for (const Corner& corner : sorted) add(corner, 0);
    const std::size_t upper = chain.size() - 1;
    for (std::size_t i = sorted.size(); i-- > 0;) add(sorted[i], upper);
    if (chain.size() > 1) chain.pop_back();
    std::vector<int> hull(chain.size());
    for (std::size_t i = 0; i < chain.size(); ++i) hull[i] = chain[i].index;
    return hull;
}

SectorExtremes::SectorExtremes(const Points& points, cv::Point2d center) {
    for (std::size_t i = 0; i < points.size(); ++i) {
        const cv::Point2d arm = points[i] - center;
        const auto sector = static_cast<std::size_t>(pseudoAngle(arm) * (kSectors / 4.0)) % kSectors;
        Extreme& extreme = sectors_[sector];
        const double d2 = arm.dot(arm);
        if (d2 > extreme.far2) {
            extreme.far2 = d2;
            extreme.farthest = static_cast<int>(i);
        }
        if (d2 < extreme.near2) {
            extreme.near2 = d2;
            extreme.nearest = static_cast<int>(i);
        }
    }
}

std::vector<int> SectorExtremes::beyond(double outer, double inner) const {
    std::vector<int> indices;
    for (const Extreme& extreme : sectors_) {
        if (extreme.farthest < 0) continue;
        if (std::sqrt(extreme.far2) > outer) indices.push_back(extreme.farthest);
        if (std::sqrt(extreme.near2) < inner) indices.push_back(extreme.nearest);
    }
    return indices;
}

bool choose(const std::vector<int>& indices, std::vector<unsigned char>& isChosen, std::vector<int>& chosen) {
    const std::size_t before = chosen.size();
    for (const int i : indices) {
        unsigned char& is = isChosen[static_cast<std::size_t>(i)];
        if (is == 0) chosen.push_back(i);
        is = 1;
    }
    return chosen.size() > before;
}

Points pick(const Points& points, const std::vector<int>& indices) {
    Points picked;
    picked.reserve(indices.size());
    for (const int i : indices) picked.push_back(points[static_cast<std::size_t>(i)]);
    return picked;
}

}  // namespace orx::zones
