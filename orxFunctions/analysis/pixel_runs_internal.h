// Connected parts of binary images, found by their runs along rows: far fewer than pixels.
#ifndef ORXFUNCTIONS_ANALYSIS_PIXEL_RUNS_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_PIXEL_RUNS_INTERNAL_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/platform/parallel_internal.h"

namespace orx {

// Neighbours of one kind in a row, from `begin` to before `end`, as many as there are; and the number of
// their piece (see PixelRuns).
struct PixelRun {
    int begin;
    int end;
    std::uint32_t piece;
};

// The runs of one row, from left to right.
struct RowRuns {
    const PixelRun* first;
    const PixelRun* last;  // behind the last one
    const PixelRun* begin() const { return first; }
    const PixelRun* end() const { return last; }
};

// How many columns two runs of neighbouring rows share: 0 where they touch at a corner, below that nowhere.
inline int sharedColumns(const PixelRun& a, const PixelRun& b) {
    return std::min(a.end, b.end) - std::max(a.begin, b.begin);
}

// Calls touch(upper, lower, columns) for all runs of two neighbouring rows that share at least `fewest`
// columns: 1 for neighbours at sides only, 0 for those at corners, too.
template <class Touch>
void forTouchingRuns(RowRuns upper, RowRuns lower, int fewest, const Touch& touch) {
    const PixelRun* a = upper.first;
    const PixelRun* b = lower.first;
    while (a != upper.last && b != lower.last) {
        const int columns = sharedColumns(*a, *b);
        if (columns >= fewest) touch(*a, *b, columns);
        // The one that ends first has no more to touch, at corners not either: the other's next begins later.
        if (a->end < b->end) {
            ++a;
        } else {
            ++b;
        }
    }
}

enum class RunsOf { objects, background };  // pixels that are not 0, and those that are

// The runs of an 8-bit image, and which of them are connected. The image is taken by stripes of rows, on
// several threads: what of a connected part lies in one stripe, connected in there, is a piece of it. Values
// of pieces are added up without locks, and then joined to those of connected parts.
class PixelRuns {
  public:
    // The connectivity is 4 or 8.
    PixelRuns(const cv::Mat& binary, RunsOf kind, int connectivity);

    const platform::RowStripes& stripes() const { return stripes_; }
    int rows() const { return rows_; }
    RowRuns row(int y) const;
    std::size_t pieces() const { return joined_.size(); }
    // The first piece of the connected part that a piece belongs to. Parts are numbered by them in the order
    // of their first pixels, row by row.
    std::uint32_t firstOf(std::uint32_t piece) const { return joined_[piece]; }

    // Gives every piece the sum of all pieces that are connected with it. Values add by +=.
    template <class Value>
    void join(std::vector<Value>& values) const {
        for (std::size_t piece = values.size(); piece-- > 0;) {
            if (joined_[piece] != piece) values[joined_[piece]] += values[piece];
        }
        for (std::size_t piece = 0; piece < values.size(); ++piece) values[piece] = values[joined_[piece]];
    }

  private:
    // Of one stripe; pieces are numbered from 0 until all stripes have theirs.
    struct Stripe {
        cv::Range rows;
        std::vector<PixelRun> runs;
        std::vector<std::size_t> starts;  // of rows, and the end
        std::vector<std::uint32_t> pieces;
        std::uint32_t firstPiece = 0;

        RowRuns row(int y) const;
    };

    void findStripe(const cv::Mat& binary, RunsOf kind, Stripe& stripe) const;
    void joinStripes();

    int rows_;
    int fewestColumns_;  // that connected runs share
    platform::RowStripes stripes_;
    std::vector<Stripe> found_;
    std::vector<std::uint32_t> joined_;  // for each piece the first one of its connected part
};

}  // namespace orx

#endif
