#include "orxFunctions/segmentation/splitting/key_points.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "orxFunctions/segmentation/splitting/contour_boxes.h"

namespace orx::splitting {
namespace {

double minus(int a, int b) { return static_cast<double>(std::int64_t{a} - b); }

// How far a point lies from another one, squared.
struct FromPoint {
    double operator()(int x, int y) const {
        const double dx = minus(x, origin.x);
        const double dy = minus(y, origin.y);
        return dx * dx + dy * dy;
    }
    cv::Point origin;
};

// How far a point lies from the line through two others, times their distance.
struct FromLine {
    FromLine(cv::Point from, cv::Point to) : origin(from), dx(minus(to.x, from.x)), dy(minus(to.y, from.y)) {}
    double operator()(int x, int y) const {
        return std::fabs(minus(y, origin.y) * dx - minus(x, origin.x) * dy);
    }
    cv::Point origin;
    double dx, dy;
};

struct Farthest {
    double distance = 0;
    std::size_t index = 0;  // the first of that distance; as it was where all distances are 0
};

// Looks for the point of a stretch that lies farthest from something.
class FarthestFinder {
  public:
    FarthestFinder(const std::vector<cv::Point>& contour, Work& work)
        : contour_(contour), boxes_(contour), work_(work) {}

    // Of the points [from, to), where one of them lies farther than what is known.
    template <typename Distance>
    void find(const Distance& distance, std::size_t from, std::size_t to, Farthest& known) const {
        if (from >= to) return;
        const std::size_t top = boxes_.levels().size() - 1;
        // A point that lies far tells which boxes need not be opened on the way from the first to the last.
        const double reached = glance(distance, from, to, top);
        descend(distance, {from, to, reached}, {top, 0}, known);
    }

  private:
    struct Search {
        std::size_t from, to;
        double reached;  // by one of the points
    };

    struct Node {
        std::size_t level, index;
    };

    // Points of a box of a level.
    static std::size_t sizeOf(std::size_t level) {
        std::size_t size = ContourBoxes::kFanOut;
        for (; level > 0; --level) size *= ContourBoxes::kFanOut;
        return size;
    }

    // No point of the box lies farther: both distances grow or fall steadily with either coordinate on each
    // side of the line or the point, in rounded numbers too.
    template <typename Distance>
    double boundOf(const Distance& distance, Node node) const {
        const Box& box = boxes_.levels()[node.level][node.index];
        work_.spend(1);
        return std::max({distance(box.left, box.top), distance(box.right, box.top),
                         distance(box.left, box.bottom), distance(box.right, box.bottom)});
    }

    template <typename Distance>
    void scan(const Distance& distance, std::size_t from, std::size_t to, Farthest& known) const {
        work_.spend(to - from);
        for (std::size_t i = from; i < to; ++i) {
            const double d = distance(contour_[i].x, contour_[i].y);
            if (d > known.distance) known = {d, i};
        }
    }

    // The largest distance in the box that promises most.
    template <typename Distance>
    double glance(const Distance& distance, std::size_t from, std::size_t to, std::size_t level) const {
        while (true) {
            const std::size_t size = sizeOf(level);
            Node best{level, from / size};
            double bound = -1;
            for (std::size_t i = from / size; i * size < to; ++i) {
                const double b = boundOf(distance, {level, i});
                if (b > bound) best = {level, i};
                bound = std::max(bound, b);
            }
            from = std::max(from, best.index * size);
            to = std::min(to, (best.index + 1) * size);
            if (level == 0) break;
            --level;
        }
        Farthest farthest;
        scan(distance, from, to, farthest);
        return farthest.distance;
    }

    template <typename Distance>
    void descend(const Distance& distance, const Search& search, Node node, Farthest& known) const {
        const double bound = boundOf(distance, node);
        if (bound < search.reached || bound <= known.distance) return;
        const std::size_t size = sizeOf(node.level);
        const std::size_t from = std::max(search.from, node.index * size);
        const std::size_t to = std::min(search.to, (node.index + 1) * size);
        if (node.level == 0) {
            scan(distance, from, to, known);
            return;
        }
        const std::size_t part = size / ContourBoxes::kFanOut;
        for (std::size_t i = from / part; i * part < to; ++i)
            descend(distance, search, {node.level - 1, i}, known);
    }

    const std::vector<cv::Point>& contour_;
    ContourBoxes boxes_;
    Work& work_;
};

// A stretch of the contour from one point to another, round its end where start lies behind end.
struct Slice {
    std::size_t start, end;
};

class Approximation {
  public:
    Approximation(const std::vector<cv::Point>& contour, double epsilon, Work& work)
        : contour_(contour), squaredEpsilon_(epsilon * epsilon), finder_(contour, work), work_(work) {}

