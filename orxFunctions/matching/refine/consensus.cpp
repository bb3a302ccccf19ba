#include "orxFunctions/matching/refine/consensus.h"

#include <algorithm>
#include <cmath>

namespace orx::matching {
namespace {

constexpr std::size_t kStretches = 10;
// Steps beyond this are of stretches that do not tell the pose, pixels.
constexpr double kLargestStep = 6;

// A match as its distance follows steps, in standard deviations.
struct Row {
    cv::Vec4d slope;
    double distance;
};

double medianAfter(const std::vector<Row>& rows, const cv::Vec4d& step, std::vector<double>& scratch) {
    scratch.clear();
    for (const Row& row : rows) scratch.push_back(std::abs(row.distance - row.slope.dot(step)));
    const auto middle = scratch.begin() + static_cast<std::ptrdiff_t>(scratch.size() / 2);
    std::nth_element(scratch.begin(), middle, scratch.end());
    return *middle;
}

}  // namespace

cv::Vec4d consensusStep(const ReadyOutline& outline, const CentredPose& pose,
                        const std::vector<Match>& matches, const Freedom& freedom) {
    const double radius = outline.radius * pose.scale;
    const PoseProblem empty(radius, freedom.turns, freedom.grows);
    std::vector<PoseProblem> stretches(kStretches, empty);
    std::vector<Row> judges;
    const auto found = static_cast<std::size_t>(
        std::count_if(matches.begin(), matches.end(), [](const Match& match) { return match.found; }));
    // So many judges tell as much as all do.
    constexpr std::size_t kJudges = 128;
    const std::size_t every = found / kJudges + 1;
    std::size_t number = 0;
    for (std::size_t i = 0; i < matches.size(); ++i) {
        const Match& match = matches[i];
        if (!match.found) continue;
        const double variance = varianceOf(match);
        stretches[number * kStretches / found].add(match, outline.points[i].length / variance);
        if (number % every == 0) {
            judges.push_back(
                {empty.slope(match) / std::sqrt(variance), match.distance / std::sqrt(variance)});
        }
        ++number;
    }
    cv::Vec4d best;
    if (judges.empty()) return best;
    std::vector<double> scratch;
    double least = medianAfter(judges, best, scratch);
    for (std::size_t i = 0; i < kStretches; ++i) {
        for (std::size_t k = i + 1; k < kStretches; ++k) {
            PoseProblem both = stretches[i];
            both.add(stretches[k]);
            both.solve(freedom.leastShare);
            const cv::Vec4d step = both.step();
            if (!(cv::norm(step) <= kLargestStep)) continue;
            const double median = medianAfter(judges, step, scratch);
            if (median >= least) continue;
            least = median;
            best = step;
        }
    }
    return best;
}

}  // namespace orx::matching
