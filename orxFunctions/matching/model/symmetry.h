// Whether a part looks the same when it is turned.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_SYMMETRY_H
#define ORXFUNCTIONS_MATCHING_MODEL_SYMMETRY_H

#include <opencv2/core.hpp>

#include "orxFunctions/matching/model/self_match.h"
#include "orxFunctions/matching/part_pose.h"

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

// The pose after a turn about a point of the model's plane by so many degrees: with the symmetry's centre and
// a multiple of 360 / symmetry degrees the part looks the same in both. The place moves unless the centre is
// the reference point.
TPartPose turnedAbout(const TPartPose& pose, cv::Point2d centre, double angle);

}  // namespace orx::matching

#endif
