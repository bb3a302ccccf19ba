#include "orxFunctions/analysis/edge_pieces_internal.h"

#include <algorithm>
#include <cstdlib>

namespace orx::edges {
namespace {

constexpr std::uint8_t kUnvisited = 255;
constexpr std::uint8_t kVisited = 254;

// A pixel whose removal neither splits its surroundings nor shortens a line: it has neighbours along both
// axes, and its connectivity number for eight neighbours is 1 (S. Yokoi et al., Computer Graphics and Image
// Processing 4, 1975).
bool isSpareCorner(const std::uint8_t* pixel, std::ptrdiff_t step) {
    if (pixel[-1] == 0 && pixel[1] == 0) return false;
    if (pixel[-step] == 0 && pixel[step] == 0) return false;
    const std::ptrdiff_t around[] = {1, 1 - step, -step, -1 - step, -1, step - 1, step, step + 1};
    unsigned clear[9];
    for (int i = 0; i < 8; ++i) clear[i] = pixel[around[i]] == 0 ? 1U : 0U;
    clear[8] = clear[0];
    unsigned connectivity = 0;
    for (int i = 0; i < 8; i += 2) connectivity += clear[i] - (clear[i] & clear[i + 1] & clear[i + 2]);
    return connectivity == 1;
}

// Grows a chain pixel by pixel and hands over what cannot be continued.
class PieceBuilder {
  public:
    explicit PieceBuilder(std::vector<PixelChain>& pieces) : pieces_(pieces) {}

    void add(cv::Point p) {
        if (!piece_.empty() && !areNeighbours(piece_.back(), p)) {
            if (!turned_ && areNeighbours(piece_.front(), p)) {
                std::reverse(piece_.begin(), piece_.end());
                turned_ = true;
            } else {
                finish();
            }
        }
        piece_.push_back(p);
    }
    void finish() {
        if (!piece_.empty()) pieces_.push_back(std::move(piece_));
        piece_.clear();
        turned_ = false;
    }

  private:
    std::vector<PixelChain>& pieces_;
    PixelChain piece_;
    bool turned_ = false;
};

}  // namespace

void removeCornerPixels(EdgePixels& edges) {
    const auto step = static_cast<std::ptrdiff_t>(edges.map.step);
    for (std::uint8_t* pixel : edges.pixels) {
        if (isSpareCorner(pixel, step)) *pixel = 0;
    }
}

std::vector<PixelChain> visitOnce(const std::vector<PixelChain>& borders, cv::Mat& map) {
    std::vector<PixelChain> pieces;
    pieces.reserve(borders.size());
    PieceBuilder builder(pieces);
    for (const PixelChain& border : borders) {
        for (const cv::Point& p : border) {
            std::uint8_t& pixel = map.at<std::uint8_t>(p);
            if (pixel != kUnvisited) continue;
            pixel = kVisited;
            builder.add(p);
        }
        builder.finish();
    }
    return pieces;
}

bool areNeighbours(cv::Point a, cv::Point b) { return std::abs(a.x - b.x) <= 1 && std::abs(a.y - b.y) <= 1; }

}  // namespace orx::edges
