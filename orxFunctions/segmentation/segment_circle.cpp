#include "orxFunctions/segmentation/segment_circle.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/fitting/circle_fit.h"
#include "orxFunctions/fitting/three_points_internal.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx {
namespace {

cv::Vec2i toVec(cv::Point p) { return {p.x, p.y}; }

}  // namespace

TSegemetCircle::TSegemetCircle(cv::Vec2i p1, cv::Vec2i p2, cv::Vec2i p3) { generateCircle(p1, p2, p3); }

TSegemetCircle::TSegemetCircle(TSegemetLine& line) { generateCircleWithTurkey(line); }

TSegemetCircle::TSegemetCircle(TSegemetLine& l1, TSegemetLine& l2, double maxRadiusBound,
                               double minRadiusBound, double errorBound) {
    setBounds(maxRadiusBound, minRadiusBound, errorBound);
    generateCircleWithTurkey(l1, l2);
}

TSegemetCircle::TSegemetCircle(TSegemetCircle& c1, TSegemetCircle& c2, double maxRadiusBound,
                               double minRadiusBound, double errorBound, bool flag) {
    setBounds(maxRadiusBound, minRadiusBound, errorBound);
    generateCircleWithTurkey(c1, c2, flag);
}

TSegemetCircle::TSegemetCircle(TSegemetCircle& c, TSegemetLine& l, double maxRadiusBound,
                               double minRadiusBound, double errorBound, bool reversed) {
    setBounds(maxRadiusBound, minRadiusBound, errorBound);
    generateCircleWithTurkey(c, l, reversed);
}

void TSegemetCircle::setBounds(double maxRadiusBound, double minRadiusBound, double errorBound) {
    if (maxRadiusBound > 0) maxRadius = maxRadiusBound;
    if (minRadiusBound > 0) minRadius = minRadiusBound;
    errThreshold = errorBound;  // always, intended
}

void TSegemetCircle::generateCircle(cv::Vec2i p1, cv::Vec2i p2, cv::Vec2i p3) {
    const double x1 = p1[0], y1 = p1[1], x2 = p2[0], y2 = p2[1], x3 = p3[0], y3 = p3[1];
    const double overThird = (y1 * y1 - y3 * y3 + x1 * x1 - x3 * x3) / 2;
    const double overSecond = (y1 * y1 - y2 * y2 + x1 * x1 - x2 * x2) / 2;
    cv::Point3d circle(-1, -1, -1);
    const bool found = circleThrough({{x1, y1}, {x2, y2}, {x3, y3}, overThird, overSecond}, circle);
    center = {circle.x, circle.y};
    radius = circle.z;
    if (!found) return;
    startPoint = p1;
    endPoint = p3;
}

void TSegemetCircle::generateCircle(TSegemetLine& l1, TSegemetLine& l2) {
    generateCircle(l1.startPoint, l1.endPoint, l2.endPoint);
    if (radius < 0) return;
    points = l1.points;
    points.insert(points.end(), l2.points.begin(), l2.points.end());
    fitError = largestDeviation(points);
    firstMaxDist = l1.maxDist;
    secondMaxDist = l2.maxDist;
    partMaxDist = std::min(l1.maxDist, l2.maxDist);
    if (partMaxDist >= fitError) {
        isCircle = true;
        l1.usedByCircle = true;
        l2.usedByCircle = true;
    }
    getCircleAngle(l1.startPoint, l1.endPoint, l2.endPoint);
}

void TSegemetCircle::setParts(const std::vector<cv::Point>& first, const std::vector<cv::Point>& second) {
    firstPoints = first;
    secondPoints = second;
    // Not from the arguments: an arc may be grown from itself.
    points.clear();
    points.reserve(firstPoints.size() + secondPoints.size());
    points.insert(points.end(), firstPoints.begin(), firstPoints.end());
    points.insert(points.end(), secondPoints.begin(), secondPoints.end());
}

void TSegemetCircle::fitToPoints() {
    // The first parameter is the weight function (biweight), the second its constant in pixels.
    TCircleFit_WeightedLeastSquares fitter;
    fitter.setPoints(points);
    fitter.setParams({5.0, 10.0});
    const TCircle circle = fitter.fit();
    center = {circle.x, circle.y};
    radius = circle.r;
    fitError = largestDeviation(points);
}

bool TSegemetCircle::radiusIsWithinBounds() const { return maxRadius > radius && radius > minRadius; }

void TSegemetCircle::setAnglesFromParts() {
    if (firstPoints.empty() || secondPoints.empty()) return;
    getCircleAngle(toVec(firstPoints.front()), toVec(firstPoints.back()), toVec(secondPoints.back()));
}

