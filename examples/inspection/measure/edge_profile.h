// Where the outline of an object passes between pixels.
#ifndef EXAMPLES_INSPECTION_EDGE_PROFILE_H
#define EXAMPLES_INSPECTION_EDGE_PROFILE_H

#include <opencv2/core.hpp>
#include <optional>

namespace inspection {

// Looks along `outward` (a unit vector) through a contour point of an object in an 8-bit grey picture and
// gives the place nearest to the point where the grey profile crosses the middle between the levels inside
// and outside. Levels are taken on both sides, so uneven light does not move the edge. Nothing when the
// profile leaves the picture, has too little contrast or the wrong direction. Reentrant.
std::optional<cv::Point2d> edgeAcross(const cv::Mat& grey, cv::Point2d contourPoint, cv::Point2d outward,
                                      bool brightObject);

}  // namespace inspection

#endif
