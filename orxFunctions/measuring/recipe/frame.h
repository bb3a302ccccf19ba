// Where a recipe's coordinates lie in the picture.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_FRAME_H
#define ORXFUNCTIONS_MEASURING_RECIPE_FRAME_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/part_pose.h"
#include "orxFunctions/measuring/recipe/plane.h"

namespace orx::recipes {

// Pixels or millimetres, of the part or of all.
struct Frame {
    TPartPose pose;                // into the picture, or where there is a plane into that
    const Plane* plane = nullptr;  // coordinates are millimetres

    cv::Point2d toImage(cv::Point2d p) const {
        const cv::Point2d placed = applyPose(pose, p);
        return plane != nullptr ? plane->toImage(placed) : placed;
    }
    // Pixels for a unit, near a place.
    double scaleAt(cv::Point2d p) const;
};

// A pose with how it may be off.
struct UncertainPose {
    TPartPose pose;
    cv::Matx44d covariance = cv::Matx44d::zeros();  // of x, y, angle (degrees) and scale
    std::vector<TPartPose> shifted;                 // by each shift of the calibration; none for pixels
    double degreesOfFreedom = 0.0;
};

// A pose of the picture as one of the plane, in millimetres and of scale 1. False where there is no such
// place.
bool poseOnPlane(const Plane& plane, const UncertainPose& picture, UncertainPose& result);
// And a pose of the plane without uncertainty as one of the picture.
bool poseInPicture(const Plane& plane, const TPartPose& onPlane, TPartPose& result);

}  // namespace orx::recipes

#endif
