#include "orxFunctions/analysis/edges/pieces.h"

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

// Ends the last piece, which is dropped when it is too short.
void finishPiece(PixelPieces& pieces, std::size_t shortest) {
    const std::size_t start = pieces.starts.back();
    const std::size_t length = pieces.pixels.size() - start;
    if (length < shortest) {
        pieces.pixels.resize(start);
    } else if (length > 0) {
        pieces.starts.push_back(pieces.pixels.size());
    }
}

void reverseLastPiece(PixelPieces& pieces) {
    std::reverse(pieces.pixels.begin() + static_cast<std::ptrdiff_t>(pieces.starts.back()),
                 pieces.pixels.end());
}

// Walks along edges, from a pixel to an unvisited neighbour, where there are several to the one straightest
// ahead.
class EdgeWalker {
  public:
    EdgeWalker(cv::Mat& map, std::vector<cv::Point>& pixels) : pixels_(pixels) {
        const auto step = static_cast<std::ptrdiff_t>(map.step);
        for (std::size_t d = 0; d < kDirections; ++d) offsets_[d] = kStepY[d] * step + kStepX[d];
    }

    // Appends the pixels that lie ahead of the last one of a piece, which begins at `start` and whose last
    // pixel is given.
    void walk(std::uint8_t* pixel, std::size_t start) {
        for (;;) {
            const std::size_t d = nextDirection(pixel, heading(start));
            if (d == kDirections) return;
            pixel += offsets_[d];
            *pixel = kVisited;
            pixels_.emplace_back(pixels_.back().x + kStepX[d], pixels_.back().y + kStepY[d]);
        }
    }

  private:
    static constexpr std::size_t kDirections = 8;
    // Those that share a side come first.
    static constexpr int kStepX[kDirections] = {1, 0, -1, 0, 1, -1, -1, 1};
    static constexpr int kStepY[kDirections] = {0, 1, 0, -1, 1, 1, -1, -1};

    // Where the last few pixels lead.
    cv::Point heading(std::size_t start) const {
        constexpr std::size_t kReach = 10;
        const std::size_t last = pixels_.size() - 1;
        return pixels_[last] - pixels_[last - std::min(last - start, kReach)];
    }

    std::size_t nextDirection(const std::uint8_t* pixel, cv::Point heading) const {
        std::size_t best = kDirections;
        double bestProgress = 0;
        for (std::size_t d = 0; d < kDirections; ++d) {
            if (pixel[offsets_[d]] != kUnvisited) continue;
            constexpr double kDiagonal = 0.70710678;
            const double progress =
                (heading.x * kStepX[d] + heading.y * kStepY[d]) * (d < kDirections / 2 ? 1.0 : kDiagonal);
            if (best != kDirections && !(progress > bestProgress)) continue;
            best = d;
            bestProgress = progress;
        }
        return best;
    }

    std::vector<cv::Point>& pixels_;
    std::ptrdiff_t offsets_[kDirections];
};

// Grows the last piece pixel by pixel and begins another where it cannot be continued.
class PieceBuilder {
  public:
    PieceBuilder(PixelPieces& pieces, std::size_t shortest) : pieces_(pieces), shortest_(shortest) {}

    void add(cv::Point p) {
        std::vector<cv::Point>& pixels = pieces_.pixels;
        const std::size_t start = pieces_.starts.back();
        if (pixels.size() > start && !areNeighbours(pixels.back(), p)) {
            if (!turned_ && areNeighbours(pixels[start], p)) {
                reverseLastPiece(pieces_);
                turned_ = true;
            } else {
                finish();
            }
        }
        pixels.push_back(p);
    }
    void finish() {
        finishPiece(pieces_, shortest_);
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

PixelPieces linkPixels(EdgePixels& edges, std::size_t shortest) {
    PixelPieces pieces;
    pieces.pixels.reserve(edges.pixels.size());
    EdgeWalker walker(edges.map, pieces.pixels);
    const auto step = static_cast<std::ptrdiff_t>(edges.map.step);
    for (std::uint8_t* pixel : edges.pixels) {
        if (*pixel != kUnvisited) continue;
        *pixel = kVisited;
        const std::ptrdiff_t offset = pixel - edges.map.data;
        pieces.pixels.emplace_back(static_cast<int>(offset % step), static_cast<int>(offset / step));
        walker.walk(pixel, pieces.starts.back());
        // And the other way from where it began.
        reverseLastPiece(pieces);
        walker.walk(pixel, pieces.starts.back());
        finishPiece(pieces, shortest);
    }
    return pieces;
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
