// How much of the outline is seen.
#ifndef ORXFUNCTIONS_MATCHING_REFINE_COVERAGE_H
#define ORXFUNCTIONS_MATCHING_REFINE_COVERAGE_H

#include <vector>

#include "orxFunctions/matching/refine/outline_match.h"

namespace orx::matching {

struct Coverage {
    double score = 0.0;               // share of the outline's length that is seen
    double fit = 0.0;                 // the score with the more weight, the nearer edges are to their points
    double rms = 0.0;                 // of the seen points' distances, pixels
    std::vector<unsigned char> seen;  // for each point of the outline
};

// How far the edges of a point that is seen may be, pixels in the picture.
double seenDistance(double scale);

// From the matches of a pose, of every point, and at least as far as seenDistance(). A point is seen where an
// edge of its direction lies next to it, and next to some of its neighbours without a jump: what texture does
// by chance for a point or two counts for nothing.
Coverage coverageOf(const ReadyOutline& outline, const std::vector<Match>& matches, double scale);

}  // namespace orx::matching

#endif
