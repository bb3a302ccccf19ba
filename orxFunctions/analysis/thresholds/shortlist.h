// A search for the level of smallest score that spares most of the exact scores.
//
// An exact score costs up to 256 logarithms or additions in a fixed order, but it can be estimated from
// running sums closely enough to see which levels can still win. Those are scored exactly, in ascending
// order, so the winner is the one that scoring every level would find.
#ifndef ORXFUNCTIONS_ANALYSIS_SHORTLIST_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_SHORTLIST_INTERNAL_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "orxFunctions/analysis/histogram_internal.h"

namespace orx {

class Shortlist {
  public:
    // No level is to be scored unless estimate() or examine() says so.
    Shortlist() { estimates_.fill(kSkipped); }

    // The estimate of a level's score, not NaN. The exact score may differ by half the tolerance.
    void estimate(int level, double score) {
        estimates_[static_cast<std::size_t>(level)] = score;
        smallest_ = std::min(smallest_, score);
    }

    // Scores the level exactly in any case.
    void examine(int level) { estimates_[static_cast<std::size_t>(level)] = kExamined; }

    // The first level whose exact score is smallest and below `best`; `fallback` when there is none.
    // `exactScore` maps a level to its score; not-a-number never wins.
    template <typename ExactScore>
    int winner(double tolerance, double best, int fallback, ExactScore exactScore) const {
        int level = fallback;
        for (int t = 0; t < kLevels; ++t) {
            const double estimated = estimates_[static_cast<std::size_t>(t)];
            if (estimated == kSkipped || estimated > smallest_ + tolerance) continue;
            const double score = exactScore(t);
            if (score < best) {
                best = score;
                level = t;
            }
        }
        return level;
    }

  private:
    static constexpr double kSkipped = std::numeric_limits<double>::infinity();
    static constexpr double kExamined = -std::numeric_limits<double>::infinity();

    std::array<double, kLevels> estimates_;
    double smallest_ = kSkipped;
};

}  // namespace orx

#endif
