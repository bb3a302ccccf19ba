#include "orxFunctions/fitting/geometric/measured_circle.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "orxFunctions/fitting/geometric/arc_coverage.h"
#include "orxFunctions/fitting/geometric/circle_steps.h"
#include "orxFunctions/fitting/geometric/local_support.h"
#include "orxFunctions/fitting/geometric/robust_loss.h"
#include "orxFunctions/fitting/geometric/uncertainty.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx::geometric {
namespace {

struct Fitted {
    CircleSolution solution{};
    Loss loss{};
    double scale = 0.0;  // the inliers' noise in columns; robust losses only
    int iterations = 0;
};

// The circle that most points follow, or those near `known` unless it is null, and their noise; the others
// lose their say.
bool startAmongOutliers(const TFitOptions& options, const Start<Circle>* known, FitPoints& points,
                        Circle& start, Fitted& fit) {
    const int steps = options.maxIterations;
    fit.scale = toldScale(points, options);
    const bool told = fit.scale > 0.0;
    if (known == nullptr) {
        if (!robustCircle(points.columns(), steps, points.rounding(), start, fit.scale, fit.iterations))
            return false;
    } else {
        // Points must not be left out by a shape that is only near the one sought.
        start = known->shape;
        double scale = told ? fit.scale : known->scale;
        if (!settleCircle(points.columns(), steps, points.rounding(), start, scale, fit.iterations))
            return false;
        if (!told) fit.scale = scale;
    }
    const auto placeOf = [&](cv::Point2d p) { return pseudoAngle(p.x - start.x, p.y - start.y) / 4.0; };
    std::vector<double> distances(points.size());
    distance_kernels::chosen().circleDistances(points.columns(), start, distances.data());
    const bool closed = true;
    const bool dropped = leaveOutOutliers(distances, outlierReach2(fit.scale), closed, placeOf, points);
    return !dropped || told ||
           settleCircle(points.columns(), steps, points.rounding(), start, fit.scale, fit.iterations);
}

TFitStatus solve(const TFitOptions& options, const Start<Circle>* known, FitPoints& points, Fitted& fit) {
    Circle start{};
    if (options.loss == flLeastSquares) {
        if (!taubinCircle(distance_kernels::chosen().moments(points.columns()), start)) return fsCollinear;
        fit.loss = leastSquares();
    } else {
        if (!startAmongOutliers(options, known, points, start, fit)) {
            return options.scale > 0.0 ? fsNoConsensus : fsCollinear;
        }
        fit.loss = lossAt(options, fit.scale);
    }
    fit.solution = refineCircle(points.columns(), start, fit.loss, options.maxIterations, points.rounding());
    fit.iterations += fit.solution.iterations;
    return fit.solution.status;
}

cv::Matx33d normalMatrix(const CircleSums& s) {
    const double w = s.distances.w;
    return {s.uu, s.uv, s.u, s.uv, w - s.uu, s.v, s.u, s.v, w};
}

// What the curvature of the distances in the parameters adds to them on average: -1/2 A^-1 sum of J tr(C H),
// with J = -(u, v, 1) and H = (1 - (u, v)(u, v)') / r (Box).
cv::Vec3d boxBias(const CircleSums& s, double radius, const Judgement<3>& judgement) {
    const cv::Matx33d& covariance = judgement.covariance;
    const double uvv = s.u - s.uuu;
    const double vvv = s.v - s.uuv;
    const double vv = s.distances.w - s.uu;
    const auto trace = [&](double uu, double uv, double vvSum) {
        return (covariance(0, 0) * vvSum - 2.0 * covariance(0, 1) * uv + covariance(1, 1) * uu) / radius;
    };
    const cv::Vec3d sums(trace(s.uuu, s.uuv, uvv), trace(s.uuv, uvv, vvv), trace(s.uu, s.uv, vv));
    return 0.5 * (judgement.inverse * sums);
}

void describe(const FitPoints& points, const Fitted& fit, const cv::Vec3d& bias, TMeasuredCircle& result) {
    const Circle& circle = fit.solution.circle;
    const Columns columns = points.columns();
    result.center = points.toPixels({circle.x - bias[0], circle.y - bias[1]});
    result.radius = (circle.r - bias[2]) * points.scale();
    const auto fillDistances = [&](double* to) {
        distance_kernels::chosen().circleDistances(points.columns(), circle, to);
    };
    const std::vector<unsigned char> used = usedPoints(points, fit.loss, fillDistances);
    points.markUsed(used, result);
    const ArcCoverage cover = arcCoverage(columns, used, {circle.x - bias[0], circle.y - bias[1]});
    result.startAngle = cover.start;
    result.sweep = cover.sweep;
}

void measure(const TFitOptions& options, const Start<Circle>* known, FitPoints& points,
             TMeasuredCircle& result) {
    Fitted fit;
    result.status = solve(options, known, points, fit);
    result.iterations = fit.iterations;
    if (result.status == fsCollinear || result.status == fsCoincident) return;

    const Circle& circle = fit.solution.circle;
    const CircleSums& sums = fit.solution.sums;
    const auto derivatives = [&](cv::Point2d p, cv::Vec3d& row) {
        const cv::Point2d arm = p - cv::Point2d(circle.x, circle.y);
        const double rho = std::sqrt(arm.dot(arm));
        row = rho > 0.0 ? cv::Vec3d(arm.x / rho, arm.y / rho, 1.0) : cv::Vec3d(1.0, 0.0, 1.0);
        return rho - circle.r;
    };
    const cv::Matx33d normal = normalMatrix(sums);
    Judgement<3> judgement;
    const bool told =
        judge<3>(points, options, sums.distances, fit.loss, fit.scale, normal, derivatives, judgement);
    const double relative = told ? std::sqrt(judgement.covariance(2, 2)) / circle.r : 2.0;
    constexpr double kArcTold = 0.5;
    if (relative > kArcTold) result.status = relative > 1.0 ? fsCollinear : fsArcTooShort;
    if (result.status != fsOk) return;

    const double noise = judgement.figures.noise;
    cv::Vec3d bias = boxBias(sums, circle.r, judgement);
    if (options.noise == pnIndependent) bias[2] += noise * noise / (2.0 * circle.r);
    bias = withinNoise(bias, normal, sums.distances.used, noise);
    describe(points, fit, bias, result);
    fillReport(points, sums.distances, judgement.figures, result);
    result.covariance = judgement.covariance * (points.scale() * points.scale());
    result.xDeviation = std::sqrt(result.covariance(0, 0));
    result.yDeviation = std::sqrt(result.covariance(1, 1));
    result.radiusDeviation = std::sqrt(result.covariance(2, 2));
}

}  // namespace

void measureCircle(const TFitOptions& options, FitPoints& points, TMeasuredCircle& result) {
    measure(options, nullptr, points, result);
}

void measureFrom(const Start<Circle>& start, const TFitOptions& options, FitPoints& points,
                 TMeasuredCircle& result) {
    measure(options, &start, points, result);
}

}  // namespace orx::geometric
