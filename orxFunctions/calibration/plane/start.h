// Where the adjustment begins: OpenCV's calibration, poses and homography.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_START_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_START_H

#include "orxFunctions/calibration/plane/adjustment.h"

namespace orx::plane {

// The root mean square distance of the points, pixels; not-a-number where OpenCV finds none.
double startCamera(const std::vector<Observation>& observations, cv::Size imageSize, const FreeLens& isFree,
                   Camera& camera, std::vector<Pose>& poses);
// False where OpenCV finds none.
bool startPose(const Observation& observation, const Camera& camera, Pose& pose);
bool startHomography(const Observation& observation, cv::Matx33d& homography);

}  // namespace orx::plane

#endif
