// The contest of lines through two of a list's points for the most points beside them.
#ifndef ORXFUNCTIONS_FITTING_LINE_SEARCH_INTERNAL_H
#define ORXFUNCTIONS_FITTING_LINE_SEARCH_INTERNAL_H

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/fitting/point_columns_internal.h"

namespace orx {

struct LineSample {
    int first;
    int second;
};

// Keeps the best sample and its score only; the winner's points are listed at the end.
class LineSearch {
  public:
    // Borrows the points.
    LineSearch(const std::vector<cv::Point>& points, double threshold);

    // The sample becomes the best when more points than those of the best so far are within the threshold of
    // its line. The first one always does.
    void offer(LineSample sample);

    bool hasBest() const { return hasBest_; }
    LineSample best() const { return best_; }
    // Ascending indices of the points within the threshold of the best line.
    std::vector<int> inliers() const;

  private:
    inlier_kernels::LineTest test(LineSample sample) const;

    const std::vector<cv::Point>& points_;
    PointColumns columns_;
    const inlier_kernels::Kernels& kernels_;
    double threshold_;
    LineSample best_{0, 0};
    std::size_t bestCount_ = 0;
    bool hasBest_ = false;
};

}  // namespace orx

#endif
