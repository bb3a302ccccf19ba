// Where a part lies in a picture, as a value: shift, turn and scale from the model's plane into the picture.
//
// The model's plane has its origin at the reference point and its x axis along the reference direction of the
// model; its unit is the pixel of the picture it was taught from (or the unit of a drawing). Pictures count
// pixels, the centre of the top-left pixel at (0, 0); angles are degrees from the x axis towards the y axis,
// clockwise on the screen. All functions are reentrant.
#ifndef ORXFUNCTIONS_MATCHING_PART_POSE_H
#define ORXFUNCTIONS_MATCHING_PART_POSE_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

struct TPartPose {
    double x = 0.0;  // of the reference point, pixels
    double y = 0.0;
    double angle = 0.0;  // of the reference direction, degrees
    double scale = 1.0;  // pixels for a unit of the model, above 0
};

// The point of the picture where a point of the model's plane lies.
ORX_API cv::Point2d applyPose(const TPartPose& pose, cv::Point2d point);

// What `inner` does, and then `outer`: applyPose(composed, p) is applyPose(outer, applyPose(inner, p)). The
// angle is in [-180, 180).
ORX_API TPartPose composePoses(const TPartPose& outer, const TPartPose& inner);

// The way back, from the picture into the model's plane. The scale must not be 0.
ORX_API TPartPose invertPose(const TPartPose& pose);

}  // namespace orx

#endif
