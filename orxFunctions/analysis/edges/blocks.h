// Chains of edge pixels, and the blocks in which they are refined.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGE_BLOCKS_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_EDGE_BLOCKS_INTERNAL_H

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>
#include <vector>

#include "orxFunctions/analysis/edges/gradient.h"
#include "orxFunctions/analysis/edges/kernels.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx::edges {

using edge_kernels::kBlock;
using PixelChain = std::vector<cv::Point>;

// Pixels [from, to) of a chain, at most kBlock of them.
struct ChainBlock {
    std::size_t chain;
    std::size_t from;
    std::size_t to;
};

inline std::vector<ChainBlock> blocksOf(const std::vector<PixelChain>& chains) {
    std::vector<ChainBlock> blocks;
    blocks.reserve(chains.size());
    for (std::size_t i = 0; i < chains.size(); ++i) {
        for (std::size_t from = 0; from < chains[i].size(); from += kBlock) {
            blocks.push_back({i, from, std::min(chains[i].size(), from + kBlock)});
        }
    }
    return blocks;
}

// Points a kernel's block (FacetBlock or MetricBlock) at the gradients of the pixels. The last vector is
// filled up with the last pixel.
template <typename Block>
void aimAt(Block& block, const GradientImage& gradient, const cv::Point* pixels, std::size_t count) {
    constexpr std::size_t kLargestVector = 8;
    block.step = gradient.step();
    block.count = count;
    for (std::size_t i = 0; i < count; ++i) {
        block.corner[i] = gradient.row(pixels[i].y - 1) + static_cast<std::ptrdiff_t>(2) * (pixels[i].x - 1);
    }
    const std::size_t filled =
        std::min(kBlock, (count + kLargestVector - 1) / kLargestVector * kLargestVector);
    std::fill(block.corner + count, block.corner + filled, block.corner[count - 1]);
}

// Calls body(kernelBlock, chainBlock) for the pixels of all chains, on several threads. The kernel's block is
// aimed and may be changed.
template <typename Block, typename Body>
void forBlocks(const GradientImage& gradient, const std::vector<PixelChain>& chains, const Body& body) {
    const std::vector<ChainBlock> blocks = blocksOf(chains);
    constexpr int kBlocksOfAStripe = 256;
    const int count = static_cast<int>(blocks.size());
    const int stripes = (count + kBlocksOfAStripe - 1) / kBlocksOfAStripe;
    platform::parallelFor(stripes, [&](int stripe) {
        Block block{};
        const int end = std::min(count, (stripe + 1) * kBlocksOfAStripe);
        for (int i = stripe * kBlocksOfAStripe; i < end; ++i) {
            const ChainBlock& piece = blocks[static_cast<std::size_t>(i)];
            aimAt(block, gradient, chains[piece.chain].data() + piece.from, piece.to - piece.from);
            body(block, piece);
        }
    });
}

}  // namespace orx::edges

#endif
