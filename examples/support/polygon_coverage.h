// Polygons painted by exact areas, as pixelCoverage() (synthetic_scene.h) does it for disks and bars.
#ifndef EXAMPLES_SUPPORT_POLYGON_COVERAGE_H
#define EXAMPLES_SUPPORT_POLYGON_COVERAGE_H

#include <opencv2/core.hpp>
#include <vector>

namespace scenes {

// A closed polygon; its last point is joined to the first.
using Loop = std::vector<cv::Point2d>;

// Lays a polygon with holes over a CV_32F image: each pixel is drawn from its value towards `level` by the
// area of it that is covered. The first loop is the outline; the others run the other way round, inside it.
// No two of them may cross. Work is that of the outline's pixels and of the box around it. `fineness` pixels
// of the image, along each axis, are one of the picture that the loops are in.
void paint(cv::Mat& image, const std::vector<Loop>& loops, double level, int fineness = 1);

bool contains(const Loop& loop, cv::Point2d point);

// Twice the area, positive where the x axis turns towards the y axis along the loop.
double signedArea(const Loop& loop);

}  // namespace scenes

#endif
