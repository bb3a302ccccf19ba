// The search of a whole level at all angles and scales.
#ifndef ORXFUNCTIONS_MATCHING_SEARCH_TOP_SEARCH_H
#define ORXFUNCTIONS_MATCHING_SEARCH_TOP_SEARCH_H

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/search/direction_maps.h"
#include "orxFunctions/matching/search/pose_score.h"
#include "orxFunctions/matching/search/search_plan.h"

namespace orx::matching {

struct Thresholds {
    double leastScore;  // mean of the responses, 1 where all directions agree
    double firstShare;  // of leastScore that the first half of the points must reach, or the rest is given up
};

// Poses on the band's top level whose responses reach the thresholds and that are better than their
// neighbours in place, angle and scale; the best `most` of them, best first. `region` is where reference
// points may lie, pixels of the picture. On several threads; the answer does not depend on their number.
std::vector<LevelPose> searchLevel(const DirectionMaps& maps, const SearchPlan& plan, const ScaleBand& band,
                                   const cv::Rect& region, const Thresholds& thresholds, std::size_t most);

}  // namespace orx::matching

#endif
