// The plane calibration of a recipe: pixels to millimetres, and how that may be off.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_PLANE_H
#define ORXFUNCTIONS_MEASURING_RECIPE_PLANE_H

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace orx::recipes {

class Plane {
  public:
    virtual ~Plane() = default;
    virtual cv::Size size() const = 0;
    // Not-a-number where there is no such place.
    virtual cv::Point2d toPlane(cv::Point2d pixel) const = 0;
    virtual cv::Point2d toImage(cv::Point2d millimetres) const = 0;
    // Of toPlane.
    virtual cv::Matx22d jacobian(cv::Point2d pixel) const = 0;
    // The calibration's covariance as independent shifts of one deviation each: row 2i (2i + 1) holds how far
    // each of them moves x (y) of mapped point i. 2n x shifts, CV_64F; empty where a point has no place.
    virtual cv::Mat shiftsOf(const std::vector<cv::Point2d>& pixels) const = 0;
    virtual int shifts() const = 0;
    virtual double degreesOfFreedom() const = 0;

    // Root of the determinant of the jacobian: millimetres a pixel.
    double pixelSize(cv::Point2d pixel) const;
};

// Null, and the problem told, for a file that is no calibration.
std::shared_ptr<const Plane> readPlane(const std::string& fileName, std::string& problem);

}  // namespace orx::recipes

#endif
