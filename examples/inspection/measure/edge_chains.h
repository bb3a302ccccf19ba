// Sub-pixel edges of a whole picture, and a place to look at them closely.
#ifndef EXAMPLES_INSPECTION_EDGE_CHAINS_H
#define EXAMPLES_INSPECTION_EDGE_CHAINS_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/subpixel_edges_metric.h"

namespace inspection {

struct EdgeChains {
    std::vector<ORXEdge::TMetricContour> chains;
    std::size_t pointCount = 0;
    double length = 0.0;           // of all chains, pixels
    double meanContrast = 0.0;     // grey levels
    double medianDeviation = 0.0;  // estimated standard deviation of a point across its edge, pixels
    cv::Rect crop;                 // around the middle of the longest chain; empty when there is no edge
};

// Finds the edges of an 8-bit grey picture with a smoothing of 1 pixel and thresholds taken from the picture.
// Reentrant.
EdgeChains findEdgeChains(const cv::Mat& grey);

}  // namespace inspection

#endif
