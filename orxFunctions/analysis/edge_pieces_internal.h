// Edge pixels as lines: thinned, and each pixel in one chain only.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGE_PIECES_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_EDGE_PIECES_INTERNAL_H

#include <vector>

#include "orxFunctions/analysis/edge_blocks_internal.h"
#include "orxFunctions/analysis/edge_suppression_internal.h"

namespace orx::edges {

// Removes the pixels of right-angled corners that the edge does not need to hang together, so that it is one
// pixel wide in the eight-neighbour sense.
void removeCornerPixels(EdgePixels& edges);

// Splits followed borders into chains that visit every pixel once: what a border follower walks back over is
// left out, and what it resumes on the other side of its starting point is joined there. Marks visited pixels
// in the map.
std::vector<PixelChain> visitOnce(const std::vector<PixelChain>& borders, cv::Mat& map);

bool areNeighbours(cv::Point a, cv::Point b);

}  // namespace orx::edges

#endif
