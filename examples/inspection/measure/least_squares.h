// Least-squares shapes through sub-pixel points. Reentrant.
#ifndef EXAMPLES_INSPECTION_LEAST_SQUARES_H
#define EXAMPLES_INSPECTION_LEAST_SQUARES_H

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

namespace inspection {

struct Circle {
    cv::Point2d center;
    double radius = 0.0;

    double distance(cv::Point2d p) const;  // from the outline
};

// The line through `point` along the unit vector `direction`.
struct Line {
    cv::Point2d point;
    cv::Point2d direction;

    cv::Point2d normal() const { return {-direction.y, direction.x}; }
    double signedDistance(cv::Point2d p) const;
    double angle() const;  // degrees in [0, 180), from the x axis towards the y axis
};

// The circle with the least sum of squared distances, by Gauss-Newton steps from `start`. Nothing for fewer
// than 3 points or when the steps run away (points on a line).
std::optional<Circle> fitCircleFrom(const Circle& start, const std::vector<cv::Point2d>& points);

// The line with the least sum of squared perpendicular distances. Nothing for fewer than 2 distinct points.
std::optional<Line> fitLineThrough(const std::vector<cv::Point2d>& points);

// Two parallel lines with the least sum of squared distances, each through its own points.
struct ParallelLines {
    Line axis;           // halfway between them
    double width = 0.0;  // the distance between them
};
std::optional<ParallelLines> fitParallelLines(const std::vector<cv::Point2d>& first,
                                              const std::vector<cv::Point2d>& second);

}  // namespace inspection

#endif
