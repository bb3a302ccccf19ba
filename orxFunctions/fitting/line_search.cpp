#include "orxFunctions/fitting/line_search_internal.h"

#include "orxFunctions/fitting/inlier_tests_internal.h"

namespace orx {

LineSearch::LineSearch(const std::vector<cv::Point>& points, double threshold)
    : points_(points), columns_(points), kernels_(inlier_kernels::chosen()), threshold_(threshold) {}

void LineSearch::offer(LineSample sample) {
    const std::size_t count = kernels_.countOnLine(columns_.span(), test(sample), bestCount_);
    if (hasBest_ && count <= bestCount_) return;
    best_ = sample;
    bestCount_ = count;
    hasBest_ = true;
}

std::vector<int> LineSearch::inliers() const {
    std::vector<int> indices(columns_.span().size);
    indices.resize(kernels_.listOnLine(columns_.span(), test(best_), indices.data()));
    return indices;
}

inlier_kernels::LineTest LineSearch::test(LineSample sample) const {
    return lineThrough(points_[static_cast<std::size_t>(sample.first)],
                       points_[static_cast<std::size_t>(sample.second)], columns_.extent(), threshold_);
}

}  // namespace orx
