#include "orxFunctions/analysis/edges/refinement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace orx::edges {
namespace {

using edge_kernels::FacetBlock;

constexpr double kTwoPi = 6.283185307179586;

// In the rare case that the vector angle lies too near the middle of two floats, the library's atan2 decides.
float directionOf(const FacetBlock& block, std::size_t i) {
    if (block.direction[i] == block.directionUpper[i]) return block.direction[i];
    const double angle = std::atan2(block.normalX[i], block.normalY[i]);
    return static_cast<float>(angle < 0 ? angle + kTwoPi : angle);
}

// Memory for each chain, which takes a good part of the time where chains are short.
void makeRoom(const std::vector<PixelChain>& chains, std::vector<ORXEdge::TContour>& contours) {
    contours.resize(chains.size());
    constexpr std::size_t kChainsOfAStripe = 512;
    const std::size_t stripes = (chains.size() + kChainsOfAStripe - 1) / kChainsOfAStripe;
    platform::parallelFor(static_cast<int>(stripes), [&](int stripe) {
        const std::size_t from = static_cast<std::size_t>(stripe) * kChainsOfAStripe;
        const std::size_t to = std::min(chains.size(), from + kChainsOfAStripe);
        for (std::size_t i = from; i < to; ++i) {
            contours[i].points.resize(chains[i].size());
            contours[i].direction.resize(chains[i].size());
            contours[i].response.resize(chains[i].size());
        }
    });
}

}  // namespace

void refineChains(const GradientImage& gradient, const std::vector<PixelChain>& chains,
                  std::vector<ORXEdge::TContour>& contours) {
    makeRoom(chains, contours);
    const edge_kernels::Kernels& kernels = edge_kernels::chosen();
    forBlocks<FacetBlock>(gradient, chains, [&](FacetBlock& block, const ChainBlock& piece) {
        const cv::Point* pixels = chains[piece.chain].data() + piece.from;
        for (std::size_t i = 0; i < block.count; ++i) {
            block.x[i] = static_cast<float>(pixels[i].x);
            block.y[i] = static_cast<float>(pixels[i].y);
        }
        kernels.refineFacets(block);
        ORXEdge::TContour& contour = contours[piece.chain];
        for (std::size_t i = 0; i < block.count; ++i) {
            contour.points[piece.from + i] = {block.x[i], block.y[i]};
            contour.direction[piece.from + i] = directionOf(block, i);
            contour.response[piece.from + i] = block.response[i];
        }
    });
}

}  // namespace orx::edges
