#include "orxFunctions/fitting/geometric/measured_ellipse.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "orxFunctions/fitting/geometric/arc_coverage.h"
#include "orxFunctions/fitting/geometric/ellipse_steps.h"
#include "orxFunctions/fitting/geometric/local_support.h"
#include "orxFunctions/fitting/geometric/outline_bias.h"
#include "orxFunctions/fitting/geometric/robust_loss.h"
#include "orxFunctions/fitting/geometric/uncertainty.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx::geometric {
namespace {

using EllipseJudgement = Judgement<kEllipseParameters>;

struct Fitted {
    EllipseSolution solution{};
    Loss loss{};
    double scale = 0.0;  // the inliers' noise in columns; robust losses only
    int iterations = 0;
};

// The variance of points across the line that they follow best; `used` as for arcCoverage.
double varianceAcross(const Columns& points, const std::vector<unsigned char>& used) {
    double w = 0.0;
    double x = 0.0;
    double y = 0.0;
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    for (std::size_t i = 0; i < points.count; ++i) {
        if (!used.empty() && used[i] == 0) continue;
        const double weight = points.weights == nullptr ? 1.0 : points.weights[i];
        w += weight;
        x += weight * points.x[i];
        y += weight * points.y[i];
        xx += weight * points.x[i] * points.x[i];
        xy += weight * points.x[i] * points.y[i];
        yy += weight * points.y[i] * points.y[i];
    }
    xx = xx / w - x / w * (x / w);
    xy = xy / w - x / w * (y / w);
    yy = yy / w - y / w * (y / w);
    return std::max(0.0, (xx + yy) / 2.0 - std::hypot((xx - yy) / 2.0, xy));
}

// `direct` is what the direct fit said.
TFitStatus whyNoStart(const FitPoints& points, TFitStatus direct) {
    const double across = varianceAcross(points.columns(), {});
    // Rounding of the points, and of the sums that the variance is the difference of.
    const double line = 8.0 * points.rounding();
    constexpr double kSums = 1e-15;
    if (across <= std::max(line * line, kSums)) return fsCollinear;
    return direct == fsOk ? fsNotThatShape : direct;
}

// Where a point lies along the outline, 0 to 1 by length.
class OutlinePlaces {
  public:
    explicit OutlinePlaces(const Ellipse& ellipse) : ellipse_(ellipse) {
        for (std::size_t i = 0; i < kSteps; ++i) {
            const double t = 2.0 * kPi * (static_cast<double>(i) + 0.5) / kSteps;
            lengths_[i + 1] = lengths_[i] + std::hypot(ellipse.a * std::sin(t), ellipse.b * std::cos(t));
        }
    }
    double operator()(cv::Point2d p) const {
        const double dx = p.x - ellipse_.x;
        const double dy = p.y - ellipse_.y;
        const double x = (ellipse_.cosine * dx + ellipse_.sine * dy) / ellipse_.a;
        const double y = (ellipse_.cosine * dy - ellipse_.sine * dx) / ellipse_.b;
        const double turns = std::atan2(y, x) / (2.0 * kPi);
        const double place = (turns < 0.0 ? turns + 1.0 : turns) * kSteps;
        const std::size_t step = std::min(kSteps - 1, static_cast<std::size_t>(place));
        const double part = place - static_cast<double>(step);
        return (lengths_[step] + part * (lengths_[step + 1] - lengths_[step])) / lengths_[kSteps];
    }

