// The picture of a proposed recipe: each feature with its number.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_DRAW_PROPOSAL_H
#define ORXFUNCTIONS_MEASURING_RECIPE_DRAW_PROPOSAL_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/measuring/recipe_result.h"

namespace orx::recipes {

// Numbers 1, 2 ... in the order of the features, beside them and clear of one another as far as there is
// room. 8-bit BGR; small pictures are enlarged.
cv::Mat drawNumbered(const cv::Mat& img, const std::vector<TRecipeFeature>& features);

}  // namespace orx::recipes

#endif
