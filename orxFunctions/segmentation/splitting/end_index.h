// The ends of arcs or chords by their place in the image.
#ifndef ORXFUNCTIONS_SEGMENTATION_SPLITTING_END_INDEX_H
#define ORXFUNCTIONS_SEGMENTATION_SPLITTING_END_INDEX_H

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace orx::splitting {

// Finds the ends near a point without a look at all of them: a hash table of square cells. What it names is a
// superset, so that the caller's own test of the distance decides. One thread at a time.
class EndIndex {
  public:
    static constexpr int kReach = 8;  // pixels; also the side of a cell

    explicit EndIndex(std::size_t expected) {
        std::size_t size = 4;
        while (size < 2 * expected) size *= 2;
        newest_.assign(size, kNone);
        entries_.reserve(expected);
    }

    void add(cv::Point end, std::size_t id) {
        std::uint32_t& newest = newest_[bucketOf(cellOf(end.x), cellOf(end.y))];
        entries_.push_back({id, newest});
        newest = static_cast<std::uint32_t>(entries_.size() - 1);
    }

    // Appends the ids of all ends within the reach of p, in no order and perhaps more than once, others among
    // them. Entries of which gone(id) is true are forgotten for good.
    template <typename Gone>
    void collectNear(cv::Point p, Gone gone, std::vector<std::size_t>& ids) {
        const std::uint64_t x = cellOf(p.x);
        const std::uint64_t y = cellOf(p.y);
        for (std::uint64_t cellY = y - 1; cellY <= y + 1; ++cellY) {
            for (std::uint64_t cellX = x - 1; cellX <= x + 1; ++cellX) {
                std::uint32_t* link = &newest_[bucketOf(cellX, cellY)];
                while (*link != kNone) {
                    Entry& entry = entries_[*link];
                    if (gone(entry.id)) {
                        *link = entry.next;
                        continue;
                    }
                    ids.push_back(entry.id);
                    link = &entry.next;
                }
            }
        }
    }

  private:
    static constexpr std::uint32_t kNone = 0xFFFFFFFFU;

    struct Entry {
        std::size_t id;
        std::uint32_t next;  // of the same bucket
    };

    // Positive for every coordinate, so that the cell before exists.
    static std::uint64_t cellOf(int coordinate) {
        constexpr std::int64_t kOffset = (std::int64_t{1} << 31) + kReach;
        return static_cast<std::uint64_t>(coordinate + kOffset) / kReach;
    }

    std::size_t bucketOf(std::uint64_t cellX, std::uint64_t cellY) const {
        const std::uint64_t key = (cellX << 32) + cellY;
        return static_cast<std::size_t>((key * 0x9E3779B97F4A7C15U) >> 32) & (newest_.size() - 1);
    }

    std::vector<std::uint32_t> newest_;  // the head of each bucket's chain
    std::vector<Entry> entries_;
};

}  // namespace orx::splitting

#endif