  private:
    static constexpr std::size_t kSteps = 256;
    Ellipse ellipse_;
    std::array<double, kSteps + 1> lengths_{};
};

// The ellipse that most points follow, or those near `known` unless it is null, and their noise; the others
// lose their say.
TFitStatus startAmongOutliers(const TFitOptions& options, const Start<Ellipse>* known, FitPoints& points,
                              Ellipse& start, Fitted& fit) {
    const int steps = options.maxIterations;
    fit.scale = toldScale(points, options);
    const bool told = fit.scale > 0.0;
    if (known != nullptr) {
        // Points must not be left out by a shape that is only near the one sought.
        start = known->shape;
        double scale = told ? fit.scale : known->scale;
        settleEllipse(points.columns(), steps, points.rounding(), start, scale, fit.iterations);
        if (!told) fit.scale = scale;
    } else if (!robustEllipse(points.columns(), steps, points.rounding(), start, fit.scale, fit.iterations) &&
               start.a == 0.0) {
        // Steps that do not settle leave a start to judge by.
        return whyNoStart(points, directEllipse(points.columns(), start));
    }
    std::vector<double> distances(points.size());
    foot_kernels::chosen().distances(points.columns(), start, distances.data());
    const bool closed = true;
    const bool dropped =
        leaveOutOutliers(distances, outlierReach2(fit.scale), closed, OutlinePlaces(start), points);
    if (dropped && !told) {
        settleEllipse(points.columns(), steps, points.rounding(), start, fit.scale, fit.iterations);
    }
    return fsOk;
}

TFitStatus solve(const TFitOptions& options, const Start<Ellipse>* known, FitPoints& points, Fitted& fit) {
    Ellipse start{};
    if (options.loss == flLeastSquares) {
        const TFitStatus direct = directEllipse(points.columns(), start);
        if (direct != fsOk) return whyNoStart(points, direct);
        fit.loss = leastSquares();
    } else {
        const TFitStatus status = startAmongOutliers(options, known, points, start, fit);
        if (status != fsOk) return status;
        fit.loss = lossAt(options, fit.scale);
    }
    fit.solution = refineEllipse(points.columns(), start, fit.loss, options.maxIterations, points.rounding());
    fit.iterations += fit.solution.iterations;
    return fit.solution.status;
}

std::vector<unsigned char> usedOf(const FitPoints& points, const Fitted& fit) {
    return usedPoints(points, fit.loss, [&](double* to) {
        foot_kernels::chosen().distances(points.columns(), fit.solution.ellipse, to);
    });
}

// The axes' variances from the covariance of the ellipse's own frame; `side` 1 for the first, -1 for the
// other.
double axisVariance(const EllipseMatrix& c, double side) { return c(2, 2) + c(3, 3) + side * 2.0 * c(2, 3); }

bool inEnoughPlaces(const FitPoints& points, const std::vector<unsigned char>& used) {
    std::vector<cv::Point2d> places;
    for (std::size_t i = 0; i < points.size() && places.size() < kFewestEllipsePoints; ++i) {
        if (!used.empty() && used[i] == 0) continue;
        const cv::Point2d p = points.at(i);
        if (std::find(places.begin(), places.end(), p) == places.end()) places.push_back(p);
    }
    return places.size() == kFewestEllipsePoints;
}

// fsOk, or why the points do not tell an ellipse, with what the steps came to.
TFitStatus verdict(const FitPoints& points, const Fitted& fit, const std::vector<unsigned char>& used,
                   bool told, const EllipseJudgement& judgement) {
    if (!inEnoughPlaces(points, used)) return fsTooFewPoints;
    const Ellipse& e = fit.solution.ellipse;
    const DistanceSums& d = fit.solution.sums.distances;
    const double noise2 = d.usedSquares / std::max(1.0, d.used - kEllipseParameters);
    constexpr double kFlat = 4.0;
    constexpr double kAxisTold = 0.2;
    const bool flat = e.b * e.b < kFlat * kFlat * noise2;
    if (told && fit.solution.status == fsOk && !flat &&
        axisVariance(judgement.covariance, 1.0) <= kAxisTold * kAxisTold * e.a * e.a &&
        axisVariance(judgement.covariance, -1.0) <= kAxisTold * kAxisTold * e.b * e.b) {
        return fsOk;
    }
    // Does the ellipse explain more than a line, which has three parameters less? By an F-test.
    const double line = varianceAcross(points.columns(), used) * d.used;
    constexpr double kSignificant = 10.0;
    if (line - d.usedSquares < kSignificant * 3.0 * noise2) return fsCollinear;
    constexpr double kLong = 5.0;
    if (flat) return e.a > kLong * e.b ? fsCollinear : fsNotThatShape;
    if (fit.solution.status == fsNotConverged) return fsNotConverged;
    if (!told) return fsArcTooShort;
    if (fit.solution.status != fsNotThatShape) return fsArcTooShort;
    // The next step would lead to a hyperbola: does that explain more, by an F-test?
    const EllipseVector right(fit.solution.sums.rowDistances);
    const double fall = right.dot(judgement.inverse * right);
    if (fall * (d.used - kEllipseParameters) > kSignificant * (d.dd - fall)) return fsNotThatShape;
    // The reciprocal of the first axis errs evenly, and is 0 for a parabola. Ellipses up to ten times as
    // large as the points' extent must be out of the question.
    constexpr double kSmall = 0.1;
    const double deviation = std::sqrt(axisVariance(judgement.covariance, 1.0)) / (e.a * e.a);
    return kSmall - 1.0 / e.a > 3.0 * deviation ? fsNotThatShape : fsArcTooShort;
}

EllipseVector biasOf(const FitPoints& points, const TFitOptions& options, const Fitted& fit,
                     const EllipseJudgement& judgement) {
    double covariance[kEllipsePairs];
    for (int i = 0, k = 0; i < kEllipseParameters; ++i) {
        for (int j = 0; j <= i; ++j, ++k) covariance[k] = judgement.covariance(i, j);
    }
    const EllipseBiasSums sums =
        foot_kernels::chosen().biasSums(points.columns(), fit.solution.ellipse, fit.loss, covariance);
    EllipseVector normal = 0.5 * EllipseVector(sums.parameters);
    if (options.noise == pnIndependent) {
        const double noise = judgement.figures.noise;
        const Ellipse& ellipse = fit.solution.ellipse;
        const DistanceSums& d = fit.solution.sums.distances;
        // Where weights fall off with the distance, the estimate answers more than the normal matrix has it.
        normal += outlineTurnsWithinNoise(ellipse, noise)
                      ? d.omega / std::max(d.slope, 0.1 * d.omega) *
                            outlineBiasSums(points.columns(), ellipse, fit.loss, noise)
                      : 0.5 * noise * noise * EllipseVector(sums.outline);
    }
    return judgement.inverse * normal;
}

// Half the difference of the axes, (p, q) its vector at twice the angle, freed from what the noise adds to
// the length of a vector: sideways / (2 length) on average, and all of it where there is none.
double freedLength(double length, double along, double sideways) {
    // Where (p, q) is told along its direction, but hardly across, the expansion ends.
    const double most = std::max(4.0 * along, length * length / 4.0);
    return std::sqrt(std::max(0.0, length * length - std::min(sideways, most)));
}

// The direction of (p, q), and what else is taken back of it than bias.
struct Elongation {
    cv::Point2d along{1.0, 0.0};
    double length = 0.0;  // before it is freed
    bool isTold = false;  // so that the axes have a direction
    cv::Point2d freed;
};

Elongation elongationOf(const Ellipse& e, const EllipseVector& bias, const EllipseMatrix& covariance) {
    Elongation result;
    const double mean = (e.a + e.b) / 2.0 - bias[2];
    const cv::Point2d pq((e.a - e.b) / 2.0 - bias[3], -bias[4]);
    result.length = std::hypot(pq.x, pq.y);
    if (result.length > 0.0) result.along = pq / result.length;
    const auto of = [&](cv::Point2d u, cv::Point2d v) {
        return u.x * (covariance(3, 3) * v.x + covariance(3, 4) * v.y) +
               u.y * (covariance(3, 4) * v.x + covariance(4, 4) * v.y);
    };
    const cv::Point2d across(-result.along.y, result.along.x);
    const double along2 = of(result.along, result.along);
    const double across2 = of(across, across);
    const double half = std::min(freedLength(result.length, along2, across2), (1.0 - 1e-9) * mean);
    const double length2 = result.length * result.length;
    // Twice 30 degrees.
    constexpr double kTurnTold = kPi / 3.0;
    result.isTold = length2 > 4.0 * along2 && across2 < kTurnTold * kTurnTold * length2;
    const double turn = result.isTold ? of(result.along, across) / length2 : 0.0;
    result.freed = half * (std::cos(turn) * result.along + std::sin(turn) * across);
    return result;
}

void describe(const FitPoints& points, const Ellipse& e, const Elongation& elongation,
              const EllipseVector& taken, const EllipseMatrix& covariance,
              const std::vector<unsigned char>& used, TMeasuredEllipse& result) {
    const cv::Point2d center(e.x - (e.cosine * taken[0] - e.sine * taken[1]),
                             e.y - (e.sine * taken[0] + e.cosine * taken[1]));
    const double mean = (e.a + e.b) / 2.0 - taken[2];
    const cv::Point2d pq((e.a - e.b) / 2.0 - taken[3], -taken[4]);
    const double half = std::min(std::hypot(pq.x, pq.y), (1.0 - 1e-9) * mean);
    const cv::Point2d direction = half > 0.0 ? pq : elongation.along;
    result.angleTold = elongation.isTold;
    result.angle = degrees(std::atan2(e.sine, e.cosine) + std::atan2(direction.y, direction.x) / 2.0);
    result.angle -= 180.0 * std::floor(result.angle / 180.0);
    if (!(result.angle < 180.0)) result.angle = 0.0;

    const double scale = points.scale();
    result.center = points.toPixels(center);
    result.semiMajor = (mean + half) * scale;
    result.semiMinor = (mean - half) * scale;
    // Of the result with the parameters in the ellipse's own frame.
    const cv::Point2d to = elongation.along;
    EllipseMatrix j = EllipseMatrix::zeros();
    j(0, 0) = j(1, 1) = e.cosine * scale;
    j(1, 0) = e.sine * scale;
    j(0, 1) = -j(1, 0);
    j(2, 2) = j(3, 2) = scale;
    j(2, 3) = to.x * scale;
    j(2, 4) = to.y * scale;
    j(3, 3) = -j(2, 3);
    j(3, 4) = -j(2, 4);
    if (result.angleTold) {
        j(4, 3) = degrees(-to.y / (2.0 * elongation.length));
        j(4, 4) = degrees(to.x / (2.0 * elongation.length));
    }
    result.covariance = j * covariance * j.t();
    if (!result.angleTold) result.covariance(4, 4) = 180.0 * 180.0 / 12.0;
    result.xDeviation = std::sqrt(result.covariance(0, 0));
    result.yDeviation = std::sqrt(result.covariance(1, 1));
    result.semiMajorDeviation = std::sqrt(result.covariance(2, 2));
    result.semiMinorDeviation = std::sqrt(result.covariance(3, 3));
    result.angleDeviation = std::sqrt(result.covariance(4, 4));

    points.markUsed(used, result);
    const ArcCoverage cover = arcCoverage(points.columns(), used, center);
    result.startAngle = cover.start;
    result.sweep = cover.sweep;
}

void measure(const TFitOptions& options, const Start<Ellipse>* known, FitPoints& points,
             TMeasuredEllipse& result) {
    Fitted fit;
    result.status = solve(options, known, points, fit);
    result.iterations = fit.iterations;
    if (fit.solution.iterations == 0) return;

    const EllipseSums& sums = fit.solution.sums;
    EllipseJudgement judgement;
    const EllipseMatrix normal = normalMatrix(sums);
    const bool told = judge<kEllipseParameters>(
        points, options, sums.distances, fit.loss, fit.scale, normal,
        [&](cv::Point2d p, EllipseVector& row) { return ellipseRow(fit.solution.ellipse, p, row); },
        judgement);
    const std::vector<unsigned char> used = usedOf(points, fit);
    result.status = verdict(points, fit, used, told, judgement);
    if (result.status != fsOk) return;
    const Ellipse& ellipse = fit.solution.ellipse;
    const EllipseVector bias = biasOf(points, options, fit, judgement);
    const Elongation elongation = elongationOf(ellipse, bias, judgement.covariance);
    const EllipseVector all(bias[0], bias[1], bias[2], (ellipse.a - ellipse.b) / 2.0 - elongation.freed.x,
                            -elongation.freed.y);
    const EllipseVector taken = withinNoise(all, normal, sums.distances.used, judgement.figures.noise);
    describe(points, ellipse, elongation, taken, judgement.covariance, used, result);
    fillReport(points, sums.distances, judgement.figures, result);
}

}  // namespace

void measureEllipse(const TFitOptions& options, FitPoints& points, TMeasuredEllipse& result) {
    measure(options, nullptr, points, result);
}

void measureFrom(const Start<Ellipse>& start, const TFitOptions& options, FitPoints& points,
                 TMeasuredEllipse& result) {
    measure(options, &start, points, result);
}

}  // namespace orx::geometric
