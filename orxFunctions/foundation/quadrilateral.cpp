#include "orxFunctions/foundation/quadrilateral.h"

#include <cstdint>

#include "orxFunctions/foundation/wrapping_internal.h"

namespace orx {
namespace {

// The z component of (b - a) x (p - a), from a and b as seen from p: wrapped integers make it the same.
std::int32_t turn(const WrapPoint& a, const WrapPoint& b) { return (a.x * b.y - a.y * b.x).value(); }

}  // namespace

bool isPointInRect(cv::Point p, cv::Point a, cv::Point b, cv::Point c, cv::Point d) {
    const WrapPoint origin(p);
    const auto seen = [&](cv::Point corner) { return WrapPoint(corner) - origin; };
    const WrapPoint from[] = {seen(a), seen(b), seen(c), seen(d)};
    // All four without a branch between them: their signs are hard to guess.
    const std::int32_t first = turn(from[0], from[1]);
    const std::int32_t second = turn(from[1], from[2]);
    const std::int32_t third = turn(from[2], from[3]);
    const std::int32_t fourth = turn(from[3], from[0]);
    const bool right = (first > 0) & (second > 0) & (third > 0) & (fourth > 0);
    const bool left = (first & second & third & fourth) < 0;
    return right | left;
}

}  // namespace orx
