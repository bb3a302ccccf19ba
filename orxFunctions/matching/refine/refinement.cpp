#include "orxFunctions/matching/refine/refinement.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/matching/refine/consensus.h"
#include "orxFunctions/matching/refine/coverage.h"
#include "orxFunctions/matching/refine/outline_match.h"
#include "orxFunctions/matching/refine/pose_problem.h"
#include "orxFunctions/matching/refine/turn_scan.h"
#include "orxFunctions/matching/refine/uncertainty.h"

namespace orx::matching {
namespace {

// One turn of the loop: how far edges may be, which points are asked, and what counts in full (weightsOf()):
// the few points that tell the angle of a round part are far off when all the others have found their edges.
struct Round {
    double reach;     // pixels
    double mostTurn;  // degrees
    int stride;
    double tolerance;  // pixels
};
constexpr Round kRounds[] = {{4, 30, 3, 4}, {3, 30, 3, 2}, {2, 25, 1, 0.5}, {1.5, 20, 1, 0}};
constexpr int kPlanned = static_cast<int>(std::size(kRounds));
constexpr int kMostRounds = 12;
// Where inliers are so much farther than they should be, edges of something else may be among them.
constexpr double kDisagreement = 1.7;

// The model's smoothing, as the part has grown; more in strong noise, where it is worth that corners are
// rounded a little more than the model's.
double sigmaFor(const ModelData& model, double scale, double noise) {
    constexpr double kUsualContrast = 100;  // of drawings, which know none
    const double share = noise / (model.contrast > 0 ? model.contrast : kUsualContrast);
    const double more = 0.4 * std::clamp((share - 0.03) / 0.05, 0.0, 1.0);
    constexpr double kLeast = 0.8;  // pixels alias below
    return std::clamp(model.sigma * scale * (1 + more), std::min(kLeast, model.sigma), 20.0);
}

// Where the outline lies, with all that follows from it.
struct Placed {
    CentredPose pose;
    std::vector<Match> matches;
    Coverage coverage;
};

// All that stays the same for a candidate.
class Refiner {
  public:
    Refiner(const cv::Mat& grey, const ModelData& model, const Candidate& candidate,
            const TFindOptions& options)
        : model_(model),
          outline_(readyOutline(model, candidate.reversed)),
          start_(centredPose(candidate.pose, outline_)),
          sigma_(sigmaFor(model, candidate.pose.scale, options.noise)),
          edges_(grey, window(), finding(options)),
          turns_{radians(options.startAngle), radians(options.angleRange)},
          freedom_{model.report.symmetry != 0, options.maxScale > options.minScale,
                   leastShare(outline_, model)} {}

    TFoundPart refine() {
        Placed best = placedAt(settled(start_));
        if (freedom_.turns) lookAround(best);
        // Hardly anything can be better than this.
        constexpr double kGood = 0.85;
        if (best.coverage.fit < kGood) {
            Placed before = placedAt(start_);
            if (before.coverage.fit > best.coverage.fit) best = std::move(before);
        }
        TFoundPart part;
        part.pose = partPose(best.pose, outline_);
        part.score = best.coverage.score;
        part.rms = best.coverage.rms;
        tellUncertainty(outline_, best.pose, best.matches, freedom_, sigma_, model_.report.radius, part);
        part.seen = std::move(best.coverage.seen);
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
        const double c = start_.scale * std::cos(start_.angle);
        const double s = start_.scale * std::sin(start_.angle);
        cv::Point2d low = start_.centre;
        cv::Point2d high = start_.centre;
        for (const ReadyPoint& point : outline_.points) {
            const cv::Point2d m = point.position;
            const cv::Point2d p = start_.centre + cv::Point2d(c * m.x - s * m.y, s * m.x + c * m.y);
            low = {std::min(low.x, p.x), std::min(low.y, p.y)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y)};
        }
        const double margin = kRounds[0].reach + 2 + 4 * sigma_;
        static constexpr double kFar = 1e6;
        const auto whole = [](double v) { return cvRound(std::clamp(v, -kFar, kFar)); };
        const cv::Point from(whole(low.x - margin), whole(low.y - margin));
        const cv::Point to(whole(high.x + margin), whole(high.y + margin));
        return {from, to + cv::Point(1, 1)};
    }

