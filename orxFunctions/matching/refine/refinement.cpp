#include "orxFunctions/matching/refine/refinement.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orxFunctions/analysis/edges/chain_smoothing.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/matching/refine/coverage.h"
#include "orxFunctions/matching/refine/outline_match.h"
#include "orxFunctions/matching/refine/pose_problem.h"

namespace orx::matching {
namespace {

// What remains of errors that follow the pixel grid, standard deviation in pixels.
constexpr double kGridDeviation = 0.009;

// One turn of the loop: how far edges may be, and which points are asked.
struct Round {
    double reach;     // pixels
    double mostTurn;  // degrees
    int stride;
};
constexpr Round kRounds[] = {{4, 30, 3}, {3, 30, 3}, {2, 25, 1}, {1.5, 20, 1}};
constexpr int kMostRounds = 12;
constexpr double kSettled = 2e-4;  // of a step, pixels

// The weight of a distance in standard deviations: one of inliers, none of outliers.
double omega(double z) {
    constexpr double kInlier = 2.5;
    constexpr double kOutlier = 4.5;
    if (z <= kInlier) return 1;
    if (z >= kOutlier) return 0;
    const double t = (z - kInlier) / (kOutlier - kInlier);
    return (1 - t * t) * (1 - t * t);
}

double medianOf(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// All that stays the same for a candidate.
class Refiner {
  public:
    Refiner(const cv::Mat& grey, const ModelData& model, const Candidate& candidate,
            const TFindOptions& options)
        : model_(model),
          candidate_(candidate),
          outline_(readyOutline(model, candidate.reversed)),
          sigma_(std::clamp(model.sigma * candidate.pose.scale, 0.6, 20.0)),
          edges_(grey, window(), finding(options)),
          grows_(options.maxScale > options.minScale),
          turns_(model.report.symmetry != 0) {}

    TFoundPart refine() {
        const CentredPose start = centredPose(candidate_.pose, outline_);
        const Coverage before = coverageAt(start);
        const CentredPose refined = settle(start);
        const Coverage after = coverageAt(refined);
        const bool better = after.fit >= before.fit;
        TFoundPart part;
        part.reversed = candidate_.reversed;
        const CentredPose& best = better ? refined : start;
        const Coverage& coverage = better ? after : before;
        part.pose = partPose(best, outline_);
        part.score = coverage.score;
        part.rms = coverage.rms;
        part.seen = coverage.seen;
        tellUncertainty(best, part);
        return part;
    }

  private:
    ORXEdge::TMetricOptions finding(const TFindOptions& options) const {
        ORXEdge::TMetricOptions find;
        find.sigma = sigma_;
        // What the optics blurs as much as the finder reads 0.7 of its contrast.
        find.high = 0.7 * options.minContrast;
        find.low = 0.5 * find.high;
        find.noise = options.noise;
        return find;
    }

    // Where the outline's points may have their edges, and as much more as the edge finder's filters reach.
    cv::Rect window() const {
        const CentredPose start = centredPose(candidate_.pose, outline_);
        const cv::Matx22d turn(std::cos(start.angle), -std::sin(start.angle), std::sin(start.angle),
                               std::cos(start.angle));
        cv::Point2d low = start.centre;
        cv::Point2d high = start.centre;
        for (const ReadyPoint& point : outline_.points) {
            const cv::Point2d p = start.centre + start.scale * (turn * point.position);
            low = {std::min(low.x, p.x), std::min(low.y, p.y)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y)};
        }
        const double margin = std::ceil(kRounds[0].reach + 2 + 4 * sigma_);
        constexpr double kFar = 1e6;
        const cv::Point from(cvFloor(std::clamp(low.x - margin, -kFar, kFar)),
                             cvFloor(std::clamp(low.y - margin, -kFar, kFar)));
        const cv::Point to(cvCeil(std::clamp(high.x + margin, -kFar, kFar)),
                           cvCeil(std::clamp(high.y + margin, -kFar, kFar)));
        return {from, to + cv::Point(1, 1)};
    }

    Coverage coverageAt(const CentredPose& pose) const {
        return coverageOf(outline_, edges_, pose, !model_.signsAreKnown);
    }

    double radiusAt(const CentredPose& pose) const { return outline_.radius * pose.scale; }

    // Sets the variances of the found matches to what neighbours have on average, with the grid's share;
    // gives each a weight by its distance. The number of standard deviations that inliers have is returned, 1
    // at the least, 0 where there are too few.
    double weigh(std::vector<Match>& matches, std::vector<double>& weights) const {
        weights.assign(matches.size(), 0.0);
        std::vector<double> distances;
        for (Match& match : matches) {
            if (!match.found) continue;
            match.variance += kGridDeviation * kGridDeviation;
            distances.push_back(std::abs(match.distance) / std::sqrt(match.variance));
        }
        constexpr std::size_t kFewest = 8;
        if (distances.size() < kFewest) return 0;
        const double scale = std::max(1.0, 1.4826 * medianOf(distances));
        for (std::size_t i = 0; i < matches.size(); ++i) {
            const Match& match = matches[i];
            if (!match.found) continue;
            weights[i] = omega(std::abs(match.distance) / std::sqrt(match.variance) / scale) *
                         outline_.points[i].length / match.variance;
        }
        return scale;
    }

    PoseProblem problemOf(const CentredPose& pose, const std::vector<Match>& matches,
                          const std::vector<double>& weights) const {
        PoseProblem problem(radiusAt(pose), turns_, grows_);
        for (std::size_t i = 0; i < matches.size(); ++i) {
            if (weights[i] > 0) problem.add(matches[i], weights[i]);
        }
        return problem;
    }

    // What directions tell by the noise of the model's normals alone, and as much again.
    double leastShare() const {
        double variance = 0;
        for (const ReadyPoint& point : outline_.points) variance += point.variance;
        variance /= static_cast<double>(outline_.points.size());
        return 1e-4 + variance / (model_.sigma * model_.sigma);
    }

    CentredPose settle(CentredPose pose) const {
        std::vector<Match> matches;
        std::vector<double> weights;
        constexpr int kPlanned = static_cast<int>(std::size(kRounds));
        for (int i = 0; i < kMostRounds; ++i) {
            const Round& round = kRounds[std::min(i, kPlanned - 1)];
            const EdgeWish wish{round.reach, radians(round.mostTurn), !model_.signsAreKnown};
            matchOutline(outline_, edges_, pose, wish, round.stride, matches);
            if (weigh(matches, weights) == 0) break;
            PoseProblem problem = problemOf(pose, matches, weights);
            problem.solve(leastShare());
            const cv::Vec4d step = problem.step();
            const double radius = radiusAt(pose);
            pose.centre += cv::Point2d(step[0], step[1]);
            pose.angle += step[2] / radius;
            pose.scale *= std::exp(step[3] / radius);
            if (i + 1 >= kPlanned && cv::norm(step) < kSettled) break;
        }
        return pose;
    }

    void tellUncertainty(const CentredPose& pose, TFoundPart& part) const;

    const ModelData& model_;
    const Candidate& candidate_;
    ReadyOutline outline_;
    double sigma_;
    WindowEdges edges_;
    bool grows_;
    bool turns_;
};

void Refiner::tellUncertainty(const CentredPose& pose, TFoundPart& part) const {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    const Round& round = kRounds[std::size(kRounds) - 1];
    std::vector<Match> matches;
    std::vector<double> weights;
    matchOutline(outline_, edges_, pose, {round.reach, radians(round.mostTurn), !model_.signsAreKnown}, 1,
                 matches);
    weigh(matches, weights);
    PoseProblem problem = problemOf(pose, matches, weights);
    problem.solve(leastShare());

    double weight = 0;
    double squares = 0;
    double length = 0;
    for (std::size_t i = 0; i < matches.size(); ++i) {
        if (!(weights[i] > 0)) continue;
        weight += weights[i] * matches[i].variance;
        squares += weights[i] * matches[i].distance * matches[i].distance;
        length += outline_.points[i].length * pose.scale;
    }
    // Points of an edge count as if so far apart, by what they share.
    const double apart = 2 * std::sqrt(kPi) * edges::chainSmoothing(sigma_);
    const double points = length / apart;
    const double left = std::max(points - 4, 1.0);
    const double factor = weight > 0 ? std::max(1.0, squares / weight * points / left) : 1.0;

    // From the outline's centre to the reference point, from pixels at the radius to degrees and scale.
    const double radius = radiusAt(pose);
    const cv::Point2d arm = cv::Point2d(part.pose.x, part.pose.y) - pose.centre;
    const cv::Matx44d toReference(1, 0, -arm.y / radius, arm.x / radius,  //
                                  0, 1, arm.x / radius, arm.y / radius,   //
                                  0, 0, degrees(1 / radius), 0,           //
                                  0, 0, 0, pose.scale / radius);
    part.covariance = factor * apart / pose.scale * (toReference * problem.covariance() * toReference.t());
    part.deviationX = std::sqrt(part.covariance(0, 0));
    part.deviationY = std::sqrt(part.covariance(1, 1));
    part.deviationAngle = std::sqrt(part.covariance(2, 2));
    part.deviationScale = std::sqrt(part.covariance(3, 3));

    const double reported = std::max(model_.report.radius * pose.scale, 1.0);
    std::vector<cv::Vec4d> open = problem.open();
    if (!turns_) open.push_back({0, 0, 1, 0});
    for (const cv::Vec4d& direction : open) {
        cv::Vec4d free = toReference * direction;
        free[2] *= radians(reported);
        free[3] *= reported / pose.scale;
        free /= cv::norm(free);
        part.free.push_back(free);
        constexpr double kShare = 3e-3;
        if (std::abs(free[0]) > kShare) part.deviationX = kInfinite;
        if (std::abs(free[1]) > kShare) part.deviationY = kInfinite;
        if (std::abs(free[2]) > kShare) part.deviationAngle = kInfinite;
        if (std::abs(free[3]) > kShare) part.deviationScale = kInfinite;
    }
}

}  // namespace

TFoundPart refineCandidate(const cv::Mat& grey, const ModelData& model, const Candidate& candidate,
                           const TFindOptions& options) {
    if (model.outline.empty()) return {};
    return Refiner(grey, model, candidate, options).refine();
}

}  // namespace orx::matching
