// The way from a pixel to the plane and back, made ready once for many points.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_MAPPING_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_MAPPING_H

#include <opencv2/core.hpp>

#include "orxFunctions/calibration/plane/lens.h"
#include "orxFunctions/calibration/plane_calibration.h"

namespace orx::plane {

// The rotation matrix of Rodrigues' vector.
cv::Matx33d rotationMatrix(const cv::Vec3d& vector);

class Mapping {
  public:
    explicit Mapping(const TPlaneCalibration& calibration);

    // False where there is no such point; see imageToPlane.
    bool toPlane(cv::Point2d pixel, cv::Point2d& millimetres, cv::Matx22d* derivative = nullptr) const;
    bool toImage(cv::Point2d millimetres, cv::Point2d& pixel, cv::Matx22d* derivative = nullptr) const;

  private:
    bool usable_ = false;
    bool hasLens_ = false;
    Lens lens_;
    double fx_ = 1.0;
    double fy_ = 1.0;
    double cx_ = 0.0;
    double cy_ = 0.0;
    cv::Matx33d fromPlane_;  // to rays, or without a lens to pixels
    cv::Matx33d toPlane_;
};

}  // namespace orx::plane

#endif
