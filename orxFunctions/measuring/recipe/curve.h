// Nominal and measured outlines as polylines of the picture, and probes along them.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_CURVE_H
#define ORXFUNCTIONS_MEASURING_RECIPE_CURVE_H

#include <functional>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/contour_edges.h"
#include "orxFunctions/measuring/recipe/recipe_data.h"

namespace orx::recipes {

// A curve in some frame, over 0 .. 1, and whether it has an inside, a point of which is told.
struct Curve {
    std::function<cv::Point2d(double)> at;
    bool closed = false;
    bool hasInside = false;
    cv::Point2d inside;
};

Curve lineCurve(cv::Point2d from, cv::Point2d to);
// Angles in degrees; a whole turn is closed.
Curve circleCurve(cv::Point2d center, double radius, double startAngle, double sweep);
Curve ellipseCurve(cv::Point2d center, double semiMajor, double semiMinor, double angle);
Curve pathCurve(std::vector<cv::Point2d> path, bool closed);
Curve curveOf(const FeatureSpec& asked);

using ToImage = std::function<cv::Point2d(cv::Point2d)>;

// In the picture, steps of about `spacing` pixels, `least` to `most` of them; empty where a point of it has
// no place there.
std::vector<cv::Point2d> polylineOf(const Curve& curve, const ToImage& toImage, double spacing,
                                    std::size_t least = 2, std::size_t most = 20000);

// Probes at the points of such a polyline, with the curvature that they show. Normals lead out of what has an
// inside, else to the right side of one who walks along the curve on the screen.
std::vector<TEdgeProbe> probesAlong(const Curve& curve, const ToImage& toImage, double spacing,
                                    std::size_t least = 3, std::size_t most = 20000);

double lengthOf(const std::vector<cv::Point2d>& polyline, bool closed);

}  // namespace orx::recipes

#endif
