#include "orxFunctions/matching/refine/window_edges.h"

#include <algorithm>
#include <cmath>

namespace orx::matching {

WindowEdges::WindowEdges(const cv::Mat& grey, const cv::Rect& window, const ORXEdge::TMetricOptions& find) {
    const cv::Rect inside = window & cv::Rect(cv::Point(), grey.size());
    if (inside.empty()) return;
    std::vector<ORXEdge::TMetricContour> chains;
    ORXEdge::edgesSubPixMetric(grey(inside), chains, find);
    std::size_t count = 0;
    for (const ORXEdge::TMetricContour& chain : chains) count += chain.points.size();
    points_.reserve(count);
    for (const ORXEdge::TMetricContour& chain : chains) addChain(chain, inside.tl());
    origin_ = inside.tl() - cv::Point(kLargestReach, kLargestReach);
    cells_.create(inside.height + 2 * kLargestReach, inside.width + 2 * kLargestReach);
    cells_.setTo(-1);
    sortIntoCells();
}

void WindowEdges::addChain(const ORXEdge::TMetricContour& chain, cv::Point2d origin) {
    const int first = static_cast<int>(points_.size());
    const int count = static_cast<int>(chain.points.size());
    const int beforeFirst = chain.closed ? first + count - 1 : -1;
    const int afterLast = chain.closed ? first : -1;
    for (int i = 0; i < count; ++i) {
        const auto k = static_cast<std::size_t>(i);
        const double deviation = chain.deviation[k];
        EdgePoint point;
        point.position = origin + cv::Point2d(chain.points[k]);
        point.direction = chain.direction[k];
        point.variance = deviation * deviation;
        point.previous = i > 0 ? first + i - 1 : beforeFirst;
        point.next = i + 1 < count ? first + i + 1 : afterLast;
        points_.push_back(point);
    }
}

void WindowEdges::sortIntoCells() {
    for (std::size_t i = 0; i < points_.size(); ++i) {
        EdgePoint& point = points_[i];
        const cv::Point cell = cv::Point(cvRound(point.position.x), cvRound(point.position.y)) - origin_;
        // Edges may stand a little outside of the window; the border has room for them.
        if (cell.x < 0 || cell.y < 0 || cell.x >= cells_.cols || cell.y >= cells_.rows) continue;
        point.follower = cells_(cell);
        cells_(cell) = static_cast<int>(i);
    }
}

int WindowEdges::nearest(cv::Point2d place, double direction, const EdgeWish& wish) const {
    const cv::Point2d at = place - cv::Point2d(origin_);
    // Not a number is not inside either.
    const bool inside = at.x >= 0 && at.y >= 0 && at.x <= cells_.cols && at.y <= cells_.rows;
    if (!inside) return -1;
    const int left = std::max(cvFloor(at.x - wish.reach + 0.5), 0);
    const int right = std::min(cvFloor(at.x + wish.reach + 0.5), cells_.cols - 1);
    const int top = std::max(cvFloor(at.y - wish.reach + 0.5), 0);
    const int bottom = std::min(cvFloor(at.y + wish.reach + 0.5), cells_.rows - 1);
    double best = wish.reach * wish.reach;
    int found = -1;
    for (int y = top; y <= bottom; ++y) {
        const int* row = cells_[y];
        for (int x = left; x <= right; ++x) {
            for (int i = row[x]; i >= 0; i = (*this)[i].follower) {
                const EdgePoint& point = (*this)[i];
                const cv::Point2d apart = point.position - place;
                const double distance = apart.dot(apart);
                if (distance > best) continue;
                const double turn = turnBetween(direction, point.direction, wish.eitherSign);
                if (std::abs(turn) > wish.mostTurn) continue;
                best = distance;
                found = i;
            }
        }
    }
    return found;
}

}  // namespace orx::matching
