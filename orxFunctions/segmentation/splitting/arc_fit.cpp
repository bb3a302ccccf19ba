#include "orxFunctions/segmentation/splitting/arc_fit.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/circle_fit.h"

namespace orx::splitting {
namespace {

cv::Vec2i toVec(cv::Point p) { return {p.x, p.y}; }

void setParts(TSegemetCircle& arc, const std::vector<cv::Point>& first,
              const std::vector<cv::Point>& second) {
    arc.firstPoints = first;
    arc.secondPoints = second;
    // Not from the arguments: an arc may be grown from itself.
    arc.points.clear();
    arc.points.reserve(arc.firstPoints.size() + arc.secondPoints.size());
    arc.points.insert(arc.points.end(), arc.firstPoints.begin(), arc.firstPoints.end());
    arc.points.insert(arc.points.end(), arc.secondPoints.begin(), arc.secondPoints.end());
}

void fitToPoints(TSegemetCircle& arc) {
    // The first parameter is the weight function (biweight), the second its constant in pixels.
    TCircleFit_WeightedLeastSquares fitter;
    fitter.setPoints(arc.points);
    fitter.setParams({5.0, 10.0});
    const TCircle circle = fitter.fit();
    arc.center = {circle.x, circle.y};
    arc.radius = circle.r;
    arc.fitError = largestDeviation(arc, arc.points);
}

bool radiusIsWithinBounds(const TSegemetCircle& arc) {
    return arc.maxRadius > arc.radius && arc.radius > arc.minRadius;
}

void setAnglesFromParts(TSegemetCircle& arc) {
    if (arc.firstPoints.empty() || arc.secondPoints.empty()) return;
    arc.getCircleAngle(toVec(arc.firstPoints.front()), toVec(arc.firstPoints.back()),
                       toVec(arc.secondPoints.back()));
}

}  // namespace

void setBounds(TSegemetCircle& arc, const ArcBounds& bounds) {
    if (bounds.maxRadius > 0) arc.maxRadius = bounds.maxRadius;
    if (bounds.minRadius > 0) arc.minRadius = bounds.minRadius;
    arc.errThreshold = bounds.error;  // always, intended
}

void fitArc(TSegemetCircle& arc, TSegemetLine& line) {
    arc.points = line.points;
    arc.firstMaxDist = line.maxDist;
    fitToPoints(arc);
    if (line.maxDist >= arc.fitError) {
        arc.isCircle = true;
        line.usedByCircle = true;
    }
    if (line.points.empty()) return;
    arc.getCircleAngle(line.startPoint, toVec(line.points[line.points.size() / 2]), line.endPoint);
}

void fitArc(TSegemetCircle& arc, TSegemetLine& l1, TSegemetLine& l2) {
    setParts(arc, l1.points, l2.points);
    arc.firstMaxDist = l1.maxDist;
    arc.secondMaxDist = l2.maxDist;
    arc.partMaxDist = std::max(l1.maxDist, l2.maxDist);
    fitToPoints(arc);
    // Strict here and inclusive for an arc and a line, 4.0 here and 4.5 there: intended.
    const bool fits =
        arc.errThreshold > arc.fitError || (arc.partMaxDist >= arc.fitError && 4.0 > arc.fitError);
    if (fits && radiusIsWithinBounds(arc)) {
        arc.isCircle = true;
        l1.usedByCircle = true;
        l2.usedByCircle = true;
    }
    arc.getCircleAngle(l1.startPoint, l1.endPoint, l2.endPoint);
}

void fitArc(TSegemetCircle& arc, TSegemetCircle& c1, TSegemetCircle& c2) {
    setParts(arc, c1.points, c2.points);
    arc.firstMaxDist = c1.fitError;
    arc.secondMaxDist = c2.fitError;
    arc.partMaxDist = std::max(c1.partMaxDist, c2.partMaxDist);
    fitToPoints(arc);
    // No test of the error, intended.
    if (radiusIsWithinBounds(arc)) {
        arc.isCircle = true;
        c1.isCircle = false;
        c2.isCircle = false;
    }
    setAnglesFromParts(arc);
}

void fitArc(TSegemetCircle& arc, TSegemetCircle& c, TSegemetLine& l, bool reversed) {
    if (reversed) {
        setParts(arc, l.points, c.points);
    } else {
        setParts(arc, c.points, l.points);
    }
    // The deviations do not swap with the points, intended.
    arc.firstMaxDist = c.fitError;
    arc.secondMaxDist = l.maxDist;
    arc.partMaxDist = std::max(l.maxDist, c.partMaxDist);
    fitToPoints(arc);
    const bool fits =
        arc.errThreshold >= arc.fitError || (arc.partMaxDist >= arc.fitError && 4.5 >= arc.fitError);
    if (fits && radiusIsWithinBounds(arc)) {
        arc.isCircle = true;
        c.isCircle = false;
        l.usedByCircle = true;
    }
    setAnglesFromParts(arc);
}

double outlineDistance(const TSegemetCircle& arc, cv::Point2d p) {
    const double dx = p.x - arc.center.x;
    const double dy = p.y - arc.center.y;
    return std::abs(std::sqrt(dx * dx + dy * dy) - arc.radius);
}

double largestDeviation(const TSegemetCircle& arc, const std::vector<cv::Point>& points) {
    double farthest = 0.0;
    for (const cv::Point& p : points) {
        const double distance = outlineDistance(arc, p);
        // Written so that not-a-number wins: a degenerate circle must not look like a perfect fit.
        if (!(distance <= farthest)) farthest = distance;
    }
    return farthest;
}

}  // namespace orx::splitting
