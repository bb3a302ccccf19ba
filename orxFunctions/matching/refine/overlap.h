// How much of one part's box another part's box covers.
#ifndef ORXFUNCTIONS_MATCHING_REFINE_OVERLAP_H
#define ORXFUNCTIONS_MATCHING_REFINE_OVERLAP_H

#include <array>
#include <opencv2/core.hpp>

#include "orxFunctions/matching/model/model_data.h"

namespace orx::matching {

// Corners in order round the box.
using Box = std::array<cv::Point2d, 4>;

// The smallest turned box about the outline, in the model's plane; not narrower than two pixels.
Box outlineBox(const ModelData& model);

Box boxAt(const Box& box, const TPartPose& pose);

// The area that both cover as a share of the smaller one's, 0 to 1.
double sharedArea(const Box& a, const Box& b);

}  // namespace orx::matching

#endif
