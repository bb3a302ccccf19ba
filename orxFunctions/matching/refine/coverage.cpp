#include "orxFunctions/matching/refine/coverage.h"

#include <algorithm>
#include <cmath>

namespace orx::matching {
namespace {

constexpr double kMostDistance = 1.2;  // pixels
constexpr double kMostTurn = 15;       // degrees
// Edges at this distance have half of the weight, pixels: what covers a part has edges next to its outline,
// too.
constexpr double kNear = 0.2;
// Between neighbours, pixels.
constexpr double kMostJump = 0.5;
// Neighbours that must be seen together.
constexpr std::size_t kLeastRun = 6;

// Takes back what is seen for a short while only, though the chain goes on.
void dropShortRuns(const ReadyOutline& outline, const std::vector<Match>& matches,
                   std::vector<unsigned char>& seen) {
    const std::size_t count = seen.size();
    std::size_t chainStart = 0;
    while (chainStart < count) {
        std::size_t chainEnd = chainStart + 1;
        while (chainEnd < count && outline.chains[chainEnd] == outline.chains[chainStart]) ++chainEnd;
        const std::size_t least = std::min(kLeastRun, chainEnd - chainStart);
        std::size_t runStart = chainStart;
        for (std::size_t i = chainStart; i <= chainEnd; ++i) {
            const bool goesOn =
                i < chainEnd && seen[i] != 0 &&
                (i == runStart || std::abs(matches[i].distance - matches[i - 1].distance) <= kMostJump);
            if (goesOn) continue;
            if (i - runStart < least) std::fill_n(seen.data() + runStart, i - runStart, 0);
            runStart = i < chainEnd && seen[i] != 0 ? i : i + 1;
        }
        chainStart = chainEnd;
    }
}

}  // namespace

double seenDistance(double scale) { return kMostDistance * std::max(1.0, scale); }

Coverage coverageOf(const ReadyOutline& outline, const std::vector<Match>& matches, double scale) {
    const double most = seenDistance(scale);
    const double mostTurn = radians(kMostTurn);
    Coverage coverage;
    coverage.seen.resize(matches.size());
    for (std::size_t i = 0; i < matches.size(); ++i) {
        const Match& match = matches[i];
        const bool isSeen =
            match.found && std::abs(match.distance) <= most && std::abs(match.turn) <= mostTurn;
        coverage.seen[i] = isSeen ? 1 : 0;
    }
    dropShortRuns(outline, matches, coverage.seen);
    double length = 0;
    double squares = 0;
    double near = 0;
    for (std::size_t i = 0; i < matches.size(); ++i) {
        if (coverage.seen[i] == 0) continue;
        length += outline.points[i].length;
        const double square = matches[i].distance * matches[i].distance;
        squares += outline.points[i].length * square;
        near += outline.points[i].length / (1 + square / (kNear * kNear));
    }
    if (!(length > 0)) return coverage;
    coverage.score = std::min(length / outline.length, 1.0);
    coverage.fit = near / outline.length;
    coverage.rms = std::sqrt(squares / length);
    return coverage;
}

}  // namespace orx::matching
