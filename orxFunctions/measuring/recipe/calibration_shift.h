// How a fitted shape moves with the calibration that placed its points.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_CALIBRATION_SHIFT_H
#define ORXFUNCTIONS_MEASURING_RECIPE_CALIBRATION_SHIFT_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/measuring/recipe/shape.h"

namespace orx::recipes {

// The shape by each shift: the least-squares shape of points that move as the plane's do. A few of the edge
// points speak for all; the plane bends far less than they lie apart. `shape` is in millimetres and valid;
// `used` marks the edge points that it was fitted to. Empty where a point has no place.
std::vector<Shape> shiftedShapes(const Shape& shape, const EdgePoints& edges,
                                 const std::vector<unsigned char>& used, const Plane& plane);

// What each shift adds to the width of the shape's zone, at the most: how differently it moves the points,
// after the shape has moved along.
std::vector<double> formShifts(const Shape& shape, const EdgePoints& edges,
                               const std::vector<unsigned char>& used, const Plane& plane);

}  // namespace orx::recipes

#endif
