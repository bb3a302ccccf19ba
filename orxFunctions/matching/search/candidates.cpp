#include "orxFunctions/matching/search/candidates.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <tuple>

#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/matching/model/pyramid.h"
#include "orxFunctions/matching/search/direction_maps.h"
#include "orxFunctions/matching/search/edge_field.h"
#include "orxFunctions/matching/search/pose_score.h"
#include "orxFunctions/matching/search/search_plan.h"
#include "orxFunctions/matching/search/top_search.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx::matching {
namespace {

// Candidates that are followed: from the maps, and after the first exact scores.
constexpr std::size_t kMostSeeds = 512;
constexpr std::size_t kSeedsForPart = 16;
constexpr std::size_t kMostFollowed = 128;
constexpr std::size_t kFollowedForPart = 8;
// Poses that differ by less at all points of the outline are the same, pixels of a level.
constexpr double kSameDistance = 2.0;
// Candidates for each part that is asked for, and some more.
constexpr std::size_t kMostCandidates = 16;
constexpr std::size_t kCandidatesForPart = 4;
// Of poses whose middles are nearer than this share of the radius one at the most is right, and those whose
// score is less than this share of the best one's are not.
constexpr double kOnePlace = 0.3;
constexpr double kDominated = 0.85;
constexpr int kMostAtOnePlace = 4;
constexpr int kMostRefined = 8;  // at one place
// Places where parts that look nearly the same after a turn are turned.
constexpr std::size_t kTurnedPlaces = 3;
constexpr std::size_t kTurnedPlacesForPart = 2;
// Candidates that are followed by one thread at a time.
constexpr int kChunk = 16;

cv::Point2d turnedBy(cv::Point2d p, double angle) {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {c * p.x - s * p.y, s * p.x + c * p.y};
}

SignRule signRule(const ModelData& model, const TFindOptions& options) {
    if (!model.signsAreKnown) return SignRule::any;
    return options.polarity == ppEither ? SignRule::either : SignRule::same;
}

bool isBetter(const LevelPose& a, const LevelPose& b) {
    return std::tie(b.score, a.y, a.x, a.angle, a.scale) < std::tie(a.score, b.y, b.x, b.angle, b.scale);
}

class Search {
  public:
    Search(const std::vector<cv::Mat>& pyramid, const ModelData& model, const TFindOptions& options)
        : pyramid_(pyramid),
          options_(options),
          plan_(model, options, pyramid.front().size()),
          rule_(signRule(model, options)),
          fields_(pyramid.size()) {}

    std::vector<Candidate> candidates() {
        std::vector<LevelPose> found;
        for (const ScaleBand& band : plan_.bands()) {
            std::vector<LevelPose> poses = follow(band);
            for (LevelPose& pose : poses) pose = onFinest(pose, band.bottom);
            found.insert(found.end(), poses.begin(), poses.end());
        }
        keepBest(found, 0, kSameDistance * 2, kMostFollowed + kFollowedForPart * maxParts());
        dropDominated(found, 0, kMostAtOnePlace);
        found.resize(std::min(found.size(), kMostCandidates + kCandidatesForPart * maxParts()));
        std::vector<Candidate> result;
        result.reserve(found.size());
        for (const LevelPose& pose : found) result.push_back(candidateOf(pose));
        return result;
    }

  private:
    std::size_t maxParts() const { return static_cast<std::size_t>(std::max(1, options_.maxParts)); }

    // The least score on a level: coarse ones blur what is thin. Greediness expects more of them.
    double leastScore(int level) const {
        const double blurred = level > 1 ? 0.35 : 0.6;
        return options_.minScore * (blurred + 0.25 * options_.greediness);
    }

    static LevelPose onFinest(LevelPose pose, int level) {
        pose.x = fromLevel(pose.x, level);
        pose.y = fromLevel(pose.y, level);
        return pose;
    }

    const cv::Mat& level(int number) {
        while (static_cast<int>(pyramid_.size()) <= number) {
            pyramid_.push_back(makePyramid(pyramid_.back(), 2).back());
        }
        return pyramid_[static_cast<std::size_t>(number)];
    }

    EdgeField& field(int number, double sigma) {
        const cv::Mat& picture = level(number);
        fields_.resize(pyramid_.size());
        std::unique_ptr<EdgeField>& made = fields_[static_cast<std::size_t>(number)];
        if (!made) made = std::make_unique<EdgeField>(picture, sigma, plan_.leastSlope(number));
        return *made;
    }

