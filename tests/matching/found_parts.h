// Rendered parts to find, and how far what is found is from the truth.
#ifndef TESTS_MATCHING_FOUND_PARTS_H
#define TESTS_MATCHING_FOUND_PARTS_H

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>

#include "orxFunctions/matching/part_finder.h"
#include "support/part_scene.h"

namespace found_parts {

inline orx::TPartModel taught(scenes::PartKind kind, double noise = 0) {
    const scenes::PartPicture picture = scenes::renderPartAlone(kind, noise);
    orx::TTeachOptions options;
    options.hasReference = true;
    options.reference = {picture.pose.x, picture.pose.y};
    options.direction = picture.pose.angle;
    return orx::teachPart(picture.image, cv::Rect(cv::Point(), picture.image.size()), options);
}

struct PoseError {
    double x = 0;
    double y = 0;
    double angle = 0;  // degrees
    double scale = 0;  // relative
};

inline PoseError errorOf(const orx::TPartPose& pose, const scenes::PlacedPart& truth) {
    const double period = 360.0 / scenes::partShape(truth.kind).symmetry;
    return {pose.x - truth.pose.x, pose.y - truth.pose.y,
            std::remainder(pose.angle - truth.pose.angle, period), pose.scale / truth.pose.scale - 1};
}

// The root of the mean square, and the mean.
class Spread {
  public:
    void add(double value) {
        sum_ += value;
        squares_ += value * value;
        ++count_;
    }
    double rms() const { return std::sqrt(squares_ / std::max(count_, 1)); }
    double mean() const { return sum_ / std::max(count_, 1); }

  private:
    double sum_ = 0;
    double squares_ = 0;
    int count_ = 0;
};

}  // namespace found_parts

#endif
