// The contour points along a chord, found without walking the whole contour for each chord.
#ifndef ORXFUNCTIONS_SEGMENTATION_SPLITTING_CHORD_POINTS_H
#define ORXFUNCTIONS_SEGMENTATION_SPLITTING_CHORD_POINTS_H

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/segmentation/segment_line.h"
#include "orxFunctions/segmentation/splitting/contour_boxes.h"
#include "orxFunctions/segmentation/splitting/work.h"

namespace orx::splitting {

// No line is fitted to fewer points.
constexpr std::size_t kFewestFitted = 3;

// Where each key point occurs in a contour, and bounding boxes over stretches of it. Building takes one pass;
// asking for a chord then costs the points near it, not the contour's length, also where an outline one pixel
// wide runs back along itself and the walk from start to end leads round the whole contour. One thread at a
// time; the contour is borrowed.
class ChordPointFinder {
  public:
    ChordPointFinder(const std::vector<cv::Point>& contour, const std::vector<cv::Point>& keyPoints);

    // What TSegemetLine::findLinePoints does, for a line between two of the key points; the same points in
    // the same order, the same maxDist. Stops where the work becomes too much.
    void collect(TSegemetLine& line, double tolerance, Work& work) const;

  private:
    // A slot of the hash table: a key point and its stretch of positions_. Slots without a position are free.
    struct Slot {
        cv::Point point;
        std::uint32_t first = 0;
        std::uint32_t count = 0;
        bool taken = false;
    };

    void insertKeyPoints(const std::vector<cv::Point>& keyPoints);
    void recordPositions();

    std::size_t slotOf(cv::Point p) const;
    // The first position at or after `from` that holds p; the contour's size when there is none.
    std::size_t firstAt(cv::Point p, std::size_t from) const;
    // How many points from position i on can't touch the box: 0, or the size of a block.
    std::size_t blockOutside(std::size_t i, std::size_t end, const Box& near) const;

    const std::vector<cv::Point>& contour_;
    std::vector<Slot> slots_;
    std::vector<std::uint32_t> positions_;  // ascending for each key point
    ContourBoxes boxes_;
};

}  // namespace orx::splitting

#endif
