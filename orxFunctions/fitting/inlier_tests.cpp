#include "orxFunctions/fitting/inlier_tests_internal.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace orx {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Non-negative doubles are ordered as their bits are.
std::uint64_t toBits(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

double fromBits(std::uint64_t bits) {
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// The largest double, infinity included, at which `holds`, which is true at 0 and up to some value and false
// beyond. A good guess makes it a matter of two or three evaluations.
template <class Predicate>
double lastThatHolds(double guess, Predicate holds) {
    const std::uint64_t end = toBits(kInfinity) + 1;
    std::uint64_t step = 1;
    std::uint64_t good = 0;
    std::uint64_t bad = end;
    const std::uint64_t start = toBits(guess);
    if (holds(guess)) {
        good = start;
        while (end - good > step && holds(fromBits(good + step))) {
            good += step;
            step *= 2;
        }
        bad = end - good > step ? good + step : end;
    } else {
        bad = start;
        while (bad > step && !holds(fromBits(bad - step))) {
            bad -= step;
            step *= 2;
        }
        good = bad > step ? bad - step : 0;
    }
    while (bad - good > 1) {
        const std::uint64_t middle = good + (bad - good) / 2;
        (holds(fromBits(middle)) ? good : bad) = middle;
    }
    return fromBits(good);
}

inlier_kernels::LineTest plainLine(double a, double b, double c, double limit) {
    return {a, b, c, limit, limit, 0, 0, 0, 0};
}

}  // namespace

inlier_kernels::LineTest lineThrough(cv::Point p, cv::Point q, double extent, double threshold) {
    const double px = p.x, py = p.y, qx = q.x, qy = q.y;
    if (p.x == q.x) return plainLine(1, 0, -px, threshold);
    if (p.y == q.y) return plainLine(0, 1, -py, threshold);
    const double slope = (py - qy) / (px - qx);
    const double across = -1 / slope;
    // How far the two computed distances can lie apart. With u = 2^-53, M = extent and P = |across|, the foot
    // is off by at most 10 u M along x and (18 P + 3) u M along y (c = y - x * across carries P M, and the
    // errors of footX are magnified by P), its distance from the point by (21 P + 27) u M; the rounded slope
    // turns the line by u / 2, worth 2 u M; the normalised residual below is off by at most 20 u M. 64 (1 +
    // P) covers their sum and the rounding of the two limits themselves.
    constexpr double kUnit = 1.0 / (1ULL << 53);
    const double margin = 64 * kUnit * extent * (1 + std::abs(across));
    const double length = std::sqrt((qx - px) * (qx - px) + (qy - py) * (qy - py));
    const double a = (py - qy) / length;
    const double b = (qx - px) / length;
    // A negative threshold, or none, has no inliers.
    const double limit = threshold >= 0 ? threshold : -kInfinity;
    return {a,
            b,
            -(a * px + b * py),
            limit - margin,
            limit + margin,
            across,
            py - px * slope,
            slope - across,
            threshold};
}

inlier_kernels::LineTest lineCloserThan(double slope, double intercept, double tolerance) {
    const double length = std::sqrt(slope * slope + 1);
    const auto holds = [&](double residual) { return residual / length < tolerance; };
    const double limit = holds(0) ? lastThatHolds(std::max(tolerance * length, 0.0), holds) : -kInfinity;
    return plainLine(slope, -1, intercept, limit);
}

inlier_kernels::CircleTest circleWithin(double x, double y, double r, double threshold) {
    // Rounded square roots and differences grow with their operands, so the squared distances of the inliers
    // fill an interval, whose ends are found here once instead of a square root per point.
    const auto notBeyond = [&](double squared) { return std::sqrt(squared) - r <= threshold; };
    const auto tooClose = [&](double squared) { return std::sqrt(squared) - r < -threshold; };
    if (!(threshold >= 0 && r >= 0)) return {x, y, kInfinity, -1};
    const double farthest = lastThatHolds((r + threshold) * (r + threshold), notBeyond);
    if (!tooClose(0)) return {x, y, 0, farthest};
    const double last = lastThatHolds((r - threshold) * (r - threshold), tooClose);
    return {x, y, fromBits(toBits(last) + 1), farthest};
}

inlier_kernels::CircleTest circleCloserThan(double x, double y, double r, double tolerance) {
    return circleWithin(x, y, r, std::nextafter(tolerance, -kInfinity));
}

}  // namespace orx
