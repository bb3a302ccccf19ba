#include "orxFunctions/calibration/pose.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iostream>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx {
namespace {

cv::Matx33d rotationAbout(char axis, const cv::Matx13d& degrees) {
    const double angle = degrees(axis - 'x') * kRadiansPerDegree;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    if (axis == 'x') return {1, 0, 0, 0, c, -s, 0, s, c};
    if (axis == 'y') return {c, 0, s, 0, 1, 0, -s, 0, c};
    return {c, -s, 0, s, c, 0, 0, 0, 1};
}

bool isPermutationOfAxes(const std::string& sequence) {
    std::string sorted = sequence;
    std::sort(sorted.begin(), sorted.end());
    return sorted == "xyz";
}

}  // namespace

cv::Mat TPoint6DToMatrix::Point6D2Matrix44(zul::TPoint6D pose) {
    // Headers over what is here: a matrix of its own would cost more than its numbers.
    double translation[] = {pose.x, pose.y, pose.z};
    double degrees[] = {pose.rx, pose.ry, pose.rz};
    return R_T2HomogeneousMatrix(eulerAngleToRotateMatrix(cv::Mat(1, 3, CV_64F, degrees), "zyx"),
                                 cv::Mat(3, 1, CV_64F, translation));
}

cv::Mat TPoint6DToMatrix::eulerAngleToRotateMatrix(const cv::Mat& eulerAngle, const std::string& sequence) {
    if (eulerAngle.rows != 1 || eulerAngle.cols != 3) {
        cv::error(cv::Error::StsAssert, "eulerAngle.rows == 1 && eulerAngle.cols == 3",
                  "orx::TPoint6DToMatrix::eulerAngleToRotateMatrix", __FILE__, __LINE__);
    }
    cv::Matx33d product = cv::Matx33d::zeros();
    if (isPermutationOfAxes(sequence)) {
        const cv::Matx13d degrees = eulerAngle;
        // Intended: the letters are read from the last to the first.
        product = rotationAbout(sequence[2], degrees) * rotationAbout(sequence[1], degrees) *
                  rotationAbout(sequence[0], degrees);
    } else {
        std::cout << "Euler Angle Sequence string is wrong...";
    }
    cv::Mat rotation(product);
    if (!isRotatedMatrix(rotation)) {
        std::cout << "Euler Angle convert to RotatedMatrix failed..." << std::endl;
        std::exit(-1);  // NOLINT(concurrency-mt-unsafe): stated behaviour, see the header
    }
    return rotation;
}

bool TPoint6DToMatrix::isRotatedMatrix(cv::Mat& rotation) {
    const cv::Matx33d r = rotation;
    return cv::norm(cv::Matx33d::eye() - r.t() * r, cv::NORM_L2) < 1e-6;
}

cv::Mat TPoint6DToMatrix::R_T2HomogeneousMatrix(const cv::Mat& rotation, const cv::Mat& translation) {
    const cv::Matx33d r = rotation;
    const cv::Matx31d t = translation;
    cv::Mat transform(4, 4, CV_64F);
    for (int i = 0; i < 3; ++i) {
        double* const row = transform.ptr<double>(i);
        for (int j = 0; j < 3; ++j) row[j] = r(i, j);
        row[3] = t(i);
    }
    double* const last = transform.ptr<double>(3);
    std::fill(last, last + 3, 0.0);
    last[3] = 1;
    return transform;
}

}  // namespace orx
