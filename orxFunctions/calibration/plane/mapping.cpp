#include "orxFunctions/calibration/plane/mapping.h"

#include <cmath>

namespace orx::plane {
namespace {

// Maps through a homography; false for what lies behind.
bool through(const cv::Matx33d& map, cv::Point2d from, cv::Point2d& to, cv::Matx22d* derivative) {
    const double depth = map(2, 0) * from.x + map(2, 1) * from.y + map(2, 2);
    if (!(depth > 0.0)) return false;
    to = cv::Point2d((map(0, 0) * from.x + map(0, 1) * from.y + map(0, 2)) / depth,
                     (map(1, 0) * from.x + map(1, 1) * from.y + map(1, 2)) / depth);
    if (derivative != nullptr) {
        *derivative = cv::Matx22d(map(0, 0) - to.x * map(2, 0), map(0, 1) - to.x * map(2, 1),
                                  map(1, 0) - to.y * map(2, 0), map(1, 1) - to.y * map(2, 1)) *
                      (1.0 / depth);
    }
    return true;
}

bool isFinite(cv::Point2d p) { return std::isfinite(p.x) && std::isfinite(p.y); }

cv::Matx22d inverse(const cv::Matx22d& m) {
    const double determinant = m(0, 0) * m(1, 1) - m(0, 1) * m(1, 0);
    return cv::Matx22d(m(1, 1), -m(0, 1), -m(1, 0), m(0, 0)) * (1.0 / determinant);
}

}  // namespace

cv::Matx33d rotationMatrix(const cv::Vec3d& vector) {
    const double angle = cv::norm(vector);
    // sin(a) / a and (1 - cos(a)) / a^2, near 0 by their series.
    const double s = angle > 1e-4 ? std::sin(angle) / angle : 1.0 - angle * angle / 6.0;
    const double half = std::sin(0.5 * angle);
    const double c = angle > 1e-4 ? 2.0 * half * half / (angle * angle) : 0.5 - angle * angle / 24.0;
    const double x = vector[0];
    const double y = vector[1];
    const double z = vector[2];
    return cv::Matx33d(1.0 - c * (y * y + z * z), c * x * y - s * z, c * x * z + s * y,  //
                       c * x * y + s * z, 1.0 - c * (x * x + z * z), c * y * z - s * x,  //
                       c * x * z - s * y, c * y * z + s * x, 1.0 - c * (x * x + y * y));
}

Mapping::Mapping(const TPlaneCalibration& calibration) : hasLens_(calibration.lens) {
    if (!calibration.valid()) return;
    if (hasLens_) {
        const cv::Matx33d r = rotationMatrix(calibration.rotation);
        const cv::Vec3d& t = calibration.translation;
        fromPlane_ = cv::Matx33d(r(0, 0), r(0, 1), t[0], r(1, 0), r(1, 1), t[1], r(2, 0), r(2, 1), t[2]);
        const cv::Matx33d& camera = calibration.camera;
        fx_ = camera(0, 0);
        fy_ = camera(1, 1);
        cx_ = camera(0, 2);
        cy_ = camera(1, 2);
        const cv::Vec<double, 5>& d = calibration.distortion;
        lens_ = Lens{d[0], d[1], d[2], d[3], d[4]};
    } else {
        fromPlane_ = calibration.homography;
    }
    bool invertible = false;
    toPlane_ = fromPlane_.inv(cv::DECOMP_LU, &invertible);
    usable_ = invertible && fx_ > 0.0 && fy_ > 0.0;
}

bool Mapping::toPlane(cv::Point2d pixel, cv::Point2d& millimetres, cv::Matx22d* derivative) const {
    if (!usable_ || !isFinite(pixel)) return false;
    if (!hasLens_) return through(toPlane_, pixel, millimetres, derivative) && isFinite(millimetres);
    cv::Point2d ray;
    if (!undistorted(lens_, {(pixel.x - cx_) / fx_, (pixel.y - cy_) / fy_}, ray)) return false;
    cv::Matx22d onPlane;
    if (!through(toPlane_, ray, millimetres, &onPlane) || !isFinite(millimetres)) return false;
    if (derivative != nullptr) {
        cv::Matx22d bending;
        distorted(lens_, ray, &bending);
        *derivative = onPlane * inverse(bending) * cv::Matx22d(1.0 / fx_, 0, 0, 1.0 / fy_);
    }
    return true;
}

bool Mapping::toImage(cv::Point2d millimetres, cv::Point2d& pixel, cv::Matx22d* derivative) const {
    if (!usable_ || !isFinite(millimetres)) return false;
    if (!hasLens_) return through(fromPlane_, millimetres, pixel, derivative) && isFinite(pixel);
    cv::Point2d ray;
    cv::Matx22d ofRay;
    if (!through(fromPlane_, millimetres, ray, &ofRay) || !isUnfolded(lens_, ray)) return false;
    cv::Matx22d bending;
    const cv::Point2d seen = distorted(lens_, ray, &bending);
    pixel = cv::Point2d(cx_ + fx_ * seen.x, cy_ + fy_ * seen.y);
    if (derivative != nullptr) *derivative = cv::Matx22d(fx_, 0, 0, fy_) * bending * ofRay;
    return isFinite(pixel);
}

}  // namespace orx::plane
