// The plain shapes that are asked for and found. Pixels, the centre of the top-left pixel at (0, 0).
#ifndef EXAMPLES_INSPECTION_SHAPES_H
#define EXAMPLES_INSPECTION_SHAPES_H

#include <cmath>
#include <opencv2/core.hpp>

#include "support/angles.h"

namespace inspection {

struct Circle {
    cv::Point2d center;
    double radius = 0.0;

    double distance(cv::Point2d p) const { return std::abs(cv::norm(p - center) - radius); }
};

// The line through `point` along the unit vector `direction`.
struct Line {
    cv::Point2d point;
    cv::Point2d direction;

    cv::Point2d normal() const { return {-direction.y, direction.x}; }
    double signedDistance(cv::Point2d p) const { return normal().dot(p - point); }
    // Degrees in [0, 180), from the x axis towards the y axis.
    double angle() const {
        return std::fmod(std::atan2(direction.y, direction.x) / scenes::kDegree + 360.0, 180.0);
    }
};

// Two parallel lines, with standard uncertainties where they are known, else 0.
struct ParallelLines {
    Line axis;                     // halfway between them
    double width = 0.0;            // the distance between them
    double offsetDeviation = 0.0;  // of the axis, across it, pixels
    double angleDeviation = 0.0;   // degrees
    double widthDeviation = 0.0;   // pixels
};

}  // namespace inspection

#endif
