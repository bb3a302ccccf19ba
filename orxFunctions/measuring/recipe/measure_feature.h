// One feature of a recipe, measured in a picture.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_MEASURE_FEATURE_H
#define ORXFUNCTIONS_MEASURING_RECIPE_MEASURE_FEATURE_H

#include <string>
#include <vector>

#include "orxFunctions/measuring/recipe/shape.h"

namespace orx::recipes {

struct Spaces {
    const Plane* plane = nullptr;  // millimetres, where there is one
    bool pixels = true;            // whether pixels are wanted, too
};

struct MeasuredFeature {
    bool measured = false;
    std::string problem;
    EdgePoints edges;
    SpaceShape pixels;
    SpaceShape millimetres;
    std::vector<cv::Point2d> nominal;  // polylines of the picture
    std::vector<cv::Point2d> outline;

    const SpaceShape& in(bool isMillimetres) const { return isMillimetres ? millimetres : pixels; }
};

MeasuredFeature measureFeature(const Picture& picture, const FeatureSpec& asked, const Frame& frame,
                               const Spaces& spaces);

// A feature made of two measured ones.
MeasuredFeature constructFeature(const FeatureSpec& asked, const MeasuredFeature& a, const MeasuredFeature& b,
                                 const Spaces& spaces);

// The place of a point, circle, arc or ellipse.
TMeasuredPoint placeOf(const Shape& shape);

}  // namespace orx::recipes

#endif
