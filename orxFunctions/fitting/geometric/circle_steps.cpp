#include "orxFunctions/fitting/geometric/circle_steps.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/geometric/robust_start.h"

namespace orx::geometric {
namespace {

constexpr int kParameters = 3;
// A circle beyond this, in units of the columns, is a line to double precision.
constexpr double kLargestRadius = 1e7;

bool sensible(const Circle& circle) {
    return circle.r > 0.0 && circle.r < kLargestRadius && std::isfinite(circle.x) && std::isfinite(circle.y);
}

}  // namespace

bool circleThrough(cv::Point2d a, cv::Point2d b, cv::Point2d c, Circle& circle) {
    const cv::Point2d p = b - a;
    const cv::Point2d q = c - a;
    const double twice = 2.0 * p.cross(q);
    if (twice == 0.0) return false;
    const cv::Point2d toCenter =
        cv::Point2d(q.y * p.dot(p) - p.y * q.dot(q), p.x * q.dot(q) - q.x * p.dot(p)) / twice;
    circle = {a.x + toCenter.x, a.y + toCenter.y, std::sqrt(toCenter.dot(toCenter))};
    return sensible(circle);
}

// N. Chernov's form, "Circular and Linear Regression" (2010), chapter 5: Newton's method finds the smallest
// root of the characteristic polynomial, from 0 and from below.
bool taubinCircle(const Moments& moments, Circle& circle) {
    if (!(moments.w > 0.0)) return false;
    const double mx = moments.x / moments.w;
    const double my = moments.y / moments.w;
    const double xx = moments.xx / moments.w - mx * mx;
    const double yy = moments.yy / moments.w - my * my;
    const double xy = moments.xy / moments.w - mx * my;
    const double z = xx + yy;
    // Of z' = |p - mean|^2 from the moments of |p|^2.
    const double shift = mx * mx + my * my;
    const double rawXz = moments.xz / moments.w;
    const double rawYz = moments.yz / moments.w;
    const double rawZ = (moments.xx + moments.yy) / moments.w;
    const double xz = rawXz - mx * rawZ - 2.0 * (mx * xx + my * xy);
    const double yz = rawYz - my * rawZ - 2.0 * (mx * xy + my * yy);
    const double zz =
        moments.zz / moments.w - 4.0 * (mx * rawXz + my * rawYz) + 2.0 * shift * rawZ +
        4.0 * (mx * mx * moments.xx + 2.0 * mx * my * moments.xy + my * my * moments.yy) / moments.w -
        4.0 * shift * shift + shift * shift;

    const double spread = xx * yy - xy * xy;
    const double variance = zz - z * z;
    const double a3 = 4.0 * z;
    const double a2 = -3.0 * z * z - zz;
    const double a1 = variance * z + 4.0 * spread * z - xz * xz - yz * yz;
    const double a0 = xz * (xz * yy - yz * xy) + yz * (yz * xx - xz * xy) - variance * spread;
    double root = 0.0;
    double value = a0;
    constexpr int kMostSteps = 20;
    for (int i = 0; i < kMostSteps; ++i) {
        const double next = root - value / (a1 + root * (2.0 * a2 + 3.0 * a3 * root));
        if (next == root || !std::isfinite(next)) break;
        const double nextValue = a0 + next * (a1 + next * (a2 + next * a3));
        if (std::abs(nextValue) >= std::abs(value)) break;
        root = next;
        value = nextValue;
    }
    const double det = root * root - root * z + spread;
    if (det == 0.0) return false;
    const double x = (xz * (yy - root) - yz * xy) / det / 2.0;
    const double y = (yz * (xx - root) - xz * xy) / det / 2.0;
    circle = {x + mx, y + my, std::sqrt(x * x + y * y + z)};
    return sensible(circle);
}

bool circleStep(const CircleSums& sums, double damping, Circle& step, double& fall) {
    const double w = sums.distances.w;
    if (!(w > 0.0)) return false;
    // The radius taken out of the normal equations, the center's two unknowns are left.
    const double mu = sums.u / w;
    const double mv = sums.v / w;
    const double uu = (sums.uu - sums.u * mu) * (1.0 + damping);
    const double vv = (w - sums.uu - sums.v * mv) * (1.0 + damping);
    const double uv = sums.uv - sums.u * mv;
    const double ud = sums.ud - mu * sums.distances.d;
    const double vd = sums.vd - mv * sums.distances.d;
    const double det = uu * vv - uv * uv;
    if (!(det > 0.0)) return false;
    step.x = (ud * vv - vd * uv) / det;
    step.y = (vd * uu - ud * uv) / det;
    step.r = sums.distances.d / w - mu * step.x - mv * step.y;
    fall = step.x * sums.ud + step.y * sums.vd + step.r * sums.distances.d;
    return std::isfinite(step.x) && std::isfinite(step.y) && std::isfinite(step.r);
}

CircleSolution refineCircle(const Columns& points, const Circle& start, const Loss& loss, int maxIterations,
                            double rounding) {
    // Steps that lower the sum of squares by less than this share of the noise (the deviations' square)
    // change nothing that the noise has not changed more.
    constexpr double kSettled = 1e-10;
    constexpr int kStretched = 8;
    const distance_kernels::Kernels& kernels = distance_kernels::chosen();
    const bool plain = loss.kind == lkLeastSquares;
    CircleSolution solution{start, {}, 0, fsNotConverged};
    Circle best = start;
    double damping = 0.0;
    double leastSquaresSum = 0.0;
    for (solution.iterations = 1; solution.iterations <= maxIterations; ++solution.iterations) {
        const CircleSums sums = kernels.circleSums(points, solution.circle, loss);
        const bool worse = plain && solution.iterations > 1 &&
                           !(sums.distances.dd <=
                             leastSquaresSum * (1.0 + 1e-9) + sums.distances.w * 4.0 * rounding * rounding);
        if (worse) {
            damping = std::max(1e-3, 10.0 * damping);
        } else {
            best = solution.circle;
            solution.sums = sums;
            leastSquaresSum = sums.distances.dd;
            damping = damping > 1e-6 ? damping / 10.0 : 0.0;
        }
        Circle step{};
        double fall = 0.0;
        Circle next{};
        for (int attempt = 0;; ++attempt) {
            constexpr int kMostAttempts = 20;
            if (attempt == kMostAttempts || !circleStep(solution.sums, damping, step, fall)) {
                solution.circle = best;
                solution.status = fsCollinear;
                return solution;
            }
            // Losses fall more slowly than their weights tell; in the end the plain step never overshoots.
            const DistanceSums& d = solution.sums.distances;
            const bool stretched = !plain && solution.iterations <= kStretched;
            const double stretch =
                stretched ? std::clamp(d.omega / std::max(d.slope, 1e-300), 1.0, 1.6) : 1.0;
            next = {best.x + stretch * step.x, best.y + stretch * step.y, best.r + stretch * step.r};
            if (next.r > 0.0) break;
            damping = std::max(1e-3, 10.0 * damping);
        }
        solution.circle = next;
        if (!(next.r < kLargestRadius)) {
            solution.status = fsCollinear;
            return solution;
        }
        const double w = solution.sums.distances.w;
        const double noise2 =
            solution.sums.distances.dd / std::max(1.0, solution.sums.distances.used - kParameters);
        const double floor = 4.0 * rounding * std::max(1.0, next.r);
        if (!worse && damping == 0.0 && fall <= std::max(kSettled * noise2, w * floor * floor)) {
            solution.status = fsOk;
            return solution;
        }
    }
    solution.iterations = maxIterations;
    solution.circle = best;
    return solution;
}

namespace {

struct CircleModel {
    using Shape = Circle;
    static constexpr int kParameters = geometric::kParameters;
    static constexpr std::size_t kSample = 3;

