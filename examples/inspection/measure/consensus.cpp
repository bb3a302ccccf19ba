#include "inspection/measure/consensus.h"

#include <algorithm>
#include <cstdlib>

#include "orxFunctions/fitting/geometric_fit.h"
#include "orxFunctions/fitting/point_list.h"
#include "orxFunctions/fitting/ransac.h"

namespace inspection {
namespace {

constexpr int kSmallestRadius = 3;
constexpr int kDrawsPerRound = 50;
// Two neighbours among the sampled pixels give a coarse angle, hence the wide limit.
constexpr double kParallelWithin = 6.0;

std::vector<cv::Point2d> toDouble(const std::vector<cv::Point>& points) {
    return {points.begin(), points.end()};
}

// The angle window around `line`, in the range of angles that does not wrap inside it.
void limitAngle(orx::TRansacLine& search, const Line& line) {
    const double angle = line.angle();
    if (angle > 45.0 && angle < 135.0) {
        search.setAngleLimit(angle - kParallelWithin, angle + kParallelWithin, orx::ANGLE_0_180);
    } else {
        const double centered = angle >= 135.0 ? angle - 180.0 : angle;
        search.setAngleLimit(centered - kParallelWithin, centered + kParallelWithin, orx::ANGLE_SIGNED);
    }
}

}  // namespace

std::optional<CircleConsensus> searchCircle(const std::vector<cv::Point>& points, int largestRadius,
                                            const SearchSettings& settings) {
    // A search with several candidates returns one that beats the first, not the best of all. So each round
    // ends with its first candidate (cap 0), and the best of the rounds is chosen here.
    orx::TRansacCircle search(points, kDrawsPerRound, 0, settings.tolerance);
    search.setRLimit(kSmallestRadius, std::max(kSmallestRadius, largestRadius));
    std::srand(settings.seed);
    std::optional<CircleConsensus> best;
    std::vector<int> bestIndices;
    std::vector<int> indices;
    for (int round = 0; round < settings.trials; ++round) {
        const orx::TCircle circle = search.doRansac();
        if (!circle.valid) continue;
        search.getCircleIdxList(indices);
        if (best && indices.size() <= bestIndices.size()) continue;
        bestIndices = indices;
        best = CircleConsensus{{{circle.x, circle.y}, circle.r}, {}};
    }
    if (best) orx::getPointListFromIdxList(points, bestIndices, best->inliers);
    return best;
}

std::optional<LineConsensus> searchLine(const std::vector<cv::Point>& points, const Line* parallelTo,
                                        const SearchSettings& settings) {
    if (points.size() < 2) return std::nullopt;
    orx::TRansacLine search(points, settings.trials, settings.trials, settings.tolerance);
    if (parallelTo != nullptr) limitAngle(search, *parallelTo);
    std::srand(settings.seed);
    if (!search.doRansac()) return std::nullopt;

    // The list names the two sampled points twice.
    std::vector<int> indices;
    search.getIdxList(indices);
    std::sort(indices.begin(), indices.end());
    indices.erase(std::unique(indices.begin(), indices.end()), indices.end());

    LineConsensus result;
    orx::getPointListFromIdxList(points, indices, result.inliers);
    result.others = points;
    orx::deletePointsInList(result.others, indices);
    const orx::TMeasuredLine line = orx::fitLineGeometric(toDouble(result.inliers));
    if (!line.valid()) return std::nullopt;
    result.line = {line.point, line.direction};
    return result;
}

}  // namespace inspection
