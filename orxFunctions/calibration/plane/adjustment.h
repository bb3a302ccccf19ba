// Least squares over all views: the camera and the poses, or a homography, by which projected points lie
// nearest to those seen.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_ADJUSTMENT_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_ADJUSTMENT_H

#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/calibration/plane/observations.h"

namespace orx::plane {

constexpr int kLensParameters = 9;
constexpr int kPoseParameters = 6;
constexpr int kHomographyParameters = 8;

struct Pose {
    cv::Vec3d rotation;
    cv::Vec3d translation;
};

struct Camera {
    cv::Matx33d matrix = cv::Matx33d::eye();
    cv::Vec<double, 5> distortion;
};

// As one that is valid, without the size of its pictures and without a covariance.
TPlaneCalibration asCalibration(const Camera& camera, const Pose& pose);
TPlaneCalibration asCalibration(const cv::Matx33d& homography);

// What was found, and how well.
struct Adjusted {
    bool settled = false;
    double squares = 0.0;    // weighted, of the distances
    double freedom = 0.0;    // observations less parameters
    double distances = 0.0;  // squares without weights
    // Of the parameters of TPlaneCalibration (lens and the pose of `planeView`, or homography), for
    // observations of variance 1; multiply by squares / freedom.
    cv::Matx<double, kPlaneParameters, kPlaneParameters> cofactor;
};

// Lens parameters whose entry is false stay as they are.
using FreeLens = std::array<bool, kLensParameters>;

// Improves a start. settled is false where a step can't be told (the parameters are left open) or the steps
// find no rest.
Adjusted adjustCamera(const std::vector<Observation>& observations, const FreeLens& isFree, int planeView,
                      Camera& camera, std::vector<Pose>& poses);
// How the pose that lies nearest to a view's points moves with the lens.
cv::Matx<double, kPoseParameters, kLensParameters> poseByLens(const Observation& observation,
                                                              const Camera& camera, const Pose& pose);
Adjusted adjustHomography(const Observation& observation, cv::Matx33d& homography);

}  // namespace orx::plane

#endif
