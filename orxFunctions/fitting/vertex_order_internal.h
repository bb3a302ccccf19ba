// The order of a polygon's vertices about one of them.
#ifndef ORXFUNCTIONS_FITTING_VERTEX_ORDER_INTERNAL_H
#define ORXFUNCTIONS_FITTING_VERTEX_ORDER_INTERNAL_H

#include <opencv2/core.hpp>
#include <vector>

namespace orx {

struct AngledVertex {
    double angle;  // in [0, pi]; -1 for what has no direction
    cv::Point point;
};

// The greatest angle first; equal ones stay in their order. In stretches of angle, so that the time grows
// with the number of vertices where they lie all around, and as that of a sort where they don't.
void sortByFallingAngle(std::vector<AngledVertex>& vertices);

}  // namespace orx

#endif
