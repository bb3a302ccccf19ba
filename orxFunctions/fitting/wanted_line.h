// The line at one side of a part, among several lines in a list of edge points.
#ifndef ORXFUNCTIONS_FITTING_WANTED_LINE_H
#define ORXFUNCTIONS_FITTING_WANTED_LINE_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

// Which of the lines is wanted. Upright lines are steeper than 45 degrees, level ones flatter; a line at
// exactly 45 degrees counts as both.
enum TWantLineType : int {
    wlLeft = 0,    // the upright line whose points lie farthest left on average
    wlRight = 1,   // the upright line farthest right
    wlTop = 2,     // the level line farthest up (smallest y)
    wlBottom = 3,  // the level line farthest down
    wlCenter = 4   // the line, of any direction, that passes nearest the middle of all points' extents
};

// Finds lines in the points one after another, the strongest first, and selects one of them.
//
// Each line is the best of 1,000 two-point samples: the one with the most points within 2 pixels. Its points
// are taken out and the search goes on with the others, until a line would have fewer than `minPoints` points
// (at least 3 are demanded) or 32 lines are found. `type` selects among them; of two equally placed lines the
// stronger wins.
//
// `refine` fits the selected line anew to its points (cv::fitLine, Huber loss) and collects from all points
// those within 2 pixels of it: the points which a crossing line had taken come back, and the tilt of a
// two-point sample goes.
//
// True: `linePoints` holds the points of the line and `restPoints` all others, each in input order. False
// when there is no such line (rcNoResult), for fewer points than a line needs (rcTooFew) and for a type not
// listed (rcOption): `linePoints` is empty and `restPoints` holds all points. A caller finds the lines of a
// part one by one by passing the rest to the next call.
//
// The samples come from a generator of its own with a fixed seed: equal points give equal results, and rand()
// is not disturbed. Reentrant.
ORX_API bool getWantedLine(std::vector<cv::Point> points, std::vector<cv::Point>& linePoints,
                           std::vector<cv::Point>& restPoints, TWantLineType type, int minPoints,
                           bool refine);

}  // namespace orx

#endif
