#include "orxFunctions/matching/refine/uncertainty.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "orxFunctions/analysis/edges/chain_smoothing.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/median_internal.h"

namespace orx::matching {
namespace {

// What remains of errors that follow the pixel grid, standard deviation in pixels, of model and picture.
constexpr double kGridDeviation = 0.009;

// Distances in standard deviations: of inliers, and beyond of outliers.
constexpr double kInlier = 2.5;
constexpr double kOutlier = 4.5;

double omega(double z) {
    if (z <= kInlier) return 1;
    if (z >= kOutlier) return 0;
    const double t = (z - kInlier) / (kOutlier - kInlier);
    return (1 - t * t) * (1 - t * t);
}

// How much larger than stated the variance of the distances is, 1 at the least.
double excess(const ReadyOutline& outline, const std::vector<Match>& matches,
              const std::vector<double>& weights, double apart) {
    double weight = 0;
    double squares = 0;
    double length = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        if (!(weights[i] > 0)) continue;
        weight += weights[i] * varianceOf(matches[i]);
        squares += weights[i] * matches[i].distance * matches[i].distance;
        length += outline.points[i].length;
    }
    const double points = length / apart;
    const double left = std::max(points - 4, 1.0);
    return weight > 0 ? std::max(1.0, squares / weight * points / left) : 1.0;
}

void trimEnds(const ReadyOutline& outline, std::size_t trimmed, std::vector<double>& weights) {
    constexpr std::size_t kSeveral = 4;
    const std::size_t count = weights.size();
    const std::vector<double> before = weights;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= count; ++i) {
        if (i < count && !(before[i] > 0) && outline.chains[i] == outline.chains[start]) continue;
        if (i - start >= kSeveral) {
            for (std::size_t k = start - std::min(start, trimmed); k < std::min(i + trimmed, count); ++k) {
                if (outline.chains[k] == outline.chains[start]) weights[k] = 0;
            }
        }
        start = i < count && !(before[i] > 0) ? i : i + 1;
    }
}

// Where neighbours together are farther from their edges than noise has it, something disturbs these: their
// variance is what their distances say.
void weighLocally(const std::vector<double>& ratios, double scale, std::vector<double>& weights) {
    constexpr std::size_t kReach = 8;
    constexpr double kUsual = 1.8;  // what noise hardly exceeds, of the mean square over so few
    const std::size_t count = weights.size();
    std::vector<double> squares(count + 1);
    std::vector<double> numbers(count + 1);
    for (std::size_t i = 0; i < count; ++i) {
        const bool counts = weights[i] > 0;
        const double z = ratios[i] / scale;
        squares[i + 1] = squares[i] + (counts ? z * z : 0);
        numbers[i + 1] = numbers[i] + (counts ? 1 : 0);
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (!(weights[i] > 0)) continue;
        const std::size_t from = i - std::min(i, kReach);
        const std::size_t to = std::min(i + kReach + 1, count);
        const double mean = (squares[to] - squares[from]) / (numbers[to] - numbers[from]);
        if (mean > kUsual) weights[i] *= kUsual / mean;
    }
}

}  // namespace

double varianceOf(const Match& match) { return match.variance + kGridDeviation * kGridDeviation; }

double leastShare(const ReadyOutline& outline, const ModelData& model) {
    double variance = 0;
    for (const ReadyPoint& point : outline.points) variance += point.variance;
    variance /= static_cast<double>(outline.points.size());
    return 1e-4 + variance / (model.sigma * model.sigma);
}

Weights weightsOf(const ReadyOutline& outline, const std::vector<Match>& matches, std::size_t trimmed,
                  double tolerance) {
    std::vector<double> ratios(matches.size(), 0.0);
    std::vector<double> deviations(matches.size());
    std::vector<double> found;
    found.reserve(matches.size());
    for (std::size_t i = 0; i < matches.size(); ++i) {
        if (!matches[i].found) continue;
        deviations[i] = std::sqrt(varianceOf(matches[i]));
        ratios[i] = std::abs(matches[i].distance) / deviations[i];
        found.push_back(ratios[i]);
    }
    constexpr std::size_t kFewest = 8;
    if (found.size() < kFewest) return {};
    Weights weights;
    weights.scale = std::max(1.0, 1.4826 * medianOf(std::move(found)));
    weights.values.resize(matches.size());
    for (std::size_t i = 0; i < matches.size(); ++i) {
        if (!matches[i].found) continue;
        double scale = weights.scale;
        if (tolerance > 0) scale = std::max(scale, tolerance / (kOutlier * deviations[i]));
        weights.values[i] = omega(ratios[i] / scale) * outline.points[i].length / varianceOf(matches[i]);
    }
    if (trimmed > 0) trimEnds(outline, trimmed, weights.values);
    if (trimmed > 0 && tolerance == 0) weighLocally(ratios, weights.scale, weights.values);
    return weights;
}

PoseProblem problemOf(const ReadyOutline& outline, const CentredPose& pose, const std::vector<Match>& matches,
                      const Weights& weights, const Freedom& freedom) {
    PoseProblem problem(outline.radius * pose.scale, freedom.turns, freedom.grows);
    problem.add(matches, weights.values);
    return problem;
}

std::size_t trimmedPoints(double sigma, double scale) {
    return static_cast<std::size_t>(std::ceil(3 * sigma / scale));
}

void tellUncertainty(const ReadyOutline& outline, const CentredPose& pose, const std::vector<Match>& matches,
                     const Freedom& freedom, double sigma, double reportedRadius, TFoundPart& part) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    const Weights weights = weightsOf(outline, matches, trimmedPoints(sigma, pose.scale), 0);
    PoseProblem problem = problemOf(outline, pose, matches, weights, freedom);
    problem.solve(freedom.leastShare);

    // From the outline's centre to the reference point, from pixels at the radius to degrees and scale.
    const double radius = outline.radius * pose.scale;
    const cv::Point2d arm = cv::Point2d(part.pose.x, part.pose.y) - pose.centre;
    const cv::Matx44d toReference(1, 0, -arm.y / radius, arm.x / radius,  //
                                  0, 1, arm.x / radius, arm.y / radius,   //
                                  0, 0, degrees(1 / radius), 0,           //
                                  0, 0, 0, pose.scale / radius);
    // Points of an edge tell as much as independent ones so far apart; lengths are the model's.
    const double inModel = 2 * std::sqrt(kPi) * edges::chainSmoothing(sigma) / pose.scale;
    const double factor = inModel * excess(outline, matches, weights.values, inModel);
    part.covariance = factor * (toReference * problem.covariance() * toReference.t());
    double* const deviations[4] = {&part.deviationX, &part.deviationY, &part.deviationAngle,
                                   &part.deviationScale};
    for (int i = 0; i < 4; ++i) *deviations[i] = std::sqrt(part.covariance(i, i));

    const double reported = std::max(reportedRadius * pose.scale, 1.0);
    std::vector<cv::Vec4d> open = problem.open();
    if (!freedom.turns) open.push_back({0, 0, 1, 0});
    for (const cv::Vec4d& direction : open) {
        cv::Vec4d free = toReference * direction;
        free[2] *= radians(reported);
        free[3] *= reported / pose.scale;
        free /= cv::norm(free);
        part.free.push_back(free);
        constexpr double kShare = 3e-3;
        for (int i = 0; i < 4; ++i) {
            if (std::abs(free[i]) > kShare) *deviations[i] = kInfinite;
        }
    }
}

}  // namespace orx::matching
