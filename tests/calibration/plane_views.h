// Cameras of known lenses, and what they see of a target's points.
#ifndef TESTS_CALIBRATION_PLANE_VIEWS_H
#define TESTS_CALIBRATION_PLANE_VIEWS_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "support/plane_scene.h"

namespace test {

inline scenes::PlaneCamera bentCamera() {
    scenes::PlaneCamera camera;
    camera.size = {1280, 960};
    camera.fx = 2010;
    camera.fy = 2003;
    camera.cx = 652;
    camera.cy = 471;
    camera.k1 = -0.18;
    camera.k2 = 0.11;
    camera.p1 = 4e-4;
    camera.p2 = -6e-4;
    return camera;
}

// A calibration that is the camera's truth.
inline orx::TPlaneCalibration truthOf(const scenes::PlaneCamera& camera) {
    orx::TPlaneCalibration truth;
    truth.status = orx::plOk;
    truth.imageSize = camera.size;
    truth.camera = cv::Matx33d(camera.fx, 0, camera.cx, 0, camera.fy, camera.cy, 0, 0, 1);
    truth.distortion = {camera.k1, camera.k2, camera.p1, camera.p2, camera.k3};
    const cv::Matx33d& r = camera.rotation;
    const cv::Vec3d axis(r(2, 1) - r(1, 2), r(0, 2) - r(2, 0), r(1, 0) - r(0, 1));
    const double sine = cv::norm(axis) / 2;
    const double angle = std::atan2(sine, (cv::trace(r) - 1) / 2);
    truth.rotation = sine > 0 ? axis * (angle / (2 * sine)) : cv::Vec3d();
    truth.translation = camera.translation;
    return truth;
}

// Corners as a finder without fault would report them, with noise.
inline orx::TTargetView cornersSeen(const scenes::PlaneCamera& camera, int columns, int rows, double pitch,
                                    double noise, cv::RNG& random) {
    orx::TTargetView view;
    view.found = true;
    view.imageSize = camera.size;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const cv::Point2d place(column * pitch, row * pitch);
            view.plane.push_back(place);
            view.pixels.push_back(camera.project(place) +
                                  cv::Point2d(random.gaussian(noise), random.gaussian(noise)));
            view.deviations.push_back(noise > 0 ? noise : 0.01);
        }
    }
    return view;
}

// Eight views of an 11 x 8 board, tilted to all sides; the first is that of the parts' plane.
inline std::vector<scenes::PlaneCamera> eightPoses(const scenes::PlaneCamera& camera) {
    std::vector<scenes::PlaneCamera> poses{scenes::tilted(camera, {50, 35}, 260, 12, 20, 3)};
    for (int i = 0; i < 7; ++i)
        poses.push_back(scenes::tilted(camera, {50, 35}, 270 + 5 * i, 25 + i, 51 * i, 4 * i - 12));
    return poses;
}

inline std::vector<orx::TTargetView> eightViews(const scenes::PlaneCamera& camera, double noise,
                                                cv::RNG& random) {
    std::vector<orx::TTargetView> views;
    for (const scenes::PlaneCamera& pose : eightPoses(camera))
        views.push_back(cornersSeen(pose, 11, 8, 10, noise, random));
    return views;
}

}  // namespace test

#endif
