#include "orxFunctions/foundation/quadrilateral.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "orxFunctions/foundation/wrapping_internal.h"

namespace orx {
namespace {

// The z component of (b - a) x (p - a).
std::int32_t turn(cv::Point from, cv::Point to, cv::Point toPoint) {
    const WrapPoint a(from);
    const WrapPoint b(to);
    const WrapPoint p(toPoint);
    return ((b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x)).value();
}

}  // namespace

bool isPointInRect(cv::Point p, cv::Point a, cv::Point b, cv::Point c, cv::Point d) {
    const std::int32_t turns[] = {turn(a, b, p), turn(b, c, p), turn(c, d, p), turn(d, a, p)};
    const auto positive = [](std::int32_t t) { return t > 0; };
    const auto negative = [](std::int32_t t) { return t < 0; };
    return std::all_of(std::begin(turns), std::end(turns), positive) ||
           std::all_of(std::begin(turns), std::end(turns), negative);
}

}  // namespace orx