    Placed placedAt(const CentredPose& pose) const {
        const double reach = std::min(seenDistance(pose.scale) + 0.5, double{WindowEdges::kLargestReach});
        Placed placed{pose, {}, {}};
        matchOutline(outline_, edges_, pose, wish(reach, kRounds[kPlanned - 1].mostTurn), 1, placed.matches);
        placed.coverage = coverageOf(outline_, placed.matches, pose.scale);
        return placed;
    }

    // Takes the pose that a nearly round part is seen better at, turned, if there is one.
    void lookAround(Placed& best) const {
        const TurnScan scan(outline_);
        if (!scan.isDoubtful(best.matches)) return;
        const CentredPose turned = scan.turned(edges_, best.pose, !model_.signsAreKnown, turns_);
        if (turned.angle == best.pose.angle) return;
        Placed other = placedAt(settled(turned));
        if (other.coverage.fit > best.coverage.fit) best = std::move(other);
    }

    EdgeWish wish(double reach, double mostTurn) const {
        return {reach, radians(mostTurn), !model_.signsAreKnown};
    }

    CentredPose settled(CentredPose pose) const {
        std::vector<Match> matches;
        double before = 0;
        bool isAgreed = false;
        for (int i = 0; i < kMostRounds; ++i) {
            const Round& round = kRounds[std::min(i, kPlanned - 1)];
            matchOutline(outline_, edges_, pose, wish(round.reach, round.mostTurn), round.stride, matches);
            const std::size_t trimmed = round.stride == 1 ? trimmedPoints(sigma_, pose.scale) : 0;
            const Weights weights = weightsOf(outline_, matches, trimmed, round.tolerance);
            if (weights.values.empty()) break;
            if (i + 1 >= kPlanned && weights.scale > kDisagreement && !isAgreed) {
                isAgreed = true;
                pose = moved(pose, consensusStep(outline_, pose, matches, freedom_));
                continue;
            }
            PoseProblem problem = problemOf(outline_, pose, matches, weights, freedom_);
            problem.solve(freedom_.leastShare);
            const cv::Vec4d step = problem.step();
            pose = moved(pose, step);
            const double size = cv::norm(step);
            if (i + 1 >= kPlanned && isLast(size, before)) break;
            before = size;
        }
        return pose;
    }

    CentredPose moved(CentredPose pose, const cv::Vec4d& step) const {
        const double radius = outline_.radius * pose.scale;
        pose.centre += cv::Point2d(step[0], step[1]);
        pose.angle += step[2] / radius;
        // Chance edges may ask for anything; the candidate's scale is nearly right.
        constexpr double kMostGrowth = 1.25;
        pose.scale = std::clamp(pose.scale * std::exp(step[3] / radius), start_.scale / kMostGrowth,
                                start_.scale * kMostGrowth);
        return pose;
    }

    // Steps fall by much: what is left is less than a share of the last one.
    static bool isLast(double step, double before) {
        constexpr double kSmall = 2e-3;  // pixels
        constexpr double kTiny = 2e-4;
        return step < kTiny || (step < kSmall && step < 0.3 * before);
    }

    const ModelData& model_;
    ReadyOutline outline_;
    CentredPose start_;
    double sigma_;
    WindowEdges edges_;
    TurnRange turns_;
    Freedom freedom_;
};

}  // namespace

TFoundPart refineCandidate(const cv::Mat& grey, const ModelData& model, const Candidate& candidate,
                           const TFindOptions& options) {
    if (model.outline.empty()) return {};
    TFoundPart part = Refiner(grey, model, candidate, options).refine();
    part.reversed = candidate.reversed;
    return part;
}

}  // namespace orx::matching
