#include "orxFunctions/measuring/recipe/measure_feature.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::recipes {
namespace {

TMeasuredPoint midpoint(const TMeasuredPoint& a, const TMeasuredPoint& b) {
    TMeasuredPoint point;
    point.status = rsOk;
    point.position = (a.position + b.position) / 2.0;
    point.covariance = 0.25 * (a.covariance + b.covariance);
    point.degreesOfFreedom = std::min(a.degreesOfFreedom, b.degreesOfFreedom);
    return point;
}

double varianceAlong(const TMeasuredPoint& point, cv::Point2d unit) {
    const cv::Vec2d v(unit.x, unit.y);
    return v.dot(point.covariance * v);
}

// The line through two points, told about the place where its offset and its angle are independent.
TMeasuredLine connection(const TMeasuredPoint& a, const TMeasuredPoint& b) {
    TMeasuredLine line;
    const cv::Point2d way = b.position - a.position;
    const double length = cv::norm(way);
    if (!(length > 0.0)) {
        line.status = fsCoincident;
        return line;
    }
    line.status = fsOk;
    line.direction = way / length;
    line.angle = degrees(std::atan2(way.y, way.x));
    const double first = varianceAlong(a, line.normal());
    const double second = varianceAlong(b, line.normal());
    const double share = first + second > 0.0 ? first / (first + second) : 0.5;
    line.point = a.position + share * way;
    line.from = -share * length;
    line.to = (1.0 - share) * length;
    const double angle = degrees(std::sqrt(first + second) / length);
    const double offset = (1.0 - share) * (1.0 - share) * first + share * share * second;
    line.covariance = cv::Matx22d(offset, 0.0, 0.0, angle * angle);
    line.offsetDeviation = std::sqrt(offset);
    line.angleDeviation = angle;
    line.degreesOfFreedom = std::min(a.degreesOfFreedom, b.degreesOfFreedom);
    return line;
}

TMeasuredPoint pointOf(const TIntersections& both, int which) {
    TMeasuredPoint none;
    none.status = both.status;
    const auto i = static_cast<std::size_t>(which);
    return both.valid() && i < both.points.size() ? both.points[i] : none;
}

TMeasuredPoint intersectionOf(const Shape& a, const Shape& b, int which) {
    if (a.kind == fkLine && b.kind == fkLine) return intersection(a.line, b.line);
    if (a.kind == fkLine) return pointOf(intersections(a.line, b.circle), which);
    if (b.kind == fkLine) return pointOf(intersections(b.line, a.circle), which);
    return pointOf(intersections(a.circle, b.circle), which);
}

Shape constructed(const FeatureSpec& asked, const Shape& a, const Shape& b, std::string& problem) {
    Shape shape;
    shape.kind = asked.kind;
    if (asked.construction == Construction::kConnection) {
        shape.line = connection(placeOf(a), placeOf(b));
        if (!shape.line.valid()) problem = fitStatusText(shape.line.status);
        return shape;
    }
    shape.point = asked.construction == Construction::kMidpoint ? midpoint(placeOf(a), placeOf(b))
                                                                : intersectionOf(a, b, asked.which);
    if (!shape.point.valid()) problem = relationStatusText(shape.point.status);
    return shape;
}

SpaceShape constructedIn(const FeatureSpec& asked, const SpaceShape& a, const SpaceShape& b) {
    SpaceShape result;
    if (!a.valid || !b.valid) {
        result.problem = a.valid ? b.problem : a.problem;
        return result;
    }
    result.shape = constructed(asked, a.shape, b.shape, result.problem);
    // By every shift both are moved alike.
    for (std::size_t k = 0; k < std::min(a.shifted.size(), b.shifted.size()); ++k) {
        result.shifted.push_back(constructed(asked, a.shifted[k], b.shifted[k], result.problem));
    }
    result.valid = result.problem.empty();
    return result;
}

}  // namespace

TMeasuredPoint placeOf(const Shape& shape) {
    if (shape.kind == fkPoint) return shape.point;
    return shape.kind == fkEllipse ? centerOf(shape.ellipse) : centerOf(shape.circle);
}

MeasuredFeature constructFeature(const FeatureSpec& asked, const MeasuredFeature& a, const MeasuredFeature& b,
                                 const Spaces& spaces) {
    MeasuredFeature result;
    if (!a.measured || !b.measured) {
        result.problem = "is made of what was not measured";
        return result;
    }
    if (spaces.plane != nullptr) result.millimetres = constructedIn(asked, a.millimetres, b.millimetres);
    if (spaces.pixels) result.pixels = constructedIn(asked, a.pixels, b.pixels);
    const SpaceShape& told = result.in(spaces.plane != nullptr);
    result.problem = told.problem;
    result.measured = told.valid;
    if (!result.measured) return result;
    const ToImage toImage = [&](cv::Point2d p) {
        return spaces.plane != nullptr ? spaces.plane->toImage(p) : p;
    };
    if (asked.kind == fkPoint) {
        result.outline = {toImage(told.shape.point.position)};
    } else {
        result.outline = polylineOf(curveOf(told.shape), toImage, 3.0);
    }
    return result;
}

}  // namespace orx::recipes
