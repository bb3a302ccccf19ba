#include "orxFunctions/calibration/plane/plausible.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/calibration/plane/mapping.h"

namespace orx::plane {
namespace {

constexpr double kLargest = 1e9;
constexpr int kLongestSide = 32767;
constexpr double kRounding = 1e-6;  // of correlations, after their way through a text

bool isSmall(double value) { return std::abs(value) <= kLargest; }  // not-a-number is not

template <class Numbers>
bool areSmall(const Numbers& numbers) {
    return std::all_of(std::begin(numbers.val), std::end(numbers.val), isSmall);
}

bool isCameraMatrix(const cv::Matx33d& m) {
    return areSmall(m) && m(0, 0) > 0.0 && m(1, 1) > 0.0 && m(0, 1) == 0.0 && m(1, 0) == 0.0 &&
           m(2, 0) == 0.0 && m(2, 1) == 0.0 && m(2, 2) == 1.0;
}

bool isInvertible(const cv::Matx33d& m) {
    bool invertible = false;
    const cv::Matx33d inverse = m.inv(cv::DECOMP_LU, &invertible);
    return invertible && std::all_of(std::begin(inverse.val), std::end(inverse.val),
                                     [](double value) { return std::isfinite(value); });
}

// Symmetric, and no negative variance in any direction.
bool isCovariance(const cv::Matx<double, kPlaneParameters, kPlaneParameters>& c) {
    cv::Mat correlation = cv::Mat::eye(kPlaneParameters, kPlaneParameters, CV_64F);
    for (int i = 0; i < kPlaneParameters; ++i) {
        if (!(c(i, i) >= 0.0) || !std::isfinite(c(i, i))) return false;
        for (int j = 0; j < i; ++j) {
            const double scale = std::sqrt(c(i, i)) * std::sqrt(c(j, j));
            if (!(std::abs(c(i, j) - c(j, i)) <= kRounding * scale)) return false;
            if (!(std::abs(c(i, j)) <= (1.0 + kRounding) * scale)) return false;
            const double r = scale > 0.0 ? c(i, j) / scale : 0.0;
            correlation.at<double>(i, j) = correlation.at<double>(j, i) = r;
        }
    }
    cv::Mat values;
    cv::eigen(correlation, values);
    return values.at<double>(kPlaneParameters - 1) >= -kRounding;
}

}  // namespace

std::string flawOf(const TPlaneCalibration& calibration) {
    const cv::Size& size = calibration.imageSize;
    if (size.width < 1 || size.height < 1 || size.width > kLongestSide || size.height > kLongestSide)
        return "the size of the picture is none";
    if (calibration.lens) {
        if (!isCameraMatrix(calibration.camera)) return "the camera matrix is none";
        if (!areSmall(calibration.distortion)) return "the distortion is not finite";
        if (!areSmall(calibration.rotation) || cv::norm(calibration.rotation) > 7.0)
            return "the rotation is none";
        if (!areSmall(calibration.translation)) return "the translation is not finite";
        const cv::Matx33d r = rotationMatrix(calibration.rotation);
        const cv::Vec3d& t = calibration.translation;
        // The plane's distance from the camera: without one it is seen edge on.
        const double distance = r(0, 2) * t[0] + r(1, 2) * t[1] + r(2, 2) * t[2];
        if (!(std::abs(distance) > 1e-9 * cv::norm(t))) return "the plane runs through the camera";
    } else if (!areSmall(calibration.homography) || calibration.homography(2, 2) != 1.0 ||
               !isInvertible(calibration.homography)) {
        return "the homography is none";
    }
    if (!isCovariance(calibration.covariance)) return "the covariance is none";
    const double amounts[] = {calibration.degreesOfFreedom, calibration.noise, calibration.rms};
    for (const double amount : amounts) {
        if (!isSmall(amount) || amount < 0.0) return "a statistic is not finite or below 0";
    }
    if (!(calibration.coverage >= 0.0 && calibration.coverage <= 1.0)) return "the coverage is none";
    return calibration.views >= 0 ? "" : "the number of views is below 0";
}

}  // namespace orx::plane
