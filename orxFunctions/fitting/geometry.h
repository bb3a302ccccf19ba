// Geometric primitives on integer pixel points: angles, distances, circles, polygons.
//
// Points are 32-bit pixels, x to the right and y down; results are doubles. Where a formula is stated in
// 32-bit integers its products wrap around for large coordinates, which is intended: results then are those
// of 32-bit arithmetic. Nothing here refuses degenerate geometry unless stated; it returns the value
// described. All functions are reentrant.
#ifndef ORXFUNCTIONS_FITTING_GEOMETRY_H
#define ORXFUNCTIONS_FITTING_GEOMETRY_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/foundation/enumerations.h"
#include "orxFunctions/foundation/quadrilateral.h"  // isPointInRect, one of these primitives

namespace orx {

// The angle in degrees of the line through two points, y running down as stored, in the range that `type`
// names. Equal x gives 90.0 (two equal points too), else equal y gives 0.0, whatever the type.
ORX_API double angleFrom2Points(cv::Point p1, cv::Point p2, TAngleType type);

// The direction of the vector from -> to in degrees, [0, 360), from the x axis towards the y axis (clockwise
// on the screen). Equal points give 0.0.
ORX_API double angleToX(cv::Point from, cv::Point to);

// Keeps a divisor away from zero: 1e-5 for values in [0, 1e-5), -1e-5 for values in (-1e-5, 0), else the
// value.
ORX_API double avoidFloatZero(double v);

// True when the three points lie on one line, exactly, in 32-bit integers that wrap.
ORX_API bool isCollinear(cv::Point a, cv::Point b, cv::Point c);

// The distance of p from the infinite line through a and b, by the foot of the perpendicular; |p.x - a.x|
// when a and b share their column (equal points included), |p.y - a.y| when they share their row.
ORX_API double pointDistance2Line(cv::Point p, cv::Point a, cv::Point b);

// The circle through three points in 32-bit integers that wrap, as (centre x, centre y, radius). Always true:
// there is deliberately no guard, and collinear points give an infinite or not-a-number centre. Coordinates
// in the thousands overflow the products (radius 900 near (2600, 2100) does): prefer threePoints2circle2
// there.
ORX_API bool threePoints2circle(cv::Point p1, cv::Point p2, cv::Point p3, cv::Point3d& out);

// The same circle in doubles. False for collinear points (rcDegenerate: determinant below 1e-5); `out` is
// then untouched.
ORX_API bool threePoints2circle2(cv::Point p1, cv::Point p2, cv::Point p3, cv::Point3d& out);

// The algebraic least-squares circle x^2 + y^2 + a x + b y + c = 0, as (centre x, centre y, radius). False
// for fewer than 3 points (rcTooFew); `out` is then untouched. Collinear points give not-a-number values and
// true. The products are exact for extents up to 2,500 pixels; beyond, 32 bits wrap. I. Kasa, "A circle
// fitting procedure and its error analysis", IEEE Trans. Instrum. Meas. 25 (1976).
ORX_API bool fitCircle(std::vector<cv::Point> points, cv::Point3d& out);

// Orders the vertices of a convex polygon: the topmost first (the earliest among equals), then by descending
// angle of the ray from it, 180 degrees (left) to 0 (right). False only for an empty list (rcTooFew).
ORX_API bool sortPolygonVertexs(std::vector<cv::Point>& pts);

// The area of a convex polygon whose vertices come in any order; 0 for fewer than 3 points (rcTooFew).
ORX_API double calcPolygonArea(std::vector<cv::Point> pts);

}  // namespace orx

#endif
