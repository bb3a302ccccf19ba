// The centre points of contours.
#ifndef ORXFUNCTIONS_ANALYSIS_CONTOUR_CENTER_H
#define ORXFUNCTIONS_ANALYSIS_CONTOUR_CENTER_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

// The pixel nearest to the centre of a closed contour, each coordinate rounded to nearest, ties to even.
//
//     mode 0, and every value not listed: the centre of gravity of the enclosed area, from the moments of the
//             polygon; the mean of the points where it encloses none (a point, a line traced to and fro).
//             Follows the shape; the choice for solid objects.
//     mode 1: the centre of the upright bounding rectangle. The cheapest, for outlines with gaps or notches.
//     mode 2: the centre of the smallest enclosing circle. Does not turn with the object; for round outlines
//             that are partly broken away.
//
// The answer lies in the bounding rectangle of the points, also where a polygon that crosses itself has its
// centre of gravity elsewhere. An empty contour gives (-1, -1) (rcTooFew, in the other two as well).
// Reentrant.
ORX_API cv::Point getContourCenterPt(std::vector<cv::Point> contour, int mode);

// The same centre, and limits, not rounded to a pixel: for measuring. An empty contour gives (-1, -1).
// Reentrant.
ORX_API cv::Point2d getContourCenterSubPix(const std::vector<cv::Point>& contour, int mode);

// The rounded centre of every contour, in their order, (-1, -1) for empty ones. Reentrant.
ORX_API std::vector<cv::Point> getContourCenterPts(const std::vector<std::vector<cv::Point>>& contours,
                                                   int mode);

}  // namespace orx

#endif
