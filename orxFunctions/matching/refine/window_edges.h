// The edges of a window of the picture, found again by their place and direction.
#ifndef ORXFUNCTIONS_MATCHING_REFINE_WINDOW_EDGES_H
#define ORXFUNCTIONS_MATCHING_REFINE_WINDOW_EDGES_H

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx::matching {

// How far a direction is from another one, radians in [-pi, pi]; in [-pi / 2, pi / 2] where directions count
// modulo half a turn.
inline double turnBetween(double from, double to, bool eitherSign) {
    const double period = eitherSign ? kPi : 2 * kPi;
    const double turn = to - from;
    return turn - period * cvFloor(turn * (1 / period) + 0.5);
}

struct EdgePoint {
    cv::Point2d position;    // pixels of the picture
    double direction = 0.0;  // of the normal from dark to bright, radians
    double variance = 0.0;   // of the place along the normal, pixels squared
    int previous = -1;       // along the edge; -1 at its ends
    int next = -1;
    int follower = -1;  // the next one in the same pixel
};

// What an edge point must be like.
struct EdgeWish {
    double reach = 0.0;       // from the place, pixels, up to WindowEdges::kLargestReach
    double mostTurn = 0.0;    // between the directions, radians
    bool eitherSign = false;  // directions count modulo half a turn
};

// What nearest() found for a point of an outline, to be asked again near by.
struct KnownEdge {
    int index = -1;
    cv::Point2d place;
    double reach = 0.0;  // of the wish
    double room = 0.0;   // the place may move by less than this, squared, and no other edge point gets nearer
};

class WindowEdges {
  public:
    static constexpr int kLargestReach = 6;

    // Of the part of the window that lies in the picture; none where it does not meet it.
    WindowEdges(const cv::Mat& grey, const cv::Rect& window, const ORXEdge::TMetricOptions& find);

    const EdgePoint& operator[](int i) const { return points_[static_cast<std::size_t>(i)]; }
    // The nearest one of the wanted kind, -1 where there is none.
    int nearest(cv::Point2d place, double direction, const EdgeWish& wish) const;
    // The same, quicker near the place of an earlier call, of which `known` is; it may be new.
    int nearest(cv::Point2d place, double direction, const EdgeWish& wish, KnownEdge& known) const;

  private:
    void addChain(const ORXEdge::TMetricContour& chain, cv::Point2d origin);
    void sortIntoCells();
    bool isStillNearest(cv::Point2d place, double direction, const EdgeWish& wish,
                        const KnownEdge& known) const;
    // Bit i tells whether the cell at column `left` + i has points, for `width` cells.
    std::uint32_t occupied(int row, int left, int width) const;

    std::vector<EdgePoint> points_;
    // For each pixel of the window, with a border of kLargestReach, the first of its points, if it has any.
    cv::Mat_<int> cells_;
    // A bit for each cell: few of them have points. Rows end with a spare word.
    std::vector<std::uint32_t> bits_;
    std::size_t words_ = 0;  // of a row
    cv::Point origin_;       // the pixel of the first cell
};

}  // namespace orx::matching

#endif
