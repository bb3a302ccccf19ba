// The picture with what an analysis found in it, enlarged as by Pen. Reentrant.
#ifndef EXAMPLES_INSPECTION_ANALYSES_PICTURES_H
#define EXAMPLES_INSPECTION_ANALYSES_PICTURES_H

#include <opencv2/core.hpp>
#include <vector>

#include "inspection/analyse/analyses.h"

namespace inspection {

// Lines and arcs, neighbours in different colours, each arc with its radius.
cv::Mat drawPieces(const cv::Mat& grey, const std::vector<SplitContour>& contours);

// Each chain of edge points in a colour of its own.
cv::Mat drawEdges(const cv::Mat& grey, const EdgeChains& edges);

// The searched region, and a mark at each edge found: green from dark to bright, red from bright to dark. The
// fitted circle too.
cv::Mat drawCaliper(const cv::Mat& grey, const BoxCaliper& caliper);
cv::Mat drawCaliper(const cv::Mat& grey, const CircleCaliper& caliper);

}  // namespace inspection

#endif
