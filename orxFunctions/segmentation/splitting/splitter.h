// The steps by which a contour becomes straight pieces and arcs.
#ifndef ORXFUNCTIONS_SEGMENTATION_SPLITTING_SPLITTER_H
#define ORXFUNCTIONS_SEGMENTATION_SPLITTING_SPLITTER_H

#include <functional>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/segmentation/segment_contour.h"
#include "orxFunctions/segmentation/splitting/arcs.h"

namespace orx::splitting {

struct Pieces {
    cv::Mat keyPoints;  // two-channel integers, as cv::approxPolyDP fills it; empty when there are none
    std::vector<TSegemetLine> lines;
    std::vector<TSegemetCircle> circles;
    bool isTooMuchWork = false;  // stopped, nothing is found
};

// Is told of every pass once its pieces are complete.
using PassObserver = std::function<void(const Pieces&)>;

// All that TSegmentContour does with one contour: both passes, then what the arcs swallow. The lines are
// those that no arc stands for, the arcs those that none has absorbed, the key points those of the first
// pass. An empty contour gives nothing. Reentrant.
Pieces split(const std::vector<cv::Point>& contour, const TSegemetParams& params,
             const PassObserver& observer = nullptr, Work work = Work());

// One pass: key points to the given accuracy, the chords between them, the arcs that these grow into. Chords
// and arcs that have been absorbed are still among the pieces, and no chord's line is fitted yet. Reentrant.
Pieces segment(const std::vector<cv::Point>& contour, double epsilon, const TSegemetParams& params,
               ArcSteps& steps);

// The points of each run of neighbouring lines that no arc stands for: what the second pass splits.
// Reentrant.
std::vector<std::vector<cv::Point>> getSecondContours(const std::vector<TSegemetLine>& lines);

}  // namespace orx::splitting

#endif
