// Pictures of a plate on a tilted plane, seen through a lens: all of its geometry is known in millimetres.
#ifndef TESTS_MEASURING_TILTED_PLATE_H
#define TESTS_MEASURING_TILTED_PLATE_H

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace tilted_plate {

constexpr double kPi = 3.141592653589793;

// The plate: a rectangle with four holes, in millimetres about its middle.
struct Hole {
    cv::Point2d center;
    double radius;
};
inline const std::vector<Hole>& holes() {
    static const std::vector<Hole> kHoles{{{-30, -12}, 5}, {{30, -12}, 5}, {{-30, 12}, 3}, {{10, 10}, 8}};
    return kHoles;
}
constexpr double kHalfWidth = 45.0;
constexpr double kHalfHeight = 26.0;

// Above 0 on the plate.
inline double inside(cv::Point2d p) {
    double d = std::min(kHalfWidth - std::abs(p.x), kHalfHeight - std::abs(p.y));
    for (const Hole& hole : holes()) d = std::min(d, cv::norm(p - hole.center) - hole.radius);
    return d;
}

// A camera above a plane that is tilted by `tilt` degrees, about 5 pixels a millimetre.
inline orx::TPlaneCalibration camera(double tilt = 8.0, double turn = 20.0, cv::Point2d shift = {0, 0}) {
    orx::TPlaneCalibration c;
    c.status = orx::plOk;
    c.imageSize = {640, 480};
    c.camera = {1500, 0, 322, 0, 1502, 238, 0, 0, 1};
    c.distortion = {-0.12, 0.05, 4e-4, -3e-4, 0};
    // About z by the turn, after the tilt about x: Rodrigues' vector of the product, by quaternions.
    const double a = tilt * kPi / 360;
    const double b = turn * kPi / 360;
    const cv::Vec3d v(std::sin(a) * std::cos(b), std::sin(a) * std::sin(b), std::cos(a) * std::sin(b));
    const double half = std::acos(std::cos(a) * std::cos(b));
    c.rotation = v * (2 * half / std::max(1e-12, cv::norm(v)));
    c.translation = {shift.x, shift.y, 300};
    return c;
}

struct Exposure {
    double blur = 0.7;
    double noise = 2.0;
    int seed = 1;
};

// The plate at a pose of the plane (millimetres, scale 1), brighter than the ground.
inline cv::Mat render(const orx::TPlaneCalibration& truth, const orx::TPartPose& pose,
                      const Exposure& exposure = {}) {
    // Places in a pixel where an edge is near: a lattice whose steps no direction of an edge shows.
    constexpr int kPlaces = 100;
    constexpr double kGolden = 0.6180339887498949;
    const orx::TPartPose back = orx::invertPose(pose);
    const auto insideAt = [&](double x, double y) {
        return inside(orx::applyPose(back, orx::imageToPlane(truth, {x, y})));
    };
    cv::Mat ideal(truth.imageSize, CV_32F);
    for (int y = 0; y < ideal.rows; ++y) {
        for (int x = 0; x < ideal.cols; ++x) {
            const double middle = insideAt(x, y);
            double share = middle > 0 ? 1 : 0;
            if (std::abs(middle) < 0.4) {  // two pixels
                share = 0;
                for (int i = 0; i < kPlaces; ++i) {
                    const double dx = (i + 0.5) / kPlaces - 0.5;
                    const double dy = std::fmod((i + 0.5) * kGolden, 1.0) - 0.5;
                    share += (insideAt(x + dx, y + dy) > 0 ? 1.0 : 0.0) / kPlaces;
                }
            }
            ideal.at<float>(y, x) = static_cast<float>(60 + 120 * share);
        }
    }
    if (exposure.blur > 0) cv::GaussianBlur(ideal, ideal, cv::Size(13, 13), exposure.blur);
    cv::RNG random(static_cast<std::uint64_t>(exposure.seed) * 7919 + 3);
    cv::Mat noise(ideal.size(), CV_32F);
    random.fill(noise, cv::RNG::NORMAL, 0.0, exposure.noise);
    cv::Mat image;
    cv::Mat(ideal + noise).convertTo(image, CV_8U);
    return image;
}

// A calibration from seven views of a target whose points are found to within `noise` pixels; the plane is
// that of `truth`.
inline orx::TPlaneCalibration calibrated(const orx::TPlaneCalibration& truth, double noise, int seed) {
    cv::RNG random(static_cast<std::uint64_t>(seed) * 104729 + 11);
    std::vector<orx::TTargetView> views;
    for (int v = 0; v < 7; ++v) {
        orx::TPlaneCalibration other = truth;
        if (v > 0) {
            const double turn = v * 60.0;
            other = camera(25.0, turn);
            // The middle of the target stays before the camera.
            other.translation = {-15.0 + 5.0 * v, 10.0 - 4.0 * v, 300.0 + 8.0 * v};
        }
        orx::TTargetView view;
        view.found = true;
        view.imageSize = truth.imageSize;
        for (int row = 0; row < 9; ++row) {
            for (int column = 0; column < 13; ++column) {
                const cv::Point2d p((column - 6) * 8.0, (row - 4) * 8.0);
                const cv::Point2d seen = orx::planeToImage(other, p);
                view.plane.push_back(p);
                view.pixels.push_back(seen + noise * cv::Point2d(random.gaussian(1), random.gaussian(1)));
                view.deviations.push_back(noise);
            }
        }
        views.push_back(view);
    }
    return orx::calibratePlane(views);
}

}  // namespace tilted_plate

#endif
