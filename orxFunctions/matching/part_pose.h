// Where a part lies in a picture, as a value: shift, turn and scale from the model's plane into the picture.
//
// The model's plane has its origin at the reference point and its x axis along the reference direction of the
// model; its unit is the pixel of the picture it was taught from (of a drawing, its unit divided by the
// pixels that were said to make one). Pictures count pixels, the centre of the top-left pixel at (0, 0);
// angles are degrees from the x axis towards the y axis, clockwise on the screen.
//
// What was laid out once in the model's plane (points to measure, boxes, calipers) follows the part:
// applyPose takes it to where the part was found. All functions are reentrant; numbers that are not finite
// give numbers that are not.
#ifndef ORXFUNCTIONS_MATCHING_PART_POSE_H
#define ORXFUNCTIONS_MATCHING_PART_POSE_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/caliper.h"
#include "orxFunctions/api.h"
#include "orxFunctions/foundation/records.h"

namespace orx {

struct TPartPose {
    double x = 0.0;  // of the reference point, pixels
    double y = 0.0;
    double angle = 0.0;  // of the reference direction, degrees
    double scale = 1.0;  // pixels for a unit of the model, above 0
};

// The point of the picture where a point of the model's plane lies.
ORX_API cv::Point2d applyPose(const TPartPose& pose, cv::Point2d point);

ORX_API std::vector<cv::Point2d> applyPoseToPoints(const TPartPose& pose,
                                                   const std::vector<cv::Point2d>& points);

// A direction of the model's plane in the picture, degrees in [-180, 180).
ORX_API double applyPoseToAngle(const TPartPose& pose, double angle);

// A box: moved, turned and scaled. Boxes hold floats: 0.0001 pixels of rounding in large pictures.
ORX_API cv::RotatedRect applyPoseToBox(const TPartPose& pose, const cv::RotatedRect& box);

// A circle: its centre and its radius. What tells of its fit stays.
ORX_API TCircle applyPoseToCircle(const TPartPose& pose, const TCircle& circle);

struct TLineSegment {
    cv::Point2d from;
    cv::Point2d to;
};
ORX_API TLineSegment applyPoseToSegment(const TPartPose& pose, const TLineSegment& segment);

// Calipers around a circle of the model's plane: startAngle turns along, searchLength and width, at least a
// pixel, grow with the scale. The centre and the radius go through the above.
ORX_API TCircleCaliperOptions applyPoseToCalipers(const TPartPose& pose,
                                                  const TCircleCaliperOptions& options);

// The covariance (pixels squared) of where a point of the model's plane lies in the picture, from that of the
// pose: x, y (pixels), angle (degrees) and scale, as TFoundPart has it. To first order in the pose's errors.
// What the part's outline can't tell has no share in it: see TFoundPart::free.
ORX_API cv::Matx22d mappedCovariance(const TPartPose& pose, const cv::Matx44d& covariance, cv::Point2d point);

// What `inner` does, and then `outer`: applyPose(composed, p) is applyPose(outer, applyPose(inner, p)). The
// angle is in [-180, 180).
ORX_API TPartPose composePoses(const TPartPose& outer, const TPartPose& inner);

// The way back, from the picture into the model's plane. The scale must not be 0.
ORX_API TPartPose invertPose(const TPartPose& pose);

}  // namespace orx

#endif
