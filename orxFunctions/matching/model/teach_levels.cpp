#include "orxFunctions/matching/model/teach_levels.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/matching/model/outline_map.h"

namespace orx::matching {
namespace {

// Half the outline's size on the coarsest level, pixels of that level.
constexpr double kLeastRadius = 6;
// Edges of a level lie as near to the outline, pixels of that level.
constexpr double kNear = 2;
// Share of the outline that a level must show.
constexpr double kLeastShare = 0.4;
// Of the spread of the normals, against the finest level; less than the margin is none at all.
constexpr double kLeastSpread = 0.4;
constexpr double kSpreadMargin = 0.02;

// The smaller eigenvalue of the mean n n^T: 0 where all normals are parallel, 0.5 where they look everywhere.
double spreadOf(const std::vector<OutlinePoint>& points) {
    double xx = 0;
    double xy = 0;
    double yy = 0;
    for (const OutlinePoint& point : points) {
        xx += point.normal.x * point.normal.x;
        xy += point.normal.x * point.normal.y;
        yy += point.normal.y * point.normal.y;
    }
    const double n = static_cast<double>(std::max<std::size_t>(points.size(), 1));
    return ((xx + yy) / 2 - std::hypot((xx - yy) / 2, xy)) / n;
}

}  // namespace

int levelsFor(double extent) {
    int levels = 1;
    while (levels < kMostLevels && extent / 2 / (1 << levels) >= kLeastRadius) ++levels;
    return levels;
}

std::vector<OutlinePoint> edgesOfOutline(const std::vector<OutlinePoint>& edges,
                                         const std::vector<OutlinePoint>& outline, int level) {
    const double cell = 1 << level;
    const OutlineMap map(outline, cell, static_cast<int>(std::ceil(kNear)) + 1);
    std::vector<OutlinePoint> points;
    for (const OutlinePoint& edge : edges) {
        const int found = map.nearest(edge.position);
        if (found < 0) continue;
        const cv::Point2d d = edge.position - outline[static_cast<std::size_t>(found)].position;
        if (d.dot(d) <= kNear * kNear * cell * cell) points.push_back(edge);
    }
    return points;
}

bool tellsThePart(const std::vector<OutlinePoint>& points, const std::vector<OutlinePoint>& outline,
                  int level) {
    if (points.size() < kLeastPoints) return false;
    const double whole = static_cast<double>(outline.size()) / (1 << level);
    return static_cast<double>(points.size()) >= kLeastShare * whole &&
           spreadOf(points) >= kLeastSpread * (spreadOf(outline) - kSpreadMargin);
}

ModelLevel levelOf(const std::vector<OutlinePoint>& points) {
    ModelLevel level;
    level.points.reserve(points.size());
    for (const OutlinePoint& point : points) {
        level.points.push_back({cv::Point2f(point.position), cv::Point2f(point.normal)});
    }
    return level;
}

}  // namespace orx::matching
