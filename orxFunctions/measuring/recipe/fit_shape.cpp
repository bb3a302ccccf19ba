#include "orxFunctions/measuring/recipe/shape.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/measuring/recipe/calibration_shift.h"

namespace orx::recipes {
namespace {

TFitOptions fitOptions(const EdgePoints& edges, const PlacedPoints& placed, TFitLoss loss) {
    TFitOptions options;
    options.loss = loss;
    options.noise = edges.noise;
    options.smoothing = edges.smoothing;
    if (edges.weighted) options.deviations = placed.deviations;
    return options;
}

// The noise that the points have by the picture's alone.
double leastNoise(const PlacedPoints& placed) {
    constexpr double kGrid = 0.01;  // what the pixels' grid leaves of a caliper's edge
    double squares = 0.0;
    for (const double d : placed.deviations) squares += d * d;
    return std::hypot(kGrid, std::sqrt(squares / static_cast<double>(placed.deviations.size())));
}

// Least squares where the picture's noise explains what remains: nothing is left out without need, which
// costs few points most of what they tell. Else a robust fit, whose scale is taken from the points; where
// that is below the noise (of few points, half may lie near a shape by chance) the noise is the scale.
template <class Fit>
auto fitSoundly(Fit fit, const EdgePoints& edges, const PlacedPoints& placed, TFitLoss loss) {
    const double least = leastNoise(placed);
    auto plain = fit(placed.points, fitOptions(edges, placed, flLeastSquares));
    const double spread = 1.0 + 2.0 / std::sqrt(2.0 * std::max(1.0, plain.degreesOfFreedom));
    if (loss == flLeastSquares || (plain.valid() && plain.noise <= spread * least)) return plain;
    TFitOptions options = fitOptions(edges, placed, loss);
    auto robust = fit(placed.points, options);
    if (robust.valid() && robust.noise >= least) return robust;
    options.scale = edges.weighted ? 1.0 : least;
    return fit(placed.points, options);
}

// What probes and chains leave of the bend of a blurred outline, which they take back but for a part: pixels
// of the radius, times the radius, for blurs up to 1. Calipers leave nothing that could be seen.
constexpr double kBendLeft = 0.01;

void addBend(const EdgePoints& edges, TMeasuredCircle& circle) {
    if (edges.noise != pnEdgeChain || !circle.valid()) return;
    const double left = kBendLeft / circle.radius;
    circle.covariance(2, 2) += left * left;
    circle.radiusDeviation = std::hypot(circle.radiusDeviation, left);
}

void addBend(const EdgePoints& edges, TMeasuredEllipse& ellipse) {
    if (edges.noise != pnEdgeChain || !ellipse.valid()) return;
    const double left = kBendLeft / ellipse.semiMinor;
    for (const int axis : {2, 3}) ellipse.covariance(axis, axis) += left * left;
    ellipse.semiMajorDeviation = std::hypot(ellipse.semiMajorDeviation, left);
    ellipse.semiMinorDeviation = std::hypot(ellipse.semiMinorDeviation, left);
}

void addBend(const EdgePoints& /*edges*/, TMeasuredLine& /*line*/) {}

// Takes over what the fit tells beside the shape.
template <class Fitted>
void settle(Fitted fit, const EdgePoints& edges, double size, Fitted& target, SpaceShape& result) {
    result.valid = fit.valid();
    if (!result.valid) result.problem = fitStatusText(fit.status);
    result.rms = fit.rms * size;
    result.used = std::move(fit.used);
    fit.used.clear();
    addBend(edges, fit);
    target = scaled(std::move(fit), size);
}

// The points between which a chain's length is counted: shorter chords would add the noise to it.
std::vector<cv::Point2d> coarsely(const std::vector<cv::Point2d>& points, bool closed) {
    constexpr std::size_t kStep = 5;
    std::vector<cv::Point2d> coarse;
    for (std::size_t i = 0; i < points.size(); i += kStep) coarse.push_back(points[i]);
    if (!closed && (points.size() - 1) % kStep != 0) coarse.push_back(points.back());
    return coarse;
}

// Along the points, jumps included. Ends are where edges were lost: half a pixel either way.
TMeasuredValue lengthAlong(const EdgePoints& edges, const PlacedPoints& placed) {
    constexpr double kEnd = 0.5;
    const std::vector<cv::Point2d> coarse = coarsely(placed.points, edges.closed);
    double noise = 0.0;
    for (const double d : placed.deviations) noise = std::max(noise, d);
    TMeasuredValue value;
    value.status = rsOk;
    value.value = lengthOf(coarse, edges.closed) * placed.size;
    const double ends = edges.closed ? 0.0 : kEnd * std::sqrt(2.0);
    // Chords turn by their ends' noise; along the outline it shows where the chain bends, and no more than
    // that.
    value.deviation = std::hypot(ends, noise * std::sqrt(2.0)) * placed.size;
    value.degreesOfFreedom = std::numeric_limits<double>::infinity();
    return value;
}

// The chain by each shift of the calibration: how much longer its chords become. Empty where a point has no
// place.
std::vector<Shape> shiftedLengths(const Shape& shape, const EdgePoints& edges, const PlacedPoints& placed,
                                  const Plane& plane) {
    const std::vector<cv::Point2d> pixels = coarsely(edges.points, edges.closed);
    const std::vector<cv::Point2d> places = coarsely(placed.points, edges.closed);
    const cv::Mat shifts = plane.shiftsOf(pixels);
    std::vector<Shape> result(static_cast<std::size_t>(shifts.cols), shape);
    const std::size_t chords = edges.closed ? pixels.size() : pixels.size() - 1;
    for (std::size_t i = 0; i < chords && !result.empty(); ++i) {
        const std::size_t j = (i + 1) % pixels.size();
        const cv::Point2d way = places[j] - places[i];
        const cv::Point2d along = way / std::max(1e-300, cv::norm(way));
        const int from = static_cast<int>(2 * i);
        const int to = static_cast<int>(2 * j);
        for (int k = 0; k < shifts.cols; ++k) {
            const cv::Point2d by(shifts.at<double>(to, k) - shifts.at<double>(from, k),
                                 shifts.at<double>(to + 1, k) - shifts.at<double>(from + 1, k));
            result[static_cast<std::size_t>(k)].length.value += by.dot(along);
        }
    }
    return result;
}

}  // namespace

SpaceShape fitShape(const EdgePoints& edges, const FeatureSpec& asked, const Plane* plane) {
    SpaceShape result;
    result.shape.kind = asked.kind;
    const PlacedPoints placed = placedPoints(edges, plane);
    if (placed.points.empty()) {
        result.problem = edges.points.empty() ? "no edge was found" : "has no place on the calibrated plane";
        return result;
    }
    const auto fitted = [&](auto fit) { return fitSoundly(fit, edges, placed, asked.loss); };
    const auto line = [](const auto& points, const auto& options) {
        return fitLineGeometric(points, options);
    };
    const auto circle = [](const auto& points, const auto& options) {
        return fitCircleGeometric(points, options);
    };
    const auto ellipse = [](const auto& points, const auto& options) {
        return fitEllipseGeometric(points, options);
    };
    switch (asked.kind) {
        case fkLine:
            settle(fitted(line), edges, placed.size, result.shape.line, result);
            break;
        case fkCircle:
        case fkArc:
            settle(fitted(circle), edges, placed.size, result.shape.circle, result);
            break;
        case fkEllipse:
            settle(fitted(ellipse), edges, placed.size, result.shape.ellipse, result);
            break;
        default:
            result.valid = true;
            result.shape.length = lengthAlong(edges, placed);
    }
    if (result.valid && plane != nullptr) {
        result.shifted = asked.kind == fkChain ? shiftedLengths(result.shape, edges, placed, *plane)
                                               : shiftedShapes(result.shape, edges, result.used, *plane);
        result.valid = !result.shifted.empty() || plane->shifts() == 0;
        if (!result.valid) result.problem = "has no place on the calibrated plane";
    }
    return result;
}

Curve curveOf(const Shape& shape) {
    if (shape.kind == fkLine) {
        const TMeasuredLine& line = shape.line;
        return lineCurve(line.point + line.from * line.direction, line.point + line.to * line.direction);
    }
    if (shape.kind == fkEllipse) {
        const TMeasuredEllipse& ellipse = shape.ellipse;
        return ellipseCurve(ellipse.center, ellipse.semiMajor, ellipse.semiMinor, ellipse.angle);
    }
    const TMeasuredCircle& circle = shape.circle;
    return circleCurve(circle.center, circle.radius, circle.startAngle, circle.sweep);
}

}  // namespace orx::recipes
