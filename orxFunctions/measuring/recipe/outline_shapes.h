// The shapes that stand out in a picture: circles, ellipses, lines and arcs of its edge chains.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_OUTLINE_SHAPES_H
#define ORXFUNCTIONS_MEASURING_RECIPE_OUTLINE_SHAPES_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/caliper.h"
#include "orxFunctions/measuring/recipe/picture.h"
#include "orxFunctions/measuring/recipe_result.h"

namespace orx::recipes {

struct OutlineShape {
    TFeatureKind kind = fkLine;
    cv::Point2d from;  // line
    cv::Point2d to;
    cv::Point2d center;
    double radius = 0.0;
    double startAngle = 0.0;
    double sweep = 360.0;
    double semiMinor = 0.0;  // ellipse; `radius` is the other half axis
    double angle = 0.0;
    double length = 0.0;  // pixels
    TEdgePolarity polarity = epAny;
};

// The longest first, none twice.
std::vector<OutlineShape> findOutlineShapes(const Picture& picture, const cv::Rect& region, double minLength);

}  // namespace orx::recipes

#endif
