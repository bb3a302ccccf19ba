// The search: from a pyramid of the picture to places where the part may lie.
#ifndef ORXFUNCTIONS_MATCHING_SEARCH_CANDIDATES_H
#define ORXFUNCTIONS_MATCHING_SEARCH_CANDIDATES_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/part_finder.h"

namespace orx::matching {

// Near enough to the part for the refinement: no point of the outline farther than about two pixels from its
// edge.
struct Candidate {
    TPartPose pose;
    bool reversed = false;
    double score = 0.0;  // 0 to 1, as far as the search can tell
};

// `options` have been checked; their contrast is known (above 0), their region lies in the picture. Distinct
// candidates, best first; more than options.maxParts of them where some may fall away. Nothing depends on the
// number of threads.
std::vector<Candidate> searchCandidates(const std::vector<cv::Mat>& pyramid, const ModelData& model,
                                        const TFindOptions& options);

}  // namespace orx::matching

#endif
