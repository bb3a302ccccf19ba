// The histogram of gradient levels and the automatic threshold that it gives.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGE_THRESHOLD_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_EDGE_THRESHOLD_INTERNAL_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <opencv2/core.hpp>

#include "orxFunctions/analysis/edges/gradient.h"

namespace orx::edges {

using LevelHistogram = std::array<std::int64_t, 256>;

// (|dx| + |dy|) / 256, half to even; magnitudes end at 32767 and levels at 255.
inline std::size_t gradientLevel(int dx, int dy) {
    const int sum = std::min(std::abs(dx), 32767) + std::min(std::abs(dy), 32767);
    const int level = (sum + 127 + ((sum >> 8) & 1)) >> 8;
    return static_cast<std::size_t>(std::min(level, 255));
}

// The highest level at and above which more than `limit` pixels lie, -1 for none. Level 255 does not count.
double highestLevelAbove(const LevelHistogram& levels, double limit);

// The automatic high threshold: see ORXEdge::calcEdgeThresVal.
double automaticThreshold(const GradientImage& gradient);
double automaticThreshold(const cv::Mat& gx, const cv::Mat& gy);

}  // namespace orx::edges

#endif
