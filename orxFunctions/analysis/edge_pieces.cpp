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

bool areNeighbours(cv::Point a, cv::Point b) { return std::abs(a.x - b.x) <= 1 && std::abs(a.y - b.y) <= 1; }

// Grows the last piece pixel by pixel and begins another where it cannot be continued.
class PieceBuilder {
  public:
    PieceBuilder(PixelPieces& pieces, std::size_t shortest) : pieces_(pieces), shortest_(shortest) {}

    void add(cv::Point p) {
        std::vector<cv::Point>& pixels = pieces_.pixels;
        const std::size_t start = pieces_.starts.back();
        if (pixels.size() > start && !areNeighbours(pixels.back(), p)) {
            if (!turned_ && areNeighbours(pixels[start], p)) {
                std::reverse(pixels.begin() + static_cast<std::ptrdiff_t>(start), pixels.end());
                turned_ = true;
            } else {
                finish();
            }
        }
        pixels.push_back(p);
    }
    void finish() {
        const std::size_t start = pieces_.starts.back();
        const std::size_t length = pieces_.pixels.size() - start;
        if (length < shortest_) {
            pieces_.pixels.resize(start);
        } else if (length > 0) {
            pieces_.starts.push_back(pieces_.pixels.size());
        }
        turned_ = false;
    }

  private:
    PixelPieces& pieces_;
    std::size_t shortest_;
    bool turned_ = false;
};

}  // namespace

void removeCornerPixels(EdgePixels& edges) {
    const auto step = static_cast<std::ptrdiff_t>(edges.map.step);
    for (std::uint8_t* pixel : edges.pixels) {
        if (isSpareCorner(pixel, step)) *pixel = 0;
    }
}

bool PixelPieces::isClosed(std::size_t i) const {
    constexpr std::size_t kShortestRing = 8;
    return starts[i + 1] - starts[i] >= kShortestRing &&
           areNeighbours(pixels[starts[i]], pixels[starts[i + 1] - 1]);
}

PixelPieces visitOnce(const std::vector<PixelChain>& borders, cv::Mat& map, std::size_t shortest) {
    PixelPieces pieces;
    std::size_t followed = 0;
    for (const PixelChain& border : borders) followed += border.size();
    pieces.pixels.reserve(followed);
    pieces.starts.reserve(borders.size() + 1);
    PieceBuilder builder(pieces, shortest);
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

}  // namespace orx::edges
