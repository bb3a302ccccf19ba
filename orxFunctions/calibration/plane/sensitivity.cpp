#include "orxFunctions/calibration/plane/sensitivity.h"

#include <opencv2/calib3d.hpp>

namespace orx::plane {
namespace {

// Columns of OpenCV's derivatives: rotation, translation, fx, fy, cx, cy, k1, k2, p1, p2, k3.
constexpr int kOpenCvPose = 0;
constexpr int kOpenCvLens = 6;
constexpr int kLensParameters = 9;
constexpr int kPoseParameters = 6;

cv::Mat ofCamera(const TPlaneCalibration& calibration, const std::vector<cv::Point2d>& places,
                 std::vector<cv::Point2d>& pixels) {
    std::vector<cv::Point3d> inSpace;
    for (const cv::Point2d& p : places) inSpace.emplace_back(p.x, p.y, 0.0);
    cv::Mat derivatives;
    cv::projectPoints(inSpace, calibration.rotation, calibration.translation, calibration.camera,
                      calibration.distortion, pixels, derivatives);
    cv::Mat result(derivatives.rows, kPlaneParameters, CV_64F);
    derivatives.colRange(kOpenCvLens, kOpenCvLens + kLensParameters)
        .copyTo(result.colRange(0, kLensParameters));
    derivatives.colRange(kOpenCvPose, kOpenCvPose + kPoseParameters)
        .copyTo(result.colRange(kLensParameters, kPlaneParameters));
    return result;
}

cv::Mat ofHomography(const cv::Matx33d& h, const std::vector<cv::Point2d>& places,
                     std::vector<cv::Point2d>& pixels) {
    cv::Mat result = cv::Mat::zeros(2 * static_cast<int>(places.size()), kPlaneParameters, CV_64F);
    int row = 0;
    for (const cv::Point2d& p : places) {
        const cv::Vec3d seen = h * cv::Vec3d(p.x, p.y, 1.0);
        const cv::Vec3d share = cv::Vec3d(p.x, p.y, 1.0) * (1.0 / seen[2]);
        pixels.emplace_back(seen[0] / seen[2], seen[1] / seen[2]);
        for (int axis = 0; axis < 2; ++axis, ++row) {
            for (int k = 0; k < 3; ++k) result.at<double>(row, 3 * axis + k) = share[k];
            for (int k = 0; k < 2; ++k) result.at<double>(row, 6 + k) = -seen[axis] / seen[2] * share[k];
        }
    }
    return result;
}

}  // namespace

cv::Mat imageSensitivity(const TPlaneCalibration& calibration, const std::vector<cv::Point2d>& places,
                         std::vector<cv::Point2d>* pixels) {
    std::vector<cv::Point2d> own;
    std::vector<cv::Point2d>& projected = pixels != nullptr ? *pixels : own;
    projected.clear();
    return calibration.lens ? ofCamera(calibration, places, projected)
                            : ofHomography(calibration.homography, places, projected);
}

}  // namespace orx::plane