void TSegemetCircle::generateCircleWithTurkey(TSegemetLine& line) {
    points = line.points;
    firstMaxDist = line.maxDist;
    fitToPoints();
    if (line.maxDist >= fitError) {
        isCircle = true;
        line.usedByCircle = true;
    }
    if (line.points.empty()) return;
    getCircleAngle(line.startPoint, toVec(line.points[line.points.size() / 2]), line.endPoint);
}

void TSegemetCircle::generateCircleWithTurkey(TSegemetLine& l1, TSegemetLine& l2) {
    setParts(l1.points, l2.points);
    firstMaxDist = l1.maxDist;
    secondMaxDist = l2.maxDist;
    partMaxDist = std::max(l1.maxDist, l2.maxDist);
    fitToPoints();
    // Strict here and inclusive for an arc and a line, 4.0 here and 4.5 there: intended.
    const bool fits = errThreshold > fitError || (partMaxDist >= fitError && 4.0 > fitError);
    if (fits && radiusIsWithinBounds()) {
        isCircle = true;
        l1.usedByCircle = true;
        l2.usedByCircle = true;
    }
    getCircleAngle(l1.startPoint, l1.endPoint, l2.endPoint);
}

void TSegemetCircle::generateCircleWithTurkey(TSegemetCircle& c1, TSegemetCircle& c2,
                                              bool /*ignored, intended*/) {
    setParts(c1.points, c2.points);
    firstMaxDist = c1.fitError;
    secondMaxDist = c2.fitError;
    partMaxDist = std::max(c1.partMaxDist, c2.partMaxDist);
    fitToPoints();
    // No test of the error, intended.
    if (radiusIsWithinBounds()) {
        isCircle = true;
        c1.isCircle = false;
        c2.isCircle = false;
    }
    setAnglesFromParts();
}

void TSegemetCircle::generateCircleWithTurkey(TSegemetCircle& c, TSegemetLine& l, bool reversed) {
    if (reversed) {
        setParts(l.points, c.points);
    } else {
        setParts(c.points, l.points);
    }
    // The deviations do not swap with the points, intended.
    firstMaxDist = c.fitError;
    secondMaxDist = l.maxDist;
    partMaxDist = std::max(l.maxDist, c.partMaxDist);
    fitToPoints();
    const bool fits = errThreshold >= fitError || (partMaxDist >= fitError && 4.5 >= fitError);
    if (fits && radiusIsWithinBounds()) {
        isCircle = true;
        c.isCircle = false;
        l.usedByCircle = true;
    }
    setAnglesFromParts();
}

double TSegemetCircle::getPointAngle(cv::Vec2i p) {
    const double dx = p[0] - center.x;
    const double dy = p[1] - center.y;
    const double t = degrees(std::abs(std::atan(dy / dx)));
    if (dx >= 0 && dy <= 0) return dx == 0 ? 270 : 360 - t;
    if (dx <= 0 && dy <= 0) return 180 + t;
    if (dx <= 0 && dy >= 0) return dx == 0 ? 90 : 180 - t;
    return t;
}

void TSegemetCircle::getCircleAngle(cv::Vec2i first, cv::Vec2i middle, cv::Vec2i last) {
    const double a1 = getPointAngle(first);
    const double a2 = getPointAngle(middle);
    const double a3 = getPointAngle(last);
    startAngle = std::min(a1, a3);
    endAngle = std::max(a1, a3);
    if (a2 >= startAngle && a2 <= endAngle) return;
    // The arc runs the other way round.
    endAngle -= 360;
    if (startAngle > endAngle) std::swap(startAngle, endAngle);
}

void TSegemetCircle::getAngle2(TSegemetLine& l1, TSegemetLine& l2) {
    const auto direction = [&](const cv::Vec2i& to) {
        return degrees(std::atan2(static_cast<double>(l1.startPoint[1]) - to[1],
                                  static_cast<double>(to[0]) - l1.startPoint[0]));
    };
    startAngle = direction(l1.endPoint);
    endAngle = direction(l2.endPoint);
}

double TSegemetCircle::point2CircleDist(cv::Point2d p) {
    const double dx = p.x - center.x;
    const double dy = p.y - center.y;
    return std::abs(std::sqrt(dx * dx + dy * dy) - radius);
}

double TSegemetCircle::point2CircleDistacne(std::vector<cv::Point> pts) { return largestDeviation(pts); }

double TSegemetCircle::largestDeviation(const std::vector<cv::Point>& pts) {
    double farthest = 0.0;
    for (const cv::Point& p : pts) {
        const double distance = point2CircleDist(p);
        // Written so that not-a-number wins: a degenerate circle must not look like a perfect fit.
        if (!(distance <= farthest)) farthest = distance;
    }
    return farthest;
}

void TSegemetCircle::displayPionts(cv::Mat& image, cv::Vec3b colour) {
    const cv::Scalar color(colour[0], colour[1], colour[2]);
    for (const cv::Point& p : points) cv::circle(image, p, 2, color, 1, cv::LINE_8);
}

}  // namespace orx