    static bool through(const Columns& points, const std::size_t* at, Circle& circle) {
        const auto point = [&](std::size_t i) { return cv::Point2d(points.x[at[i]], points.y[at[i]]); };
        return circleThrough(point(0), point(1), point(2), circle);
    }
    static void distances(const Columns& points, const Circle& circle, double* to) {
        distance_kernels::chosen().circleDistances(points, circle, to);
    }
    static std::size_t within(const Judges& judges, const Circle& c, double most) {
        const double nearest = std::max(0.0, c.r - most);
        const double farthest = c.r + most;
        const inlier_kernels::CircleTest test{c.x, c.y, nearest * nearest, farthest * farthest};
        return inlier_kernels::chosen().countOnCircle(judges.span(), test, judges.count() / 2);
    }
    static bool settleStep(const Columns& points, const Loss& loss, Circle& circle, DistanceSums& sums,
                           double& fall) {
        const CircleSums pass = distance_kernels::chosen().circleSums(points, circle, loss);
        sums = pass.distances;
        Circle step{};
        if (!circleStep(pass, 0.0, step, fall)) return false;
        const Circle next{circle.x + step.x, circle.y + step.y, circle.r + step.r};
        if (!sensible(next)) return false;
        circle = next;
        return true;
    }
};

}  // namespace

bool robustCircle(const Columns& points, int maxIterations, double rounding, Circle& circle, double& scale,
                  int& iterations) {
    return robustStart<CircleModel>(points, maxIterations, rounding, circle, scale, iterations);
}

bool settleCircle(const Columns& points, int maxIterations, double rounding, Circle& circle, double& scale,
                  int& iterations) {
    return settle<CircleModel>(points, maxIterations, kScaleSettled, scaleLimits(scale, rounding), circle,
                               scale, iterations);
}

}  // namespace orx::geometric
