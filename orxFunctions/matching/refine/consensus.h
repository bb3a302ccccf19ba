// The pose that most of the outline agrees on, where the edges of something else pull at the rest.
#ifndef ORXFUNCTIONS_MATCHING_REFINE_CONSENSUS_H
#define ORXFUNCTIONS_MATCHING_REFINE_CONSENSUS_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/refine/outline_match.h"
#include "orxFunctions/matching/refine/uncertainty.h"

namespace orx::matching {

// The step (pose_problem.h) after which half of the found matches are nearest to their edges, in standard
// deviations, among those that pairs of stretches of the outline ask for; none where that is no step at all.
// The least median of squares: P. J. Rousseeuw, J. Am. Stat. Assoc. 79 (1984).
cv::Vec4d consensusStep(const ReadyOutline& outline, const CentredPose& pose,
                        const std::vector<Match>& matches, const Freedom& freedom);

}  // namespace orx::matching

#endif
