// What was measured of a feature, in one space: pixels or millimetres.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_SHAPE_H
#define ORXFUNCTIONS_MEASURING_RECIPE_SHAPE_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/measuring/recipe/edge_points.h"
#include "orxFunctions/measuring/recipe/plane.h"
#include "orxFunctions/measuring/relations.h"

namespace orx::recipes {

// One of them counts, as the kind says; the report's `used` is left with the edge points.
struct Shape {
    TFeatureKind kind = fkLine;
    TMeasuredLine line;
    TMeasuredCircle circle;
    TMeasuredEllipse ellipse;
    TMeasuredPoint point;
    TMeasuredValue width;   // of an edge pair
    TMeasuredValue length;  // of a chain
};

// A shape, the same by each shift of the calibration, and what that does to its form.
struct SpaceShape {
    bool valid = false;
    std::string problem;  // where it is not
    Shape shape;
    std::vector<Shape> shifted;
    double rms = 0.0;                 // of the used points, in the space's unit
    std::vector<unsigned char> used;  // for each edge point
};

// `plane` null: in pixels.
SpaceShape fitShape(const EdgePoints& edges, const FeatureSpec& asked, const Plane* plane);

// The outline of a shape as a curve of its space; nothing for a point.
Curve curveOf(const Shape& shape);

// Edge points on the plane in units of `size`, their deviations with them: what fits and zones take, whose
// ranges are those of pixels.
struct PlacedPoints {
    std::vector<cv::Point2d> points;
    std::vector<double> deviations;
    double size = 1.0;  // of the unit: millimetres of an average pixel; 1 in pixels
};
// None where a point has no place.
PlacedPoints placedPoints(const EdgePoints& edges, const Plane* plane);

TMeasuredPoint scaled(TMeasuredPoint point, double factor);
TMeasuredLine scaled(TMeasuredLine line, double factor);
TMeasuredCircle scaled(TMeasuredCircle circle, double factor);
TMeasuredEllipse scaled(TMeasuredEllipse ellipse, double factor);

}  // namespace orx::recipes

#endif