    cv::Rect region() const {
        const cv::Rect all(cv::Point(), pyramid_.front().size());
        return options_.region.empty() ? all : options_.region & all;
    }

    std::vector<LevelPose> follow(const ScaleBand& band) {
        EdgeField& top = field(band.top, plan_.sigma());
        top.prepareAll();
        const DirectionMaps maps(top, rule_ != SignRule::same);
        std::vector<LevelPose> poses =
            searchLevel(maps, plan_, band, region(), {leastScore(band.top), 0.4 + 0.3 * options_.greediness},
                        kMostSeeds + kSeedsForPart * maxParts());
        for (int number = band.top; number >= band.bottom; --number) {
            if (number < band.top) {
                for (LevelPose& pose : poses) {
                    pose.x = 2 * pose.x + 0.5;
                    pose.y = 2 * pose.y + 0.5;
                }
            }
            climb(poses, band, number);
            keepBest(poses, number, number == band.top ? kSameDistance / 2 : kSameDistance,
                     kMostFollowed + kFollowedForPart * maxParts());
        }
        std::vector<LevelPose> turned = nearlyTheSame(poses, band);
        if (!turned.empty()) {
            climb(turned, band, band.bottom);
            poses.insert(poses.end(), turned.begin(), turned.end());
            keepBest(poses, band.bottom, kSameDistance, poses.size());
        }
        refine(poses, band);
        return poses;
    }

    bool areAtOnePlace(const LevelPose& a, const LevelPose& b, int number) const {
        const double radius = std::ldexp(plan_.radius() * a.scale, -number);
        return std::hypot(a.x - b.x, a.y - b.y) < kOnePlace * radius;
    }

    // The best pose at each place, turned as far as coarse levels may have mistaken it.
    std::vector<LevelPose> nearlyTheSame(const std::vector<LevelPose>& poses, const ScaleBand& band) const {
        std::vector<LevelPose> turned;
        std::vector<LevelPose> places;
        for (const LevelPose& pose : poses) {
            if (places.size() >= kTurnedPlaces + kTurnedPlacesForPart * maxParts()) break;
            const bool isKnown = std::any_of(places.begin(), places.end(), [&](const LevelPose& other) {
                return areAtOnePlace(other, pose, band.bottom);
            });
            if (isKnown) continue;
            places.push_back(pose);
            for (const double turn : plan_.nearTurns(band.bottom, pose.scale)) {
                LevelPose other = pose;
                other.angle = pose.angle + turn;
                if (!plan_.isAllowed(other.angle)) continue;
                const double unit = std::ldexp(pose.scale, -band.bottom);
                const cv::Point2d centre = turnedBy(plan_.symmetryCentre() * unit, pose.angle);
                const cv::Point2d back = turnedBy(plan_.symmetryCentre() * unit, other.angle);
                other.x += centre.x - back.x;
                other.y += centre.y - back.y;
                turned.push_back(other);
            }
        }
        return turned;
    }

    // Without those that a better one at the same place leaves no chance. Best first.
    void dropDominated(std::vector<LevelPose>& poses, int number, int mostAtOnePlace) const {
        if (options_.maxOverlap >= 1) return;
        std::vector<LevelPose> kept;
        for (const LevelPose& pose : poses) {
            int better = 0;
            bool isDominated = false;
            for (const LevelPose& other : kept) {
                if (!areAtOnePlace(other, pose, number)) continue;
                ++better;
                isDominated = isDominated || pose.score < kDominated * other.score;
            }
            if (!isDominated && better < mostAtOnePlace) kept.push_back(pose);
        }
        poses.swap(kept);
    }

    // Where the outline lies, as far as its points may move while climbing.
    cv::Rect reach(const LevelPose& pose, int number) const {
        constexpr double kSlack = 12;
        const double radius = std::ldexp(plan_.radius() * pose.scale, -number) + kSlack;
        const cv::Rect2d wide(pose.x - radius, pose.y - radius, 2 * radius, 2 * radius);
        const cv::Rect2d inside = wide & cv::Rect2d(cv::Point2d(), cv::Size2d(field(number).size()));
        if (inside.empty()) return {};
        return {cv::Point(cvFloor(inside.x), cvFloor(inside.y)),
                cv::Point(cvCeil(inside.br().x), cvCeil(inside.br().y))};
    }

