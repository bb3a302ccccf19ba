// What a lens does to a line of sight, and how that is undone.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_LENS_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_LENS_H

#include <opencv2/core.hpp>

namespace orx::plane {

// OpenCV's model of five coefficients, on rays (x / z, y / z).
struct Lens {
    double k1 = 0.0;
    double k2 = 0.0;
    double p1 = 0.0;
    double p2 = 0.0;
    double k3 = 0.0;
};

// Where the lens lets a ray seem to come from, and the derivative of that.
cv::Point2d distorted(const Lens& lens, cv::Point2d ray, cv::Matx22d* derivative = nullptr);

// Whether the formula still tells rays apart there: it grows all the way from the middle to the ray.
bool isUnfolded(const Lens& lens, cv::Point2d ray);

// The ray that seems to come from `seen`. False where there is none this side of the fold.
bool undistorted(const Lens& lens, cv::Point2d seen, cv::Point2d& ray);

}  // namespace orx::plane

#endif
