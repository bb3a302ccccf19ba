// The circle through three points, in doubles.
#ifndef ORXFUNCTIONS_FITTING_THREE_POINTS_INTERNAL_H
#define ORXFUNCTIONS_FITTING_THREE_POINTS_INTERNAL_H

#include <cmath>
#include <opencv2/core.hpp>

namespace orx {

// The points, and half by how much the squared distance of the first from the origin exceeds those of the
// third and of the second. The callers sum these themselves: beyond 4.7e7 pixels from the origin the order
// shows in the last bit.
struct ThreePoints {
    cv::Point2d p1, p2, p3;
    double overThird;
    double overSecond;
};

// Centre and radius. False for collinear points (determinant below 1e-5); `out` is then untouched.
inline bool circleThrough(const ThreePoints& t, cv::Point3d& out) {
    const cv::Point2d& a = t.p1;
    const cv::Point2d& b = t.p2;
    const cv::Point2d& c = t.p3;
    const double det = (a.x - c.x) * (a.y - b.y) - (a.y - c.y) * (a.x - b.x);
    if (std::abs(det) < 1e-5) return false;
    const double x = -(t.overSecond * (a.y - c.y) - t.overThird * (a.y - b.y)) / det;
    const double y = -(t.overThird * (a.x - b.x) - t.overSecond * (a.x - c.x)) / det;
    out = {x, y, std::hypot(a.x - x, a.y - y)};
    return true;
}

}  // namespace orx

#endif
