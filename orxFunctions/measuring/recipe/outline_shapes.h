// The shapes that stand out in a picture: circles, ellipses, lines and arcs of its edge chains.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_OUTLINE_SHAPES_H
#define ORXFUNCTIONS_MEASURING_RECIPE_OUTLINE_SHAPES_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/caliper.h"
#include "orxFunctions/measuring/recipe/part_edges.h"
#include "orxFunctions/measuring/recipe/plane.h"
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
    double length = 0.0;    // pixels
    double contrast = 0.0;  // grey levels
    TEdgePolarity polarity = epAny;
    double room = 0.0;  // pixels across it to the nearest other edge; infinite where none is near
};

// Of the edges that lie within the polygon, the longest first, none twice. Where there is a plane, shapes are
// those on it and in millimetres, but for what is said to be pixels.
std::vector<OutlineShape> findOutlineShapes(const PartEdges& found, const std::vector<cv::Point2d>& polygon,
                                            const Plane* plane, cv::Size picture, double minLength);

}  // namespace orx::recipes

#endif
