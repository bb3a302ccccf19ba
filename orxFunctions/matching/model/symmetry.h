// Whether a part looks the same when it is turned.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_SYMMETRY_H
#define ORXFUNCTIONS_MATCHING_MODEL_SYMMETRY_H

#include <opencv2/core.hpp>

#include "orxFunctions/matching/model/self_match.h"

namespace orx::matching {

struct Symmetry {
    int order = 1;  // the same after 1/order of a turn; 0 at every angle
    cv::Point2d centre;
    int nearOrder = 1;  // nearly the same after 1/nearOrder of a turn; 0 at every angle
    double nearShare = 0;
};

// Orders up to 64. What is as long as a tooth of a gear or a small hole, six pixels of the outline, tells one
// turn from the other; less than that, and fiftieth parts of the outline in all, does not.
Symmetry findSymmetry(const MatchedOutline& outline);

}  // namespace orx::matching

#endif
