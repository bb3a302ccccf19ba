// Prepares what the point kernels compare with, so that a kernel decides by a few multiplications exactly
// what a plain loop would decide by square roots and divisions.
#ifndef ORXFUNCTIONS_FITTING_INLIER_TESTS_INTERNAL_H
#define ORXFUNCTIONS_FITTING_INLIER_TESTS_INTERNAL_H

#include <opencv2/core.hpp>

#include "orxFunctions/fitting/kernels/inlier.h"

namespace orx {

// pointDistance2Line(point, p, q) <= threshold, for points whose coordinates are at most `extent` in size.
inlier_kernels::LineTest lineThrough(cv::Point p, cv::Point q, double extent, double threshold);

// |(slope * x - y) + intercept| / sqrt(slope * slope + 1) < tolerance.
inlier_kernels::LineTest lineCloserThan(double slope, double intercept, double tolerance);

// |sqrt((x - point.x)^2 + (y - point.y)^2) - r| <= threshold.
inlier_kernels::CircleTest circleWithin(double x, double y, double r, double threshold);

// |sqrt((x - point.x)^2 + (y - point.y)^2) - r| < tolerance.
inlier_kernels::CircleTest circleCloserThan(double x, double y, double r, double tolerance);

}  // namespace orx

#endif
