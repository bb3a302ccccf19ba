#include "orxFunctions/fitting/geometric/ellipse_steps.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/ellipse_conic_internal.h"
#include "orxFunctions/fitting/geometric/robust_start.h"
#include "orxFunctions/fitting/geometric/uncertainty.h"

namespace orx::geometric {
namespace {

// An axis beyond this, in units of the columns, is without end: the points reach to 1.
constexpr double kLargestAxis = 200.0;
constexpr double kFlattest = 1e-9;

bool sensible(const Ellipse& ellipse) {
    return ellipse.a < kLargestAxis && ellipse.b > kFlattest * ellipse.a && std::isfinite(ellipse.x) &&
           std::isfinite(ellipse.y);
}

// False where the conic is no ellipse with real points.
bool ellipseOfConic(const Conic& k, Ellipse& ellipse) {
    const double det = k.a * k.c - k.b * k.b / 4.0;
    if (!(det > 0.0)) return false;
    const cv::Point2d center((k.b * k.e / 4.0 - k.c * k.d / 2.0) / det,
                             (k.b * k.d / 4.0 - k.a * k.e / 2.0) / det);
    const double atCenter = k.f + (k.d * center.x + k.e * center.y) / 2.0;
    // The form's larger eigenvalue belongs to the shorter axis.
    const double mean = (k.a + k.c) / 2.0;
    const double spread = std::hypot((k.a - k.c) / 2.0, k.b / 2.0);
    const double larger = mean > 0.0 ? mean + spread : mean - spread;
    const double squareB = -atCenter / larger;
    const double squareA = -atCenter * larger / det;
    if (!(squareB > 0.0) || !std::isfinite(squareA)) return false;
    const double sign = mean > 0.0 ? -1.0 : 1.0;
    const double half = 0.5 * std::atan2(sign * k.b, sign * (k.a - k.c));
    ellipse = {center.x, center.y, std::sqrt(squareA), std::sqrt(squareB), std::cos(half), std::sin(half)};
    return true;
}

}  // namespace

TFitStatus directEllipse(const Columns& points, Ellipse& ellipse) {
    ConicMoments sum;
    double w = 0.0;
    for (std::size_t i = 0; i < points.count; ++i) {
        const double weight = points.weights == nullptr ? 1.0 : points.weights[i];
        sum.add(points.x[i], points.y[i], weight);
        w += weight;
    }
    // The problem does not change with the scale of either axis, its condition does.
    const double sx = std::sqrt(sum.x2 / w);
    const double sy = std::sqrt(sum.y2 / w);
    Conic unit{};
    if (!(sx > 0.0) || !(sy > 0.0)) return fsCollinear;
    if (!solveConic(sum.scaled(1.0 / sx, 1.0 / sy, 1.0 / w), unit)) return fsTooFewPoints;
    const bool found = ellipseOfConic(
        {unit.a / (sx * sx), unit.b / (sx * sy), unit.c / (sy * sy), unit.d / sx, unit.e / sy, unit.f},
        ellipse);
    return found && sensible(ellipse) ? fsOk : fsNotThatShape;
}

// Gauss elimination with complete pivoting of the five points' conics about the first point: f is then 0 and
// four equations are left for a, b, c, d and e.
bool ellipseThrough(const Columns& points, const std::size_t* indices, Ellipse& ellipse) {
    constexpr int kRows = 4;
    constexpr int kUnknowns = 5;
    const cv::Point2d origin(points.x[indices[0]], points.y[indices[0]]);
    double m[kRows][kUnknowns];
    double reach = 0.0;
    for (int i = 0; i < kRows; ++i) {
        const double x = points.x[indices[i + 1]] - origin.x;
        const double y = points.y[indices[i + 1]] - origin.y;
        m[i][3] = x;
        m[i][4] = y;
        reach = std::max({reach, std::abs(x), std::abs(y)});
    }
    if (!(reach > 0.0)) return false;
    for (auto& row : m) {
        row[3] /= reach;
        row[4] /= reach;
        row[0] = row[3] * row[3];
        row[1] = row[3] * row[4];
        row[2] = row[4] * row[4];
    }
    int column[kUnknowns] = {0, 1, 2, 3, 4};
    for (int k = 0; k < kRows; ++k) {
        int pivotRow = k;
        int pivotColumn = k;
        for (int i = k; i < kRows; ++i) {
            for (int j = k; j < kUnknowns; ++j) {
                if (std::abs(m[i][column[j]]) > std::abs(m[pivotRow][column[pivotColumn]])) {
                    pivotRow = i;
                    pivotColumn = j;
                }
            }
        }
        std::swap(m[k], m[pivotRow]);
        std::swap(column[k], column[pivotColumn]);
        const double pivot = m[k][column[k]];
        if (!(std::abs(pivot) > 1e-12)) return false;
        for (int i = k + 1; i < kRows; ++i) {
            const double factor = m[i][column[k]] / pivot;
            for (int j = k; j < kUnknowns; ++j) m[i][column[j]] -= factor * m[k][column[j]];
        }
    }
    double v[kUnknowns];
    v[column[kUnknowns - 1]] = 1.0;
    for (int k = kRows - 1; k >= 0; --k) {
        double rest = 0.0;
        for (int j = k + 1; j < kUnknowns; ++j) rest -= m[k][column[j]] * v[column[j]];
        v[column[k]] = rest / m[k][column[k]];
    }
    if (!ellipseOfConic({v[0], v[1], v[2], v[3], v[4], 0.0}, ellipse)) return false;
    ellipse.x = origin.x + reach * ellipse.x;
    ellipse.y = origin.y + reach * ellipse.y;
    ellipse.a *= reach;
    ellipse.b *= reach;
    return sensible(ellipse);
}

EllipseMatrix normalMatrix(const EllipseSums& sums) {
    EllipseMatrix normal;
    for (int i = 0, k = 0; i < kEllipseParameters; ++i) {
        for (int j = 0; j <= i; ++j, ++k) normal(i, j) = normal(j, i) = sums.rows[k];
    }
    return normal;
}

double ellipseRow(const Ellipse& e, cv::Point2d point, EllipseVector& row) {
    double c = 0.0;
    double s = 0.0;
    foot_kernels::chosen().feet({&point.x, &point.y, nullptr, 1}, e, &c, &s);
    const double speed = std::hypot(e.b * c, e.a * s);
    const double nx = e.b * c / speed;
    const double ny = e.a * s / speed;
    row = {nx, ny, nx * c + ny * s, nx * c - ny * s, nx * s + ny * c};
    const double dx = point.x - e.x;
    const double dy = point.y - e.y;
    return nx * (e.cosine * dx + e.sine * dy - e.a * c) + ny * (e.cosine * dy - e.sine * dx - e.b * s);
}

namespace {

// The step in the ellipse's own frame to the least sum of squares that the sums of one pass tell, and the
// fall of that sum expected of it. False where the points do not tell the ellipse.
bool stepOf(const EllipseSums& sums, double damping, EllipseVector& step, double& fall) {
    EllipseMatrix normal = normalMatrix(sums);
    for (int i = 0; i < kEllipseParameters; ++i) normal(i, i) *= 1.0 + damping;
    EllipseMatrix inverse;
    if (!invertPositive(normal, inverse)) return false;
    const EllipseVector right(sums.rowDistances);
    step = inverse * right;
    fall = step.dot(right);
    return std::isfinite(fall);
}

// The ellipse after a step: its conic is what moves evenly, since points near the outline are at about
// Q / |grad Q| from it, so that even long ways along the narrow valleys of short arcs are straight. Of the
// conic's factor that choice is made which keeps the gradients' length over the points. False where the step
// leads to another conic.
bool moved(const Ellipse& e, const Moments& m, const EllipseVector& step, Ellipse& to) {
    // Q = X^2 / a^2 + Y^2 / b^2 - 1 in the ellipse's own frame, and its change.
    const double p = 1.0 / (e.a * e.a);
    const double q = 1.0 / (e.b * e.b);
    const Conic change{-2.0 * (step[2] + step[3]) * p / e.a,
                       -2.0 * step[4] * (p / e.b + q / e.a),
                       -2.0 * (step[2] - step[3]) * q / e.b,
                       -2.0 * step[0] * p,
                       -2.0 * step[1] * q,
                       0.0};
    const cv::Point2d mean(m.x / m.w - e.x, m.y / m.w - e.y);
    const double xx = m.xx / m.w - m.x / m.w * (m.x / m.w) + mean.x * mean.x;
    const double xy = m.xy / m.w - m.x / m.w * (m.y / m.w) + mean.x * mean.y;
    const double yy = m.yy / m.w - m.y / m.w * (m.y / m.w) + mean.y * mean.y;
    const double c = e.cosine;
    const double s = e.sine;
    const double meanX = c * mean.x + s * mean.y;
    const double meanY = c * mean.y - s * mean.x;
    const double localXx = c * c * xx + 2.0 * c * s * xy + s * s * yy;
    const double localYy = s * s * xx - 2.0 * c * s * xy + c * c * yy;
    const double localXy = c * s * (yy - xx) + (c * c - s * s) * xy;
    const double along = p * (2.0 * change.a * localXx + change.b * localXy + change.d * meanX) +
                         q * (2.0 * change.c * localYy + change.b * localXy + change.e * meanY);
    const double factor = 1.0 - along / (2.0 * (p * p * localXx + q * q * localYy));
    Ellipse local{};
    if (!(factor > 0.0) ||
        !ellipseOfConic({factor * p + change.a, change.b, factor * q + change.c, change.d, change.e, -factor},
                        local)) {
        return false;
    }
    to = {e.x + c * local.x - s * local.y,   e.y + s * local.x + c * local.y,  local.a, local.b,
          c * local.cosine - s * local.sine, s * local.cosine + c * local.sine};
    return true;
}

// A step from there, halved until it leads to an ellipse not too different. False where there is none.
bool trustedStep(const EllipseSums& sums, const Ellipse& from, const Moments& moments, double stretch,
                 double damping, Ellipse& next, double& fall) {
    EllipseVector step;
    if (!stepOf(sums, damping, step, fall)) return false;
    step *= stretch;
    constexpr int kMostHalvings = 40;
    constexpr double kMostChange = 5.0;
    for (int i = 0; i < kMostHalvings; ++i) {
        if (moved(from, moments, step, next) && next.b * kMostChange > from.b &&
            next.a < kMostChange * from.a && std::isfinite(next.x + next.y)) {
            return true;
        }
        step *= 0.5;
    }
    return false;
}

}  // namespace

EllipseSolution refineEllipse(const Columns& points, const Ellipse& start, const Loss& loss,
                              int maxIterations, double rounding) {
    // As for circles (circle_steps.cpp), but that long steps are cut. On half an outline with outliers the
    // weights settle slowly: a ten thousandth of a deviation is enough there.
    const double settled = loss.kind == lkLeastSquares ? 1e-10 : 1e-8;
    constexpr int kStretched = 8;
    const foot_kernels::Kernels& kernels = foot_kernels::chosen();
    const Moments moments = distance_kernels::chosen().moments(points);
    const bool plain = loss.kind == lkLeastSquares;
    EllipseSolution solution{start, {}, 0, fsNotConverged};
    Ellipse best = start;
    double damping = 0.0;
    for (solution.iterations = 1; solution.iterations <= maxIterations; ++solution.iterations) {
        const EllipseSums sums = kernels.sums(points, solution.ellipse, loss);
        const DistanceSums& d = solution.sums.distances;
        const bool worse =
            plain && solution.iterations > 1 &&
            !(sums.distances.dd <= d.dd * (1.0 + 1e-9) + sums.distances.w * 4.0 * rounding * rounding);
        if (worse) {
            damping = std::max(1e-3, 10.0 * damping);
        } else {
            best = solution.ellipse;
            solution.sums = sums;
            damping = damping > 1e-6 ? damping / 10.0 : 0.0;
        }
        double fall = 0.0;
        Ellipse next{};
        // As for circles, too.
        const bool stretched = !plain && solution.iterations <= kStretched;
        const double stretch = stretched ? std::clamp(d.omega / std::max(d.slope, 1e-300), 1.0, 1.6) : 1.0;
        if (!trustedStep(solution.sums, best, moments, stretch, damping, next, fall)) {
            solution.ellipse = best;
            solution.status = fsCollinear;
            return solution;
        }
        if (!sensible(next)) {
            solution.status = next.a < kLargestAxis ? fsCollinear : fsNotThatShape;
            solution.ellipse = best;
            return solution;
        }
        solution.ellipse = next;
        const double noise2 = d.dd / std::max(1.0, d.used - kEllipseParameters);
        const double floor = 4.0 * rounding * std::max(1.0, next.a);
        if (!worse && damping == 0.0 && fall <= std::max(settled * noise2, d.w * floor * floor)) {
            solution.status = fsOk;
            return solution;
        }
    }
    solution.iterations = maxIterations;
    solution.ellipse = best;
    return solution;
}

namespace {

struct EllipseModel {
    using Shape = Ellipse;
    static constexpr int kParameters = kEllipseParameters;
    static constexpr std::size_t kSample = 5;

