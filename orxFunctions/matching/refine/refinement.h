// The refinement: from a pose that is nearly right to the pose, its covariance and what is seen of the part.
#ifndef ORXFUNCTIONS_MATCHING_REFINE_REFINEMENT_H
#define ORXFUNCTIONS_MATCHING_REFINE_REFINEMENT_H

#include <opencv2/core.hpp>

#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/part_finder.h"
#include "orxFunctions/matching/search/candidates.h"

namespace orx::matching {

// Finds the edges in the candidate's window of the picture (8 bits, one channel) and lays the outline over
// them. Never worse than the candidate: where too little is seen to tell more, its pose comes back with the
// score that the edges give it. `options` as for the search, with a noise above 0.
TFoundPart refineCandidate(const cv::Mat& grey, const ModelData& model, const Candidate& candidate,
                           const TFindOptions& options);

}  // namespace orx::matching

#endif
