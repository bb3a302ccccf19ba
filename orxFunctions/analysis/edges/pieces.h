// Edge pixels as lines: thinned, and each pixel in one chain only.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGE_PIECES_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_EDGE_PIECES_INTERNAL_H

#include <vector>

#include "orxFunctions/analysis/edges/blocks.h"
#include "orxFunctions/analysis/edges/suppression.h"

namespace orx::edges {

// Removes the pixels of right-angled corners that the edge does not need to hang together, so that it is one
// pixel wide in the eight-neighbour sense.
void removeCornerPixels(EdgePixels& edges);

// Chains of pixels, one after the other in one array.
struct PixelPieces {
    std::vector<cv::Point> pixels;
    std::vector<std::size_t> starts = {0};  // piece i is [starts[i], starts[i + 1])

    std::size_t count() const { return starts.size() - 1; }
    bool isClosed(std::size_t i) const;
};

// Links edge pixels to pieces, each pixel in one of them: a piece runs on as straight as it can, from
// wherever it is found first to both of its ends. Pieces of fewer than `shortest` pixels are left out. Marks
// visited pixels in the map.
PixelPieces linkPixels(EdgePixels& edges, std::size_t shortest);

// Splits followed borders into pieces that visit every pixel once: what a border follower walks back over is
// left out, and what it resumes on the other side of its starting point is joined there. Pieces of fewer than
// `shortest` pixels are left out. Marks visited pixels in the map.
PixelPieces visitOnce(const std::vector<PixelChain>& borders, cv::Mat& map, std::size_t shortest);

}  // namespace orx::edges

#endif
