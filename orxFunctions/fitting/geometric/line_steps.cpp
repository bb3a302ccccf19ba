#include "orxFunctions/fitting/geometric/line_steps.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/geometric/robust_start.h"

namespace orx::geometric {
namespace {

constexpr int kParameters = 2;

// Through (x, y) along the largest of the central moments; the direction (ny, -nx) has no preferred sense.
bool lineAlong(double x, double y, double xx, double xy, double yy, Line& line) {
    if (!(xx + yy > 0.0) || !std::isfinite(x) || !std::isfinite(y)) return false;
    const double angle = std::atan2(2.0 * xy, xx - yy) / 2.0;
    line = {x, y, -std::sin(angle), std::cos(angle)};
    return true;
}

// The line that the weighted moments of a pass tell, and the fall of the sum of w d^2 on the way there.
bool nextLine(const LineSums& sums, const Line& line, Line& next, double& fall) {
    const double w = sums.distances.w;
    if (!(w > 0.0)) return false;
    const double mx = sums.x / w;
    const double my = sums.y / w;
    const double xx = sums.xx - sums.x * mx;
    const double xy = sums.xy - sums.x * my;
    const double yy = sums.yy - sums.y * my;
    if (!lineAlong(line.x + mx, line.y + my, xx, xy, yy, next)) return false;
    // To first order; the difference of the sums themselves would drown in rounding.
    const double across = mx * line.nx + my * line.ny;
    const double turn = next.nx * line.ny - next.ny * line.nx;
    const double length2 = xx * next.ny * next.ny - 2.0 * xy * next.nx * next.ny + yy * next.nx * next.nx;
    fall = w * across * across + turn * turn * length2;
    return true;
}

}  // namespace

bool lineThrough(cv::Point2d a, cv::Point2d b, Line& line) {
    const cv::Point2d along = b - a;
    const double length = std::sqrt(along.dot(along));
    if (!(length > 0.0)) return false;
    const cv::Point2d middle = (a + b) / 2.0;
    line = {middle.x, middle.y, -along.y / length, along.x / length};
    return true;
}

bool momentsLine(const Moments& moments, Line& line) {
    if (!(moments.w > 0.0)) return false;
    const double mx = moments.x / moments.w;
    const double my = moments.y / moments.w;
    return lineAlong(mx, my, moments.xx - moments.x * mx, moments.xy - moments.x * my,
                     moments.yy - moments.y * my, line);
}

LineSolution refineLine(const Columns& points, const Line& start, const Loss& loss, int maxIterations,
                        double rounding) {
    // Shares of the noise, squared; as for the circle.
    const double settled = loss.kind == lkLeastSquares ? 1e-10 : 1e-8;
    constexpr double kNearlySettled = 1e-5;
    const distance_kernels::Kernels& kernels = distance_kernels::chosen();
    LineSolution solution{start, {}, 0, fsNotConverged};
    bool nearly = loss.kind == lkLeastSquares;  // its start is the end already
    for (solution.iterations = 1; solution.iterations <= maxIterations; ++solution.iterations) {
        const auto pass = nearly ? kernels.lineSums : kernels.lineSteps;
        const LineSums sums = pass(points, solution.line, loss);
        Line next{};
        double fall = 0.0;
        if (!nextLine(sums, solution.line, next, fall)) {
            solution.status = fsCoincident;
            return solution;
        }
        const DistanceSums& d = sums.distances;
        const double noise2 = d.dd / std::max(1.0, d.omega - kParameters);
        const double floor = 4.0 * rounding;
        const double least = d.w * floor * floor;
        if (nearly && fall <= std::max(settled * noise2, least)) {
            // The line stays, with the sums about it.
            solution.sums = sums;
            solution.status = fsOk;
            return solution;
        }
        nearly = fall <= std::max(kNearlySettled * noise2, least);
        solution.line = next;
    }
    solution.iterations = maxIterations;
    return solution;
}

namespace {

struct LineModel {
    using Shape = Line;
    static constexpr int kParameters = geometric::kParameters;
    static constexpr std::size_t kSample = 2;

    static bool through(const Columns& points, const std::size_t* at, Line& line) {
        return lineThrough({points.x[at[0]], points.y[at[0]]}, {points.x[at[1]], points.y[at[1]]}, line);
    }
    static void distances(const Columns& points, const Line& line, double* to) {
        distance_kernels::chosen().lineDistances(points, line, to);
    }
    static std::size_t within(const inlier_kernels::PointSpan& judges, const Line& l, double most) {
        const inlier_kernels::LineTest test{l.nx, l.ny, -(l.nx * l.x + l.ny * l.y), most, most, 0.0, 0.0,
                                            0.0,  0.0};
        return inlier_kernels::chosen().countOnLine(judges, test, 0);
    }
    static bool settleStep(const Columns& points, const Loss& loss, Line& line, DistanceSums& sums,
                           double& fall) {
        const LineSums pass = distance_kernels::chosen().lineSteps(points, line, loss);
        sums = pass.distances;
        Line next{};
        if (!nextLine(pass, line, next, fall)) return false;
        line = next;
        return true;
    }
};

}  // namespace

bool robustLine(const Columns& points, int maxIterations, double rounding, Line& line, double& scale,
                int& iterations) {
    return robustStart<LineModel>(points, maxIterations, rounding, line, scale, iterations);
}

bool settleLine(const Columns& points, int maxIterations, double rounding, Line& line, double& scale,
                int& iterations) {
    return settle<LineModel>(points, maxIterations, scaleLimits(scale, rounding), line, scale, iterations);
}

}  // namespace orx::geometric
