#include "orxFunctions/fitting/geometric/measured_line.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "orxFunctions/fitting/geometric/line_steps.h"
#include "orxFunctions/fitting/geometric/local_support.h"
#include "orxFunctions/fitting/geometric/robust_loss.h"
#include "orxFunctions/fitting/geometric/uncertainty.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx::geometric {
namespace {

// True when the direction (ny, -nx) leads from the earlier used points to the later ones.
bool leadsOnwards(const Columns& points, const Line& line, const Loss& loss) {
    double balance = 0.0;
    const double middle = (static_cast<double>(points.count) - 1.0) / 2.0;
    for (std::size_t i = 0; i < points.count; ++i) {
        const double dx = points.x[i] - line.x;
        const double dy = points.y[i] - line.y;
        const double d = dx * line.nx + dy * line.ny;
        const double weight = points.weights == nullptr ? 1.0 : points.weights[i];
        if (!(weight > 0.0) || weight * d * d > loss.reach2) continue;
        balance += (static_cast<double>(i) - middle) * (dx * line.ny - dy * line.nx);
    }
    return balance >= 0.0;
}

struct Fitted {
    LineSolution solution{};
    Loss loss{};
    double scale = 0.0;  // the inliers' noise in columns; robust losses only
    int iterations = 0;
};

// The line that most points follow, or those near `known` unless it is null, and their noise; the others lose
// their say.
bool startAmongOutliers(const TFitOptions& options, const Start<Line>* known, FitPoints& points, Line& start,
                        Fitted& fit) {
    const int steps = options.maxIterations;
    fit.scale = toldScale(points, options);
    const bool told = fit.scale > 0.0;
    if (known == nullptr) {
        if (!robustLine(points.columns(), steps, points.rounding(), start, fit.scale, fit.iterations))
            return false;
    } else {
        // Points must not be left out by a shape that is only near the one sought.
        start = known->shape;
        double scale = told ? fit.scale : known->scale;
        if (!settleLine(points.columns(), steps, points.rounding(), start, scale, fit.iterations))
            return false;
        if (!told) fit.scale = scale;
    }
    const LineSums sums = distance_kernels::chosen().lineSums(points.columns(), start, searchLoss(fit.scale));
    const double length = std::max(sums.to - sums.from, 1e-100);
    const auto placeOf = [&](cv::Point2d p) {
        return ((p.x - start.x) * start.ny - (p.y - start.y) * start.nx - sums.from) / length;
    };
    std::vector<double> distances(points.size());
    distance_kernels::chosen().lineDistances(points.columns(), start, distances.data());
    const bool closed = false;
    const bool dropped = leaveOutOutliers(distances, outlierReach2(fit.scale), closed, placeOf, points);
    return !dropped || told ||
           settleLine(points.columns(), steps, points.rounding(), start, fit.scale, fit.iterations);
}

TFitStatus solve(const TFitOptions& options, const Start<Line>* known, FitPoints& points, Fitted& fit) {
    Line start{};
    if (options.loss == flLeastSquares) {
        if (!momentsLine(distance_kernels::chosen().moments(points.columns()), start)) return fsCoincident;
        fit.loss = leastSquares();
    } else {
        if (!startAmongOutliers(options, known, points, start, fit)) {
            return options.scale > 0.0 ? fsNoConsensus : fsCoincident;
        }
        fit.loss = lossAt(options, fit.scale);
    }
    fit.solution = refineLine(points.columns(), start, fit.loss, options.maxIterations, points.rounding());
    fit.iterations += fit.solution.iterations;
    return fit.solution.status;
}

// The same line the other way round.
void turnRound(LineSolution& solution) {
    solution.line.nx = -solution.line.nx;
    solution.line.ny = -solution.line.ny;
    LineSums& sums = solution.sums;
    sums.distances.d = -sums.distances.d;
    sums.distances.least = std::exchange(sums.distances.largest, -sums.distances.least);
    sums.distances.least = -sums.distances.least;
    sums.from = std::exchange(sums.to, -sums.from);
    sums.from = -sums.from;
}

void describe(const FitPoints& points, const Fitted& fit, TMeasuredLine& result) {
    const Line& line = fit.solution.line;
    result.point = points.toPixels({line.x, line.y});
    result.direction = {line.ny, -line.nx};
    result.angle = degrees(std::atan2(result.direction.y, result.direction.x));
    if (result.angle <= -180.0) result.angle = 180.0;
    result.from = fit.solution.sums.from * points.scale();
    result.to = fit.solution.sums.to * points.scale();
    const auto fillDistances = [&](double* to) {
        distance_kernels::chosen().lineDistances(points.columns(), line, to);
    };
    const std::vector<unsigned char> used = usedPoints(points, fit.loss, fillDistances);
    points.markUsed(used, result);
}

void measure(const TFitOptions& options, const Start<Line>* known, FitPoints& points, TMeasuredLine& result) {
    Fitted fit;
    result.status = solve(options, known, points, fit);
    result.iterations = fit.iterations;
    if (result.status != fsOk) return;
    if (!leadsOnwards(points.columns(), fit.solution.line, fit.loss)) turnRound(fit.solution);

    const Line& line = fit.solution.line;
    const LineSums& sums = fit.solution.sums;
    const double w = sums.distances.w;
    const double along = sums.x * line.ny - sums.y * line.nx;
    const double along2 =
        sums.xx * line.ny * line.ny - 2.0 * sums.xy * line.nx * line.ny + sums.yy * line.nx * line.nx;
    const cv::Matx22d normal(w, along, along, along2);
    const auto derivatives = [&](cv::Point2d p, cv::Vec2d& row) {
        const double dx = p.x - line.x;
        const double dy = p.y - line.y;
        row = {1.0, dx * line.ny - dy * line.nx};
        return dx * line.nx + dy * line.ny;
    };
    Judgement<2> judgement;
    if (!judge<2>(points, options, sums.distances, fit.loss, fit.scale, normal, derivatives, judgement)) {
        result.status = fsTooFewPoints;
        return;
    }
    describe(points, fit, result);
    fillReport(points, sums.distances, judgement.figures, result);
    const double scale = points.scale();
    const cv::Matx22d units(scale, 0, 0, degrees(1.0));
    result.covariance = units * judgement.covariance * units;
    result.offsetDeviation = std::sqrt(result.covariance(0, 0));
    result.angleDeviation = std::sqrt(result.covariance(1, 1));
}

}  // namespace

void measureLine(const TFitOptions& options, FitPoints& points, TMeasuredLine& result) {
    measure(options, nullptr, points, result);
}

void measureFrom(const Start<Line>& start, const TFitOptions& options, FitPoints& points,
                 TMeasuredLine& result) {
    measure(options, &start, points, result);
}

}  // namespace orx::geometric
