#include "orxFunctions/fitting/geometry.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "orxFunctions/fitting/pixel_span_internal.h"
#include "orxFunctions/fitting/three_points_internal.h"
#include "orxFunctions/fitting/vertex_order_internal.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/foundation/wrapping_internal.h"

namespace orx {
namespace {

// The offset that centres the points: the middle of their extents, towards zero.
cv::Point middleOfExtents(const std::vector<cv::Point>& points) {
    const circle_kernels::Extents e = circle_kernels::chosen().extents(spanOf(points));
    return {(Wrap32(e.lowX) + Wrap32(e.highX)).value() / 2, (Wrap32(e.lowY) + Wrap32(e.highY)).value() / 2};
}

// Sums of the powers of centred coordinates that the algebraic circle needs.
circle_kernels::PowerSums circleSums(const std::vector<cv::Point>& points, cv::Point offset) {
    if (points.size() <= circle_kernels::kMostWrapped) {
        return circle_kernels::chosen().wrappedPowerSums(spanOf(points), offset.x, offset.y);
    }
    // Sums of more points may be rounded, so the order of the additions counts.
    circle_kernels::PowerSums sum = {};
    sum.w = static_cast<double>(points.size());
    for (const cv::Point& p : points) {
        const Wrap32 x = Wrap32(p.x) - Wrap32(offset.x);
        const Wrap32 y = Wrap32(p.y) - Wrap32(offset.y);
        const Wrap32 xx = x * x;
        const Wrap32 yy = y * y;
        sum.x += x.toDouble();
        sum.y += y.toDouble();
        sum.xx += xx.toDouble();
        sum.yy += yy.toDouble();
        sum.xxx += (xx * x).toDouble();
        sum.yyy += (yy * y).toDouble();
        sum.xy += (x * y).toDouble();
        sum.xyy += (x * yy).toDouble();
        sum.xxy += (xx * y).toDouble();
    }
    return sum;
}

}  // namespace

double angleFrom2Points(cv::Point p1, cv::Point p2, TAngleType type) {
    if (p1.x == p2.x) return 90.0;
    if (p1.y == p2.y) return 0.0;
    const double slope = (static_cast<double>(p1.y) - static_cast<double>(p2.y)) /
                         (static_cast<double>(p1.x) - static_cast<double>(p2.x));
    if (type == ANGLE_ABS) return degrees(std::atan(std::abs(slope)));
    const double angle = degrees(std::atan(slope));
    return type == ANGLE_0_180 && angle < 0 ? angle + 180 : angle;
}

double angleToX(cv::Point from, cv::Point to) {
    const double dx = static_cast<double>(to.x) - static_cast<double>(from.x);
    const double dy = static_cast<double>(to.y) - static_cast<double>(from.y);
    if (dy == 0) return dx >= 0 ? 0.0 : 180.0;
    if (dx == 0) return dy < 0 ? 270.0 : 90.0;
    // By a table, since no processor guesses the quadrant of the next point. The angle is never 0 here, so
    // the first 0 changes nothing.
    constexpr double kTurns[] = {0, 360, 180, 180};
    return degrees(std::atan(dy / dx)) + kTurns[2 * (dx < 0) + (dy < 0)];
}

double avoidFloatZero(double v) {
    constexpr double kSmallest = 1e-5;
    if (std::abs(v) < kSmallest) return v >= 0 ? kSmallest : -kSmallest;
    return v;
}

bool isCollinear(cv::Point a, cv::Point b, cv::Point c) {
    const WrapPoint p(a);
    const WrapPoint q(b);
    const WrapPoint r(c);
    return (q.y - p.y) * (r.x - p.x) == (q.x - p.x) * (r.y - p.y);
}

double pointDistance2Line(cv::Point p, cv::Point a, cv::Point b) {
    const double px = p.x;
    const double py = p.y;
    const double ax = a.x;
    const double ay = a.y;
    if (a.x == b.x) return std::abs(px - ax);
    if (a.y == b.y) return std::abs(py - ay);
    const double k = (ay - b.y) / (ax - b.x);
    const double kp = -1 / k;  // slope of the perpendicular through p
    const double c = py - px * kp;
    const double footX = (c - (ay - ax * k)) / (k - kp);
    const double footY = footX * kp + c;
    return std::sqrt((px - footX) * (px - footX) + (py - footY) * (py - footY));
}

bool threePoints2circle(cv::Point p1, cv::Point p2, cv::Point p3, cv::Point3d& out) {
    const Wrap32 x1(p1.x), y1(p1.y), x2(p2.x), y2(p2.y), x3(p3.x), y3(p3.y), two(2);
    const Wrap32 a = x1 * x1 - x2 * x2 - y2 * y2 + y1 * y1;
    const Wrap32 b = x1 * x1 - x3 * x3 - y3 * y3 + y1 * y1;
    const Wrap32 numeratorX = (y1 - y3) * a - (y1 - y2) * b;
    const Wrap32 denominatorX = two * ((x2 - x1) * y3 + (x3 - x2) * y1 + (x1 - x3) * y2);
    const Wrap32 numeratorY = (x1 - x3) * a - (x1 - x2) * b;
    const Wrap32 denominatorY = two * ((y3 - y1) * (x1 - x2) + (x1 - x3) * (y1 - y2));
    // No guard against collinear points, intended: they give an infinite or not-a-number centre.
    const double cx = numeratorX.toDouble() / denominatorX.toDouble();
    const double cy = numeratorY.toDouble() / denominatorY.toDouble();
    const double dx = cx - p1.x;
    const double dy = cy - p1.y;
    out = cv::Point3d(cx, cy, std::sqrt(dy * dy + dx * dx));
    return true;
}

bool threePoints2circle2(cv::Point p1, cv::Point p2, cv::Point p3, cv::Point3d& out) {
    const double x1 = p1.x, y1 = p1.y, x2 = p2.x, y2 = p2.y, x3 = p3.x, y3 = p3.y;
    const double overThird = ((y1 * y1 - y3 * y3) + (x1 * x1 - x3 * x3)) * 0.5;
    const double overSecond = ((y1 * y1 - y2 * y2) + (x1 * x1 - x2 * x2)) * 0.5;
    return circleThrough({p1, p2, p3, overThird, overSecond}, out) ||
           refuse(rcDegenerate, "threePoints2circle2", "(%d, %d), (%d, %d) and (%d, %d) lie on a line", p1.x,
                  p1.y, p2.x, p2.y, p3.x, p3.y);
}

bool fitCircle(std::vector<cv::Point> points, cv::Point3d& out) {
    if (points.size() < 3)
        return refuse(rcTooFew, "fitCircle", "%zu points; at least 3 are taken", points.size());
    const cv::Point offset = middleOfExtents(points);
    const circle_kernels::PowerSums s = circleSums(points, offset);
    const double n = s.w;
    const double C = n * s.xx - s.x * s.x;
    const double D = n * s.xy - s.x * s.y;
    const double E = n * s.xxx + n * s.xyy - (s.xx + s.yy) * s.x;
    const double G = n * s.yy - s.y * s.y;
    const double H = n * s.xxy + n * s.yyy - (s.xx + s.yy) * s.y;
    const double a = (H * D - E * G) / (C * G - D * D);
    const double b = (H * C - E * D) / (D * D - G * C);
    const double c = -(a * s.x + b * s.y + s.xx + s.yy) / n;
    // Collinear points divide by zero here: not-a-number with a true result, intended.
    out = cv::Point3d(offset.x - a / 2, offset.y - b / 2, std::sqrt(a * a + b * b - 4 * c) / 2);
    return true;
}

bool sortPolygonVertexs(std::vector<cv::Point>& pts) {
    if (pts.empty()) return refuse(rcTooFew, "sortPolygonVertexs", "there are no points");
    for (std::size_t i = 1; i < pts.size(); ++i) {
        if (pts[i].y < pts[0].y) std::swap(pts[0], pts[i]);
    }
    const cv::Point base = pts[0];
    std::vector<AngledVertex> others;
    others.reserve(pts.size() - 1);
    for (std::size_t i = 1; i < pts.size(); ++i) {
        const double dx = static_cast<double>(pts[i].x) - base.x;
        const double dy = static_cast<double>(pts[i].y) - base.y;
        // A repeated base vertex has no direction; sorted last it closes the polygon and changes nothing.
        const bool repeated = dx == 0 && dy == 0;
        others.push_back({repeated ? -1.0 : std::acos(dx / std::sqrt(dx * dx + dy * dy)), pts[i]});
    }
    // Among equal angles the one met first comes first.
    sortByFallingAngle(others);
    std::transform(others.begin(), others.end(), pts.begin() + 1,
                   [](const AngledVertex& v) { return v.point; });
    return true;
}

double calcPolygonArea(std::vector<cv::Point> pts) {
    if (pts.size() < 3) {
        refuse(rcTooFew, "calcPolygonArea", "%zu points; at least 3 are taken", pts.size());
        return 0;
    }
    sortPolygonVertexs(pts);
    double twiceArea = 0;
    for (std::size_t i = 0; i < pts.size(); ++i) {
        const WrapPoint p(pts[i]);
        const WrapPoint next(pts[(i + 1) % pts.size()]);
        twiceArea += (p.x * next.y - p.y * next.x).toDouble();
    }
    return std::abs(twiceArea * 0.5);
}

}  // namespace orx
