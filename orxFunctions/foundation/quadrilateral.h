// The point-in-quadrilateral test. fitting/geometry.h, which has the other primitives, includes it.
#ifndef ORXFUNCTIONS_FOUNDATION_QUADRILATERAL_H
#define ORXFUNCTIONS_FOUNDATION_QUADRILATERAL_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace orx {

// True when p lies strictly inside the convex quadrilateral a-b-c-d, whatever its winding. Points on an edge
// or a corner are outside. Products are 32-bit and wrap. Reentrant.
ORX_API bool isPointInRect(cv::Point p, cv::Point a, cv::Point b, cv::Point c, cv::Point d);

}  // namespace orx

#endif
