// Edge pixels from gradients: non-maximum suppression and hysteresis.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGE_SUPPRESSION_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_EDGE_SUPPRESSION_INTERNAL_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/edges/gradient.h"

namespace orx::edges {

// Thresholds on the gradient magnitude, squared.
struct SquaredThresholds {
    std::int64_t low;
    std::int64_t high;
};

struct EdgePixels {
    cv::Mat map;  // 255 where there is an edge, else 0; a view with a frame of zeros around it
    std::vector<std::uint8_t*> pixels;  // those of the map, in an order that depends on the image alone
};

// A pixel is an edge when its squared magnitude (32 bits) exceeds thresholds.low, is a maximum across the
// edge, and is connected through such pixels to one above thresholds.high. Magnitudes outside the image are
// 0. Thresholds are not exchanged when low exceeds high.
EdgePixels findEdgePixels(const GradientImage& gradient, SquaredThresholds thresholds);

}  // namespace orx::edges

#endif
