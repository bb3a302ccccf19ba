#include "orxFunctions/matching/refine/window_edges.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/platform/simd/narrow_vectors.h"

namespace orx::matching {
namespace {

constexpr std::size_t kWordBits = 32;
constexpr double kRounding = 1e-9;  // pixels

}  // namespace

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
    words_ = static_cast<std::size_t>(cells_.cols) / kWordBits + 2;
    bits_.resize(words_ * static_cast<std::size_t>(cells_.rows));
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
        const auto column = static_cast<std::size_t>(cell.x);
        std::uint32_t& word = bits_[static_cast<std::size_t>(cell.y) * words_ + column / kWordBits];
        const std::uint32_t bit = std::uint32_t{1} << (column % kWordBits);
        point.follower = (word & bit) != 0 ? cells_(cell) : -1;
        word |= bit;
        cells_(cell) = static_cast<int>(i);
    }
}

std::uint32_t WindowEdges::occupied(int row, int left, int width) const {
    const auto column = static_cast<std::size_t>(left);
    const std::uint32_t* words = &bits_[static_cast<std::size_t>(row) * words_ + column / kWordBits];
    const std::uint64_t both = words[0] | (static_cast<std::uint64_t>(words[1]) << kWordBits);
    const std::uint64_t wanted = (std::uint64_t{1} << width) - 1;
    return static_cast<std::uint32_t>((both >> (column % kWordBits)) & wanted);
}

int WindowEdges::nearest(cv::Point2d place, double direction, const EdgeWish& wish) const {
    KnownEdge ignored;
    return nearest(place, direction, wish, ignored);
}

bool WindowEdges::isStillNearest(cv::Point2d place, double direction, const EdgeWish& wish,
                                 const KnownEdge& known) const {
    if (known.index < 0 || known.reach < wish.reach) return false;
    const cv::Point2d moved = place - known.place;
    if (!(moved.dot(moved) < known.room)) return false;
    const EdgePoint& point = (*this)[known.index];
    const cv::Point2d apart = point.position - place;
    return apart.dot(apart) <= wish.reach * wish.reach &&
           std::abs(turnBetween(direction, point.direction, wish.eitherSign)) <= wish.mostTurn;
}

int WindowEdges::nearest(cv::Point2d place, double direction, const EdgeWish& wish, KnownEdge& known) const {
    if (isStillNearest(place, direction, wish, known)) return known.index;
    known.index = -1;
    const cv::Point2d at = place - cv::Point2d(origin_);
    // Not a number is not inside either.
    const bool inside = at.x >= 0 && at.y >= 0 && at.x <= cells_.cols && at.y <= cells_.rows;
    if (!inside) return -1;
    const int left = std::max(cvFloor(at.x - wish.reach + 0.5), 0);
    const int right = std::min(cvFloor(at.x + wish.reach + 0.5), cells_.cols - 1);
    const int top = std::max(cvFloor(at.y - wish.reach + 0.5), 0);
    const int bottom = std::min(cvFloor(at.y + wish.reach + 0.5), cells_.rows - 1);
    if (right < left) return -1;
    double best = wish.reach * wish.reach;
    double second = best;  // of the others, whatever their directions; farther ones were not looked at
    int found = -1;
    for (int y = top; y <= bottom; ++y) {
        const int* row = cells_[y] + left;
        for (std::uint32_t bits = occupied(y, left, right - left + 1); bits != 0; bits &= bits - 1) {
            for (int i = row[ORX_SIMD::lowestBit(bits)]; i >= 0; i = (*this)[i].follower) {
                const EdgePoint& point = (*this)[i];
                const cv::Point2d apart = point.position - place;
                const double distance = apart.dot(apart);
                if (distance > best) {
                    second = std::min(second, distance);
                    continue;
                }
                const double turn = turnBetween(direction, point.direction, wish.eitherSign);
                if (std::abs(turn) > wish.mostTurn) {
                    second = std::min(second, distance);
                    continue;
                }
                second = std::min(second, best);
                best = distance;
                found = i;
            }
        }
    }
    if (found >= 0) {
        // A move by half of the way between the two distances could make them equal.
        const double room = std::max(0.0, (std::sqrt(second) - std::sqrt(best)) / 2 - kRounding);
        known = {found, place, wish.reach, room * room};
    }
    return found;
}

}  // namespace orx::matching
