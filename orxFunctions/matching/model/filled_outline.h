// Closed outlines painted as areas.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_FILLED_OUTLINE_H
#define ORXFUNCTIONS_MATCHING_MODEL_FILLED_OUTLINE_H

#include <opencv2/core.hpp>
#include <vector>

namespace orx::matching {

// A CV_8UC1 picture, `bright` where an odd number of the polygons lies around a place: exact areas along each
// of four lines a row. Pixels' centres have whole coordinates.
cv::Mat fillPolygons(const std::vector<std::vector<cv::Point2d>>& polygons, cv::Size size, int bright);

}  // namespace orx::matching

#endif
