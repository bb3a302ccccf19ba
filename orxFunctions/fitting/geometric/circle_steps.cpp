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

// On the equation |q|^2 / (2 r) - r / 2 = 0 of points q about the center, whose left side is the distance
// near the outline. Of the equation's factor that choice is made which keeps the mean of its gradients'
// length.
bool movedCircle(const Circle& circle, const CircleSums& sums, const Circle& step, double factor,
                 Circle& next) {
    const double dx = factor * step.x;
    const double dy = factor * step.y;
    const double along = (sums.u * dx + sums.v * dy) / sums.distances.w;
    const double s = 1.0 + along / circle.r;
    const double square = circle.r * (circle.r + 2.0 * factor * step.r + along);
    const Circle there{circle.x + dx / s, circle.y + dy / s,
                       std::sqrt((dx * dx + dy * dy) / (s * s) + square / s)};
    if (!sensible(there)) return false;
    next = there;
    return true;
}

namespace {

// Steps that lower the sum of squares by less than this share of the noise (a deviation's square) change
// nothing that the noise has not changed more: the last is taken yet.
constexpr double kSettled = 1e-10;
constexpr double kSettledRobust = 1e-8;
constexpr double kNearlySettled = 1e-5;

// A fall below this is rounding.
double roundingFall(double weight, double rounding, double radius) {
    const double floor = 4.0 * rounding * std::max(1.0, radius);
    return weight * floor * floor;
}

// Levenberg's damped steps from `solution.circle`.
void dampedSteps(const Columns& points, int maxIterations, double rounding, CircleSolution& solution) {
    double damping = 0.0;
    Circle next = solution.circle;
    for (solution.iterations = 1; solution.iterations <= maxIterations; ++solution.iterations) {
        const CircleSums sums = distance_kernels::chosen().circleSums(points, next, leastSquares());
        const double allowed =
            solution.sums.distances.dd * (1.0 + 1e-9) + roundingFall(sums.distances.w, rounding, next.r);
        if (solution.iterations == 1 || sums.distances.dd <= allowed) {
            solution.circle = next;
            solution.sums = sums;
            damping = damping > 1e-6 ? damping / 10.0 : 0.0;
        } else {
            damping = std::max(1e-3, 10.0 * damping);
        }
        Circle step{};
        double fall = 0.0;
        constexpr double kMostDamping = 1e12;
        for (bool taken = false; !taken;) {
            if (damping > kMostDamping || !circleStep(solution.sums, damping, step, fall)) {
                solution.status = fsCollinear;
                return;
            }
            taken = movedCircle(solution.circle, solution.sums, step, 1.0, next);
            if (!taken) damping = std::max(1e-3, 10.0 * damping);
        }
        const DistanceSums& d = solution.sums.distances;
        const double noise2 = d.dd / std::max(1.0, d.used - kParameters);
        if (damping == 0.0 && fall <= std::max(kSettled * noise2, roundingFall(d.w, rounding, next.r))) {
            solution.circle = next;
            solution.status = fsOk;
            return;
        }
    }
    solution.iterations = maxIterations;
}

// Steps with weights renewed each time.
void reweightedSteps(const Columns& points, const Loss& loss, int maxIterations, double rounding,
                     CircleSolution& solution) {
    // At first steps are stretched, since weights tell a steeper fall than there is; later the plain step
    // never overshoots.
    constexpr int kStretched = 8;
    const distance_kernels::Kernels& kernels = distance_kernels::chosen();
    bool nearly = false;
    for (solution.iterations = 1; solution.iterations <= maxIterations; ++solution.iterations) {
        // All sums are wanted of the last pass alone, which is probably this one.
        const auto pass = nearly ? kernels.circleSums : kernels.circleSteps;
        const CircleSums sums = pass(points, solution.circle, loss);
        const DistanceSums& d = sums.distances;
        Circle step{};
        double fall = 0.0;
        solution.status = fsCollinear;
        if (!circleStep(sums, 0.0, step, fall)) return;
        const double steep = std::clamp(d.omega / std::max(d.slope, 1e-300), 1.0, 1.6);
        const double stretch = solution.iterations <= kStretched ? steep : 1.0;
        if (!movedCircle(solution.circle, sums, step, stretch, solution.circle)) return;
        solution.status = fsNotConverged;
        const double noise2 = d.dd / std::max(1.0, d.omega - kParameters);
        const double least = roundingFall(d.w, rounding, solution.circle.r);
        if (nearly && fall <= std::max(kSettledRobust * noise2, least)) {
            solution.sums = sums;
            solution.status = fsOk;
            return;
        }
        nearly = fall <= std::max(kNearlySettled * noise2, least);
    }
    solution.iterations = maxIterations;
    // Searches take a few steps only, and judge where they lead.
    solution.sums = kernels.circleSums(points, solution.circle, loss);
}

}  // namespace

CircleSolution refineCircle(const Columns& points, const Circle& start, const Loss& loss, int maxIterations,
                            double rounding) {
    CircleSolution solution{start, {}, 0, fsNotConverged};
    if (loss.kind == lkLeastSquares) {
        dampedSteps(points, maxIterations, rounding, solution);
    } else {
        reweightedSteps(points, loss, maxIterations, rounding, solution);
    }
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
    static std::size_t within(const inlier_kernels::PointSpan& judges, const Circle& c, double most) {
        const double nearest = std::max(0.0, c.r - most);
        const double farthest = c.r + most;
        const inlier_kernels::CircleTest test{c.x, c.y, nearest * nearest, farthest * farthest};
        return inlier_kernels::chosen().countOnCircle(judges, test, 0);
    }
    static bool settleStep(const Columns& points, const Loss& loss, Circle& circle, DistanceSums& sums,
                           double& fall) {
        const CircleSums pass = distance_kernels::chosen().circleSteps(points, circle, loss);
        sums = pass.distances;
        Circle step{};
        if (!circleStep(pass, 0.0, step, fall)) return false;
        return movedCircle(circle, pass, step, 1.0, circle);
    }
};

}  // namespace

bool robustCircle(const Columns& points, int maxIterations, double rounding, Circle& circle, double& scale,
                  int& iterations) {
    return robustStart<CircleModel>(points, maxIterations, rounding, circle, scale, iterations);
}

bool settleCircle(const Columns& points, int maxIterations, double rounding, Circle& circle, double& scale,
                  int& iterations) {
    return settle<CircleModel>(points, maxIterations, scaleLimits(scale, rounding), circle, scale,
                               iterations);
}

}  // namespace orx::geometric