    const EdgeField& field(int number) const { return *fields_[static_cast<std::size_t>(number)]; }

    void climb(std::vector<LevelPose>& poses, const ScaleBand& band, int number) {
        EdgeField& edges = field(number, plan_.sigma());
        std::vector<cv::Rect> parts;
        parts.reserve(poses.size());
        for (const LevelPose& pose : poses) parts.push_back(reach(pose, number));
        edges.prepare(parts);
        const int count = static_cast<int>(poses.size());
        // What hides a part can draw a climb on the top level away from it: where it began is followed, too.
        const bool isTop = number == band.top && band.top > band.bottom;
        std::vector<LevelPose> beginnings(isTop ? poses.size() : 0);
        platform::parallelFor((count + kChunk - 1) / kChunk, [&](int chunk) {
            PoseScore score(edges, plan_, band, number, rule_);
            for (int i = chunk * kChunk; i < std::min(count, (chunk + 1) * kChunk); ++i) {
                LevelPose& pose = poses[static_cast<std::size_t>(i)];
                if (isTop) beginnings[static_cast<std::size_t>(i)] = score.moved(pose);
                pose = score.climbed(pose);
            }
        });
        poses.insert(poses.end(), beginnings.begin(), beginnings.end());
        const double least = leastScore(number);
        poses.erase(std::remove_if(poses.begin(), poses.end(),
                                   [least](const LevelPose& pose) { return !(pose.score >= least); }),
                    poses.end());
    }

    // To the summits between the pixels, those of all that have a chance.
    void refine(std::vector<LevelPose>& poses, const ScaleBand& band) {
        const EdgeField& edges = field(band.bottom);
        const PoseScore score(edges, plan_, band, band.bottom, rule_);
        for (LevelPose& pose : poses) pose.score = score.exactScore(pose);
        std::sort(poses.begin(), poses.end(), isBetter);
        dropDominated(poses, band.bottom, kMostRefined);
        platform::parallelFor(static_cast<int>(poses.size()), [&](int i) {
            LevelPose& pose = poses[static_cast<std::size_t>(i)];
            pose = PoseScore(edges, plan_, band, band.bottom, rule_).refined(pose);
        });
    }

    bool areSame(const LevelPose& a, const LevelPose& b, int number, double distance) const {
        if (std::abs(a.x - b.x) > distance || std::abs(a.y - b.y) > distance) return false;
        const double radius = std::ldexp(plan_.radius(), -number);
        if (radius * std::abs(a.scale - b.scale) > distance) return false;
        if (plan_.period() <= 0) return true;
        return radius * a.scale * std::abs(std::remainder(a.angle - b.angle, plan_.period())) <= distance;
    }

    // Best first, without those that are the same as a better one.
    void keepBest(std::vector<LevelPose>& poses, int number, double distance, std::size_t most) const {
        std::sort(poses.begin(), poses.end(), isBetter);
        std::vector<LevelPose> kept;
        for (const LevelPose& pose : poses) {
            if (kept.size() >= most) break;
            const bool isKnown = std::any_of(kept.begin(), kept.end(), [&](const LevelPose& other) {
                return areSame(pose, other, number, distance);
            });
            if (!isKnown) kept.push_back(pose);
        }
        poses.swap(kept);
    }

    Candidate candidateOf(const LevelPose& pose) const {
        Candidate candidate;
        const double angle = std::remainder(pose.angle, 2 * kPi);
        const cv::Point2d middle = turnedBy(plan_.middle() * pose.scale, angle);
        candidate.pose.x = pose.x - middle.x;
        candidate.pose.y = pose.y - middle.y;
        candidate.pose.angle = degrees(angle);
        candidate.pose.scale = pose.scale;
        candidate.reversed = pose.reversed || (options_.polarity == ppReversed && rule_ == SignRule::same);
        candidate.score = std::clamp(pose.score, 0.0, 1.0);
        return candidate;
    }

    std::vector<cv::Mat> pyramid_;
    const TFindOptions& options_;
    SearchPlan plan_;
    SignRule rule_;
    std::vector<std::unique_ptr<EdgeField>> fields_;
};

}  // namespace

std::vector<Candidate> searchCandidates(const std::vector<cv::Mat>& pyramid, const ModelData& model,
                                        const TFindOptions& options) {
    if (pyramid.empty() || pyramid.front().empty()) return {};
    return Search(pyramid, model, options).candidates();
}

}  // namespace orx::matching