    static bool through(const Columns& points, const std::size_t* indices, Ellipse& ellipse) {
        return ellipseThrough(points, indices, ellipse);
    }
    static void distances(const Columns& points, const Ellipse& ellipse, double* to) {
        foot_kernels::chosen().nearDistances(points, ellipse, to);
    }
    static std::size_t within(const inlier_kernels::PointSpan& judges, const Ellipse& ellipse, double most) {
        double apart[kJudges];
        distances({judges.x, judges.y, nullptr, judges.size}, ellipse, apart);
        std::size_t count = 0;
        for (std::size_t i = 0; i < judges.size; ++i) {
            count += std::abs(apart[i]) < most && !std::isnan(judges.x[i]) ? 1 : 0;
        }
        return count;
    }
    static bool settleStep(const Columns& points, const Loss& loss, Ellipse& ellipse, DistanceSums& sums,
                           double& fall) {
        const EllipseSums pass = foot_kernels::chosen().sums(points, ellipse, loss);
        sums = pass.distances;
        Ellipse next{};
        const Moments moments = distance_kernels::chosen().moments(points);
        if (!trustedStep(pass, ellipse, moments, 1.0, 0.0, next, fall)) return false;
        if (!sensible(next)) return false;
        ellipse = next;
        return true;
    }
};

}  // namespace

bool robustEllipse(const Columns& points, int maxIterations, double rounding, Ellipse& ellipse, double& scale,
                   int& iterations) {
    return robustStart<EllipseModel>(points, maxIterations, rounding, ellipse, scale, iterations);
}

bool settleEllipse(const Columns& points, int maxIterations, double rounding, Ellipse& ellipse, double& scale,
                   int& iterations) {
    return settle<EllipseModel>(points, maxIterations, scaleLimits(scale, rounding), ellipse, scale,
                                iterations);
}

}  // namespace orx::geometric