    std::vector<cv::Point> run(bool closed) {
        if (closed || contour_.front() == contour_.back()) {
            splitRing(closed ? 3 : 1);
        } else {
            split({0, contour_.size() - 1});
            keys_.push_back(contour_.back());
        }
        if (work_.isTooMuch()) return {};
        removeStraight(closed);
        return keys_;
    }

  private:
    // The first point at the largest distance from another one, seen from there on; where all are in one
    // place, `known`.
    template <typename Distance>
    Farthest farthestBetween(const Distance& distance, Slice slice, std::size_t known) const {
        Farthest farthest{0, known};
        const std::size_t next = slice.start + 1;
        if (slice.start < slice.end) {
            finder_.find(distance, next, slice.end, farthest);
        } else {
            finder_.find(distance, next, contour_.size(), farthest);
            finder_.find(distance, 0, slice.end, farthest);
        }
        return farthest;
    }

    // Begins at two points far from each other: the farthest from the farthest from the first ...
    void splitRing(int rounds) {
        std::size_t start = 0;
        Farthest farthest;
        for (int round = 0; round < rounds; ++round) {
            start = farthest.index;
            farthest = farthestBetween(FromPoint{contour_[start]}, {start, start}, start);
        }
        if (farthest.distance <= squaredEpsilon_) {
            keys_.push_back(contour_[start]);
            return;
        }
        split({start, farthest.index});
        split({farthest.index, start});
    }

    void split(Slice whole) {
        std::vector<Slice> waiting{whole};
        while (!waiting.empty() && !work_.isTooMuch()) {
            const Slice slice = waiting.back();
            waiting.pop_back();
            const FromLine line(contour_[slice.start], contour_[slice.end]);
            const Farthest farthest = farthestBetween(line, slice, slice.start);
            if (farthest.distance * farthest.distance <=
                squaredEpsilon_ * (line.dx * line.dx + line.dy * line.dy)) {
                keys_.push_back(contour_[slice.start]);
            } else {
                waiting.push_back({farthest.index, slice.end});
                waiting.push_back({slice.start, farthest.index});
            }
        }
    }

    // Whether the way bends by less than a right angle, in 32 bits, which wrap; intended.
    static bool goesOn(cv::Point a, cv::Point b, cv::Point c) {
        const auto product = [](int p, int q, int r) {
            return (static_cast<std::uint32_t>(q) - static_cast<std::uint32_t>(p)) *
                   (static_cast<std::uint32_t>(r) - static_cast<std::uint32_t>(q));
        };
        return static_cast<std::int32_t>(product(a.x, b.x, c.x) + product(a.y, b.y, c.y)) >= 0;
    }

    // Takes out what lies nearly on a slanted line between its neighbours. A closed polygon is written over
    // while it is read, also where reading has come round to its beginning.
    void removeStraight(bool closed) {
        const std::size_t count = keys_.size();
        std::size_t left = count;
        std::size_t read = closed ? count - 1 : 0;
        const auto next = [&] {
            const cv::Point p = keys_[read];
            read = read + 1 < count ? read + 1 : 0;
            return p;
        };
        cv::Point before = next();
        std::size_t write = read;
        cv::Point key = next();
        const auto put = [&](cv::Point p) {
            keys_[write] = p;
            write = write + 1 < count ? write + 1 : 0;
        };
        const std::size_t open = closed ? 0 : 1;
        for (std::size_t i = open; i + open < count && left > 2; ++i) {
            const cv::Point after = next();
            const FromLine line(before, after);
            const double distance = line(key.x, key.y);
            const double limit = 0.5 * squaredEpsilon_ * (line.dx * line.dx + line.dy * line.dy);
            if (distance * distance <= limit && line.dx != 0 && line.dy != 0 && goesOn(before, key, after)) {
                --left;
                before = after;
                put(after);
                key = next();
                ++i;
                continue;
            }
            before = key;
            put(key);
            key = after;
        }
        if (!closed) keys_[write] = key;
        keys_.resize(left);
    }

    const std::vector<cv::Point>& contour_;
    double squaredEpsilon_;
    FarthestFinder finder_;
    Work& work_;
    std::vector<cv::Point> keys_;
};

}  // namespace

std::vector<cv::Point> keyPointsOf(const std::vector<cv::Point>& contour, double epsilon, bool closed,
                                   Work& work) {
    return Approximation(contour, epsilon, work).run(closed);
}

}  // namespace orx::splitting
