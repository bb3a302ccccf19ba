// The two histograms behind the threshold methods.
//
// Both take any matrix and stay inside its buffer: an empty matrix, or one with more than two dimensions,
// counts nothing.
#ifndef ORXFUNCTIONS_ANALYSIS_HISTOGRAM_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_HISTOGRAM_INTERNAL_H

#include <array>
#include <cstdint>
#include <opencv2/core.hpp>

namespace orx {

constexpr int kLevels = 256;

// How many pixels have each grey level.
using Histogram = std::array<std::uint32_t, kLevels>;

// Whether the rows of a continuous matrix count as one. It makes no difference for 8-bit images; of a deeper
// one, whose first bytes alone are read, it takes other bytes.
enum class RowWalk { each, joinedWhenContinuous };

// Every level, 255 included. The data are taken as bytes whatever the depth: cols x channels of each row.
Histogram directHistogram(const cv::Mat& img, RowWalk walk = RowWalk::each);

// The bins of cv::calcHist over channel 0 with 256 bins for the range [0, 255), rounded to integers: level
// 255 is left out, and counts above 2^24 have passed through single precision. 16-bit unsigned and float
// images are counted by value; other depths, which cv::calcHist refuses, count nothing.
Histogram libraryHistogram(const cv::Mat& img);

// The lowest level that occurs; 256 when the histogram is empty.
int firstLevel(const Histogram& histogram);

// Counts and weighted counts of the levels up to each, exact. They answer every question about a class of
// neighbouring levels in one subtraction.
class RunningSums {
  public:
    explicit RunningSums(const Histogram& histogram);

    // Over the levels [from, to]; nothing when from is above to. Both within [0, 256], `to` within [-1, 255].
    std::int64_t count(int from, int to) const { return from > to ? 0 : difference(count_, from, to); }
    std::int64_t weighted(int from, int to) const { return from > to ? 0 : difference(weighted_, from, to); }

  private:
    using Sums = std::array<std::int64_t, kLevels + 1>;  // [i]: over the levels below i
    static std::int64_t difference(const Sums& sums, int from, int to) {
        return sums[static_cast<std::size_t>(to) + 1] - sums[static_cast<std::size_t>(from)];
    }

    Sums count_;
    Sums weighted_;
};

}  // namespace orx

#endif
