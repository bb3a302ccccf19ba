#include "orxFunctions/matching/model/teach_levels.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "orxFunctions/matching/model/bounds.h"

namespace orx::matching {
namespace {

// Half the outline's size on the coarsest level, pixels of that level.
constexpr double kLeastRadius = 6;
// Edges of a level lie as near to the outline, pixels of that level.
constexpr int kNear = 2;
// Share of the outline that a level must show.
constexpr double kLeastShare = 0.4;
// Of the spread of the normals, against the finest level; less than the margin is none at all.
constexpr double kLeastSpread = 0.4;
constexpr double kSpreadMargin = 0.02;

// The pixels of a level about an outline.
class NearCells {
  public:
    NearCells(const std::vector<OutlinePoint>& outline, double cell, int reach) : cell_(cell) {
        const int border = reach + 1;  // roundings may move a point to the next cell
        const Bounds bounds = boundsOf(outline);
        low_ = bounds.low - cv::Point2d(border, border) * cell;
        const cv::Point2d size = (bounds.high - bounds.low) * (1 / cell);
        marks_ = cv::Mat::zeros(static_cast<int>(size.y) + 2 * border + 1,
                                static_cast<int>(size.x) + 2 * border + 1, CV_8UC1);
        for (const OutlinePoint& point : outline) {
            const cv::Rect near(cellOf(point.position) - cv::Point(reach, reach),
                                cv::Size(2 * reach + 1, 2 * reach + 1));
            const cv::Rect inside = near & cv::Rect(cv::Point(), marks_.size());
            for (int y = inside.y; y < inside.br().y; ++y) {
                std::fill_n(marks_.ptr(y) + inside.x, inside.width, static_cast<unsigned char>(1));
            }
        }
    }

    bool has(cv::Point2d place) const {
        const cv::Point own = cellOf(place);
        return cv::Rect(cv::Point(), marks_.size()).contains(own) && marks_.at<unsigned char>(own) != 0;
    }

  private:
    cv::Point cellOf(cv::Point2d place) const {
        return {static_cast<int>(std::floor((place.x - low_.x) / cell_)),
                static_cast<int>(std::floor((place.y - low_.y) / cell_))};
    }

    double cell_;
    cv::Point2d low_;  // corner of the first cell
    cv::Mat marks_;
};

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
    const NearCells near(outline, 1 << level, kNear);
    std::vector<OutlinePoint> points;
    points.reserve(edges.size());
    std::copy_if(edges.begin(), edges.end(), std::back_inserter(points),
                 [&near](const OutlinePoint& edge) { return near.has(edge.position); });
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
