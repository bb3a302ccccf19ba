#include "orxFunctions/calibration/plane/start.h"

#include <limits>
#include <opencv2/calib3d.hpp>

namespace orx::plane {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<cv::Point2f> inFloat(const std::vector<cv::Point2d>& points) {
    return {points.begin(), points.end()};
}

template <class T>
std::vector<cv::Point3_<T>> inSpace(const std::vector<cv::Point2d>& points) {
    std::vector<cv::Point3_<T>> result;
    for (const cv::Point2d& p : points)
        result.emplace_back(static_cast<T>(p.x), static_cast<T>(p.y), static_cast<T>(0));
    return result;
}

// The last entries of FreeLens: k1, k2, p1, p2, k3.
int flagsFor(const FreeLens& isFree) {
    return (isFree[4] ? 0 : cv::CALIB_FIX_K1) | (isFree[5] ? 0 : cv::CALIB_FIX_K2) |
           (isFree[6] ? 0 : cv::CALIB_ZERO_TANGENT_DIST) | (isFree[8] ? 0 : cv::CALIB_FIX_K3);
}

}  // namespace

double startCamera(const std::vector<Observation>& observations, cv::Size imageSize, const FreeLens& isFree,
                   Camera& camera, std::vector<Pose>& poses) {
    std::vector<std::vector<cv::Point3f>> places;
    std::vector<std::vector<cv::Point2f>> pixels;
    for (const Observation& observation : observations) {
        places.push_back(inSpace<float>(observation.plane));
        pixels.push_back(inFloat(observation.pixels));
    }
    cv::Mat matrix;
    cv::Mat distortion;
    std::vector<cv::Mat> rotations;
    std::vector<cv::Mat> translations;
    double rms = 0.0;
    try {
        rms = cv::calibrateCamera(places, pixels, imageSize, matrix, distortion, rotations, translations,
                                  flagsFor(isFree));
    } catch (const cv::Exception&) {
        return kNaN;
    }
    camera.matrix = matrix;
    for (int k = 0; k < 5; ++k) camera.distortion[k] = distortion.at<double>(k);
    poses.clear();
    for (std::size_t i = 0; i < rotations.size(); ++i)
        poses.push_back({cv::Vec3d(rotations[i]), cv::Vec3d(translations[i])});
    return cv::checkRange(matrix) && cv::checkRange(distortion) ? rms : kNaN;
}

bool startPose(const Observation& observation, const Camera& camera, Pose& pose) {
    try {
        return cv::solvePnP(inSpace<double>(observation.plane), observation.pixels, camera.matrix,
                            camera.distortion, pose.rotation, pose.translation);
    } catch (const cv::Exception&) {
        return false;
    }
}

bool startHomography(const Observation& observation, cv::Matx33d& homography) {
    try {
        const cv::Mat found = cv::findHomography(observation.plane, observation.pixels);
        if (found.empty() || found.at<double>(2, 2) == 0.0) return false;
        homography = cv::Matx33d(found) * (1.0 / found.at<double>(2, 2));
        homography(2, 2) = 1.0;
        return true;
    } catch (const cv::Exception&) {
        return false;
    }
}

}  // namespace orx::plane
