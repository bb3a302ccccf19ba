#include "orxFunctions/segmentation/segment_circle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/fitting/drawing_internal.h"
#include "orxFunctions/fitting/three_points_internal.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/segmentation/splitting/arc_fit.h"

namespace orx {
namespace {

constexpr const char* kConstructor = "TSegemetCircle";
constexpr const char* kFitted = "generateCircleWithTurkey";

// The circle through three points.
bool setCircle(TSegemetCircle& arc, const std::array<cv::Vec2i, 3>& points, const char* function) {
    const auto& [p1, p2, p3] = points;
    const double x1 = p1[0], y1 = p1[1], x2 = p2[0], y2 = p2[1], x3 = p3[0], y3 = p3[1];
    const double overThird = (y1 * y1 - y3 * y3 + x1 * x1 - x3 * x3) / 2;
    const double overSecond = (y1 * y1 - y2 * y2 + x1 * x1 - x2 * x2) / 2;
    cv::Point3d circle(-1, -1, -1);
    const bool found = circleThrough({{x1, y1}, {x2, y2}, {x3, y3}, overThird, overSecond}, circle);
    arc.center = {circle.x, circle.y};
    arc.radius = circle.z;
    if (!found)
        return refuse(rcDegenerate, function, "(%d, %d), (%d, %d) and (%d, %d) lie on a line", p1[0], p1[1],
                      p2[0], p2[1], p3[0], p3[1]);
    arc.startPoint = p1;
    arc.endPoint = p3;
    return true;
}

bool isFinite(const TSegemetCircle& arc) {
    return std::isfinite(arc.center.x) && std::isfinite(arc.center.y) && std::isfinite(arc.radius);
}

// Keeps why the points of an arc determine no circle.
void tellFit(const TSegemetCircle& arc, const char* function) {
    constexpr std::size_t kFewest = 3;
    if (arc.points.size() < kFewest) {
        refuse(rcTooFew, function, "%zu points; at least %zu are taken", arc.points.size(), kFewest);
    } else if (!isFinite(arc)) {
        refuse(rcDegenerate, function, "%zu points lie on a line or in one place", arc.points.size());
    }
}

}  // namespace

TSegemetCircle::TSegemetCircle(cv::Vec2i p1, cv::Vec2i p2, cv::Vec2i p3) {
    setCircle(*this, {p1, p2, p3}, kConstructor);
}

TSegemetCircle::TSegemetCircle(TSegemetLine& line) {
    splitting::fitArc(*this, line);
    tellFit(*this, kConstructor);
}

TSegemetCircle::TSegemetCircle(TSegemetLine& l1, TSegemetLine& l2, double maxRadiusBound,
                               double minRadiusBound, double errorBound) {
    splitting::setBounds(*this, {maxRadiusBound, minRadiusBound, errorBound});
    splitting::fitArc(*this, l1, l2);
    tellFit(*this, kConstructor);
}

TSegemetCircle::TSegemetCircle(TSegemetCircle& c1, TSegemetCircle& c2, double maxRadiusBound,
                               double minRadiusBound, double errorBound, bool /*ignored, intended*/) {
    splitting::setBounds(*this, {maxRadiusBound, minRadiusBound, errorBound});
    splitting::fitArc(*this, c1, c2);
    tellFit(*this, kConstructor);
}

TSegemetCircle::TSegemetCircle(TSegemetCircle& c, TSegemetLine& l, double maxRadiusBound,
                               double minRadiusBound, double errorBound, bool reversed) {
    splitting::setBounds(*this, {maxRadiusBound, minRadiusBound, errorBound});
    splitting::fitArc(*this, c, l, reversed);
    tellFit(*this, kConstructor);
}

void TSegemetCircle::generateCircle(cv::Vec2i p1, cv::Vec2i p2, cv::Vec2i p3) {
    setCircle(*this, {p1, p2, p3}, "generateCircle");
}

void TSegemetCircle::generateCircle(TSegemetLine& l1, TSegemetLine& l2) {
    if (!setCircle(*this, {l1.startPoint, l1.endPoint, l2.endPoint}, "generateCircle")) return;
    points = l1.points;
    points.insert(points.end(), l2.points.begin(), l2.points.end());
    fitError = splitting::largestDeviation(*this, points);
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

void TSegemetCircle::generateCircleWithTurkey(TSegemetLine& line) {
    splitting::fitArc(*this, line);
    tellFit(*this, kFitted);
}

void TSegemetCircle::generateCircleWithTurkey(TSegemetLine& l1, TSegemetLine& l2) {
    splitting::fitArc(*this, l1, l2);
    tellFit(*this, kFitted);
}

void TSegemetCircle::generateCircleWithTurkey(TSegemetCircle& c1, TSegemetCircle& c2,
                                              bool /*ignored, intended*/) {
    splitting::fitArc(*this, c1, c2);
    tellFit(*this, kFitted);
}

void TSegemetCircle::generateCircleWithTurkey(TSegemetCircle& c, TSegemetLine& l, bool reversed) {
    splitting::fitArc(*this, c, l, reversed);
    tellFit(*this, kFitted);
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

double TSegemetCircle::point2CircleDist(cv::Point2d p) { return splitting::outlineDistance(*this, p); }

double TSegemetCircle::point2CircleDistacne(std::vector<cv::Point> pts) {
    constexpr const char* kName = "point2CircleDistacne";
    if (pts.empty()) {
        refuse(rcTooFew, kName, "there are no points");
    } else if (!isFinite(*this)) {
        refuse(rcNotFinite, kName, "the circle at (%g, %g) has a radius of %g", center.x, center.y, radius);
    }
    return splitting::largestDeviation(*this, pts);
}

void TSegemetCircle::displayPionts(cv::Mat& image, cv::Vec3b colour) {
    if (!takesDrawing(image, "displayPionts")) return;
    const cv::Scalar color(colour[0], colour[1], colour[2]);
    for (const cv::Point& p : points) cv::circle(image, p, 2, color, 1, cv::LINE_8);
}

}  // namespace orx
