#include "orxFunctions/segmentation/splitting/chord_points.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orx::splitting {
namespace {

constexpr std::size_t kSmallestBlock = ContourBoxes::kFanOut;

// Decides whether a contour point belongs to a chord. Computed as it stands, left to right in doubles:
// whether a chord's own start is collected hangs on the last bit of its foot.
class ChordTest {
  public:
    ChordTest(const TSegemetLine& line, double tolerance)
        : line_(line),
          tolerance_(tolerance),
          left_(std::min(line.startPoint[0], line.endPoint[0])),
          top_(std::min(line.startPoint[1], line.endPoint[1])),
          right_(std::max(line.startPoint[0], line.endPoint[0])),
          bottom_(std::max(line.startPoint[1], line.endPoint[1])) {}

    // Appends the point to the line when it qualifies, and raises the running maximum.
    void offer(cv::Point p, std::vector<cv::Point>& points, double& farthest) const {
        const double distance = TSegemetLine::point2LineDist(p, line_.chordA, line_.chordB, line_.chordC);
        if (!(distance <= tolerance_)) return;
        const cv::Point2d foot = TSegemetLine::findCrossPoint(p, line_.chordA, line_.chordB, line_.chordC);
        if (!(foot.x >= left_ && foot.x <= right_ && foot.y >= top_ && foot.y <= bottom_)) return;
        points.push_back(p);
        if (distance > farthest) farthest = distance;
    }

  private:
    const TSegemetLine& line_;
    double tolerance_;
    double left_, top_, right_, bottom_;
};

int saturated(double v) {
    constexpr double kLow = std::numeric_limits<int>::min();
    constexpr double kHigh = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(v, kLow, kHigh));
}

}  // namespace

ChordPointFinder::ChordPointFinder(const std::vector<cv::Point>& contour,
                                   const std::vector<cv::Point>& keyPoints)
    : contour_(contour), boxes_(contour) {
    insertKeyPoints(keyPoints);
    recordPositions();
}

void ChordPointFinder::insertKeyPoints(const std::vector<cv::Point>& keyPoints) {
    std::size_t size = 4;
    while (size < 2 * keyPoints.size()) size *= 2;
    slots_.resize(size);
    for (const cv::Point& p : keyPoints) {
        Slot& slot = slots_[slotOf(p)];
        slot.point = p;
        slot.taken = true;
    }
}

std::size_t ChordPointFinder::slotOf(cv::Point p) const {
    const std::size_t mask = slots_.size() - 1;
    const auto key =
        (static_cast<std::uint64_t>(static_cast<std::uint32_t>(p.x)) << 32) | static_cast<std::uint32_t>(p.y);
    // Fibonacci hashing: the upper bits of the product are well mixed.
    auto at = static_cast<std::size_t>((key * 0x9E3779B97F4A7C15U) >> 32) & mask;
    while (slots_[at].taken && slots_[at].point != p) at = (at + 1) & mask;
    return at;
}

void ChordPointFinder::recordPositions() {
    // Two passes: how often each key point occurs, then where.
    std::vector<std::uint32_t> slotAt;
    std::vector<std::uint32_t> hits;
    for (std::size_t i = 0; i < contour_.size(); ++i) {
        const std::size_t at = slotOf(contour_[i]);
        if (!slots_[at].taken) continue;
        ++slots_[at].count;
        slotAt.push_back(static_cast<std::uint32_t>(at));
        hits.push_back(static_cast<std::uint32_t>(i));
    }
    std::uint32_t next = 0;
    for (Slot& slot : slots_) {
        slot.first = next;
        next += slot.count;
        slot.count = 0;
    }
    positions_.resize(hits.size());
    for (std::size_t h = 0; h < hits.size(); ++h) {
        Slot& slot = slots_[slotAt[h]];
        positions_[slot.first + slot.count++] = hits[h];
    }
}

std::size_t ChordPointFinder::firstAt(cv::Point p, std::size_t from) const {
    const Slot& slot = slots_[slotOf(p)];
    if (!slot.taken) return contour_.size();
    const auto begin = positions_.begin() + slot.first;
    const auto end = begin + slot.count;
    const auto found = std::lower_bound(begin, end, from);
    return found == end ? contour_.size() : *found;
}

std::size_t ChordPointFinder::blockOutside(std::size_t i, std::size_t end, const Box& near) const {
    std::size_t outside = 0;
    std::size_t size = kSmallestBlock;
    for (const std::vector<Box>& level : boxes_.levels()) {
        if (i % size != 0 || i + size > end) break;
        const Box& box = level[i / size];
        const bool apart =
            box.right < near.left || box.left > near.right || box.bottom < near.top || box.top > near.bottom;
        if (!apart) break;
        outside = size;
        size *= ContourBoxes::kFanOut;
    }
    return outside;
}

void ChordPointFinder::collect(TSegemetLine& line, double tolerance, Work& work) const {
    const cv::Point start(line.startPoint);
    const cv::Point end(line.endPoint);
    const ChordTest test(line, tolerance);
    // A qualifying point lies within the tolerance of the chord's box; one pixel more covers rounding.
    const double reach = std::isnan(tolerance) ? 0.0 : std::max(tolerance, 0.0) + 1.0;
    const Box near{saturated(std::min(start.x, end.x) - reach), saturated(std::min(start.y, end.y) - reach),
                   saturated(std::max(start.x, end.x) + reach), saturated(std::max(start.y, end.y) + reach)};
    double farthest = 0.0;
    const auto collectRange = [&](std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to && !work.isTooMuch();) {
            work.spend(kSmallestBlock / 2);
            if (const std::size_t outside = blockOutside(i, to, near)) {
                i += outside;
                continue;
            }
            const std::size_t stop = std::min(to, (i / kSmallestBlock + 1) * kSmallestBlock);
            for (; i < stop; ++i) test.offer(contour_[i], line.points, farthest);
        }
    };

    const std::size_t size = contour_.size();
    const std::size_t from = firstAt(start, 0);
    const std::size_t to = from == size ? size : firstAt(end, from);
    collectRange(from, to);
    // Ran off the contour's end: the piece goes on at its beginning.
    if (to == size) collectRange(0, firstAt(end, 0));
    line.maxDist = farthest;
    work.spend(Work::kCollected * line.points.size());
}

}  // namespace orx::splitting
