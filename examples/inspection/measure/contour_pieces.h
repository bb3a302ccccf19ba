// Contours as straight pieces and arcs.
#ifndef EXAMPLES_INSPECTION_CONTOUR_PIECES_H
#define EXAMPLES_INSPECTION_CONTOUR_PIECES_H

#include <opencv2/core.hpp>
#include <vector>

#include "inspection/measure/measurement.h"

namespace inspection {

// Pixels and degrees. Pieces run through the centres of the contour's pixels, which lie within the object:
// about half a pixel inside its edge.
struct StraightPiece {
    cv::Point2d from;
    cv::Point2d to;
    double deviation = 0.0;  // largest distance of a contour point from it

    double length() const;
    double angle() const;  // [0, 180), from the x axis towards the y axis
};

struct ArcPiece {
    Circle circle;
    double startAngle = 0.0;  // from the x axis towards the y axis, not above endAngle
    double endAngle = 0.0;
    double deviation = 0.0;
};

struct SplitContour {
    std::size_t feature = 0;  // index of the feature whose contour this is
    std::vector<StraightPiece> lines;
    std::vector<ArcPiece> arcs;
};

// Splits the contours of the features. How finely depends on the extent of each contour, because one picture
// holds small and large parts. One thread at a time.
std::vector<SplitContour> splitContours(const std::vector<Feature>& features);

}  // namespace inspection

#endif
