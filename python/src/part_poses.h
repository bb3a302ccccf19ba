// Poses of parts as tuples of Python.
#ifndef ORXFUNCTIONS_PYTHON_PART_POSES_H
#define ORXFUNCTIONS_PYTHON_PART_POSES_H

#include <tuple>

#include "orxFunctions/matching/part_pose.h"

namespace orxpy {

// x, y, angle, scale
using PoseNumbers = std::tuple<double, double, double, double>;

inline orx::TPartPose poseOf(const PoseNumbers& numbers) {
    const auto [x, y, angle, scale] = numbers;
    return {x, y, angle, scale};
}

inline PoseNumbers numbersOf(const orx::TPartPose& pose) { return {pose.x, pose.y, pose.angle, pose.scale}; }

}  // namespace orxpy

#endif
